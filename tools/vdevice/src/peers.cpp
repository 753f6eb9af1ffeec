#include "peers.h"

#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <nanomsg/reqrep.h>
#include <nanomsg/survey.h>

#include <algorithm>
#include <thread>

namespace vdevice {
namespace {

/** How long one look at a socket may take before the caller is asked whether to go on. */
constexpr Milliseconds kSlice{50};

std::string without_nul(const char *bytes, int length) {
    std::string text(bytes, static_cast<size_t>(length));
    if (!text.empty() && text.back() == '\0') text.pop_back();
    return text;
}

std::optional<std::string> receive(int socket) {
    char *message = nullptr;
    const int length = nn_recv(socket, &message, NN_MSG, NN_DONTWAIT);
    if (length < 0) return std::nullopt;
    std::string text = without_nul(message, length);
    nn_freemsg(message);
    return text;
}

/** Waits until `events` (NN_POLLIN, NN_POLLOUT) are there; false when it is no longer worth it. */
bool wait_for_socket(int socket, short events, Clock::time_point deadline,
                     const StillWorthIt &worth) {
    for (;;) {
        const auto left = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now());
        const Milliseconds slice = std::clamp(left, Milliseconds(0), kSlice);
        nn_pollfd state{socket, events, 0};
        if (nn_poll(&state, 1, static_cast<int>(slice.count())) > 0) return true;
        if (left.count() <= 0 || (worth && !worth())) return false;
    }
}

bool send(const Socket &socket, const std::string &message) {
    return nn_send(socket.id(), message.data(), message.size(), NN_DONTWAIT) >= 0;
}

bool has_peer(const Socket &socket) {
    return nn_get_statistic(socket.id(), NN_STAT_CURRENT_CONNECTIONS) > 0;
}

}  // namespace

Socket::Socket(int protocol) : m_id(nn_socket(AF_SP, protocol)) {
    // Messages of the device are small; a file of records may be some 100 KiB.
    setOption(NN_SOL_SOCKET, NN_RCVMAXSIZE, -1);
}

Socket::~Socket() {
    if (m_id >= 0) nn_close(m_id);
}

bool Socket::bind(const std::string &address, std::string *error) {
    if (nn_bind(m_id, address.c_str()) >= 0) return true;
    *error = address + ": " + nn_strerror(nn_errno());
    return false;
}

bool Socket::connect(const std::string &address, std::string *error) {
    if (nn_connect(m_id, address.c_str()) >= 0) return true;
    *error = address + ": " + nn_strerror(nn_errno());
    return false;
}

void Socket::setOption(int level, int option, int value) {
    nn_setsockopt(m_id, level, option, &value, sizeof value);
}

CommandClient::CommandClient(const std::string &address) : m_socket(NN_REQ) {
    m_socket.setOption(NN_SOL_SOCKET, NN_RECONNECT_IVL, 5);
    std::string error;  // a bad address shows as a request without reply
    m_socket.connect(address, &error);
}

std::optional<std::string> CommandClient::request(const std::string &message, Milliseconds timeout,
                                                  const StillWorthIt &worth) {
    const auto deadline = Clock::now() + timeout;
    // nanomsg holds a request back until the peer is there.
    if (!send(m_socket, message)) return std::nullopt;
    if (!wait_for_socket(m_socket.id(), NN_POLLIN, deadline, worth)) return std::nullopt;
    return receive(m_socket.id());
}

EventPublisher::EventPublisher(const std::string &address) : m_socket(NN_PUB) {
    m_socket.bind(address, &m_error);
}

bool EventPublisher::waitForSubscriber(Milliseconds timeout) const {
    return wait_until([this] { return has_peer(m_socket); }, timeout);
}

bool EventPublisher::publish(const std::string &message) {
    return send(m_socket, message);
}

KeepaliveSurveyor::KeepaliveSurveyor(const std::string &address) : m_socket(NN_SURVEYOR) {
    m_socket.bind(address, &m_error);
}

bool KeepaliveSurveyor::waitForRespondent(Milliseconds timeout) const {
    return wait_until([this] { return has_peer(m_socket); }, timeout);
}

std::optional<std::string> KeepaliveSurveyor::survey(Milliseconds timeout) {
    m_socket.setOption(NN_SURVEYOR, NN_SURVEYOR_DEADLINE, static_cast<int>(timeout.count()));
    const std::string question =
        "{\"jsonrpc\":\"2.0\",\"id\":" + std::to_string(++m_surveys) + ",\"method\":\"Keepalive\"}";
    if (!send(m_socket, question)) return std::nullopt;
    if (!wait_for_socket(m_socket.id(), NN_POLLIN, Clock::now() + timeout, nullptr)) {
        return std::nullopt;
    }
    return receive(m_socket.id());
}

bool wait_until(const std::function<bool()> &done, Milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    while (!done()) {
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(Milliseconds(1));
    }
    return true;
}

}  // namespace vdevice
