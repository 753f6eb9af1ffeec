#include "nn_socket.h"

#include <nanomsg/nn.h>

#include "ctl_error.h"

namespace app_guictl {
namespace {

CtlError failure(const std::string &what) {
    return CtlError(kNoAnswer, what + ": " + nn_strerror(nn_errno()));
}

/** Whether a call that returned -1 only ran out of time. */
bool timed_out() {
    return nn_errno() == ETIMEDOUT || nn_errno() == EAGAIN;
}

}  // namespace

NnSocket::NnSocket(int protocol) : m_socket(nn_socket(AF_SP, protocol)) {
    if (m_socket < 0) throw failure("cannot open a socket");
}

NnSocket::~NnSocket() {
    nn_close(m_socket);
}

void NnSocket::connect(const std::string &address) {
    if (nn_connect(m_socket, address.c_str()) < 0) throw failure("cannot connect to " + address);
}

void NnSocket::bind(const std::string &address) {
    if (nn_bind(m_socket, address.c_str()) < 0) throw failure("cannot publish on " + address);
}

void NnSocket::set_option(int option, int value) {
    if (nn_setsockopt(m_socket, NN_SOL_SOCKET, option, &value, sizeof value) < 0) {
        throw failure("cannot set a socket option");
    }
}

unsigned NnSocket::connections() const {
    return static_cast<unsigned>(nn_get_statistic(m_socket, NN_STAT_CURRENT_CONNECTIONS));
}

bool NnSocket::send(std::string_view message) {
    while (nn_send(m_socket, message.data(), message.size(), 0) < 0) {
        if (timed_out()) return false;
        if (nn_errno() != EINTR) throw failure("cannot send");
    }
    return true;
}

bool NnSocket::receive(std::string *message) {
    void *buffer = nullptr;
    int length;
    while ((length = nn_recv(m_socket, &buffer, NN_MSG, 0)) < 0) {
        if (timed_out()) return false;
        if (nn_errno() != EINTR) throw failure("cannot receive");
    }
    message->assign(static_cast<const char *>(buffer), length);
    nn_freemsg(buffer);
    return true;
}

}  // namespace app_guictl
