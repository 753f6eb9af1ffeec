#include "record_codec/record_json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "utf8.h"

namespace record_codec {
namespace {

constexpr size_t kMaxRecordBytes = 4096;
#define RECORD_CODEC_FITS(X, bytes) static_assert(bytes <= kMaxRecordBytes);
RECORD_CODEC_RECORDS(RECORD_CODEC_FITS)
#undef RECORD_CODEC_FITS

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kReservedPrefix = "reserved_";
constexpr char kHexDigits[] = "0123456789abcdef";

// ---- writing ------------------------------------------------------------------------------------

/** Appends one character of a JSON string that may not stand as it is. */
void append_escaped(std::string &out, char c) {
    switch (c) {
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            out += "\\u00";
            out += kHexDigits[(c >> 4) & 0xF];
            out += kHexDigits[c & 0xF];
    }
}

bool stands_as_it_is(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\';
}

/**
 * Appends a JSON string; at most `growth` bytes may be added by replacing what is not UTF-8, past
 * that a "?" replaces it at no growth.
 */
void append_text(std::string &out, std::string_view text, size_t growth) {
    out += '"';
    while (!text.empty()) {
        size_t run = 0;
        while (run < text.size() && stands_as_it_is(text[run])) {
            ++run;
        }
        out.append(text.data(), run);
        text.remove_prefix(run);
        if (text.empty()) break;
        const size_t length = utf8_character_length(text);
        if (length > 1) {
            out.append(text.data(), length);
        } else if (length == 1) {
            append_escaped(out, text[0]);
        } else if (growth >= kReplacement.size() - 1) {
            out += kReplacement;
            growth -= kReplacement.size() - 1;
        } else {
            out += '?';
        }
        text.remove_prefix(length > 0 ? length : 1);
    }
    out += '"';
}

/** The text of a field, cut at a character when its array holds no NUL. */
std::string_view field_text(const char *bytes, size_t size) {
    size_t length = strnlen(bytes, size);
    if (length < size) return {bytes, length};
    const std::string_view whole(bytes, size);
    length = 0;
    while (length < size) {
        const size_t step = std::max<size_t>(utf8_character_length(whole.substr(length)), 1);
        if (length + step > size - 1) break;
        length += step;
    }
    return whole.substr(0, length);
}

template <typename Number>
void append_number(std::string &out, const char *bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    char text[16];
    out.append(text, std::to_chars(text, text + sizeof text, number).ptr);
}

void append_value(std::string &out, const Field &field, const char *bytes) {
    switch (field.kind) {
        case FieldKind::kInt32:
            append_number<int32_t>(out, bytes);
            return;
        case FieldKind::kUint32:
            append_number<uint32_t>(out, bytes);
            return;
        case FieldKind::kText: {
            const std::string_view text = field_text(bytes, field.size);
            append_text(out, text, field.size - 1 - text.size());
            return;
        }
        case FieldKind::kInt32Array:
            break;
    }
    for (uint32_t at = 0; at < field.size; at += 4) {
        out += at == 0 ? '[' : ',';
        append_number<int32_t>(out, bytes + at);
    }
    out += ']';
}

void append_hex(std::string &out, const char *bytes, size_t size) {
    out += '"';
    for (size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        out += kHexDigits[byte >> 4];
        out += kHexDigits[byte & 0xF];
    }
    out += '"';
}

/** Bytes up to the last one that is not zero. */
size_t used_bytes(const char *bytes, size_t size) {
    while (size > 0 && bytes[size - 1] == 0) {
        --size;
    }
    return size;
}

/** Opens a member: the comma of the one before, its line, its name. */
void append_name(std::string &out, std::string_view name, const char *indent, bool first) {
    if (!first) out += ',';
    if (indent) {
        out += '\n';
        out += indent;
        out += "  ";
    }
    out += '"';
    out += name;
    out += indent ? "\": " : "\":";
}

// ---- reading ------------------------------------------------------------------------------------

bool refuse(RecordError *error, std::string field, std::string reason) {
    error->field = std::move(field);
    error->reason = std::move(reason);
    return false;
}

/** Puts a JSON integer into four bytes. */
bool read_number(const Json &value, FieldKind kind, char *bytes, std::string *reason) {
    if (!value.is_number_integer()) {
        *reason = value.is_number() ? "not an integer"
                                    : std::string("a number is expected, not ") + value.type_name();
        return false;
    }
    const int64_t low = kind == FieldKind::kUint32 ? 0 : int64_t{INT32_MIN};
    const int64_t high = kind == FieldKind::kUint32 ? int64_t{UINT32_MAX} : int64_t{INT32_MAX};
    const bool too_large = value.is_number_unsigned() && value.get<uint64_t>() > uint64_t(high);
    const int64_t number = too_large ? 0 : value.get<int64_t>();
    if (too_large || number < low || number > high) {
        *reason =
            value.dump() + " is outside " + std::to_string(low) + " to " + std::to_string(high);
        return false;
    }
    const auto word = static_cast<uint32_t>(number);
    std::memcpy(bytes, &word, sizeof word);
    return true;
}

bool read_text(const Json &value, uint32_t size, char *bytes, std::string *reason) {
    const auto *text = value.get_ptr<const std::string *>();
    if (!text) {
        *reason = std::string("a text is expected, not ") + value.type_name();
        return false;
    }
    if (text->size() >= size) {
        *reason =
            std::to_string(text->size()) + " bytes do not fit into " + std::to_string(size - 1);
        return false;
    }
    if (text->find('\0') != std::string::npos) {
        *reason = "the text contains a NUL";
        return false;
    }
    std::memset(bytes, 0, size);
    std::memcpy(bytes, text->data(), text->size());
    return true;
}

bool read_array(const Field &field, const Json &value, char *bytes, RecordError *error) {
    const size_t length = field.size / 4;
    if (!value.is_array() || value.size() != length) {
        return refuse(error, field.name,
                      "an array of " + std::to_string(length) + " numbers is expected");
    }
    for (size_t i = 0; i < length; ++i) {
        if (!read_number(value[i], FieldKind::kInt32, bytes + 4 * i, &error->reason)) {
            error->field = std::string(field.name) + "[" + std::to_string(i) + "]";
            return false;
        }
    }
    return true;
}

bool read_field(const Field &field, const Json &value, char *bytes, RecordError *error) {
    if (field.kind == FieldKind::kInt32Array) return read_array(field, value, bytes, error);
    const bool read = field.kind == FieldKind::kText
                          ? read_text(value, field.size, bytes, &error->reason)
                          : read_number(value, field.kind, bytes, &error->reason);
    if (!read) error->field = field.name;
    return read;
}

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/** The unnamed bytes that "reserved_<offset>" speaks of, from that offset on. */
bool find_reserved(const Record &record, std::string_view name, Span *out) {
    if (name.substr(0, kReservedPrefix.size()) != kReservedPrefix) return false;
    name.remove_prefix(kReservedPrefix.size());
    uint32_t offset = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), offset);
    if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size()) return false;
    return next_reserved_span(record, offset, out) && out->offset == offset;
}

