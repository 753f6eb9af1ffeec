/**
 * @file child_process.h
 * A program started by us, in a process group of its own that ends with us.
 */
#ifndef VDEVICE_CHILD_PROCESS_H
#define VDEVICE_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace vdevice {

using Milliseconds = std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/**
 * Owns one running program. The kernel kills it when the thread that started it ends, however that
 * comes; stop() and the destructor kill its whole process group.
 *
 * Thread: one at a time.
 */
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess() { stop(Milliseconds(0)); }
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    /**
     * Starts `command` (found through PATH), standard input empty.
     * @param out, err  files that receive its output, made anew.
     * @return false with `error` filled when it cannot be started; a program that is not there is
     *         such a failure.
     * Requires: not running.
     */
    bool start(const std::vector<std::string> &command, const std::string &out,
               const std::string &err, std::string *error);

    /** True until the program has ended. */
    bool running();
    /** Waits for the end; false when `timeout` passes first. */
    bool wait(Milliseconds timeout);
    /** SIGTERM, and SIGKILL to the group once `grace` has passed. Returns when all is over. */
    void stop(Milliseconds grace);

    /** 0 when never started. */
    pid_t pid() const { return m_pid; }
    /** The exit status, or 128 + the signal that ended it; -1 while running. */
    int exitStatus() const { return m_status; }

private:
    void reap(int wait_status);

    pid_t m_pid = 0;
    int m_status = -1;
};

/**
 * The process that is `depth` generations below `pid`, by first children; 0 when there is none
 * (yet).
 */
pid_t descendant(pid_t pid, int depth);

}  // namespace vdevice

#endif
