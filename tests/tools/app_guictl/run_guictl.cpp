#include "run_guictl.h"

#include <fcntl.h>
#include <nanomsg/nn.h>
#include <nanomsg/reqrep.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "command_protocol/command_protocol.h"

namespace {

[[noreturn]] void become_guictl(const std::vector<std::string> &arguments,
                                const std::vector<std::string> &environment) {
    unsetenv("NO_COLOR");
    setenv("TERM", "xterm", 1);
    for (const std::string &variable : environment) {
        const size_t equals = variable.find('=');
        setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
    }
    std::vector<char *> argv = {const_cast<char *>("app_guictl")};
    for (const std::string &argument : arguments) {
        argv.push_back(const_cast<char *>(argument.c_str()));
    }
    argv.push_back(nullptr);
    execv(APP_GUICTL_PROGRAM, argv.data());
    _exit(127);
}

int exit_code(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/** Reads two descriptors until both are at their end. */
void read_all(int out, int err, Outcome *run) {
    pollfd fds[] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    std::string *texts[] = {&run->out, &run->err};
    char buffer[4096];
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        poll(fds, 2, -1);
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) continue;
            const ssize_t length = read(fds[i].fd, buffer, sizeof buffer);
            if (length <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;
            } else {
                texts[i]->append(buffer, length);
            }
        }
    }
}

}  // namespace

Outcome run_guictl(const std::vector<std::string> &arguments, const std::string &input,
                   const std::vector<std::string> &environment) {
    int in[2], out[2], err[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        std::abort();
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        become_guictl(arguments, environment);
    }
    for (int end : {in[0], out[1], err[1]}) {
        close(end);
    }
    if (write(in[1], input.data(), input.size()) < 0) std::perror("write");
    close(in[1]);
    Outcome run = {};
    read_all(out[0], err[0], &run);
    run.status = exit_code(child);
    return run;
}

Outcome run_guictl_on_terminal(const std::vector<std::string> &arguments,
                               const std::vector<std::string> &environment) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) become_guictl(arguments, environment);
    Outcome run = {};
    read_all(terminal, -1, &run);
    run.status = exit_code(child);
    return run;
}

TempFolder::TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "guictl.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    m_path = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

DeviceThread::DeviceThread(const std::string &address) : m_socket(nn_socket(AF_SP, NN_REP)) {
    const int poll_ms = 20;
    nn_setsockopt(m_socket, NN_SOL_SOCKET, NN_RCVTIMEO, &poll_ms, sizeof poll_ms);
    if (nn_bind(m_socket, address.c_str()) < 0) std::abort();
    m_thread = std::thread(&DeviceThread::serve, this);
}

DeviceThread::~DeviceThread() {
    m_stop = true;
    m_thread.join();
    nn_close(m_socket);
}

void DeviceThread::serve() {
    while (!m_stop) {
        void *message = nullptr;
        const int length = nn_recv(m_socket, &message, NN_MSG, 0);
        if (length < 0) continue;
        char *response = nullptr;
        parse_command_and_get_response_with_len(static_cast<char *>(message), length, 1, &response);
        if (response != nullptr) nn_send(m_socket, response, std::strlen(response) + 1, 0);
        std::free(response);
        nn_freemsg(message);
    }
}
