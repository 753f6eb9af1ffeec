#include "connection_table.h"

#include <algorithm>

namespace stream_guard {

/** One connection's frames, allowed or not. */
class ConnectionTable::Watcher : public FrameWatcher {
public:
    Watcher(ConnectionTable &table, Connection &connection)
        : table_(table), connection_(connection) {}

    bool announced(uint64_t size) override {
        const StreamGuardLimits &limits = table_.limits_;
        if (size > limits.largest_frame) return refuse("a frame was too large");
        if (size > limits.free_frame &&
            !table_.take_room(connection_, &connection_.arriving, size)) {
            return refuse("too many large frames were on their way");
        }
        return true;
    }

    void completed() override {
        connection_.complete.bytes += connection_.arriving.bytes;
        connection_.arriving.bytes = 0;
    }

    /** Why the stream broke, if it did. */
    const char *reason() const { return reason_; }

private:
    bool refuse(const char *reason) {
        reason_ = reason;
        return false;
    }

    ConnectionTable &table_;
    Connection &connection_;
    const char *reason_ = "a frame was no message";
};

void ConnectionTable::start(const StreamGuardLimits &limits, System *system) {
    limits_ = limits;
    limits_.room = std::max(limits.room, limits.largest_frame);
    system_ = system;
    taken_ = 0;
    std::fill_n(connections_.begin(), used_, Connection{});
    used_ = 0;
}

ConnectionTable::Reading ConnectionTable::reading(int descriptor, uint64_t inode) const {
    const Connection &connection = connections_[descriptor];
    if (connection.inode != inode) return Reading::kUnknown;
    if (connection.passed || connection.follower.foreign()) return Reading::kUntouched;
    return connection.follower.broken() ? Reading::kEnded : Reading::kFollowed;
}

void ConnectionTable::meet(int descriptor, uint64_t inode, bool local_stream) {
    closed(descriptor);
    connections_[descriptor] = Connection{};
    connections_[descriptor].inode = inode;
    connections_[descriptor].passed = !local_stream;
    used_ = std::max(used_, descriptor + 1);
}

void ConnectionTable::before_read(int descriptor) {
    Room &complete = connections_[descriptor].complete;
    give_back(&complete, complete.bytes);
}

bool ConnectionTable::left_to_send(int descriptor, uint64_t size) {
    Connection &connection = connections_[descriptor];
    Room &leaving = connection.leaving;
    if (size <= leaving.bytes) {
        give_back(&leaving, leaving.bytes - size);
        return true;
    }
    give_back(&leaving, leaving.bytes);
    if (size <= limits_.free_frame || take_room(connection, &leaving, size)) return true;
    connection.follower.end();
    count_end("too many large replies were not taken");
    return false;
}

size_t ConnectionTable::follow(int descriptor, const iovec *places, size_t size) {
    Connection &connection = connections_[descriptor];
    // Another reader may have needed its room in the meantime.
    if (connection.follower.broken()) return 0;
    Watcher watcher(*this, connection);
    size_t followed = 0;
    for (const iovec *place = places; followed < size && !connection.follower.broken(); ++place) {
        followed += connection.follower.follow(static_cast<const uint8_t *>(place->iov_base),
                                               std::min(place->iov_len, size - followed), watcher);
    }
    if (connection.follower.broken()) count_end(watcher.reason());
    return followed;
}

void ConnectionTable::closed(int descriptor) {
    Connection &connection = connections_[descriptor];
    for (Room *room : {&connection.arriving, &connection.complete, &connection.leaving}) {
        give_back(room, room->bytes);
    }
}

/** Room of that size, whatever it takes others; false when there is none. */
bool ConnectionTable::take_room(const Connection &asking, Room *room, uint64_t size) {
    const int64_t now_ms = system_->now_ms();
    const auto fits = [&] { return size <= limits_.room - taken_; };
    if (!fits()) forget_closed();
    if (!fits()) end_slow(asking, now_ms);
    if (!fits()) return false;
    taken_ += size;
    *room = {size, now_ms};
    return true;
}

void ConnectionTable::give_back(Room *room, uint64_t size) {
    taken_ -= size;
    room->bytes -= size;
}

/** Connections that were closed without another read. */
void ConnectionTable::forget_closed() {
    for (int descriptor = 0; descriptor < used_; ++descriptor) {
        const Connection &connection = connections_[descriptor];
        const bool has_room =
            connection.arriving.bytes + connection.complete.bytes + connection.leaving.bytes > 0;
        if (has_room && !system_->is_open(descriptor, connection.inode)) closed(descriptor);
    }
}

void ConnectionTable::end_slow(const Connection &asking, int64_t now_ms) {
    for (int descriptor = 0; descriptor < used_; ++descriptor) {
        Connection &connection = connections_[descriptor];
        const auto slow = [&](const Room &room) {
            return room.bytes > 0 && now_ms - room.since_ms > limits_.patience_ms;
        };
        const bool any = slow(connection.arriving) || slow(connection.leaving);
        if (!any || &connection == &asking) continue;
        closed(descriptor);
        connection.follower.end();
        system_->end(descriptor, connection.inode);
        count_end("a large message took too long while others waited");
    }
}

void ConnectionTable::count_end(const char *reason) {
    ++ended_;
    reason_ = reason;
}

}  // namespace stream_guard
