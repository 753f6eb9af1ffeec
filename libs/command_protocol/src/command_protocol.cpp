#include "command_protocol/command_protocol.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "json_rpc.h"

namespace {

constexpr int kInvalidArgument = -2;
constexpr int kOutOfMemory = -6;

std::string_view without_trailing_nul(std::string_view message) {
    if (!message.empty() && message.back() == '\0') message.remove_suffix(1);
    return message;
}

}  // namespace

extern "C" int parse_command_and_get_response_with_len(const char *message, int length, int /*one*/,
                                                       char **response) try {
    if (message == nullptr || length < 0 || response == nullptr) return kInvalidArgument;
    *response = nullptr;
    const std::string reply = command_protocol::answer_message(
        without_trailing_nul({message, static_cast<size_t>(length)}));
    if (reply.empty()) return 0;
    *response = static_cast<char *>(std::malloc(reply.size() + 1));
    if (*response == nullptr) return kOutOfMemory;
    std::memcpy(*response, reply.c_str(), reply.size() + 1);
    return 0;
} catch (...) {
    return kOutOfMemory;  // the only thing that is ever thrown is std::bad_alloc
}
