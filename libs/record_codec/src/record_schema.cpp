#include "record_codec/record_schema.h"

#include <algorithm>

#include "record_codec/record_json.h"

namespace record_codec {

const Record *find_record(std::string_view name) {
    size_t count = 0;
    const Record *records = all_records(&count);
    const Record *end = records + count;
    const Record *found =
        std::find_if(records, end, [&](const Record &record) { return record.name == name; });
    return found == end ? nullptr : found;
}

const Field *find_field(const Record &record, std::string_view name) {
    const Field *end = record.fields + record.field_count;
    const Field *found =
        std::find_if(record.fields, end, [&](const Field &field) { return field.name == name; });
    return found == end ? nullptr : found;
}

bool next_reserved_span(const Record &record, uint32_t offset, Span *out) {
    uint32_t start = offset;
    for (size_t i = 0; i < record.field_count; ++i) {
        const Field &field = record.fields[i];
        if (start < field.offset) {
            *out = {start, field.offset - start};
            return true;
        }
        start = std::max(start, field.offset + field.size);
    }
    if (start >= record.size) return false;
    *out = {start, record.size - start};
    return true;
}

namespace {

OrderedJson number_schema(FieldKind kind) {
    const bool is_signed = kind != FieldKind::kUint32;
    return {{"type", "integer"},
            {"minimum", is_signed ? int64_t{INT32_MIN} : int64_t{0}},
            {"maximum", is_signed ? int64_t{INT32_MAX} : int64_t{UINT32_MAX}}};
}

OrderedJson type_schema(const Field &field) {
    switch (field.kind) {
        case FieldKind::kText:
            return {{"type", "string"}, {"maxLength", field.size - 1}};
        case FieldKind::kInt32Array:
            return {{"type", "array"},
                    {"items", number_schema(FieldKind::kInt32)},
                    {"minItems", field.size / 4},
                    {"maxItems", field.size / 4}};
        case FieldKind::kInt32:
        case FieldKind::kUint32:
            break;
    }
    return number_schema(field.kind);
}

/** The default as a value, where it is one: some are told in words ("position"). */
void add_default(const Field &field, OrderedJson &schema) {
    if (field.kind == FieldKind::kText) {
        // A text whose default depends on its place is described, not stated.
        if (std::string_view(field.default_value).find(" by ") == std::string_view::npos &&
            std::string_view(field.name) != "if_name") {
            schema["default"] = field.default_value;
        }
        return;
    }
    const std::string text = field.kind == FieldKind::kInt32Array
                                 ? "[" + std::string(field.default_value) + "]"
                                 : field.default_value;
    OrderedJson value = OrderedJson::parse(text, nullptr, false);
    if (!value.is_discarded()) schema["default"] = std::move(value);
}

std::string description(const Field &field) {
    std::string text = field.meaning;
    if (*field.unit) text += std::string("; in ") + field.unit;
    if (*field.range) text += std::string("; ") + field.range;
    if (*field.default_value) text += std::string("; default ") + field.default_value;
    return text;
}

OrderedJson reserved_schema(const Span &span) {
    return {{"type", "string"},
            {"pattern", "^([0-9A-Fa-f]{2})*$"},
            {"maxLength", span.size * 2},
            {"description", "bytes that no field names, as hexadecimal; carried unchanged"}};
}

}  // namespace

OrderedJson record_json_schema(const Record &record) {
    OrderedJson properties = OrderedJson::object();
    for (size_t i = 0; i < record.field_count; ++i) {
        const Field &field = record.fields[i];
        OrderedJson schema = type_schema(field);
        schema["description"] = description(field);
        add_default(field, schema);
        properties[field.name] = std::move(schema);
    }
    Span span{};
    for (uint32_t offset = 0; next_reserved_span(record, offset, &span);
         offset = span.offset + span.size) {
        properties["reserved_" + std::to_string(span.offset)] = reserved_schema(span);
    }
    return {{"title", record.name},
            {"description", record.meaning},
            {"type", "object"},
            {"properties", std::move(properties)},
            {"additionalProperties", false}};
}

}  // namespace record_codec
