// The guarded recvmsg on real sockets: what it ends, and what it leaves as the C library does it.

#include "stream_guard/stream_guard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

#include "spoken.h"

using spoken::frame;
using spoken::greeting;
using spoken::header;

namespace {

constexpr uint64_t kLargest = 1 << 20, kFree = 1000, kRoom = 2 << 20;

std::atomic<unsigned> reported{0};

void start() {
    const StreamGuardLimits limits{
        kLargest, kFree, kRoom, 60000,
        [](unsigned connections, const char *) { reported += connections; }};
    stream_guard_start(&limits);
}

int descriptors() {
    int count = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        count += fcntl(fd, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

/** Two connected sockets: the peer's and the one that is read. */
class Pair {
public:
    explicit Pair(int type = SOCK_STREAM) {
        EXPECT_EQ(socketpair(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_), 0);
    }
    Pair(const Pair &) = delete;
    ~Pair() {
        closePeer();
        if (ends_[1] >= 0) close(ends_[1]);
    }
    void closePeer() {
        if (ends_[0] >= 0) close(ends_[0]);
        ends_[0] = -1;
    }

    void say(const std::string &bytes) const {
        EXPECT_EQ(send(ends_[0], bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    /** Says it with descriptors. */
    void sayWith(const std::string &bytes, size_t count) const {
        EXPECT_EQ(spoken::sendWithDescriptors(ends_[0], bytes, STDIN_FILENO, count),
                  static_cast<ssize_t>(bytes.size()));
    }
    int reader() const { return ends_[1]; }

private:
    int ends_[2] = {-1, -1};
};

/** What one read gave. */
struct Read {
    ssize_t result = 0;
    int error = 0;
    int flags = 0;
    std::string bytes;
    size_t control = 0;  ///< bytes of what came beside them

    explicit Read(int descriptor, size_t size = 2048, int asked = 0) {
        char buffer[4096];
        alignas(cmsghdr) char beside[512];
        iovec places[2] = {{buffer, size / 3}, {buffer + size / 3, size - size / 3}};
        msghdr message{};
        message.msg_iov = places;
        message.msg_iovlen = 2;
        message.msg_control = beside;
        message.msg_controllen = sizeof beside;
        errno = E2BIG;
        result = recvmsg(descriptor, &message, asked);
        error = errno;
        if (result < 0) return;
        flags = message.msg_flags;
        bytes.assign(buffer, static_cast<size_t>(result));
        control = message.msg_controllen;
        closeTaken(message);
    }

private:
    static void closeTaken(msghdr &message) {
        for (cmsghdr *one = CMSG_FIRSTHDR(&message); one; one = CMSG_NXTHDR(&message, one)) {
            if (one->cmsg_type != SCM_RIGHTS) continue;
            const size_t count = (one->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (size_t i = 0; i < count; ++i) {
                int taken = -1;
                std::memcpy(&taken, CMSG_DATA(one) + i * sizeof taken, sizeof taken);
                close(taken);
            }
        }
    }
};

/** Whether the reader is told that there is something to read, be it the end. */
bool readable(const Pair &pair) {
    pollfd entry{pair.reader(), POLLIN, 0};
    return poll(&entry, 1, 0) == 1 && (entry.revents & POLLIN) != 0;
}

class StreamGuard : public testing::Test {
protected:
    void SetUp() override { start(); }
};

TEST_F(StreamGuard, DeliversMessagesAndThenTheEnd) {
    Pair pair;
    pair.say(greeting() + frame("hello"));
    EXPECT_EQ(Read(pair.reader()).bytes, greeting() + frame("hello"));
    const Read nothing(pair.reader());
    EXPECT_EQ(nothing.result, -1);
    EXPECT_EQ(nothing.error, EAGAIN);
    pair.say(frame("more"));
    EXPECT_EQ(Read(pair.reader(), 9).bytes, header(4));
    EXPECT_EQ(Read(pair.reader()).bytes, "more");
    pair.closePeer();
    EXPECT_EQ(Read(pair.reader()).result, 0);
}

TEST_F(StreamGuard, EndsAConnectionAtAFrameThatIsNoMessage) {
    Pair pair;
    pair.say(greeting() + frame("hello") + header(0, 2) + frame("later"));
    EXPECT_EQ(Read(pair.reader()).bytes, greeting() + frame("hello"));
    EXPECT_TRUE(readable(pair)) << "nobody would ever ask for the end";
    for (int i = 0; i < 3; ++i) {
        const Read end(pair.reader());
        EXPECT_EQ(end.result, 0);
        EXPECT_EQ(end.error, E2BIG) << "success leaves errno alone";
        EXPECT_EQ(end.control, 0u);
    }
}

TEST_F(StreamGuard, EndsAConnectionAtALargeFrameAndWhereTheRoomIsTaken) {
    const Pair large;
    large.say(greeting() + header(kLargest + 1) + "x");
    EXPECT_EQ(Read(large.reader()).bytes, greeting() + header(kLargest + 1).substr(0, 8));
    EXPECT_EQ(Read(large.reader()).result, 0);

    const Pair second, third, fourth;
    {
        const Pair first;
        for (const Pair *pair : {&first, &second}) {
            pair->say(greeting() + header(kLargest));
            EXPECT_EQ(Read(pair->reader()).bytes, greeting() + header(kLargest));
        }
        third.say(greeting() + header(kLargest));
        EXPECT_EQ(Read(third.reader()).bytes, greeting() + header(kLargest).substr(0, 8));
        EXPECT_EQ(Read(third.reader()).result, 0);
    }
    // The first was closed without another read.
    fourth.say(greeting() + header(kLargest));
    EXPECT_EQ(Read(fourth.reader()).bytes, greeting() + header(kLargest));
}

TEST_F(StreamGuard, EndsSlowConnectionsThatNobodyReads) {
    const StreamGuardLimits limits{kLargest, kFree, kLargest, -1, nullptr};
    stream_guard_start(&limits);
    const Pair slow, quick;
    slow.say(greeting() + header(kLargest));
    EXPECT_EQ(Read(slow.reader()).bytes.size(), 17u);
    EXPECT_FALSE(readable(slow));
    quick.say(greeting() + header(kLargest));
    EXPECT_EQ(Read(quick.reader()).bytes.size(), 17u);
    EXPECT_TRUE(readable(slow));
    EXPECT_EQ(Read(slow.reader()).result, 0);
    EXPECT_FALSE(readable(quick));
}

/** Sends so many bytes with one call. */
ssize_t reply(const Pair &pair, size_t size) {
    std::string bytes(size, 'x');
    iovec place{bytes.data(), bytes.size()};
    msghdr message{};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    return sendmsg(pair.reader(), &message, MSG_NOSIGNAL);
}

TEST_F(StreamGuard, EndsConnectionsWhosePeersDoNotTakeTheirReplies) {
    const Pair pairs[3];
    for (const Pair &pair : pairs) {
        pair.say(greeting());
        EXPECT_EQ(Read(pair.reader()).bytes, greeting());
        EXPECT_EQ(reply(pair, 100), 100) << "this one waits in the system";
        while (reply(pair, 1000) > 0) {
        }
        EXPECT_EQ(errno, EAGAIN);
    }
    for (const Pair &pair : pairs) {
        const ssize_t sent = reply(pair, kLargest);
        EXPECT_EQ(sent, -1);
        EXPECT_EQ(errno, &pair == &pairs[2] ? EPIPE : EAGAIN);
    }
    EXPECT_EQ(Read(pairs[2].reader()).result, 0);
    EXPECT_EQ(Read(pairs[0].reader()).error, EAGAIN) << "the others stay";
}

TEST_F(StreamGuard, LeavesSendingOnOtherSocketsAlone) {
    const Pair foreign;
    foreign.say("an X server's reply, say");
    Read(foreign.reader());
    for (int i = 0; i < 10; ++i) {
        errno = E2BIG;
        const ssize_t sent = reply(foreign, 4 * kRoom);
        EXPECT_TRUE(sent > 0 ? errno == E2BIG : errno == EAGAIN);
    }
    EXPECT_EQ(sendmsg(foreign.reader(), nullptr, 0), -1);
    EXPECT_EQ(errno, EFAULT);
    char byte = 0;
    iovec part{&byte, 1};
    msghdr one{};
    one.msg_iov = &part;
    one.msg_iovlen = 1;
    EXPECT_EQ(sendmsg(-1, &one, 0), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(StreamGuard, ReportsTheFirstEndAndNotEachOfAThousand) {
    const unsigned before = reported;
    for (int i = 0; i < 1000; ++i) {
        const Pair pair;
        pair.say(greeting() + header(0, 2));
        EXPECT_EQ(Read(pair.reader()).bytes, greeting());
    }
    EXPECT_LE(reported, before + 1);
    EXPECT_GE(reported, 1u);
}

TEST_F(StreamGuard, TakesNoDescriptors) {
    Pair pair;
    const int before = descriptors();
    pair.sayWith(greeting().substr(0, 3), 60);
    pair.sayWith(greeting().substr(3) + frame("hello"), 60);
    pair.sayWith(frame("more"), 60);
    std::string all;
    while (all.size() < 35) {
        const Read read(pair.reader());
        ASSERT_GT(read.result, 0);
        EXPECT_EQ(read.control, 0u);
        all += read.bytes;
        EXPECT_EQ(descriptors(), before);
    }
    EXPECT_EQ(all, greeting() + frame("hello") + frame("more"));
}

TEST_F(StreamGuard, TakesNoDescriptorsFromTheFirstEightBytesOfAnyStream) {
    Pair pair;
    pair.sayWith("GET ", 3);
    EXPECT_EQ(Read(pair.reader()).control, 0u);
    pair.sayWith("/ HT", 3);
    EXPECT_EQ(Read(pair.reader()).control, 0u);
    pair.sayWith("TP/1.1", 3);
    const Read later(pair.reader());
    EXPECT_EQ(later.bytes, "TP/1.1");
    EXPECT_EQ(later.control, CMSG_SPACE(3 * sizeof(int)));
}

TEST_F(StreamGuard, LeavesOtherSocketsAlone) {
    const Pair datagrams(SOCK_DGRAM), packets(SOCK_SEQPACKET);
    for (const Pair *pair : {&datagrams, &packets}) {
        pair->sayWith(greeting() + header(1, 2), 2);
        const Read read(pair->reader());
        EXPECT_EQ(read.bytes, greeting() + header(1, 2));
        EXPECT_EQ(read.control, CMSG_SPACE(2 * sizeof(int)));
        pair->say(header(1, 2));
        const Read cut(pair->reader(), 3);
        EXPECT_EQ(cut.bytes.size(), 3u);
        EXPECT_EQ(cut.flags & MSG_TRUNC, MSG_TRUNC);
    }
    const Pair foreign;
    foreign.say("an X server's reply, say");
    EXPECT_EQ(Read(foreign.reader()).bytes, "an X server's reply, say");
    foreign.say(greeting() + header(1, 2));
    EXPECT_EQ(Read(foreign.reader()).bytes, greeting() + header(1, 2));
}

TEST_F(StreamGuard, LeavesErrorsToTheSystem) {
    const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const struct {
        int descriptor, error;
    } rows[] = {{-1, EBADF}, {1000000, EBADF}, {file, ENOTSOCK}};
    for (const auto &row : rows) {
        const Read read(row.descriptor);
        EXPECT_EQ(read.result, -1);
        EXPECT_EQ(read.error, row.error);
    }
    close(file);
    const Pair pair;
    pair.say(greeting());
    EXPECT_EQ(recvmsg(pair.reader(), nullptr, 0), -1);
    EXPECT_EQ(errno, EFAULT);
    EXPECT_EQ(Read(pair.reader()).bytes, greeting());
}

TEST_F(StreamGuard, DoesNotCountBytesThatAreOnlyPeekedAt) {
    const Pair pair;
    pair.say(greeting() + frame("hello"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Read(pair.reader(), 12, MSG_PEEK).bytes, (greeting() + header(5)).substr(0, 12));
    }
    EXPECT_EQ(Read(pair.reader(), 12).bytes, (greeting() + header(5)).substr(0, 12));
    EXPECT_EQ(Read(pair.reader()).bytes, (header(5) + "hello").substr(4));
    pair.say(header(5, 2));
    EXPECT_EQ(Read(pair.reader()).result, 0);
    EXPECT_EQ(Read(pair.reader(), 12, MSG_PEEK).result, 0);
}

TEST_F(StreamGuard, DoesNotTakeAReadOfNothingForTheEnd) {
    const Pair pair;
    pair.say(greeting());
    EXPECT_EQ(Read(pair.reader()).bytes, greeting());
    EXPECT_LE(Read(pair.reader(), 0).result, 0);
    pair.say(header(5, 2));
    EXPECT_EQ(Read(pair.reader()).result, 0);
}

TEST_F(StreamGuard, KnowsANewSocketBehindAnOldDescriptor) {
    int number = -1;
    {
        const Pair pair;
        number = pair.reader();
        pair.say(greeting() + header(0, 2));
        EXPECT_EQ(Read(number).bytes, greeting());
        EXPECT_EQ(Read(number).result, 0);
    }
    const Pair pair;
    ASSERT_EQ(pair.reader(), number);
    pair.say("something else altogether");
    EXPECT_EQ(Read(number).bytes, "something else altogether");
}

TEST_F(StreamGuard, LeavesManyThreadsTheirStreams) {
    const auto speak_and_read = [] {
        for (int round = 0; round < 300; ++round) {
            const Pair pair;
            pair.say(greeting());
            EXPECT_EQ(Read(pair.reader()).bytes, greeting());
            const bool whole = round % 3 != 0;
            pair.say(header(2000) + std::string(whole ? 2000 : 100, 'x'));
            size_t size = 0;
            while (size < (whole ? 2009u : 109u)) {
                const Read read(pair.reader(), 1500);
                ASSERT_GT(read.result, 0);
                size += read.bytes.size();
            }
            pair.say(whole ? header(0, 7) : "y");
            EXPECT_EQ(Read(pair.reader()).result, whole ? 0 : 1);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back(speak_and_read);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST_F(StreamGuard, FollowsEveryDescriptorThatTheProcessMayHave) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_LE(limit.rlim_cur, 4096u);
}

}  // namespace

// Before anything is guarded.
int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    const Pair pair;
    pair.sayWith(greeting() + header(1, 2), 1);
    const Read read(pair.reader());
    if (read.bytes != greeting() + header(1, 2) || read.control == 0) return 1;
    return RUN_ALL_TESTS();
}
