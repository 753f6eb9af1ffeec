#include "discovery.h"

#include "command_call.h"
#include "failure.h"
#include "params.h"
#include "record_codec/record_json.h"

namespace command_protocol {
namespace {

using Json = record_codec::OrderedJson;

Json reference(const std::string &component) {
    return {{"$ref", "#/components/" + component}};
}

Json record_reference(const Command &command) {
    return reference("schemas/" + std::string(command.record));
}

Json array_of_records(const Command &command) {
    return {{"type", "array"}, {"items", record_reference(command)}, {"maxItems", kMaxRecords}};
}

Json records_schema(const Command &command) {
    Json list = array_of_records(command);
    if (command.direction == Direction::kEvent) {
        list["minItems"] = 1;
        list["maxItems"] = 1;
    }
    return {{"oneOf", {std::move(list), record_reference(command)}}};
}

Json parameter(const char *name, const char *description, bool required, Json schema) {
    return {{"name", name},
            {"description", description},
            {"required", required},
            {"schema", std::move(schema)}};
}

/** The parameter that holds the key; one row per kind of key. */
Json key_parameter(KeyKind key) {
    const char *name = key_member(key);
    switch (key) {
        case KeyKind::kInterface:
            return parameter(
                name, "video output interface, empty for every one", false,
                {{"type", "string"}, {"maxLength", kMaxInterfaceName}, {"default", ""}});
        case KeyKind::kOneInterface:
            return parameter(name, "video output interface", true,
                             {{"type", "string"}, {"maxLength", kMaxInterfaceName}});
        case KeyKind::kChannel:
            return parameter(name, "window, -1 for every one", false,
                             {{"type", "integer"},
                              {"minimum", INT32_MIN},
                              {"maximum", INT32_MAX},
                              {"default", -1}});
        case KeyKind::kNone:
            break;
    }
    return nullptr;
}

Json parameters(const Command &command) {
    Json list = Json::array();
    if (command.key != KeyKind::kNone) list.push_back(key_parameter(command.key));
    if (command.direction == Direction::kSet) {
        list.push_back(parameter("records",
                                 "as many records as the Get of the same key answers; fields that "
                                 "are left out keep their value",
                                 true, records_schema(command)));
    } else if (command.direction == Direction::kEvent) {
        list.push_back(parameter("records", "one record; fields that are left out are zero", true,
                                 records_schema(command)));
    }
    return list;
}

Json keepalive_schema() {
    return {{"type", "object"},
            {"properties",
             {{"process", {{"type", "string"}}},
              {"pid", {{"type", "integer"}}},
              {"uptime_s", {{"type", "integer"}, {"minimum", 0}}}}},
            {"required", {"process", "pid", "uptime_s"}}};
}

Json result(const Command &command) {
    switch (command.direction) {
        case Direction::kGet:
            return {{"name", "records"}, {"schema", array_of_records(command)}};
        case Direction::kKeepalive:
            return {{"name", "process"}, {"schema", keepalive_schema()}};
        case Direction::kDiscover:
            return {{"name", "OpenRPC document"}, {"schema", {{"type", "object"}}}};
        case Direction::kSet:
        case Direction::kEvent:
        case Direction::kUpload:
            break;
    }
    return {{"name", "status"}, {"schema", {{"const", 0}}}};
}

/** Statuses of the handlers that a message can meet; the library's own commands have none. */
constexpr int kStatuses[] = {-1, -2, -4, -6, -7, -8};

Json method(const Command &command) {
    Json entry = {{"name", command.name},
                  {"summary", command.meaning},
                  {"paramStructure", "by-name"},
                  {"params", parameters(command)},
                  {"result", result(command)}};
    const bool answered_here =
        command.direction == Direction::kKeepalive || command.direction == Direction::kDiscover;
    if (answered_here) return entry;
    for (const int status : kStatuses) {
        entry["errors"].push_back(reference("errors/status" + std::to_string(status)));
    }
    return entry;
}

Json components() {
    Json errors = Json::object();
    for (const int status : kStatuses) {
        errors["status" + std::to_string(status)] = {{"code", status},
                                                     {"message", status_meaning(status)}};
    }
    Json schemas = Json::object();
    size_t count = 0;
    const record_codec::Record *records = record_codec::all_records(&count);
    for (size_t i = 0; i < count; ++i) {
        schemas[records[i].name] = record_codec::record_json_schema(records[i]);
    }
    return {{"schemas", std::move(schemas)}, {"errors", std::move(errors)}};
}

}  // namespace

std::string discovery_document() {
    Json methods = Json::array();
    for (const Command &command : kCommands) {
        if (is_served(command)) methods.push_back(method(command));
    }
    const Json document = {
        {"openrpc", "1.2.6"},
        {"info",
         {{"title", "app_gui"},
          {"description", "Display parameters of the video decoder's on-screen display"},
          {"version", COMMAND_PROTOCOL_VERSION}}},
        {"methods", std::move(methods)},
        {"components", components()}};
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace command_protocol
