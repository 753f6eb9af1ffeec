/**
 * @file peers.h
 * The processes around app_gui, played: a client of its command socket, the publishers of events
 * and the supervisor that surveys it. All over nanomsg; addresses are as seen from the host.
 *
 * Thread: each object is used by one thread at a time.
 */
#ifndef VDEVICE_PEERS_H
#define VDEVICE_PEERS_H

#include <functional>
#include <optional>
#include <string>

#include "child_process.h"

namespace vdevice {

/** Owns a nanomsg socket. */
class Socket {
public:
    explicit Socket(int protocol);
    ~Socket();
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    bool bind(const std::string &address, std::string *error);
    bool connect(const std::string &address, std::string *error);
    void setOption(int level, int option, int value);
    int id() const { return m_id; }

private:
    int m_id;
};

/** What a wait asks between its looks: false ends it early, e.g. because the process has died. */
using StillWorthIt = std::function<bool()>;

/** A client of the command socket (request and reply). */
class CommandClient {
public:
    explicit CommandClient(const std::string &address);

    /**
     * Sends one message and waits for its reply. The process need not be up yet: the request goes
     * out as soon as it is.
     * @param message  sent as it is, any bytes.
     * @return the reply without its trailing NUL; nothing when `timeout` passes or `worth` says so.
     */
    std::optional<std::string> request(const std::string &message, Milliseconds timeout,
                                       const StillWorthIt &worth = nullptr);

private:
    Socket m_socket;
};

/** A publisher of events: the codec process or the streaming process. */
class EventPublisher {
public:
    /** Check error() before use. */
    explicit EventPublisher(const std::string &address);

    const std::string &error() const { return m_error; }
    /** True once a subscriber is connected; what is published before that is lost. */
    bool waitForSubscriber(Milliseconds timeout) const;
    bool publish(const std::string &message);

private:
    Socket m_socket;
    std::string m_error;
};

/** The supervising process. */
class KeepaliveSurveyor {
public:
    /** Check error() before use. */
    explicit KeepaliveSurveyor(const std::string &address);

    const std::string &error() const { return m_error; }
    bool waitForRespondent(Milliseconds timeout) const;
    /** Asks once: {"jsonrpc":"2.0","id":n,"method":"Keepalive"}, n counting up from 1. */
    std::optional<std::string> survey(Milliseconds timeout);

private:
    Socket m_socket;
    std::string m_error;
    int m_surveys = 0;
};

/** Looks at `done` every millisecond until it is true or `timeout` has passed; its last answer. */
bool wait_until(const std::function<bool()> &done, Milliseconds timeout);

}  // namespace vdevice

#endif
