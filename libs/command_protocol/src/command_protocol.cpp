#include "command_protocol/command_protocol.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "json_rpc.h"

namespace {

constexpr int kInvalidArgument = -2;
constexpr int kOutOfMemory = -6;

std::string_view without_trailing_nul(std::string_view message) {
    if (!message.empty() && message.back() == '\0') message.remove_suffix(1);
    return message;
}

/** Calls `answer` and hands its reply over in memory of malloc(). */
template <class Answer>
int reply_with(Answer answer, std::string_view message, char **response) {
    const std::string reply = answer(message);
    if (reply.empty()) return 0;
    *response = static_cast<char *>(std::malloc(reply.size() + 1));
    if (*response == nullptr) throw std::bad_alloc();
    std::memcpy(*response, reply.c_str(), reply.size() + 1);
    return 0;
}

}  // namespace

extern "C" int parse_command_and_get_response_with_len(const char *message, int length, int /*one*/,
                                                       char **response) {
    if (message == nullptr || length < 0 || response == nullptr) return kInvalidArgument;
    *response = nullptr;
    const auto text = without_trailing_nul({message, static_cast<size_t>(length)});
    // The only thing that is ever thrown is std::bad_alloc.
    try {
        return reply_with(command_protocol::answer_message, text, response);
    } catch (...) {
    }
    // What the message took is free again; a client that waits is to know.
    try {
        reply_with(command_protocol::answer_out_of_memory, text, response);
    } catch (...) {
    }
    return kOutOfMemory;
}
