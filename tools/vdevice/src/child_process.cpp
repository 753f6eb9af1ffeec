#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>

namespace vdevice {
namespace {

int open_log(const std::string &path) {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
}

struct Streams {
    int out, err;
    int report;  ///< receives errno when the program cannot be executed
};

/** The child's side of fork(): nothing but calls that are safe there. */
[[noreturn]] void become(char *const *arguments, const Streams &streams, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);  // the parent ended before the line above
    setpgid(0, 0);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    signal(SIGPIPE, SIG_DFL);
    const int empty = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(empty, STDIN_FILENO);
    dup2(streams.out, STDOUT_FILENO);
    dup2(streams.err, STDERR_FILENO);
    execvp(arguments[0], arguments);
    const int error = errno;
    if (write(streams.report, &error, sizeof error) < 0) _exit(126);
    _exit(127);
}

pid_t spawn(const std::vector<std::string> &command, const Streams &streams) {
    std::vector<char *> arguments;
    for (const std::string &argument : command) {
        arguments.push_back(const_cast<char *>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) become(arguments.data(), streams, parent);
    if (pid > 0) setpgid(pid, pid);  // both sides do it: neither waits for the other
    return pid;
}

/** Reads what become() reported; 0 when the program was executed. */
int execution_error(int report) {
    int error = 0;
    ssize_t bytes;
    do {
        bytes = read(report, &error, sizeof error);
    } while (bytes < 0 && errno == EINTR);
    return bytes == static_cast<ssize_t>(sizeof error) ? error : 0;
}

}  // namespace

bool ChildProcess::start(const std::vector<std::string> &command, const std::string &out,
                         const std::string &err, std::string *error) {
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        *error = std::string("pipe: ") + std::strerror(errno);
        return false;
    }
    const Streams streams{open_log(out), open_log(err), report[1]};
    int failure = streams.out < 0 || streams.err < 0 ? errno : 0;
    if (failure == 0) {
        m_status = -1;
        m_pid = spawn(command, streams);
        if (m_pid < 0) failure = errno;
    }
    close(streams.out);
    close(streams.err);
    close(report[1]);
    if (failure == 0) failure = execution_error(report[0]);
    close(report[0]);
    if (failure == 0) return true;
    if (m_pid > 0) wait(Milliseconds(-1));
    m_pid = 0;
    *error = command[0] + ": " + std::strerror(failure);
    return false;
}

void ChildProcess::reap(int wait_status) {
    m_status = WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

bool ChildProcess::running() {
    return !wait(Milliseconds(0));
}

bool ChildProcess::wait(Milliseconds timeout) {
    if (m_pid <= 0 || m_status >= 0) return true;
    const int pidfd = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
    pollfd end{pidfd, POLLIN, 0};
    int ended;
    do {
        ended = poll(&end, 1, static_cast<int>(timeout.count()));
    } while (ended < 0 && errno == EINTR);
    close(pidfd);
    if (ended <= 0) return false;
    int status = 0;
    while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
    }
    reap(status);
    return true;
}

void ChildProcess::stop(Milliseconds grace) {
    if (m_pid <= 0) return;
    if (m_status < 0 && grace.count() > 0) {
        ::kill(m_pid, SIGTERM);
        wait(grace);
    }
    ::kill(-m_pid, SIGKILL);
    wait(Milliseconds(-1));
    m_pid = 0;
}

pid_t descendant(pid_t pid, int depth) {
    for (; depth > 0 && pid > 0; --depth) {
        const std::string id = std::to_string(pid);
        std::ifstream children("/proc/" + id + "/task/" + id + "/children");
        if (!(children >> pid)) return 0;
    }
    return pid;
}

}  // namespace vdevice