bool read_reserved(const Span &span, const Json &value, char *bytes, std::string *reason) {
    const auto *text = value.get_ptr<const std::string *>();
    if (!text || text->size() % 2 != 0) {
        *reason = "pairs of hexadecimal digits are expected";
        return false;
    }
    if (text->size() / 2 > span.size) {
        *reason = std::to_string(text->size() / 2) + " bytes do not fit into " +
                  std::to_string(span.size);
        return false;
    }
    std::memset(bytes, 0, span.size);
    for (size_t i = 0; i < text->size(); i += 2) {
        const int high = hex_digit((*text)[i]);
        const int low = hex_digit((*text)[i + 1]);
        if (high < 0 || low < 0) {
            *reason = "pairs of hexadecimal digits are expected";
            return false;
        }
        bytes[i / 2] = static_cast<char>(high << 4 | low);
    }
    return true;
}

bool read_member(const Record &record, const std::string &name, const Json &value,
                 UnknownMembers unknown, char *bytes, RecordError *error) {
    if (const Field *field = find_field(record, name)) {
        return read_field(*field, value, bytes + field->offset, error);
    }
    Span span{};
    if (find_reserved(record, name, &span)) {
        error->field = name;
        return read_reserved(span, value, bytes + span.offset, &error->reason);
    }
    if (unknown == UnknownMembers::kSkip) return true;
    return refuse(error, name, std::string("unknown field of ") + record.name);
}

