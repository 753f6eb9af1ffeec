/**
 * @file frame_follower.h
 * Where in its frames a stream is: knows bytes only, no descriptors, no limits.
 *
 * A header is never let through whole before its frame is allowed, however the stream is cut into
 * pieces: what a reader gets of a stream does not depend on the pieces.
 *
 * Thread: one at a time per stream.
 */
#ifndef STREAM_GUARD_FRAME_FOLLOWER_H
#define STREAM_GUARD_FRAME_FOLLOWER_H

#include <cstddef>
#include <cstdint>

namespace stream_guard {

constexpr unsigned kGreetingSize = 8;
constexpr unsigned kHeaderSize = 9;
constexpr uint8_t kMessageFrame = 1;

/** Hears of a stream's frames. */
class FrameWatcher {
public:
    /** A frame of so many bytes begins; false breaks the stream before it. */
    virtual bool announced(uint64_t size) = 0;
    /** The frame announced last is complete. */
    virtual void completed() = 0;

protected:
    ~FrameWatcher() = default;
};

class FrameFollower {
public:
    /**
     * Follows the next bytes of the stream. Returns how many of them its reader may have: `size`,
     * or fewer where the stream breaks. A broken stream gives none.
     */
    size_t follow(const uint8_t *bytes, size_t size, FrameWatcher &watcher);
    /** Breaks the stream here. */
    void end() { state_ = State::kBroken; }

    bool broken() const { return state_ == State::kBroken; }
    /** No nanomsg peer, and said enough for nanomsg to see it: of no concern any more. */
    bool foreign() const { return state_ == State::kForeign && have_ == kGreetingSize; }

private:
    enum class State : uint8_t { kGreeting, kForeign, kHeader, kBody, kBroken };

    void greet(uint8_t byte);
    void expect_header();
    void read_header(uint8_t byte, FrameWatcher &watcher);
    size_t skip_body(size_t size, FrameWatcher &watcher);

    uint64_t left_ = 0;  ///< header: the size as far as it is known; body: bytes to come
    State state_ = State::kGreeting;
    uint8_t have_ = 0;  ///< bytes of the greeting or of the header that have come
};

}  // namespace stream_guard

#endif
