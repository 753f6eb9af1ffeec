#include "arrangement_query.h"

#include <nlohmann/json.hpp>

#include "wnd_split.h"

namespace vdevice {
namespace {

using nlohmann::json;

/** The records that a Get command returns; none on any failure. */
json records_of(const Requester &request, const char *method, const std::string &params) {
    const auto reply = request(rpc_request(1, method, params));
    const json message = json::parse(reply.value_or(""), nullptr, false);
    if (!message.is_object()) return json::array();
    const json result = message.value("result", json::array());
    return result.is_array() ? result : json::array();
}

template <typename Value>
Value member(const json &record, const char *name, Value otherwise) {
    const auto found = record.find(name);
    if (found == record.end()) return otherwise;
    const bool fits = std::is_same_v<Value, int> ? found->is_number_integer() : found->is_string();
    return fits ? found->get<Value>() : otherwise;
}

std::string key_of(const std::string &if_name) {
    return json{{"if_name", if_name}}.dump();
}

}  // namespace

std::string rpc_request(int id, const std::string &method, const std::string &params) {
    return "{\"jsonrpc\":\"2.0\",\"id\":" + std::to_string(id) + ",\"method\":\"" + method +
           "\",\"params\":" + params + "}";
}

std::string rpc_notification(const std::string &method, const std::string &params) {
    return "{\"jsonrpc\":\"2.0\",\"method\":\"" + method + "\",\"params\":" + params + "}";
}

std::string rpc_error(const std::optional<std::string> &reply) {
    if (!reply) return "no reply";
    const json message = json::parse(*reply, nullptr, false);
    if (!message.is_object()) return "not JSON: " + *reply;
    return message.contains("error") ? message["error"].dump() : "";
}

std::optional<Arrangement> query_arrangement(const Requester &request) {
    const json interfaces = records_of(request, "GetVideoOutputInterfaceParameter", "{}");
    if (interfaces.empty()) return std::nullopt;
    const json &first = interfaces[0];
    Arrangement arrangement;
    arrangement.mode = getSplitMode(member<std::string>(first, "ScreenSplitMode", "").c_str());
    const std::string if_name = member<std::string>(first, "if_name", "");
    const json layouts = records_of(request, "GetVideoOutputScreenSplitParameter", key_of(if_name));
    const int user = member<int>(first, "UserSplitIndex", -1);
    if (user >= 0 && user < int(layouts.size()) && user < kUserSplits) {
        const json &layout = layouts[size_t(user)];
        arrangement.mode = kFirstUserSplitMode + unsigned(user);
        arrangement.userWindows = member<int>(layout, "WindowNum", 0);
        arrangement.userText = member<std::string>(layout, "SplitString", "");
    }
    const json display = records_of(request, "GetVideoOutputDisplayParameter", "{}");
    if (!display.empty()) {
        const auto name = member<std::string>(display[0], "BackgroundColor", "");
        const QColor colour(QString::fromStdString(name));
        if (colour.isValid()) arrangement.background = colour;
    }
    return arrangement;
}

}  // namespace vdevice
