/**
 * @file peers.h
 * Processes beside the device's own that are no clients: bytes on a stream, said as they please.
 */
#ifndef TESTS_E2E_PEERS_H
#define TESTS_E2E_PEERS_H

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <utility>

#include "../libs/stream_guard/spoken.h"
#include "device_test.h"

namespace e2e {

constexpr char kCommandFile[] = "/ipc/app_gui.command";

/** A Unix stream socket, closed at the end. */
class Stream {
public:
    explicit Stream(int fd = -1) : fd_(fd) {}
    Stream(Stream &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    ~Stream() {
        if (fd_ >= 0) close(fd_);
    }

    static sockaddr_un addressOf(const std::string &path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }
    static Stream connectedTo(const std::string &path) {
        Stream stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = addressOf(path);
        // A full backlog makes the connection wait its turn.
        EXPECT_EQ(connect(stream.fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address),
                  0)
            << path << ": " << std::strerror(errno);
        return stream;
    }
    static Stream boundTo(const std::string &path) {
        Stream stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = addressOf(path);
        EXPECT_EQ(bind(stream.fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0)
            << path;
        return stream;
    }

    void listenHere() const { EXPECT_EQ(listen(fd_, 8), 0); }
    /** The next connection; one that does not come within ten seconds fails the test. */
    Stream accepted() const {
        const timeval patience{10, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        Stream stream(accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC));
        EXPECT_GE(stream.fd_, 0) << "no connection";
        return stream;
    }
    void send(const std::string &bytes) const {
        // The other side may have closed already: that is its right.
        (void)::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    /** The bytes, and so many descriptors with them. */
    void sendWithDescriptors(const std::string &bytes, size_t count) const {
        (void)spoken::sendWithDescriptors(fd_, bytes, fd_, count);
    }
    /** Exactly `size` bytes; fewer when the other side closes or nothing comes for two seconds. */
    std::string received(size_t size) const {
        const timeval patience{2, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        std::string bytes(size, '\0');
        const ssize_t length = recv(fd_, bytes.data(), size, MSG_WAITALL);
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
        return bytes;
    }

private:
    int fd_;
};

using spoken::frame;
using spoken::greeting;
using spoken::header;

inline void expectServed(vdevice::Device &device) {
    ASSERT_EQ(result(device, "Keepalive").value("process", ""), "app_gui");
}

}  // namespace e2e

#endif