/** Deepest nesting of brackets outside strings; cheap, so that a hostile text is never parsed. */
unsigned nesting(std::string_view text) {
    unsigned depth = 0;
    unsigned deepest = 0;
    bool in_string = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (in_string) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                in_string = false;
            }
        } else if (c == '"') {
            in_string = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

/** Takes what the parser finds and keeps only how many bytes it had read when it failed. */
class FailurePosition {
public:
    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool number_integer(Json::number_integer_t) { return true; }
    bool number_unsigned(Json::number_unsigned_t) { return true; }
    bool number_float(Json::number_float_t, const std::string &) { return true; }
    bool string(std::string &) { return true; }
    bool binary(Json::binary_t &) { return true; }
    bool start_object(size_t) { return true; }
    bool key(std::string &) { return true; }
    bool end_object() { return true; }
    bool start_array(size_t) { return true; }
    bool end_array() { return true; }
    bool parse_error(size_t position, const std::string &, const Json::exception &) {
        bytes = position;
        return false;
    }

    size_t bytes = 0;
};

/** "line 2, column 5: " of the byte at which parsing the text fails. */
std::string failure_place(std::string_view text) {
    FailurePosition position;
    Json::sax_parse(text.begin(), text.end(), &position);
    const std::string_view read = text.substr(0, position.bytes);
    const auto line = 1 + std::count(read.begin(), read.end(), '\n');
    const size_t column = read.size() - (read.rfind('\n') + 1);
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": ";
}

/** The parser's message without its own prefix, bounded in length; it starts with the place. */
std::string plain_reason(std::string_view text, std::string_view what) {
    constexpr size_t kLongest = 200;
    constexpr std::string_view kPlace = "at line ";
    constexpr std::string_view kPrefixEnd = "] ";
    const size_t at = what.find(kPlace);
    if (at != std::string_view::npos) {
        what.remove_prefix(at + kPlace.find("line"));
        return std::string(what.substr(0, kLongest));
    }
    // A number that no float can hold is told without its place.
    const size_t prefix_end = what.find(kPrefixEnd);
    if (prefix_end != std::string_view::npos) what.remove_prefix(prefix_end + kPrefixEnd.size());
    return failure_place(text).append(what).substr(0, kLongest);
}

}  // namespace

void append_json_string(std::string &out, std::string_view text) {
    append_text(out, text, SIZE_MAX);
}

void append_record(std::string &out, const Record &record, const void *bytes, const char *indent) {
    const auto *start = static_cast<const char *>(bytes);
    out += '{';
    for (size_t i = 0; i < record.field_count; ++i) {
        const Field &field = record.fields[i];
        append_name(out, field.name, indent, i == 0);
        append_value(out, field, start + field.offset);
    }
    Span span{};
    for (uint32_t at = 0; next_reserved_span(record, at, &span); at = span.offset + span.size) {
        const size_t used = used_bytes(start + span.offset, span.size);
        if (used == 0) continue;
        append_name(out, std::string(kReservedPrefix) + std::to_string(span.offset), indent, false);
        append_hex(out, start + span.offset, used);
    }
    if (indent) {
        out += '\n';
        out += indent;
    }
    out += '}';
}

OrderedJson record_to_json(const Record &record, const void *bytes) {
    std::string text;
    append_record(text, record, bytes);
    return OrderedJson::parse(text);
}

bool json_to_record(const Record &record, const Json &value, UnknownMembers unknown, void *bytes,
                    RecordError *error) {
    if (!value.is_object()) {
        return refuse(error, "", std::string("an object is expected, not ") + value.type_name());
    }
    std::array<char, kMaxRecordBytes> copy;
    std::memcpy(copy.data(), bytes, record.size);
    for (const auto &member : value.items()) {
        if (!read_member(record, member.key(), member.value(), unknown, copy.data(), error)) {
            return false;
        }
    }
    std::memcpy(bytes, copy.data(), record.size);
    return true;
}

bool json_to_member(const Record &record, const std::string &name, const Json &value,
                    UnknownMembers unknown, void *bytes, RecordError *error) {
    return read_member(record, name, value, unknown, static_cast<char *>(bytes), error);
}

bool parse_json(const char *text, size_t length, unsigned max_depth, Json *out,
                std::string *reason) {
    if (nesting({text, length}) > max_depth) {
        *reason = "nested deeper than " + std::to_string(max_depth) + " levels";
        return false;
    }
    // The parser takes a NUL for the end of the text and would not look at what stands behind it.
    if (std::string_view(text, length).find('\0') != std::string_view::npos) {
        *reason = "the text contains a NUL";
        return false;
    }
    try {
        *out = Json::parse(text, text + length);
        return true;
    } catch (const Json::exception &error) {
        *reason = plain_reason({text, length}, error.what());
        return false;
    }
}

}  // namespace record_codec
