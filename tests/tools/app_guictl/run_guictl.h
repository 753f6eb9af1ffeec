/**
 * @file run_guictl.h
 * Runs the command-line client against a device that lives in this process.
 */
#ifndef TESTS_APP_GUICTL_RUN_GUICTL_H
#define TESTS_APP_GUICTL_RUN_GUICTL_H

#include <atomic>
#include <string>
#include <thread>
#include <vector>

/** What a run of the program left behind. */
struct Outcome {
    int status;  ///< its exit code, -1 when a signal ended it
    std::string out;
    std::string err;
};

/** Runs it with its output in pipes; `environment` holds "NAME=value" to add. */
Outcome run_guictl(const std::vector<std::string> &arguments, const std::string &input = "",
                   const std::vector<std::string> &environment = {});

/** Runs it on a terminal; `out` holds both streams. */
Outcome run_guictl_on_terminal(const std::vector<std::string> &arguments,
                               const std::vector<std::string> &environment = {});

/** A folder for sockets and files that goes when the test ends. */
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    std::string path(const std::string &name) const { return m_path + "/" + name; }
    std::string socket(const std::string &name) const { return "ipc://" + path(name); }

private:
    std::string m_path;
};

/** Serves a command socket from the fake device's handlers on a thread of its own. */
class DeviceThread {
public:
    explicit DeviceThread(const std::string &address);
    ~DeviceThread();

private:
    void serve();

    int m_socket;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

#endif
