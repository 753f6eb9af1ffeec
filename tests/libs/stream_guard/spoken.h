/**
 * @file spoken.h
 * What a nanomsg peer says on its stream.
 */
#ifndef TESTS_STREAM_GUARD_SPOKEN_H
#define TESTS_STREAM_GUARD_SPOKEN_H

#include <cstdint>
#include <string>

namespace spoken {

/** A requester's greeting. */
inline std::string greeting() {
    return std::string("\0SP\0\0\x30\0\0", 8);
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

}  // namespace spoken

#endif
