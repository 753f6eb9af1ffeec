#include "stream_guard/stream_guard.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>

#include "connection_table.h"
#include "report_pace.h"

namespace stream_guard {

namespace {

using Reading = ConnectionTable::Reading;
using RecvMsg = ssize_t (*)(int, msghdr *, int);
using SendMsg = ssize_t (*)(int, const msghdr *, int);

/** Inode number of the descriptor's socket; 0 where it is none. */
uint64_t socket_inode(int descriptor) {
    struct stat status {};
    const bool is_socket = fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
    return is_socket ? status.st_ino : 0;
}

bool has_option(int descriptor, int option, int value) {
    int actual = 0;
    socklen_t length = sizeof actual;
    return getsockopt(descriptor, SOL_SOCKET, option, &actual, &length) == 0 && actual == value;
}

bool is_local_stream(int descriptor) {
    return has_option(descriptor, SO_DOMAIN, AF_UNIX) &&
           has_option(descriptor, SO_TYPE, SOCK_STREAM);
}

class LinuxSystem : public System {
public:
    int64_t now_ms() override {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
    }

    bool is_open(int descriptor, uint64_t inode) override {
        return socket_inode(descriptor) == inode;
    }

    void end(int descriptor, uint64_t inode) override {
        // A copy cannot become another socket between the look and the deed.
        const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        if (copy < 0) return;
        if (is_open(copy, inode)) shutdown(copy, SHUT_RDWR);
        close(copy);
    }
};

/** The process's guard. Nothing of it has a destructor: threads may read until the very end. */
struct Guard {
    std::atomic<bool> started{false};
    std::mutex mutex;  ///< of all that follows
    ConnectionTable table;
    ReportPace pace;
    void (*report)(unsigned connections, const char *reason) = nullptr;
};

Guard guard;
LinuxSystem linux_system;

// The names under which nanomsg finds the calls. With 64-bit times on a 32-bit board glibc's
// headers rename them, and the definitions below with them.
#if defined __USE_TIME_BITS64 && __TIMESIZE == 32
constexpr char kRecvMsg[] = "__recvmsg64";
constexpr char kSendMsg[] = "__sendmsg64";
#else
constexpr char kRecvMsg[] = "recvmsg";
constexpr char kSendMsg[] = "sendmsg";
#endif

/** The C library's function of that name. */
template <typename Function>
Function next(const char *name, std::atomic<Function> *known) {
    Function found = known->load(std::memory_order_relaxed);
    if (!found) {
        found = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
        known->store(found, std::memory_order_relaxed);
    }
    return found;
}

RecvMsg next_recvmsg() {
    static std::atomic<RecvMsg> known{nullptr};
    return next(kRecvMsg, &known);
}

SendMsg next_sendmsg() {
    static std::atomic<SendMsg> known{nullptr};
    return next(kSendMsg, &known);
}

/** What is to be done about a read of that socket; gets to know a new one. */
Reading reading(int descriptor, uint64_t inode, bool peeks) {
    const std::lock_guard<std::mutex> lock(guard.mutex);
    if (guard.table.reading(descriptor, inode) == Reading::kUnknown) {
        guard.table.meet(descriptor, inode, is_local_stream(descriptor));
    }
    const Reading result = guard.table.reading(descriptor, inode);
    if (result == Reading::kEnded) guard.table.closed(descriptor);
    if (result == Reading::kFollowed && !peeks) guard.table.before_read(descriptor);
    return result;
}

size_t size_of(const msghdr &message) {
    size_t size = 0;
    const iovec *end = message.msg_iov + message.msg_iovlen;
    for (const iovec *place = message.msg_iov; place != end; ++place) {
        size += place->iov_len;
    }
    return size;
}

/** Does something with the table to itself; reports afterwards if that ended connections. */
template <typename Deed>
void with_table(const Deed &deed) {
    unsigned connections = 0;
    const char *reason = nullptr;
    {
        const std::lock_guard<std::mutex> lock(guard.mutex);
        const unsigned before = guard.table.ended();
        deed(guard.table);
        reason = guard.table.reason();
        if (guard.table.ended() != before) {
            connections = guard.pace.due(guard.table.ended(), linux_system.now_ms());
        }
    }
    if (connections > 0 && guard.report) guard.report(connections, reason);
}

/** Follows what was read; returns what the reader is told. */
ssize_t follow(int descriptor, const msghdr &message, ssize_t result) {
    ssize_t delivered = result;
    with_table([&](ConnectionTable &table) {
        if (result > 0) {
            delivered = static_cast<ssize_t>(
                table.follow(descriptor, message.msg_iov, static_cast<size_t>(result)));
        } else {
            table.closed(descriptor);
        }
    });
    // Wakes a reader that waits for more: it then finds the end of the stream.
    if (delivered < result) shutdown(descriptor, SHUT_RD);
    return delivered;
}

/** Reads a followed stream, without the descriptors that may come with its bytes. */
ssize_t read_followed(int descriptor, msghdr *message, int flags) {
    msghdr plain = *message;
    plain.msg_control = nullptr;
    plain.msg_controllen = 0;
    const ssize_t result = next_recvmsg()(descriptor, &plain, flags);
    const int error = errno;
    if (result >= 0) {
        plain.msg_control = message->msg_control;
        *message = plain;
    }
    const bool later = result < 0 && (error == EAGAIN || error == EWOULDBLOCK || error == EINTR);
    const bool nothing = (flags & MSG_PEEK) != 0 || (result == 0 && size_of(*message) == 0);
    const ssize_t delivered = later || nothing ? result : follow(descriptor, *message, result);
    errno = error;
    return delivered;
}

ssize_t guarded_recvmsg(int descriptor, msghdr *message, int flags) {
    const int error = errno;
    const uint64_t inode = descriptor < kDescriptors ? socket_inode(descriptor) : 0;
    const Reading what =
        inode != 0 ? reading(descriptor, inode, (flags & MSG_PEEK) != 0) : Reading::kUntouched;
    errno = error;
    if (what == Reading::kFollowed) return read_followed(descriptor, message, flags);
    if (what != Reading::kEnded) return next_recvmsg()(descriptor, message, flags);
    message->msg_controllen = 0;
    message->msg_flags = 0;
    return 0;
}

/** Bytes of the message that its sender will offer again. */
size_t left_of(const msghdr &message, ssize_t result, int error) {
    if (result >= 0) return size_of(message) - static_cast<size_t>(result);
    return error == EAGAIN || error == EWOULDBLOCK ? size_of(message) : 0;
}

/** Takes room for what waits to be sent; false when there is none and the connection ends. */
bool may_wait(int descriptor, size_t left) {
    const uint64_t inode = left > 0 ? socket_inode(descriptor) : 0;
    bool may = true;
    with_table([&](ConnectionTable &table) {
        // Where nothing waits, no room is needed, whichever socket had taken it.
        if (left == 0 || table.reading(descriptor, inode) == Reading::kFollowed) {
            may = table.left_to_send(descriptor, left);
        }
    });
    return may;
}

ssize_t guarded_sendmsg(int descriptor, const msghdr *message, int flags) {
    const ssize_t result = next_sendmsg()(descriptor, message, flags);
    if (descriptor < 0 || descriptor >= kDescriptors) return result;
    const int error = errno;
    const bool may = may_wait(descriptor, left_of(*message, result, error));
    errno = may ? error : EPIPE;
    return may ? result : -1;
}

void lower_descriptor_limit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= kDescriptors) return;
    limit.rlim_cur = kDescriptors;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

}  // namespace stream_guard

void stream_guard_start(const StreamGuardLimits *limits) {
    using namespace stream_guard;
    lower_descriptor_limit();
    const std::lock_guard<std::mutex> lock(guard.mutex);
    guard.report = limits->report;
    guard.table.start(*limits, &linux_system);
    guard.started.store(true, std::memory_order_release);
}

/** In place of the C library's. A null message is the C library's to judge. */
extern "C" __attribute__((visibility("default"))) ssize_t recvmsg(int descriptor, msghdr *message,
                                                                  int flags) {
    using namespace stream_guard;
    if (!message || !guard.started.load(std::memory_order_acquire)) {
        return next_recvmsg()(descriptor, message, flags);
    }
    return guarded_recvmsg(descriptor, message, flags);
}

/** In place of the C library's, too. */
extern "C" __attribute__((visibility("default"))) ssize_t sendmsg(int descriptor,
                                                                  const msghdr *message,
                                                                  int flags) {
    using namespace stream_guard;
    if (!message || !guard.started.load(std::memory_order_acquire)) {
        return next_sendmsg()(descriptor, message, flags);
    }
    return guarded_sendmsg(descriptor, message, flags);
}
