#include "edits.h"

#include <charconv>

#include "ctl_error.h"
#include "suggest.h"

namespace app_guictl {
namespace {

using record_codec::Field;
using record_codec::FieldKind;

constexpr const char *kIndexField = "Index";

int64_t read_number(const std::string &what, const std::string &text) {
    int64_t number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) {
        throw CtlError(kUsage, what + ": \"" + text + "\" is no decimal number");
    }
    return number;
}

Json read_numbers(const std::string &what, const std::string &text) {
    Json numbers = Json::array();
    size_t from = 0;
    for (size_t comma; (comma = text.find(',', from)) != std::string::npos; from = comma + 1) {
        numbers.push_back(read_number(what, text.substr(from, comma - from)));
    }
    numbers.push_back(read_number(what, text.substr(from)));
    return numbers;
}

Json read_value(const Record &record, const std::string &name, const std::string &text) {
    const Field *field = record_codec::find_field(record, name);
    if (field == nullptr || field->kind == FieldKind::kText) return text;
    return field->kind == FieldKind::kInt32Array ? read_numbers(name, text)
                                                 : Json(read_number(name, text));
}

/** The same value as the record library takes it. */
record_codec::Json plain_json(const std::string &name, const Json &value) try {
    return record_codec::Json::parse(value.dump());
} catch (const Json::type_error &) {
    throw CtlError(kUsage, name + ": the text is not UTF-8");
}

/** Tries the value on an empty record: the tables of fields know every rule. */
void check_value(const Record &record, const std::string &name, const Json &value) {
    std::vector<char> bytes(record.size);
    record_codec::RecordError error;
    const record_codec::Json object = {{name, plain_json(name, value)}};
    if (record_codec::json_to_record(record, object, record_codec::UnknownMembers::kRefuse,
                                     bytes.data(), &error)) {
        return;
    }
    throw CtlError(kUsage, error.field + ": " + error.reason +
                               (record_codec::find_field(record, name) != nullptr
                                    ? ""
                                    : did_you_mean(name, field_names(record))));
}

/** Takes "[i]." off the front of an argument. */
std::optional<size_t> take_position(std::string *argument) {
    const size_t close = argument->find("].");
    if (argument->empty() || argument->front() != '[' || close == std::string::npos) return {};
    const int64_t position = read_number("position", argument->substr(1, close - 1));
    if (position < 0) throw CtlError(kUsage, "a position counts from 0: " + *argument);
    argument->erase(0, close + 2);
    return static_cast<size_t>(position);
}

Assignment read_assignment(const Record &record, std::string argument) {
    Assignment assignment;
    assignment.position = take_position(&argument);
    const size_t equals = argument.find('=');
    if (equals == std::string::npos) {
        throw CtlError(kUsage, "field=value expected, not \"" + argument + "\"");
    }
    assignment.field = argument.substr(0, equals);
    const std::string text = argument.substr(equals + 1);
    assignment.value = read_value(record, assignment.field, text);
    check_value(record, assignment.field, assignment.value);
    return assignment;
}

bool is_selected(const Edit &edit, const Json &record) {
    return !edit.index || (record.is_object() && record.value(kIndexField, Json()) == *edit.index);
}

std::string known_indexes(const Json &current) {
    std::string list;
    for (const Json &record : current) {
        if (!record.is_object()) continue;
        const std::string index = record.value(kIndexField, Json()).dump();
        if (list.find(index) == std::string::npos) list += (list.empty() ? "" : ", ") + index;
    }
    return list;
}

}  // namespace

int32_t read_int32(const std::string &what, const std::string &text) {
    const int64_t number = read_number(what, text);
    if (number < INT32_MIN || number > INT32_MAX) {
        throw CtlError(kUsage, what + ": " + text + " is out of range");
    }
    return static_cast<int32_t>(number);
}

Edit read_edit(const Record &record, const std::vector<std::string> &arguments, bool may_select) {
    const bool has_index = may_select && record_codec::find_field(record, kIndexField) != nullptr;
    Edit edit;
    for (const std::string &argument : arguments) {
        Assignment assignment = read_assignment(record, argument);
        if (!has_index || assignment.position || assignment.field != kIndexField) {
            edit.assignments.push_back(std::move(assignment));
            continue;
        }
        if (edit.index) throw CtlError(kUsage, "Index is given twice");
        edit.index = assignment.value.get<int32_t>();
    }
    if (edit.assignments.empty()) throw CtlError(kUsage, "nothing to change: field=value expected");
    return edit;
}

Json single_record(const Edit &edit) {
    Json record = Json::object();
    for (const Assignment &assignment : edit.assignments) {
        if (assignment.position)
            throw CtlError(kUsage, "this takes one record: no [i]. is possible");
        record[assignment.field] = assignment.value;
    }
    return record;
}

Json partial_records(const Edit &edit, const Json &current) {
    Json partial(current.size(), Json::object());
    bool selected = current.empty();
    for (size_t i = 0; i < current.size(); ++i) {
        selected = selected || is_selected(edit, current[i]);
    }
    if (!selected) {
        throw CtlError(kUsage, "no record with Index=" + std::to_string(*edit.index) +
                                   "; there are " + known_indexes(current));
    }
    for (const Assignment &assignment : edit.assignments) {
        if (assignment.position && *assignment.position >= current.size()) {
            throw CtlError(kUsage, "no record [" + std::to_string(*assignment.position) +
                                       "]; there are " + std::to_string(current.size()));
        }
        for (size_t i = 0; i < current.size(); ++i) {
            const bool meant =
                assignment.position ? *assignment.position == i : is_selected(edit, current[i]);
            if (meant) partial[i][assignment.field] = assignment.value;
        }
    }
    return partial;
}

}  // namespace app_guictl
