#include "catalogue.h"

#include <algorithm>

#include "ctl_error.h"
#include "suggest.h"

namespace app_guictl {
namespace {

bool is_one_of(Direction direction, std::initializer_list<Direction> directions) {
    return std::find(directions.begin(), directions.end(), direction) != directions.end();
}

}  // namespace

const Command &find_named(const std::string &name, std::initializer_list<Direction> directions) {
    for (const Command &command : command_protocol::kCommands) {
        if (!is_one_of(command.direction, directions)) continue;
        if (name == command.name || (name == command.record && !name.empty())) return command;
    }
    throw CtlError(kUsage, "no such command or record here: " + name +
                               did_you_mean(name, names_of(directions)));
}

std::vector<std::string> names_of(std::initializer_list<Direction> directions) {
    std::vector<std::string> names;
    for (const Command &command : command_protocol::kCommands) {
        if (!is_one_of(command.direction, directions)) continue;
        names.emplace_back(command.name);
        if (command.record[0] != '\0') names.emplace_back(command.record);
    }
    return names;
}

const Record &find_record_named(const std::string &name) {
    if (const Record *record = record_codec::find_record(name)) return *record;
    throw CtlError(kUsage, "no such record: " + name + did_you_mean(name, record_names()));
}

const Record &record_of(const Command &command) {
    return *record_codec::find_record(command.record);
}

std::vector<std::string> record_names() {
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i)
        names.emplace_back(records[i].name);
    return names;
}

std::vector<std::string> field_names(const Record &record) {
    std::vector<std::string> names;
    for (size_t i = 0; i < record.field_count; ++i)
        names.emplace_back(record.fields[i].name);
    return names;
}

const char *key_noun(KeyKind key) {
    constexpr const char *kNouns[] = {"", "interface", "interface", "channel"};
    return kNouns[static_cast<size_t>(key)];
}

}  // namespace app_guictl
