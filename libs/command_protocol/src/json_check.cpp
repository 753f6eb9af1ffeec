// The grammar of RFC 8259 as one method per rule.

#include <algorithm>
#include <cstring>

#include "json_scan.h"

namespace command_protocol {
namespace {

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

constexpr int hex_value(char c) {
    if (is_digit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/** A lead byte's sequence: how long it is and which second bytes it may have (Unicode, table 3-7).
 */
struct Utf8Lead {
    unsigned char first, last;
    unsigned char length;
    unsigned char low, high;
};

constexpr Utf8Lead kUtf8Leads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

/** Length of the non-ASCII UTF-8 sequence at `p`, 0 when there is none. */
size_t utf8_length(const char *p, const char *end) {
    const auto byte = [p](size_t i) { return static_cast<unsigned char>(p[i]); };
    for (const Utf8Lead &lead : kUtf8Leads) {
        if (byte(0) < lead.first || byte(0) > lead.last) continue;
        if (end - p < lead.length || byte(1) < lead.low || byte(1) > lead.high) return 0;
        for (size_t i = 2; i < lead.length; ++i) {
            if ((byte(i) & 0xC0) != 0x80) return 0;
        }
        return lead.length;
    }
    return 0;
}

class Checker {
public:
    Checker(std::string_view text, unsigned max_depth)
        : m_begin(text.data()),
          m_p(m_begin),
          m_end(m_begin + text.size()),
          m_max_depth(max_depth) {}

    bool document() {
        if (!value()) return false;
        skip_space();
        return m_p == m_end || fail("more text after the value");
    }

    std::string reason() const {
        const auto line = 1 + std::count(m_begin, m_p, '\n');
        return "line " + std::to_string(line) + ": " + m_reason;
    }

private:
    bool fail(std::string reason) {
        m_reason = std::move(reason);
        return false;
    }

    char peek() const { return m_p < m_end ? *m_p : '\0'; }

    void skip_space() {
        while (m_p < m_end && (*m_p == ' ' || *m_p == '\t' || *m_p == '\n' || *m_p == '\r'))
            ++m_p;
    }

    bool take(char c) {
        skip_space();
        if (peek() != c || m_p == m_end) return false;
        ++m_p;
        return true;
    }

    bool value() {
        skip_space();
        if (m_p == m_end) return fail("unexpected end of input");
        switch (*m_p) {
            case '{':
                return nested(&Checker::members, '}');
            case '[':
                return nested(&Checker::elements, ']');
            case '"':
                return string();
            case 't':
                return word("true");
            case 'f':
                return word("false");
            case 'n':
                return word("null");
            default:
                return number();
        }
    }

    bool nested(bool (Checker::*content)(), char close) {
        if (m_depth == m_max_depth) {
            return fail("nesting above " + std::to_string(m_max_depth) + " levels");
        }
        ++m_depth;
        ++m_p;
        if (!take(close)) {
            if (!(this->*content)()) return false;
            if (!take(close)) return fail(std::string("',' or '") + close + "' expected");
        }
        --m_depth;
        return true;
    }

    bool elements() {
        do {
            if (!value()) return false;
        } while (take(','));
        return true;
    }

    bool members() {
        do {
            skip_space();
            if (peek() != '"') return fail("a member's name expected");
            if (!string()) return false;
            if (!take(':')) return fail("':' expected");
            if (!value()) return false;
        } while (take(','));
        return true;
    }

    bool word(std::string_view expected) {
        if (std::string_view(m_p, m_end - m_p).substr(0, expected.size()) != expected) {
            return fail("a value expected");
        }
        m_p += expected.size();
        return true;
    }

    bool digits() {
        if (!is_digit(peek())) return fail("a digit expected");
        while (is_digit(peek()))
            ++m_p;
        return true;
    }

    bool number() {
        const bool minus = peek() == '-';
        if (minus) ++m_p;
        if (!is_digit(peek())) return fail(minus ? "a digit expected" : "a value expected");
        if (peek() == '0') {
            ++m_p;
        } else if (!digits()) {
            return false;
        }
        if (peek() == '.') {
            ++m_p;
            if (!digits()) return false;
        }
        if (peek() == 'e' || peek() == 'E') {
            ++m_p;
            if (peek() == '+' || peek() == '-') ++m_p;
            if (!digits()) return false;
        }
        return true;
    }

    bool string() {
        for (++m_p; m_p < m_end; ++m_p) {
            const auto c = static_cast<unsigned char>(*m_p);
            if (c == '"') {
                ++m_p;
                return true;
            }
            if (c < 0x20) return fail("a control character in a string");
            if (c == '\\') {
                if (!escape()) return false;
            } else if (c >= 0x80) {
                const size_t length = utf8_length(m_p, m_end);
                if (length == 0) return fail("a string is not UTF-8");
                m_p += length - 1;
            }
        }
        return fail("unexpected end of input in a string");
    }

    /** From the backslash to the escape's last character. */
    bool escape() {
        ++m_p;
        if (peek() == 'u') return unicode_escape();
        if (m_p == m_end || std::strchr("\"\\/bfnrt", *m_p) == nullptr || *m_p == '\0') {
            return fail("an unknown escape in a string");
        }
        return true;
    }

    /** A half of a pair alone stands for no character, so it is refused. */
    bool unicode_escape() {
        const int unit = code_unit();
        if (unit < 0) return fail("four hexadecimal digits expected after \\u");
        if (unit < 0xD800 || unit > 0xDFFF) return true;
        if (unit <= 0xDBFF && m_end - m_p > 2 && m_p[1] == '\\' && m_p[2] == 'u') {
            m_p += 2;
            const int low = code_unit();
            if (low >= 0xDC00 && low <= 0xDFFF) return true;
        }
        return fail("half of a surrogate pair in a string");
    }

    /** From the "u" to the last of its four digits; -1 for fewer. */
    int code_unit() {
        if (m_end - m_p < 5) return -1;
        int unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hex_value(*++m_p);
            if (digit < 0) return -1;
            unit = unit * 16 + digit;
        }
        return unit;
    }

    const char *m_begin;
    const char *m_p;
    const char *m_end;
    const unsigned m_max_depth;
    unsigned m_depth = 0;
    std::string m_reason;
};

}  // namespace

bool check_json(std::string_view text, unsigned max_depth, std::string *reason) {
    Checker checker(text, max_depth);
    if (checker.document()) return true;
    *reason = checker.reason();
    return false;
}

}  // namespace command_protocol
