#include "configuration_markdown.h"

#include <stdexcept>

#include "configuration_files.h"
#include "record_codec/record_schema.h"

namespace configuration_doc {
namespace {

using record_codec::Field;
using record_codec::FieldKind;
using record_codec::Record;
using record_codec::Span;

std::string type_name(const Field &field) {
    switch (field.kind) {
        case FieldKind::kInt32:
            return "int32";
        case FieldKind::kUint32:
            return "uint32";
        case FieldKind::kText:
            return "text";
        case FieldKind::kInt32Array:
            break;
    }
    return "int32, " + std::to_string(field.size / 4) + " of them";
}

/** A default as a cell: an empty text is one, an empty number is none. */
std::string default_of(const Field &field) {
    if (*field.default_value) return field.default_value;
    return field.kind == FieldKind::kText ? "empty" : "none";
}

/** Text of a table's cell: nothing in it may end the cell. */
std::string cell(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '|') out += '\\';
        out += c;
    }
    return out;
}

std::string table_row(std::initializer_list<std::string_view> cells) {
    std::string row = "|";
    for (const std::string_view text : cells) {
        row += text.empty() ? " |" : " " + cell(text) + " |";
    }
    return row + "\n";
}

std::string kind_name(FileKind kind) {
    return kind == FileKind::kCapability ? "capability" : "parameter";
}

std::string form_of(const ConfigurationFile &file) {
    if (file.form == FileForm::kObject) return "one object";
    return "array of up to " + std::to_string(file.capacity);
}

std::string files_table() {
    std::string text = table_row({"", "File", "Kind", "Record", "Form", "Written by the device"});
    text += "|---|---|---|---|---|---|\n";
    size_t count = 0;
    const ConfigurationFile *files = configuration_files(&count);
    for (size_t i = 0; i < count; ++i) {
        const ConfigurationFile &file = files[i];
        text +=
            table_row({std::to_string(i + 1), "`" + std::string(file.name) + "`",
                       kind_name(file.kind), "`" + std::string(file.record) + "`", form_of(file),
                       file.kind == FileKind::kWrittenBackToFile ? "yes" : "no"});
    }
    return text;
}

std::string fields_table(const Record &record) {
    std::string text =
        table_row({"Field", "Type", "Size", "Unit", "Range", "Default", "Read by", "Meaning"});
    text += "|---|---|---|---|---|---|---|---|\n";
    for (size_t i = 0; i < record.field_count; ++i) {
        const Field &field = record.fields[i];
        text += table_row({"`" + std::string(field.name) + "`", type_name(field),
                           std::to_string(field.size), field.unit, field.range, default_of(field),
                           field.readers, field.meaning});
    }
    return text;
}

/** The sentence about the members of unnamed bytes, empty where every byte has a name. */
std::string reserved_sentence(const Record &record) {
    std::string members;
    Span span{};
    for (uint32_t at = 0; record_codec::next_reserved_span(record, at, &span);
         at = span.offset + span.size) {
        if (!members.empty()) members += ", ";
        members += "`reserved_" + std::to_string(span.offset) + "` (" + std::to_string(span.size) +
                   " bytes)";
    }
    return members.empty() ? "" : "\nBytes without a name: " + members + ".\n";
}

std::string file_section(const ConfigurationFile &file) {
    const Record *record = record_codec::find_record(file.record);
    if (!record) throw std::runtime_error("no record " + std::string(file.record));
    const std::string name(file.name);
    const std::string stem = name.substr(0, name.rfind('.'));
    std::string text = "\n### " + name + "\n\n";
    text += std::string(record->meaning) + ". A " + kind_name(file.kind) +
            " file: " + form_of(file) + " of `" + record->name + "`, " +
            std::to_string(record->size) + " bytes " +
            (file.form == FileForm::kArray ? "each " : "") + "in memory.\n" + "Schema: [" + stem +
            ".schema.json](schemas/" + stem + ".schema.json).\n\n";
    text += std::string(file.content) + "\n";
    if (!file.check.empty()) {
        text += "\nReplaced by the defaults when " + std::string(file.check) + "\n";
    }
    return text + "\n" + fields_table(*record) + reserved_sentence(*record);
}

std::string file_sections() {
    std::string text;
    size_t count = 0;
    const ConfigurationFile *files = configuration_files(&count);
    for (size_t i = 0; i < count; ++i) {
        text += file_section(files[i]);
    }
    return text.substr(1);
}

void replace_line(std::string *text, const std::string &line, const std::string &by) {
    const size_t at = text->find("\n" + line + "\n");
    if (at == std::string::npos) throw std::runtime_error("the template has no line " + line);
    text->replace(at + 1, line.size() + 1, by);
}

}  // namespace

std::string configuration_markdown(std::string text) {
    replace_line(&text, "@FILES@", files_table());
    replace_line(&text, "@FIELDS@", file_sections());
    return text;
}

}  // namespace configuration_doc
