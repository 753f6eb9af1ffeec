#include "params.h"

#include "json_scan.h"

namespace command_protocol {
namespace {

constexpr bool takes_records(const Command &command) {
    return command.direction == Direction::kSet || command.direction == Direction::kEvent;
}

constexpr bool takes_if_name(const Command &command) {
    return command.key == KeyKind::kInterface || command.key == KeyKind::kOneInterface;
}

constexpr bool takes_channel(const Command &command) {
    return command.key == KeyKind::kChannel;
}

constexpr bool needs_if_name(const Command &command) {
    return command.key == KeyKind::kOneInterface;
}

constexpr bool needs_no_channel(const Command &) {
    return false;
}

/** The readers return why the value will not do, "" when it does. */
std::string read_if_name(std::string_view value, Params *out) {
    if (json_type(value) != JsonType::kString) return "must be a text";
    out->if_name = json_string(value);
    if (out->if_name.find('\0') != std::string::npos) return "must not contain NUL";
    if (out->if_name.size() > kMaxInterfaceName) {
        return std::to_string(out->if_name.size()) + " bytes do not fit into " +
               std::to_string(kMaxInterfaceName);
    }
    return "";
}

std::string read_channel(std::string_view value, Params *out) {
    if (json_type(value) != JsonType::kNumber) return "must be a number";
    return json_int32(value, &out->channel) ? "" : "must be a 32-bit integer";
}

std::string read_records(std::string_view value, Params *out) {
    out->records.clear();
    if (json_type(value) == JsonType::kObject) {
        out->records.push_back(value);
        return "";
    }
    if (json_type(value) != JsonType::kArray) return "must be an array of records or one record";
    for (ArrayWalk walk(value); walk.next();) {
        if (out->records.size() == kMaxRecords) {
            return "more than " + std::to_string(kMaxRecords) + " given";
        }
        out->records.push_back(walk.value());
    }
    return "";
}

/** One row for every member that any command has. */
struct Member {
    std::string_view name;
    bool (*taken)(const Command &);   ///< whether the command has it
    bool (*needed)(const Command &);  ///< whether it may not be left out
    std::string (*read)(std::string_view value, Params *out);
};

constexpr Member kMembers[] = {
    {"if_name", takes_if_name, needs_if_name, read_if_name},
    {"Channel", takes_channel, needs_no_channel, read_channel},
    {"records", takes_records, takes_records, read_records},
};
constexpr size_t kMemberCount = sizeof(kMembers) / sizeof(kMembers[0]);

size_t find_member(const Command &command, std::string_view name) {
    size_t i = 0;
    while (i < kMemberCount && (kMembers[i].name != name || !kMembers[i].taken(command)))
        ++i;
    return i;
}

bool fail(Failure *failure, std::string_view field, std::string reason) {
    *failure = invalid_params(shown(field), std::move(reason));
    return false;
}

bool read_object(const Command &command, std::string_view object, Params *out, bool *given,
                 Failure *failure) {
    for (ObjectWalk walk(object); walk.next();) {
        const size_t i = find_member(command, walk.name());
        if (i == kMemberCount) return fail(failure, walk.name(), "unknown parameter");
        std::string reason = kMembers[i].read(walk.value(), out);
        if (!reason.empty()) return fail(failure, walk.name(), std::move(reason));
        given[i] = true;
    }
    return true;
}

}  // namespace

bool read_params(const Command &command, std::string_view text, Params *out, Failure *failure) {
    bool given[kMemberCount] = {};
    if (!text.empty() && json_type(text) == JsonType::kArray) {
        if (ArrayWalk(text).next()) return fail(failure, "params", "parameters are given by name");
    } else if (!text.empty() && !read_object(command, text, out, given, failure)) {
        return false;
    }
    for (size_t i = 0; i < kMemberCount; ++i) {
        if (kMembers[i].needed(command) && !given[i]) {
            return fail(failure, kMembers[i].name, "missing");
        }
    }
    return true;
}

}  // namespace command_protocol
