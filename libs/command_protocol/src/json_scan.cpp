#include "json_scan.h"

#include <algorithm>
#include <charconv>

namespace command_protocol {
namespace {

constexpr std::string_view kSpace = " \t\n\r";

void skip_space(std::string_view *text) {
    text->remove_prefix(std::min(text->find_first_not_of(kSpace), text->size()));
}

/** Length of the string literal that `text` starts with. */
size_t string_length(std::string_view text) {
    size_t i = 1;
    while (i < text.size() && text[i] != '"')
        i += text[i] == '\\' ? 2 : 1;
    return std::min(i + 1, text.size());
}

/** Length of the array or object that `text` starts with. */
size_t nested_length(std::string_view text) {
    size_t depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            i += string_length(text.substr(i)) - 1;
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if ((c == ']' || c == '}') && --depth == 0) {
            return i + 1;
        }
    }
    return text.size();
}

size_t value_length(std::string_view text) {
    switch (json_type(text)) {
        case JsonType::kString:
            return string_length(text);
        case JsonType::kArray:
        case JsonType::kObject:
            return nested_length(text);
        default:
            return std::min(text.find_first_of(" \t\n\r,]}"), text.size());
    }
}

/** Takes the value off the front of `rest`, and the ',' or bracket that follows it. */
std::string_view take_value(std::string_view *rest) {
    skip_space(rest);
    const std::string_view value = rest->substr(0, value_length(*rest));
    rest->remove_prefix(value.size());
    skip_space(rest);
    if (!rest->empty()) rest->remove_prefix(1);
    return value;
}

bool at_end(std::string_view rest) {
    return rest.empty() || rest.front() == ']' || rest.front() == '}';
}

uint32_t code_unit(const char *digits) {
    uint32_t unit = 0;
    std::from_chars(digits, digits + 4, unit, 16);
    return unit;
}

void append_utf8(std::string *out, uint32_t c) {
    if (c < 0x80) {
        out->push_back(static_cast<char>(c));
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr unsigned kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    out->push_back(static_cast<char>(kLeads[more] | (c >> (6 * more))));
    for (int i = more - 1; i >= 0; --i) {
        out->push_back(static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F)));
    }
}

/** Appends what the escape behind a backslash stands for; returns the characters it took. */
size_t append_escaped(std::string *out, std::string_view text) {
    constexpr std::string_view kLetters = "bfnrt", kControls = "\b\f\n\r\t";
    if (text.front() != 'u') {
        const size_t letter = kLetters.find(text.front());
        out->push_back(letter == std::string_view::npos ? text.front() : kControls[letter]);
        return 1;
    }
    const uint32_t unit = code_unit(text.data() + 1);
    if (unit < 0xD800 || unit > 0xDFFF) {
        append_utf8(out, unit);
        return 5;
    }
    const uint32_t low = code_unit(text.data() + 7);
    append_utf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
    return 11;
}

}  // namespace

std::string_view trim_json(std::string_view text) {
    skip_space(&text);
    return text.substr(0, text.find_last_not_of(kSpace) + 1);
}

JsonType json_type(std::string_view value) {
    switch (value.empty() ? 'n' : value.front()) {
        case '{':
            return JsonType::kObject;
        case '[':
            return JsonType::kArray;
        case '"':
            return JsonType::kString;
        case 't':
        case 'f':
            return JsonType::kBoolean;
        case 'n':
            return JsonType::kNull;
        default:
            return JsonType::kNumber;
    }
}

std::string json_string(std::string_view literal) {
    std::string_view rest = literal.substr(1, literal.size() - 2);
    std::string out;
    out.reserve(rest.size());
    for (size_t escape; (escape = rest.find('\\')) != std::string_view::npos;) {
        out.append(rest.substr(0, escape));
        rest.remove_prefix(escape + 1);
        rest.remove_prefix(append_escaped(&out, rest));
    }
    return out.append(rest);
}

bool json_int32(std::string_view number, int32_t *out) {
    const char *end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, *out);
    return error == std::errc() && stop == end;
}

bool ArrayWalk::next() {
    skip_space(&m_rest);
    if (at_end(m_rest)) return false;
    m_value = take_value(&m_rest);
    return true;
}

bool ObjectWalk::next() {
    skip_space(&m_rest);
    if (at_end(m_rest)) return false;
    m_name = take_value(&m_rest);
    if (m_name.find('\\') == std::string_view::npos) {
        m_name = m_name.substr(1, m_name.size() - 2);
    } else {
        m_name = m_unescaped = json_string(m_name);
    }
    m_value = take_value(&m_rest);
    return true;
}

}  // namespace command_protocol
