/** @file app_gui_bridge_test.cpp What the bridge posts to the main window. */

#include <QDeadlineTimer>
#include <QEvent>
#include <atomic>
#include <climits>
#include <memory>
#include <new>
#include <thread>

#include "app_gui.h"
#include "store_fixture.h"
#include "store_memory.h"
#include "wnd_split.h"

using namespace store_test;

namespace {

constexpr const char *kFile = "apps/app_gui/src/app_gui.cpp";

class Bridge : public Store {};

/** One poster of records, with a second argument where it takes one. */
struct Poster {
    const char *name;
    const char *record;
    int type;
    size_t size;   ///< bytes of one record
    bool counted;  ///< the second argument is a count of records
    std::function<int(const void *, int)> post;
};

template <typename R>
std::function<int(const void *, int)> one(int (*post)(const R *)) {
    return [post](const void *record, int) { return post(static_cast<const R *>(record)); };
}

template <typename R>
std::function<int(const void *, int)> several(int (*post)(const R *, int)) {
    return [post](const void *record, int second) {
        return post(static_cast<const R *>(record), second);
    };
}

const std::vector<Poster> &posters() {
    static const std::vector<Poster> all = {
        {"gui_update_video_display", "VideoOutputDisplayParameter", 1001, 212, false,
         one(gui_update_video_display)},
        {"gui_update_watermark_pic", "WatermarkPictureParameter", 1002, 380, false,
         one(gui_update_watermark_pic)},
        {"gui_update_watermark_osd", "WatermarkOSDParameter", 1003, 1036, false,
         one(gui_update_watermark_osd)},
        {"gui_update_user_split", "VideoOutputScreenSplitParameter", 1005, 2120, true,
         several(gui_update_user_split)},
        {"gui_update_watermark_dot", "WatermarkDotmatrixParameter", 1009, 408, false,
         one(gui_update_watermark_dot)},
        {"gui_update_videooutput_osd", "VideoOutputOSDParameter", 1010, 568, false,
         several(gui_update_videooutput_osd)},
        {"gui_update_urlinfo", "StreamingInputStatusChange", 1011, 332, true,
         several(gui_update_urlinfo)},
        {"gui_update_video_source", "VideoOutSourceChange", 1012, 76, true,
         several(gui_update_video_source)},
    };
    return all;
}

/** Exactly `size` bytes of which no two neighbours are alike, so that a wrong span shows. */
std::string pattern(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251 + 1);
    return bytes;
}

/** The bytes on the heap alone, so that a sanitizer sees a read past them. */
std::unique_ptr<char[]> on_heap(const std::string &bytes) {
    std::unique_ptr<char[]> block(new char[bytes.size()]);
    std::memcpy(block.get(), bytes.data(), bytes.size());
    return block;
}

TEST_F(Bridge, RefusesANullRecordAndPostsNothing) {
    for (const Poster &poster : posters()) {
        for (const int second : {0, 1, -1, INT_MAX}) {
            EXPECT_EQ(errors_of([&] { EXPECT_EQ(poster.post(nullptr, second), -2); }, kFile),
                      Lines{std::string(poster.name) + ": invalid para\n"});
        }
    }
    EXPECT_EQ(take_events(), Events{});
}

TEST_F(Bridge, PostsACopyOfOneRecord) {
    for (const Poster &poster : posters()) {
        const std::string bytes = pattern(poster.size);
        const auto record = on_heap(bytes);
        EXPECT_EQ(poster.post(record.get(), 1), 0);
        std::memset(record.get(), 0, poster.size);
        const bool with_param = poster.counted || poster.type == 1010;
        EXPECT_EQ(take_events(), (Events{{poster.type, 0, with_param ? 1 : 0, bytes}}))
            << poster.name;
    }
}

TEST_F(Bridge, PostsACopyOfSeveralRecordsWithTheirCount) {
    for (const Poster &poster : posters()) {
        if (!poster.counted) continue;
        for (const int count : {2, 8, 64}) {
            const std::string bytes = pattern(poster.size * static_cast<size_t>(count));
            const auto records = on_heap(bytes);
            EXPECT_EQ(poster.post(records.get(), count), 0);
            EXPECT_EQ(take_events(), (Events{{poster.type, 0, count, bytes}})) << poster.name;
        }
    }
}

TEST_F(Bridge, PostsACountOfNoRecords) {
    const std::string bytes = pattern(2120);
    for (const Poster &poster : posters()) {
        if (!poster.counted) continue;
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(poster.post(bytes.data(), 0), 0); }), Lines{});
        EXPECT_EQ(take_events(), (Events{{poster.type, 0, 0, {}}})) << poster.name;
    }
}

TEST_F(Bridge, ThereIsNoMemoryForANegativeNumberOfRecords) {
    const std::string bytes = pattern(2120);
    for (const Poster &poster : posters()) {
        if (!poster.counted) continue;
        for (const int count : {-1, -2, INT_MIN}) {
            EXPECT_EQ(errors_of([&] { EXPECT_EQ(poster.post(bytes.data(), count), -6); }, kFile),
                      Lines{std::string(poster.name) + ": malloc " + poster.record + " failed!\n"});
        }
    }
    EXPECT_EQ(take_events(), Events{});
}

