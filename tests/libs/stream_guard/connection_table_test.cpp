// The room that frames take: who gets it, when it is given back, who has to give way.

#include "connection_table.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <set>

#include "spoken.h"

using namespace stream_guard;
using spoken::frame;
using spoken::greeting;
using spoken::header;
using Reading = ConnectionTable::Reading;

namespace {

constexpr uint64_t kLargest = 1000, kFree = 100, kRoom = 2000;
constexpr int64_t kPatience = 50;

/** Sockets by descriptor, and a clock that stands. */
class FakeSystem : public System {
public:
    int64_t now_ms() override { return now; }
    bool is_open(int descriptor, uint64_t inode) override {
        const auto found = sockets.find(descriptor);
        return found != sockets.end() && found->second == inode;
    }
    void end(int descriptor, uint64_t) override { ended.insert(descriptor); }

    int64_t now = 0;
    std::map<int, uint64_t> sockets;
    std::set<int> ended;
};

class Connections : public testing::Test {
protected:
    Connections() { table->start({kLargest, kFree, kRoom, kPatience, nullptr}, &system); }

    /** A new connection on that descriptor that has greeted. */
    void connect(int descriptor) {
        const uint64_t inode = ++inodes;
        system.sockets[descriptor] = inode;
        EXPECT_EQ(table->reading(descriptor, inode), Reading::kUnknown);
        table->meet(descriptor, inode, true);
        EXPECT_EQ(read(descriptor, greeting()), 8u);
    }
    size_t read(int descriptor, const std::string &bytes) {
        EXPECT_EQ(reading(descriptor), Reading::kFollowed);
        table->before_read(descriptor);
        std::string copy = bytes;
        const iovec place{copy.data(), copy.size()};
        return table->follow(descriptor, &place, copy.size());
    }
    /** Whether a frame of that size may begin. */
    bool begins(int descriptor, uint64_t size) {
        return read(descriptor, header(size)) == kHeaderSize;
    }
    Reading reading(int descriptor) {
        return table->reading(descriptor, system.sockets.at(descriptor));
    }

