/**
 * @file spoken.h
 * What a nanomsg peer says on its stream, and how.
 */
#ifndef TESTS_STREAM_GUARD_SPOKEN_H
#define TESTS_STREAM_GUARD_SPOKEN_H

#include <sys/socket.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace spoken {

/** First bytes of a connection: who speaks (0x20 publisher, 0x30 requester, 0x62 surveyor). */
inline std::string greeting(char protocol = 0x30) {
    return std::string("\0SP\0\0", 5) + protocol + std::string(2, '\0');
}

/** The header of a frame. */
inline std::string header(uint64_t size, char type = 1) {
    std::string bytes(1, type);
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(size >> shift & 0xff);
    }
    return bytes;
}

/** A whole frame. */
inline std::string frame(const std::string &body) {
    return header(body.size()) + body;
}

/** Sends the bytes and `count` copies of a descriptor with them; the bytes sent, or -1. */
inline ssize_t sendWithDescriptors(int socket, const std::string &bytes, int given, size_t count) {
    const std::vector<int> descriptors(count, given);
    std::vector<char> control(CMSG_SPACE(count * sizeof(int)));
    iovec place{const_cast<char *>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr *rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(count * sizeof(int));
    std::memcpy(CMSG_DATA(rights), descriptors.data(), count * sizeof(int));
    return ::sendmsg(socket, &message, MSG_NOSIGNAL);
}

}  // namespace spoken

#endif