TEST_F(Bridge, CopiesOneOsdRecordWhateverTheIndex) {
    const std::string bytes = pattern(568);
    const auto record = on_heap(bytes);
    const auto *osd = reinterpret_cast<const VideoOutputOSDParameter *>(record.get());
    for (const int index : {0, 1, 63, 64, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(gui_update_videooutput_osd(osd, index), 0);
        EXPECT_EQ(take_events(), (Events{{1010, 0, index, bytes}})) << index;
    }
}

TEST_F(Bridge, PostsNumbersSignExtended) {
    struct Row {
        int type;
        int (*post)(int);
    };
    const Row rows[] = {
        {1004, gui_switch_split}, {1006, gui_set_ao_window}, {1008, gui_refresh_screen}};
    for (const Row &row : rows) {
        for (const int value : {0, 1, 2, 29, -1, INT_MAX, INT_MIN}) {
            EXPECT_EQ(row.post(value), 0);
            EXPECT_EQ(take_events(), (Events{{row.type, value, 0, {}}}));
        }
    }
}

TEST_F(Bridge, KeepsTheOrderOfPosting) {
    const std::string bytes = pattern(2120);
    Events expected;
    for (int round = 0; round < 3; ++round) {
        for (const Poster &poster : posters()) {
            EXPECT_EQ(poster.post(bytes.data(), 1), 0);
            const bool with_param = poster.counted || poster.type == 1010;
            expected.push_back({poster.type, 0, with_param ? 1 : 0, bytes.substr(0, poster.size)});
        }
        EXPECT_EQ(gui_refresh_screen(2), 0);
        expected.push_back(number_event(1008, 2));
    }
    EXPECT_EQ(take_events(), expected) << "nothing merges or drops events";
}

TEST_F(Bridge, HoldsAFloodUpUntilTheDisplayHasTakenSomeOfItAndDropsNothing) {
    constexpr int kFlood = 6000;
    std::atomic<int> posted{0};
    std::thread flood([&posted] {
        for (; posted < kFlood; ++posted)
            gui_refresh_screen(posted);
    });
    const auto reaches = [&posted](int count, int milliseconds) {
        const QDeadlineTimer limit(milliseconds);
        while (posted < count && !limit.hasExpired())
            std::this_thread::yield();
        return posted >= count;
    };
    EXPECT_TRUE(reaches(1024, 20000));
    EXPECT_FALSE(reaches(1100, 200)) << "the queue grows";
    Events all;
    while (all.size() < kFlood) {
        const Events some = take_events();
        all.insert(all.end(), some.begin(), some.end());
    }
    flood.join();
    for (int i = 0; i < kFlood; ++i)
        ASSERT_EQ(all[i], number_event(1008, i));
}

// ---- running out of memory ----------------------------------------------------------------------

class BridgeWithoutMemory : public Bridge {
protected:
    void SetUp() override {
        if (!kCanRefuseMemory) GTEST_SKIP() << "this build's allocator cannot be made to fail";
    }
};

TEST_F(BridgeWithoutMemory, TellsWhichRecordThereIsNoMemoryFor) {
    const std::string bytes = pattern(2120 * 3);
    for (const Poster &poster : posters()) {
        const int count = poster.counted ? 3 : 1;
        int result = 0;
        const Lines errors = errors_of([&] {
            const RefusedMemory refused(poster.size * static_cast<size_t>(count));
            result = poster.post(bytes.data(), count);
        });
        EXPECT_EQ(result, -6) << poster.name;
        EXPECT_EQ(errors,
                  (Lines{std::string(poster.name) + ": malloc " + poster.record + " failed!\n"}));
    }
    EXPECT_EQ(take_events(), Events{});
}

TEST_F(BridgeWithoutMemory, FreesTheCopyOfAnEventThatCannotBeMade) {
    constexpr int kRounds = 1000;
    const std::string bytes = pattern(2120);
    for (const Poster &poster : posters()) {
        const size_t before = heap_in_use();
        for (int round = 0; round < kRounds; ++round) {
            const RefusedMemory refused(sizeof(UserEvent));
            ASSERT_THROW(poster.post(bytes.data(), 1), std::bad_alloc) << poster.name;
        }
        EXPECT_LT(heap_in_use(), before + kRounds * poster.size / 2) << poster.name;
    }
    EXPECT_EQ(take_events(), Events{});
}

TEST(UserEventLayout, HasFourWordsBehindTheEvent) {
    const UserEvent event(1004, -5, 6);
    EXPECT_EQ(static_cast<int>(event.type()), 1004);
    EXPECT_EQ(event.data, -5);
    EXPECT_EQ(event.param, 6);
    EXPECT_EQ(event.reserved[0], 0);
    EXPECT_EQ(event.reserved[1], 0);
    EXPECT_GE(sizeof(UserEvent), sizeof(QEvent) + 4 * sizeof(qint64));
    const UserEvent plain(1008);
    EXPECT_EQ(plain.data, 0);
    EXPECT_EQ(plain.param, 0);
}

// ---- gui_get_split_window -----------------------------------------------------------------------

TEST(SplitWindow, AWindowsRectangleIsNeverCopiedOut) {
    init_split();
    init_split_info();
    const int untouched[4] = {11, 22, 33, 44};
    const int zero[4] = {0, 0, 0, 0};
    for (int mode = 0; mode < 30; ++mode) {
        for (int index = 0; index <= 4; ++index) {
            int rect[4] = {11, 22, 33, 44};
            EXPECT_EQ(gui_get_split_window(mode, index, rect), 0);
            const bool inside = index < getSplitWndNum(static_cast<unsigned>(mode));
            EXPECT_EQ(bytes_of(rect, 4), bytes_of(inside ? untouched : zero, 4))
                << mode << "/" << index;
        }
    }
}

TEST(SplitWindow, RefusesModesIndicesAndNull) {
    init_split();
    init_split_info();
    int rect[4] = {11, 22, 33, 44};
    for (const int mode : {30, 34, 35, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(gui_get_split_window(mode, 0, rect), -2) << mode;
    }
    for (const int index : {5, 16, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(gui_get_split_window(4, index, rect), -2) << index;
    }
    EXPECT_EQ(gui_get_split_window(4, 0, nullptr), -2);
    EXPECT_EQ(rect[0], 11);
}

}  // namespace
