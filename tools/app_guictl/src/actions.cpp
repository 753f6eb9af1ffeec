#include "actions.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>

#include "catalogue.h"
#include "completion.h"
#include "ctl_error.h"
#include "edits.h"
#include "suggest.h"

namespace app_guictl {
namespace {

constexpr const char *kEveryKey = "all";
constexpr const char *kUserLayout = "user";

/** The member of `params` that holds the key; an empty object for every key. */
Json key_params(const Command &command, const std::string &key) {
    Json params = Json::object();
    if (key.empty() || key == kEveryKey) return params;
    if (command.key == KeyKind::kNone) {
        throw CtlError(kUsage, std::string(command.name) + " takes no key: " + key);
    }
    params[command_protocol::key_member(command.key)] =
        command.key == KeyKind::kChannel ? Json(read_int32("channel", key)) : Json(key);
    return params;
}

Device device(const Arguments &arguments) {
    return Device(arguments.socket, arguments.timeout_ms);
}

void done(const Output &output, const Json &result) {
    if (output.is_json()) {
        output.json(result);
    } else {
        output.line("done");
    }
}

/** Takes the key off the front of a Set's arguments. */
std::string take_key(const Command &command, std::vector<std::string> *values) {
    if (command.key == KeyKind::kNone) return "";
    if (values->empty() || values->front().find('=') != std::string::npos) {
        throw CtlError(kUsage, std::string(command.name) + ": " + key_noun(command.key) +
                                   " (or \"all\") expected after the record's name");
    }
    const std::string key = values->front();
    values->erase(values->begin());
    return key;
}

std::string read_file(const std::string &path) {
    if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream file(path, std::ios::binary);
    if (!file) throw CtlError(kUsage, "cannot open " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

Json records_of_file(const std::string &path) {
    Json records = Json::parse(read_file(path), nullptr, false);
    if (records.is_object() || records.is_array()) return records;
    throw CtlError(kUsage, path + ": a JSON object or an array of them expected");
}

/** The records to send for a Set, from its file or its assignments. */
Json records_to_set(const Device &target, const Command &command, const Json &key,
                    const Arguments &arguments, const std::vector<std::string> &values) {
    if (!arguments.json_file.empty()) {
        if (!values.empty()) throw CtlError(kUsage, "--json and field=value exclude each other");
        return records_of_file(arguments.json_file);
    }
    const bool keyed = command.key != KeyKind::kNone;
    const Edit edit = read_edit(record_of(command), values, keyed);
    if (!keyed) return Json::array({single_record(edit)});
    return partial_records(edit, target.call(command.companion, key));
}

bool is_user_layout(const std::string &mode) {
    return mode.rfind(kUserLayout, 0) == 0;
}

/** The fields that select a mode: a user layout by its number, another mode by its name. */
Json mode_fields(const std::string &mode) {
    if (!is_user_layout(mode)) return {{"ScreenSplitMode", mode}, {"UserSplitIndex", -1}};
    const int32_t index = read_int32("user layout", mode.substr(std::string(kUserLayout).size()));
    if (index < 0) throw CtlError(kUsage, "a user layout counts from 0: " + mode);
    return {{"UserSplitIndex", index}};
}

struct EventProcess {
    const char *name;
    const char *address;
};

constexpr EventProcess kEventProcesses[] = {
    {"codec", "ipc:///tmp/ipc/app_codec.event"},
    {"stream", "ipc:///tmp/ipc/app_stream.event"},
};

std::string event_address(const Arguments &arguments) {
    std::vector<std::string> names;
    for (const EventProcess &process : kEventProcesses) {
        if (arguments.name == process.name) {
            return arguments.address.empty() ? process.address : arguments.address;
        }
        names.emplace_back(process.name);
    }
    throw CtlError(kUsage, "codec or stream expected, not " + arguments.name +
                               did_you_mean(arguments.name, names));
}

}  // namespace

void list(const Arguments &, const Output &output) {
    std::vector<std::vector<std::string>> rows = {{"COMMAND", "KEY", "RECORD", "EFFECT"}};
    Json array = Json::array();
    for (const Command &command : command_protocol::kCommands) {
        const char *key = key_noun(command.key);
        rows.push_back({command.name, *key ? key : "-", *command.record ? command.record : "-",
                        command.meaning});
        array.push_back({{"command", command.name},
                         {"key", key},
                         {"record", command.record},
                         {"effect", command.meaning}});
    }
    if (output.is_json()) {
        output.json(array);
    } else {
        output.table(rows);
    }
}

void get(const Arguments &arguments, const Output &output) {
    const Command &command = find_named(arguments.name, {Direction::kGet});
    const Json records = device(arguments).call(command.name, key_params(command, arguments.key));
    if (output.is_json()) {
        output.json(records);
    } else {
        output.records(command.record, records);
    }
}

void set(const Arguments &arguments, const Output &output) {
    const Command &command = find_named(arguments.name, {Direction::kSet, Direction::kEvent});
    std::vector<std::string> values = arguments.values;
    Json params = key_params(command, take_key(command, &values));
    const Device target = device(arguments);
    params["records"] = records_to_set(target, command, params, arguments, values);
    done(output, target.call(command.name, params));
}

void upload(const Arguments &arguments, const Output &output) {
    const Command &command = find_named("UploadWatermarkPicture", {Direction::kUpload});
    done(output, device(arguments).call(command.name, {{"if_name", arguments.name}}));
}

void split(const Arguments &arguments, const Output &output) {
    const Command &command = find_named("VideoOutputInterfaceParameter", {Direction::kSet});
    const Json key = key_params(command, arguments.name);
    const Json fields = mode_fields(arguments.text);
    const Device target = device(arguments);
    Json params = key;
    params["records"] = Json(target.call(command.companion, key).size(), fields);
    done(output, target.call(command.name, params));
}

void ping(const Arguments &arguments, const Output &output) {
    const auto start = std::chrono::steady_clock::now();
    Json result = device(arguments).call("Keepalive", Json::object());
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    if (!result.is_object()) throw CtlError(kNoAnswer, "the answer tells no process");
    if (output.is_json()) {
        result["round_trip_ms"] = taken.count();
        output.json(result);
        return;
    }
    char time[32];
    std::snprintf(time, sizeof time, "%.2f ms", taken.count());
    output.line(printable(result.value("process", std::string("?"))) + " pid " +
                result.value("pid", Json()).dump() + ", running for " +
                result.value("uptime_s", Json()).dump() + " s, answered in " + time);
}

void publish_event(const Arguments &arguments, const Output &output) {
    const std::string address = event_address(arguments);
    const Command &command = find_named(arguments.text, {Direction::kEvent});
    const Json record = single_record(read_edit(record_of(command), arguments.values, false));
    publish(address, notification_text(command.name, {{"records", Json::array({record})}}),
            arguments.timeout_ms, arguments.linger_ms);
    done(output, 0);
}

void call(const Arguments &arguments, const Output &output) {
    const std::string answer = device(arguments).exchange(arguments.text);
    const Json reply = Json::parse(answer, nullptr, false);
    if (reply.is_discarded()) throw CtlError(kNoAnswer, "the answer is no JSON");
    output.json(reply);
    if (reply.is_object() && reply.contains("error")) throw CtlError(kRefused, "refused");
}

void discover(const Arguments &arguments, const Output &output) {
    output.json(device(arguments).call("rpc.discover", Json::object()));
}

void schema(const Arguments &arguments, const Output &output) {
    Json document = {{"$schema", "https://json-schema.org/draft/2020-12/schema"}};
    document.update(record_codec::record_json_schema(find_record_named(arguments.name)));
    output.json(document);
}

void completion(const Arguments &arguments, const Output &output) {
    output.line(completion_script(arguments.name));
}

}  // namespace app_guictl
