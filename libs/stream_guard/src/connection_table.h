/**
 * @file connection_table.h
 * The followed connections by descriptor, and the room that their frames take.
 *
 * A descriptor's number says nothing about its socket, which may be closed and the number given
 * away unseen; so each call names the socket by its inode number too, which is another one.
 *
 * Thread: one at a time.
 */
#ifndef STREAM_GUARD_CONNECTION_TABLE_H
#define STREAM_GUARD_CONNECTION_TABLE_H

#include <sys/uio.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame_follower.h"
#include "stream_guard/stream_guard.h"

namespace stream_guard {

/** Descriptors that can be followed: 0 up to this, exclusive. */
constexpr int kDescriptors = 4096;

/** What the table asks of the system. */
class System {
public:
    virtual int64_t now_ms() = 0;
    virtual bool is_open(int descriptor, uint64_t inode) = 0;
    /** Lets the owner of that socket, if it is still open, find the end of its stream. */
    virtual void end(int descriptor, uint64_t inode) = 0;

protected:
    ~System() = default;
};

class ConnectionTable {
public:
    enum class Reading {
        kUnknown,    ///< another socket than last time: see meet()
        kUntouched,  ///< of no concern
        kFollowed,   ///< without descriptors; follow() what was read
        kEnded       ///< nothing more is to be read
    };

    /** Forgets all connections. */
    void start(const StreamGuardLimits &limits, System *system);

    /** What is to be done about a read. Requires: a descriptor below kDescriptors. */
    Reading reading(int descriptor, uint64_t inode) const;
    /** A new socket; a local stream is followed. */
    void meet(int descriptor, uint64_t inode, bool local_stream);

    /** The reader asks for more: it has done with the frames that it had completed. */
    void before_read(int descriptor);
    /** Follows `size` bytes read into these places; returns how many of them may be delivered. */
    size_t follow(int descriptor, const iovec *places, size_t size);
    /** So much of a message waits to be sent; false when no room is left for it: it is ended. */
    bool left_to_send(int descriptor, uint64_t size);
    /** The reader has found the end of the stream or an error. */
    void closed(int descriptor);

    /** Connections ended so far, and why the last one was; null before the first. */
    unsigned ended() const { return ended_; }
    const char *reason() const { return reason_; }
    /** Bytes of room that are taken. */
    uint64_t taken() const { return taken_; }

private:
    struct Room {
        uint64_t bytes = 0;
        int64_t since_ms = 0;
    };
    struct Connection {
        uint64_t inode = 0;  ///< 0: none yet
        FrameFollower follower;
        bool passed = false;
        Room arriving;  ///< of the frame that has begun
        Room complete;  ///< of frames that the reader has not done with
        Room leaving;   ///< of the message that the peer has not taken
    };
    class Watcher;

    bool take_room(const Connection &asking, Room *room, uint64_t size);
    void give_back(Room *room, uint64_t size);
    void forget_closed();
    void end_slow(const Connection &asking, int64_t now_ms);
    void count_end(const char *reason);

    StreamGuardLimits limits_{};
    System *system_ = nullptr;
    uint64_t taken_ = 0;
    unsigned ended_ = 0;
    const char *reason_ = nullptr;
    int used_ = 0;  ///< connections from here on have never been used
    std::array<Connection, kDescriptors> connections_{};
};

}  // namespace stream_guard

#endif
