/**
 * @file ask.h
 * Sends texts to the protocol library and looks at its replies.
 */
#ifndef TESTS_COMMAND_PROTOCOL_ASK_H
#define TESTS_COMMAND_PROTOCOL_ASK_H

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "command_protocol/command_protocol.h"

using Json = nlohmann::ordered_json;

/** The reply's text, "" for none. */
inline std::string ask_text(std::string_view message) {
    char *response = nullptr;
    const int status = parse_command_and_get_response_with_len(
        message.data(), static_cast<int>(message.size()), 1, &response);
    std::string text = response != nullptr ? response : "";
    std::free(response);
    return status == 0 ? text : "status " + std::to_string(status);
}

/** The reply as JSON; discarded when it is none. */
inline Json ask(std::string_view message) {
    return Json::parse(ask_text(message), nullptr, false);
}

/** A request with id 1. */
inline std::string request(const std::string &method, const std::string &params = "{}") {
    return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}";
}

/** The code of a reply's error, 0 when it is none. */
inline int error_code(const Json &reply) {
    return reply.is_object() && reply.contains("error") ? reply["error"]["code"].get<int>() : 0;
}

/** Whether a reply of one message is as JSON-RPC 2.0 wants it. */
inline bool is_response(const Json &reply) {
    if (!reply.is_object() || reply.size() != 3 || !reply.contains("id")) return false;
    if (!reply.contains("jsonrpc") || reply["jsonrpc"] != "2.0") return false;
    const Json &id = reply["id"];
    if (!id.is_null() && !id.is_string() && !id.is_number()) return false;
    if (reply.contains("result")) return true;
    return reply.contains("error") && reply["error"]["code"].is_number_integer() &&
           reply["error"]["message"].is_string();
}

#endif
