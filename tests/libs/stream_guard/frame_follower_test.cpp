// Where a stream breaks, and that it does not depend on the pieces in which it comes.

#include "frame_follower.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "spoken.h"

using namespace stream_guard;
using spoken::frame;
using spoken::greeting;
using spoken::header;

namespace {

constexpr uint64_t kLargest = 40;

/** Allows frames up to kLargest bytes; keeps what it hears. */
class Heard : public FrameWatcher {
public:
    bool announced(uint64_t size) override {
        EXPECT_EQ(completed_, announced_.size()) << "a frame began within another";
        announced_.push_back(size);
        return size <= kLargest;
    }
    void completed() override { ++completed_; }

    std::vector<uint64_t> announced_;
    size_t completed_ = 0;
};

/** The stream's follower after pieces of these sizes; the last one is used until the end. */
struct Followed {
    Followed(const std::string &stream, const std::vector<size_t> &pieces) {
        size_t at = 0;
        for (size_t i = 0; at < stream.size(); ++i) {
            const size_t piece =
                std::min(pieces[std::min(i, pieces.size() - 1)], stream.size() - at);
            // At its exact size, so that a read past it is seen.
            const std::vector<uint8_t> bytes(stream.begin() + at, stream.begin() + at + piece);
            delivered += follower.follow(bytes.data(), bytes.size(), heard);
            at += piece;
        }
    }

    FrameFollower follower;
    Heard heard;
    size_t delivered = 0;
};

/** How many bytes of a stream may be delivered, worked out over the whole of it. */
size_t deliverable(const std::string &stream) {
    const std::string start("\0SP\0", 4);
    if (stream.compare(0, 4, start, 0, std::min<size_t>(4, stream.size())) != 0) {
        return stream.size();
    }
    size_t at = 8;
    while (at < stream.size()) {
        if (stream[at] != 1) return at;
        if (stream.size() - at < 9) return stream.size();
        uint64_t size = 0;
        for (size_t i = 1; i <= 8; ++i) {
            size = size * 256 + static_cast<uint8_t>(stream[at + i]);
        }
        if (size > kLargest) return at + 8;
        at += 9 + size;
    }
    return stream.size();
}

struct Case {
    const char *name;
    std::string stream;
    size_t delivered;
    bool broken;
};

TEST(FrameFollower, DeliversUpToTheOffence) {
    const std::string hello = greeting() + frame("hello");
    const Case cases[] = {
        {"nothing", "", 0, false},
        {"part of a greeting", greeting().substr(0, 3), 3, false},
        {"a greeting", greeting(), 8, false},
        {"reserved bytes that nanomsg does not look at", std::string("\0SP\0\0\x30\1\2\3", 9), 8,
         true},
        {"a message", hello, 22, false},
        {"an empty message", greeting() + frame("") + frame("x"), 27, false},
        {"part of a header", hello + header(7).substr(0, 8), 30, false},
        {"part of a body", hello + header(kLargest) + "x", 32, false},
        {"the largest frame", greeting() + frame(std::string(kLargest, 'x')), 57, false},
        {"a larger one", hello + header(kLargest + 1) + "x", 30, true},
        {"the largest number", hello + header(UINT64_MAX) + "x", 30, true},
        {"the smallest negative number", hello + header(uint64_t{1} << 63), 30, true},
        {"another type", hello + header(0, 2), 22, true},
        {"type 0", greeting() + header(5, 0) + "hello", 8, true},
        {"another type at once", greeting() + "\xff", 8, true},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(deliverable(row.stream), row.delivered);
        for (const size_t piece : {size_t{1}, size_t{2}, size_t{9}, size_t{2048}}) {
            const Followed followed(row.stream, {piece});
            EXPECT_EQ(followed.delivered, row.delivered) << piece;
            EXPECT_EQ(followed.follower.broken(), row.broken) << piece;
            EXPECT_FALSE(followed.follower.foreign()) << piece;
        }
    }
}

TEST(FrameFollower, LeavesOtherStreamsAloneOnceTheyHaveSaidEightBytes) {
    for (const char *text : {"GET / HTTP/1.1", "\x01\x01\x01\x01\x01\x01\x01\x01\x02"}) {
        const std::string stream = text;
        for (size_t size = 1; size <= stream.size(); ++size) {
            const Followed followed(stream.substr(0, size), {3});
            EXPECT_EQ(followed.delivered, size);
            EXPECT_EQ(followed.follower.foreign(), size >= 8) << text << " " << size;
        }
    }
    // Told apart within the greeting, at its last fixed byte too.
    EXPECT_TRUE(Followed(std::string("\0SP\1\0\x30\0\0\2", 9), {1}).follower.foreign());
    EXPECT_TRUE(Followed(std::string("\0SQ\0\0\x30\0\0\2", 9), {9}).follower.foreign());
}

TEST(FrameFollower, TellsOfEachFrameOnceAndOfItsEnd) {
    const Followed followed(greeting() + frame("abc") + frame("") + header(7) + "1234", {5});
    EXPECT_EQ(followed.heard.announced_, (std::vector<uint64_t>{3, 0, 7}));
    EXPECT_EQ(followed.heard.completed_, 2u);
}

TEST(FrameFollower, GivesNothingOnceItWasEnded) {
    FrameFollower follower;
    Heard heard;
    const std::string stream = greeting() + header(30);
    const auto *bytes = reinterpret_cast<const uint8_t *>(stream.data());
    EXPECT_EQ(follower.follow(bytes, stream.size(), heard), stream.size());
    follower.end();
    EXPECT_TRUE(follower.broken());
    EXPECT_EQ(follower.follow(bytes, 3, heard), 0u);
}

// ---- random streams -----------------------------------------------------------------------------

using Random = std::mt19937;

size_t below(Random &random, size_t limit) {
    return random() % limit;
}

/** Frames, some of them bad, then perhaps a cut and some changed bytes. */
std::string random_stream(Random &random) {
    std::string stream = greeting();
    const size_t frames = below(random, 6);
    for (size_t i = 0; i < frames; ++i) {
        stream += frame(std::string(below(random, kLargest + 1), static_cast<char>(random() % 3)));
    }
    const std::string ends[] = {"", header(kLargest + 1), header(random(), 3), header(9),
                                std::string(below(random, 30), static_cast<char>(random()))};
    stream += ends[below(random, std::size(ends))];
    if (below(random, 3) == 0) stream.resize(below(random, stream.size() + 1));
    if (below(random, 3) == 0 && !stream.empty()) {
        stream[below(random, stream.size())] = static_cast<char>(random());
    }
    return stream;
}

TEST(FrameFollower, DeliversWhateverThePiecesWhatAReferenceWorksOut) {
    Random random(1);
    size_t broken = 0;
    for (int round = 0; round < 200000; ++round) {
        const std::string stream = random_stream(random);
        std::vector<size_t> pieces(1 + below(random, 20));
        for (size_t &piece : pieces) {
            piece = 1 + below(random, below(random, 2) == 0 ? 4 : 60);
        }
        const Followed followed(stream, pieces);
        ASSERT_EQ(followed.delivered, deliverable(stream)) << testing::PrintToString(stream);
        ASSERT_EQ(followed.follower.broken(), deliverable(stream) < stream.size());
        broken += followed.follower.broken() ? 1 : 0;
    }
    EXPECT_GT(broken, 50000u);
    EXPECT_LT(broken, 150000u);
}

}  // namespace
