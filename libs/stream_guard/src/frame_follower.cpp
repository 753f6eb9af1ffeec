#include "frame_follower.h"

#include <algorithm>

namespace stream_guard {

namespace {

/** Where a nanomsg peer's greeting is fixed; of the rest nanomsg judges by itself. */
constexpr uint8_t kGreeting[] = {0, 'S', 'P', 0};

}  // namespace

size_t FrameFollower::follow(const uint8_t *bytes, size_t size, FrameWatcher &watcher) {
    size_t used = 0;
    while (used < size && !broken()) {
        if (foreign()) return size;
        if (state_ == State::kBody) {
            used += skip_body(size - used, watcher);
        } else if (state_ == State::kHeader) {
            read_header(bytes[used], watcher);
            used += broken() ? 0 : 1;
        } else {
            greet(bytes[used]);
            ++used;
        }
    }
    return used;
}

/** What a foreign stream says is only counted. */
void FrameFollower::greet(uint8_t byte) {
    if (have_ < sizeof kGreeting && byte != kGreeting[have_]) state_ = State::kForeign;
    if (++have_ == kGreetingSize && state_ == State::kGreeting) expect_header();
}

void FrameFollower::expect_header() {
    state_ = State::kHeader;
    have_ = 0;
    left_ = 0;
}

void FrameFollower::read_header(uint8_t byte, FrameWatcher &watcher) {
    if (have_ == 0 && byte != kMessageFrame) return end();
    if (have_ > 0) left_ = left_ << 8 | byte;
    if (++have_ < kHeaderSize) return;
    if (!watcher.announced(left_)) return end();
    state_ = State::kBody;
    if (left_ == 0) skip_body(0, watcher);
}

/** Returns how many of `size` bytes belong to the body. */
size_t FrameFollower::skip_body(size_t size, FrameWatcher &watcher) {
    const auto skipped = static_cast<size_t>(std::min<uint64_t>(size, left_));
    left_ -= skipped;
    if (left_ == 0) {
        expect_header();
        watcher.completed();
    }
    return skipped;
}

}  // namespace stream_guard
