#include "echo_process.h"

#include <nanomsg/nn.h>
#include <nanomsg/reqrep.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

[[noreturn]] void serve(const std::string &address) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int socket = nn_socket(AF_SP, NN_REP);
    if (nn_bind(socket, address.c_str()) < 0) _exit(1);
    std::string reply;
    for (;;) {
        void *message = nullptr;
        const int length = nn_recv(socket, &message, NN_MSG, 0);
        if (length < 0) _exit(1);
        uint32_t reply_length = 0;
        std::memcpy(&reply_length, message, std::min<size_t>(length, sizeof reply_length));
        nn_freemsg(message);
        reply.resize(reply_length);
        nn_send(socket, reply.data(), reply.size(), 0);
    }
}

}  // namespace

std::string echo_request(size_t length, uint32_t reply_length) {
    std::string text(std::max(length, sizeof reply_length), '\0');
    std::memcpy(text.data(), &reply_length, sizeof reply_length);
    return text;
}

EchoProcess::EchoProcess() {
    char folder[] = "/tmp/command_roundtrip.XXXXXX";
    if (mkdtemp(folder) == nullptr) throw std::runtime_error("cannot make a folder in /tmp");
    m_folder = folder;
    m_address = "ipc://" + m_folder + "/echo";
    m_child = fork();
    if (m_child == 0) serve(m_address);
}

EchoProcess::~EchoProcess() {
    kill(m_child, SIGKILL);
    waitpid(m_child, nullptr, 0);
    unlink((m_folder + "/echo").c_str());
    rmdir(m_folder.c_str());
}
