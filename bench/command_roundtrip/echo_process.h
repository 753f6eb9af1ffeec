/** @file echo_process.h The least that a reply socket can do, for comparison. */
#ifndef BENCH_COMMAND_ROUNDTRIP_ECHO_PROCESS_H
#define BENCH_COMMAND_ROUNDTRIP_ECHO_PROCESS_H

#include <sys/types.h>

#include <cstdint>
#include <string>

/** A message for the echo process: `length` bytes that ask for a reply of `reply_length` bytes. */
std::string echo_request(size_t length, uint32_t reply_length);

/**
 * A process of its own that answers every message with as many bytes as it asks for. Requires: no
 * nanomsg socket was opened yet, since it is forked.
 */
class EchoProcess {
public:
    EchoProcess();
    ~EchoProcess();
    EchoProcess(const EchoProcess &) = delete;
    EchoProcess &operator=(const EchoProcess &) = delete;

    const std::string &address() const { return m_address; }

private:
    std::string m_folder;
    std::string m_address;
    pid_t m_child;
};

#endif
