// Local streams of any bytes, in any pieces, on descriptors that come and go. An input is a row of
// steps: a byte with the descriptor (its low three bits) and what happens, then, for a read, the
// bytes as a text.

#include <array>
#include <memory>

#include "connection_table.h"
#include "fuzz_target.h"

using namespace stream_guard;
using Reading = ConnectionTable::Reading;

namespace {

constexpr uint64_t kLargest = 1000, kFree = 100, kRoom = 1500;
constexpr int kPeers = 8;

struct Peer {
    uint64_t inode = 0;
    std::string delivered;
    bool ended = false;
};

class Peers : public System {
public:
    int64_t now_ms() override { return now; }
    bool is_open(int descriptor, uint64_t inode) override {
        return peers[descriptor].inode == inode;
    }
    void end(int descriptor, uint64_t inode) override {
        fuzz::require(is_open(descriptor, inode), "an open connection is ended");
        peers[descriptor].ended = true;
    }

    int64_t now = 0;
    uint64_t inodes = 0;
    std::array<Peer, kPeers> peers;
};

/** Whether nanomsg can read these bytes: its messages, none too large, the last perhaps in part. */
bool harmless(const std::string &stream) {
    if (stream.compare(0, 4, std::string("\0SP\0", 4)) != 0) return true;
    size_t at = 8;
    while (at + 9 <= stream.size()) {
        uint64_t size = 0;
        for (size_t i = 1; i <= 8; ++i) {
            size = size * 256 + static_cast<uint8_t>(stream[at + i]);
        }
        if (stream[at] != 1 || size > kLargest) return false;
        at += 9 + size;
    }
    return at >= stream.size() || stream[at] == 1;
}

void read(ConnectionTable &table, int descriptor, Peer &peer, std::string bytes) {
    if (table.reading(descriptor, peer.inode) == Reading::kUnknown) {
        table.meet(descriptor, peer.inode, true);
    }
    const Reading reading = table.reading(descriptor, peer.inode);
    fuzz::require((reading == Reading::kEnded) == peer.ended, "an ended connection stays ended");
    if (reading == Reading::kEnded) return table.closed(descriptor);
    if (reading == Reading::kUntouched) return;
    table.before_read(descriptor);
    const size_t first = bytes.size() / 3;
    const iovec places[] = {{bytes.data(), first}, {bytes.data() + first, bytes.size() - first}};
    const size_t delivered = table.follow(descriptor, places, bytes.size());
    fuzz::require(delivered <= bytes.size(), "no more is delivered than was read");
    peer.delivered.append(bytes, 0, delivered);
    peer.ended = delivered < bytes.size();
    fuzz::require(harmless(peer.delivered), "what is delivered is harmless");
}

/** So many bytes of a reply wait to be sent. */
void reply(ConnectionTable &table, int descriptor, Peer &peer, uint64_t size) {
    if (table.reading(descriptor, peer.inode) != Reading::kFollowed) return;
    peer.ended = !table.left_to_send(descriptor, size);
}

void step(ConnectionTable &table, Peers &peers, fuzz::Input &input) {
    const uint8_t what = input.byte();
    const int descriptor = what % kPeers;
    Peer &peer = peers.peers[descriptor];
    switch (what / kPeers) {
        case 0:
            peer = Peer{++peers.inodes, "", false};
            break;
        case 1:
            table.closed(descriptor);
            break;
        case 2:
            peers.now += input.byte();
            break;
        case 3:
            reply(table, descriptor, peer, input.byte() * 8u);
            break;
        default:
            read(table, descriptor, peer, input.text());
    }
    fuzz::require(table.taken() <= kRoom, "no more room is taken than there is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    // Large, and forgotten by start().
    static const auto table = std::make_unique<ConnectionTable>();
    Peers peers;
    for (Peer &peer : peers.peers) {
        peer.inode = ++peers.inodes;
    }
    table->start({kLargest, kFree, kRoom, 50, nullptr}, &peers);
    fuzz::Input input(data, size);
    while (!input.empty()) {
        step(*table, peers, input);
    }
    for (int descriptor = 0; descriptor < kPeers; ++descriptor) {
        table->closed(descriptor);
    }
    fuzz::require(table->taken() == 0, "no room is lost");
    return 0;
}
