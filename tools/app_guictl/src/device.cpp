#include "device.h"

#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <nanomsg/reqrep.h>

#include <chrono>
#include <thread>

#include "ctl_error.h"
#include "nn_socket.h"

namespace app_guictl {
namespace {

/** A reply with all user layouts and texts of a device stays far below. */
constexpr int kMaxReply = 64 << 20;

Json message(std::string_view method, const Json &params) {
    return {{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
}

std::string dump(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string error_text(const Json &error) {
    const Json text = error.value("message", Json());
    const Json code = error.value("code", Json());
    return (text.is_string() ? text.get<std::string>() : "refused") + " (" + dump(code) + ")";
}

}  // namespace

std::string request_text(std::string_view method, const Json &params) {
    Json request = message(method, params);
    request["id"] = 1;
    return dump(request);
}

std::string notification_text(std::string_view method, const Json &params) {
    return dump(message(method, params));
}

Device::Device(std::string address, int timeout_ms)
    : m_address(std::move(address)), m_timeout_ms(timeout_ms) {}

std::string Device::exchange(std::string_view text) const {
    NnSocket socket(NN_REQ);
    socket.set_option(NN_SNDTIMEO, m_timeout_ms);
    socket.set_option(NN_RCVTIMEO, m_timeout_ms);
    socket.set_option(NN_RCVMAXSIZE, kMaxReply);
    socket.connect(m_address);
    std::string answer;
    if (!socket.send(text) || !socket.receive(&answer)) {
        throw CtlError(kNoAnswer, "no answer from " + m_address + " within " +
                                      std::to_string(m_timeout_ms) + " ms");
    }
    if (!answer.empty() && answer.back() == '\0') answer.pop_back();
    return answer;
}

Json Device::call(std::string_view method, const Json &params) const {
    const Json reply = Json::parse(exchange(request_text(method, params)), nullptr, false);
    if (reply.is_object() && reply.contains("result")) return reply["result"];
    if (reply.is_object() && reply.contains("error") && reply["error"].is_object()) {
        throw CtlError(kRefused, error_text(reply["error"]));
    }
    throw CtlError(kNoAnswer, "the answer from " + m_address + " is no JSON-RPC response");
}

void publish(const std::string &address, std::string_view text, int timeout_ms, int linger_ms) {
    using std::chrono::milliseconds;
    NnSocket socket(NN_PUB);
    socket.bind(address);
    const auto deadline = std::chrono::steady_clock::now() + milliseconds(timeout_ms);
    while (socket.connections() == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            throw CtlError(kNoAnswer, "nobody subscribed to " + address + " within " +
                                          std::to_string(timeout_ms) + " ms");
        }
        std::this_thread::sleep_for(milliseconds(1));
    }
    if (!socket.send(text)) throw CtlError(kNoAnswer, "cannot send on " + address);
    std::this_thread::sleep_for(milliseconds(linger_ms));
}

}  // namespace app_guictl
