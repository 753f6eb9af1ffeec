// Messages of any content reach the real command handlers, the store and the main window. An input
// is one message, or several with an empty line between them. A message is answered with nothing or
// with a JSON-RPC response.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command_protocol/command_protocol.h"
#include "device_store.h"

using nlohmann::json;

namespace {

bool is_response(const json &value) {
    return value.is_object() && value.size() == 3 && value.contains("id") &&
           value.value("jsonrpc", json()) == "2.0" &&
           value.contains("result") != value.contains("error");
}

bool is_answer(const json &value) {
    if (!value.is_array()) return is_response(value);
    return !value.empty() && std::all_of(value.begin(), value.end(), is_response);
}

void serve(const std::string &message) {
    char *reply = nullptr;
    const int result = parse_command_and_get_response_with_len(
        message.data(), static_cast<int>(message.size()), 1, &reply);
    fuzz::require(result == 0, "a message is served");
    if (reply != nullptr) {
        fuzz::require(is_answer(json::parse(reply, nullptr, false)),
                      "a reply is a JSON-RPC response or an array of them");
    }
    std::free(reply);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static fuzz::DeviceStore store;
    store.restore();
    fuzz::Input input(data, size);
    while (!input.empty()) {
        serve(input.until("\n\n"));
        store.display();
    }
    return 0;
}