    FakeSystem system;
    uint64_t inodes = 0;
    const std::unique_ptr<ConnectionTable> table = std::make_unique<ConnectionTable>();
};

TEST_F(Connections, ShareTheRoomAndAreEndedWhenThereIsNone) {
    for (int descriptor = 0; descriptor < 4; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(begins(0, kLargest));
    EXPECT_TRUE(begins(1, kLargest));
    EXPECT_EQ(table->taken(), kRoom);
    EXPECT_FALSE(begins(2, kFree + 1));
    EXPECT_EQ(reading(2), Reading::kEnded);
    EXPECT_EQ(table->ended(), 1u);
    EXPECT_STREQ(table->reason(), "too many large frames were on their way");
    EXPECT_TRUE(begins(3, kFree)) << "a small frame needs no room";
    EXPECT_EQ(table->taken(), kRoom);
    EXPECT_TRUE(system.ended.empty());
}

TEST_F(Connections, KeepTheRoomUntilTheirReaderHasDoneWithTheFrame) {
    connect(0);
    connect(1);
    EXPECT_TRUE(begins(0, kLargest));
    EXPECT_EQ(read(0, std::string(kLargest, 'x')), kLargest);
    EXPECT_EQ(table->taken(), kLargest);
    EXPECT_TRUE(begins(1, kLargest));
    EXPECT_FALSE(begins(0, kLargest + 1)) << "its reader asked for more";
    EXPECT_EQ(table->taken(), kLargest);
    EXPECT_STREQ(table->reason(), "a frame was too large");
}

TEST_F(Connections, MayBeginTheNextFrameInTheReadThatEndsTheLast) {
    connect(0);
    EXPECT_TRUE(begins(0, 600));
    EXPECT_EQ(read(0, std::string(600, 'x') + header(500) + "y"), 610u);
    EXPECT_EQ(table->taken(), 1100u);
    EXPECT_EQ(read(0, std::string(499, 'y')), 499u);
    EXPECT_EQ(table->taken(), 500u);
    EXPECT_EQ(read(0, frame("small")), 14u);
    EXPECT_EQ(table->taken(), 0u);
}

TEST_F(Connections, GiveTheirRoomBackWhenTheyClose) {
    connect(0);
    EXPECT_TRUE(begins(0, kLargest));
    table->closed(0);
    EXPECT_EQ(table->taken(), 0u);
    table->closed(0);
    EXPECT_EQ(table->taken(), 0u);
}

TEST_F(Connections, ThatAreGoneUnseenGiveTheirRoomBackWhenItIsNeeded) {
    for (int descriptor = 0; descriptor < 5; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(begins(0, kLargest));
    EXPECT_TRUE(begins(1, kLargest));
    system.sockets.erase(0);
    system.sockets[1] = 77;  // another socket by now
    EXPECT_TRUE(begins(2, kLargest));
    EXPECT_TRUE(begins(3, kLargest));
    EXPECT_FALSE(begins(4, kLargest));
    EXPECT_TRUE(system.ended.empty());
}

TEST_F(Connections, BeginAnewWhenADescriptorIsGivenAway) {
    connect(0);
    EXPECT_TRUE(begins(0, kLargest));
    connect(0);
    EXPECT_EQ(table->taken(), 0u);
    EXPECT_EQ(read(0, frame("hello")), 14u);
    table->meet(0, 99, false);
    system.sockets[0] = 99;
    EXPECT_EQ(reading(0), Reading::kUntouched);
    connect(0);
    EXPECT_EQ(reading(0), Reading::kFollowed);
}

TEST_F(Connections, OfSlowFramesGiveWayWhenTheirRoomIsNeeded) {
    for (int descriptor = 0; descriptor < 4; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(begins(0, kLargest));
    system.now += 1;
    EXPECT_TRUE(begins(1, kLargest));
    system.now += kPatience;
    EXPECT_TRUE(begins(2, kLargest));
    EXPECT_EQ(system.ended, std::set<int>{0});
    EXPECT_EQ(reading(0), Reading::kEnded);
    EXPECT_EQ(reading(1), Reading::kFollowed);
    EXPECT_STREQ(table->reason(), "a large message took too long while others waited");
    EXPECT_FALSE(begins(3, kLargest)) << "the second frame is not late yet";
}

TEST_F(Connections, OfSlowFramesAreLeftAloneWhileThereIsRoom) {
    connect(0);
    connect(1);
    EXPECT_TRUE(begins(0, kLargest));
    system.now += 100 * kPatience;
    EXPECT_TRUE(begins(1, kLargest));
    EXPECT_EQ(read(0, std::string(kLargest, 'x')), kLargest);
    EXPECT_TRUE(system.ended.empty());
}

TEST_F(Connections, WhoseMessageTheProcessHasNotTakenYetDoNotGiveWay) {
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        connect(descriptor);
    }
    for (const int descriptor : {0, 1}) {
        EXPECT_TRUE(begins(descriptor, kLargest));
        EXPECT_EQ(read(descriptor, std::string(kLargest, 'x')), kLargest);
    }
    system.now += 100 * kPatience;
    EXPECT_FALSE(begins(2, kLargest));
    EXPECT_TRUE(system.ended.empty());
}

TEST_F(Connections, WhosePeersDoNotTakeTheirRepliesShareTheRoom) {
    for (int descriptor = 0; descriptor < 4; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(table->left_to_send(0, kFree)) << "a small one needs no room";
    EXPECT_EQ(table->taken(), 0u);
    EXPECT_TRUE(table->left_to_send(0, 5 * kLargest / 4)) << "a reply may be larger than a frame";
    EXPECT_TRUE(table->left_to_send(0, 900));
    EXPECT_EQ(table->taken(), 900u);
    EXPECT_TRUE(begins(1, kLargest));
    EXPECT_FALSE(table->left_to_send(2, kFree + 1));
    EXPECT_EQ(reading(2), Reading::kEnded);
    EXPECT_STREQ(table->reason(), "too many large replies were not taken");
    EXPECT_TRUE(table->left_to_send(0, 0));
    EXPECT_EQ(table->taken(), kLargest);
    EXPECT_TRUE(table->left_to_send(3, kLargest));
    table->closed(3);
    EXPECT_EQ(table->taken(), kLargest);
}

TEST_F(Connections, WhosePeersDoNotTakeTheirRepliesGiveWayWhenTheyAreSlow) {
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(table->left_to_send(0, kLargest));
    EXPECT_TRUE(table->left_to_send(1, kLargest));
    system.now += kPatience + 1;
    EXPECT_TRUE(table->left_to_send(0, kLargest - 1)) << "each byte is no reason for patience";
    EXPECT_TRUE(begins(2, kLargest));
    EXPECT_EQ(system.ended, (std::set<int>{0, 1}));
    EXPECT_EQ(table->taken(), kLargest);
}

TEST_F(Connections, DoNotEndThemselvesForTheirOwnRoom) {
    connect(0);
    EXPECT_TRUE(table->left_to_send(0, kRoom));
    system.now += kPatience + 1;
    EXPECT_FALSE(begins(0, kLargest));
    EXPECT_EQ(table->ended(), 1u);
    EXPECT_TRUE(system.ended.empty());
}

TEST_F(Connections, EndedWhileTheyWereReadDeliverNothingAndCountOnce) {
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        connect(descriptor);
    }
    EXPECT_TRUE(begins(0, kLargest));
    EXPECT_TRUE(begins(1, kLargest));
    table->before_read(0);
    system.now += kPatience + 1;
    EXPECT_TRUE(begins(2, kLargest));
    std::string late(10, 'x');
    const iovec place{late.data(), late.size()};
    EXPECT_EQ(table->follow(0, &place, late.size()), 0u);
    EXPECT_EQ(table->ended(), 2u) << "both slow ones, once each";
}

TEST_F(Connections, AreFollowedOverManyPlaces) {
    connect(0);
    std::string bytes = frame("hello") + header(5, 2);
    const iovec places[] = {{bytes.data(), 3},
                            {nullptr, 0},
                            {bytes.data() + 3, 10},
                            {bytes.data() + 13, bytes.size() - 13}};
    EXPECT_EQ(table->follow(0, places, bytes.size()), 14u);
    EXPECT_STREQ(table->reason(), "a frame was no message");
}

TEST_F(Connections, HaveRoomForTheLargestFrameWhateverTheLimits) {
    table->start({kLargest, kFree, 10, kPatience, nullptr}, &system);
    connect(0);
    connect(1);
    EXPECT_TRUE(begins(0, kLargest));
    EXPECT_FALSE(begins(1, kFree + 1));
}

TEST_F(Connections, NeverTakeMoreThanTheRoomNorLoseAnyOfIt) {
    std::mt19937 random(5);
    for (int step = 0; step < 100000; ++step) {
        const int descriptor = static_cast<int>(random() % 12);
        if (system.sockets.count(descriptor) == 0 || reading(descriptor) == Reading::kEnded ||
            random() % 8 == 0) {
            connect(descriptor);
        }
        const uint64_t size = random() % (kLargest + 20);
        std::string bytes = header(size) + std::string(random() % 2 == 0 ? size : size / 2, 'x');
        if (random() % 5 == 0) bytes.resize(random() % bytes.size());
        read(descriptor, bytes);
        if (random() % 4 == 0) table->left_to_send(descriptor, random() % kRoom);
        if (random() % 10 == 0) system.sockets.erase(static_cast<int>(random() % 12));
        system.now += static_cast<int64_t>(random() % 20);
        ASSERT_LE(table->taken(), kRoom);
    }
    for (int descriptor = 0; descriptor < 12; ++descriptor) {
        table->closed(descriptor);
    }
    EXPECT_EQ(table->taken(), 0u);
}

}  // namespace
