/** @file gui_cfg_memory_test.cpp Sources and streams while there is no memory to tell the display.
 */

#include <new>

#include "store_fixture.h"
#include "store_memory.h"

using namespace store_test;

namespace {

class SettingsWithoutMemory : public Settings {
protected:
    void SetUp() override {
        if (!kCanRefuseMemory) GTEST_SKIP() << "this build's allocator cannot be made to fail";
    }

    /** Expects that the set fails in both ways, changes nothing, and posts when it is repeated. */
    template <typename R>
    void expect_undone(const std::function<int()> &set, int type, const R &record) {
        const std::string before = store_bytes();
        {
            const RefusedMemory no_event(sizeof(UserEvent));
            EXPECT_THROW(set(), std::bad_alloc);
        }
        EXPECT_EQ(store_bytes(), before);
        errors_of([&] {
            const RefusedMemory no_copy(sizeof record);
            EXPECT_EQ(set(), -6);
        });
        EXPECT_EQ(store_bytes(), before);
        EXPECT_EQ(take_events(), Events{});
        EXPECT_EQ(events_of(set), (Events{run_event(type, &record, 1)}));
        EXPECT_NE(store_bytes(), before);
    }
};

TEST_F(SettingsWithoutMemory, AStreamThatTheDisplayCannotBeToldIsNotStored) {
    StreamingInputStatusChange record = data_StreamingInputStatusChange[3];
    put(record.name, "changed");
    expect_undone([&] { return set_StreamingInputStatusChange(&record); }, 1011, record);
}

TEST_F(SettingsWithoutMemory, ASourceThatTheDisplayCannotBeToldIsNotStored) {
    for (const int channel : {0, 5}) {
        VideoOutSourceChange record = data_VideoOutSourceChange[channel];
        record.index += 1;
        expect_undone([&] { return set_VideoOutSourceChange(channel, &record); }, 1012, record);
    }
}

TEST_F(SettingsWithoutMemory, TheAudioWindowOfASourceThatIsNotStoredIsTakenBack) {
    struct Row {
        int window;  ///< audio window before
        int index;   ///< video input that the window is to show; the audio is that of input 4
        int told;    ///< audio window that follows from it
    };
    for (const Row &row : {Row{-1, 4, 0}, Row{0, 5, -1}, Row{7, 4, 0}}) {
        data_AudioOutSourceChange[0].type = 0;
        data_AudioOutSourceChange[0].index = 4;
        data_VideoOutSourceChange[0] = {0, "", row.window == 0 ? 4 : 9, 0};
        audWndIdx = row.window;
        const VideoOutSourceChange record{0, "", row.index, 0};
        const std::string before = store_bytes();
        errors_of([&] {
            const RefusedMemory no_copy(sizeof record);
            EXPECT_EQ(set_VideoOutSourceChange(0, &record), -6);
        });
        EXPECT_EQ(store_bytes(), before);
        EXPECT_EQ(take_events(),
                  (Events{number_event(1006, row.told), number_event(1006, row.window)}));
        EXPECT_EQ(events_of([&] { return set_VideoOutSourceChange(0, &record); }),
                  (Events{number_event(1006, row.told), run_event(1012, &record, 1)}));
        EXPECT_EQ(audWndIdx, row.told);
    }
}

}  // namespace
