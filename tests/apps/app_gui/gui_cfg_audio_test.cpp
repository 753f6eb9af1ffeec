/**
 * @file gui_cfg_audio_test.cpp
 * Sources of windows and of the audio, the audio window that follows from both, and the push of the
 * whole state at start.
 */

#include <climits>

#include "gui_cfg.h"
#include "store_fixture.h"
#include "wnd_split.h"

using namespace store_test;

namespace {

VideoOutSourceChange video_source(int channel, int type, int index) {
    VideoOutSourceChange source{};
    source.Channel = channel;
    source.index = index;
    source.type = type;
    return source;
}

AudioOutSourceChange audio_source(int type, int index) {
    AudioOutSourceChange source{};
    put(source.if_name, "HDMI1");
    source.index = index;
    source.type = type;
    return source;
}

TEST_F(Settings, SourceNeedsAChannelOfTheDevice) {
    const VideoOutSourceChange record = video_source(0, 0, 0);
    for (const int channel : {-1, kChannels, int{kSourceElements}, INT_MAX, INT_MIN}) {
        expect_refused([&] { return set_VideoOutSourceChange(channel, &record); },
                       {"set_VideoOutSourceChange: chn " + std::to_string(channel) + " invalid\n"});
    }
    data_DeviceCapabilitySet[0].VideoOutputChannelNum = 5;
    expect_refused([&] { return set_VideoOutSourceChange(5, &record); },
                   {"set_VideoOutSourceChange: chn 5 invalid\n"});
}

TEST_F(Settings, SourceIsStoredWithoutFurtherValidation) {
    VideoOutSourceChange record = video_source(99, INT_MIN, INT_MAX);
    std::memset(record.if_name, 0xFF, sizeof record.if_name);
    EXPECT_EQ(events_of([&] { return set_VideoOutSourceChange(5, &record); }),
              (Events{run_event(1012, &record, 1)}));
    EXPECT_EQ(bytes_of(data_VideoOutSourceChange[5]), bytes_of(record));
    EXPECT_EQ(user_files(), 10u);
}

TEST_F(Settings, ThePreviousRecordIsReadAtTwiceTheChannelsNumber) {
    for (int channel = 0; channel < kChannels; ++channel) {
        for (int i = 0; i < kSourceElements; ++i) {
            data_VideoOutSourceChange[i] =
                i < kChannels ? video_source(i, 1, i) : VideoOutSourceChange{};
        }
        audWndIdx = -1;
        const VideoOutSourceChange twice = data_VideoOutSourceChange[2 * channel];
        expect_no_effect([&] { return set_VideoOutSourceChange(channel, &twice); });

        const VideoOutSourceChange own = data_VideoOutSourceChange[channel];
        if (channel == 0) continue;
        EXPECT_EQ(events_of([&] { return set_VideoOutSourceChange(channel, &own); }),
                  (Events{run_event(1012, &own, 1)}))
            << "the stored record itself counts as a change, channel " << channel;
    }
}

/** State before a change of a window's source. */
struct SourceState {
    int audio_type, audio_index, audio_window;
    VideoOutSourceChange previous;
};

/** The audio window's follow-up as one sentence after the other says it. */
Events source_reference(const SourceState &state, int channel, const VideoOutSourceChange &record,
                        int *audio_window) {
    Events events;
    *audio_window = state.audio_window;
    const bool index_changed = record.index != state.previous.index;
    const bool between_streams = record.type == 1 && state.previous.type == 1;
    if (!(index_changed && between_streams)) {
        const bool bound = state.audio_type == 0 && record.type == 0;
        if (bound && record.index == state.audio_index) {
            events.push_back(number_event(1006, channel));
            *audio_window = channel;
        } else if (state.audio_window == channel) {
            events.push_back(number_event(1006, -1));
            *audio_window = -1;
        }
    }
    events.push_back(run_event(1012, &record, 1));
    return events;
}

TEST_F(Settings, AudioWindowFollowsTheSourceOfAWindowInEveryCase) {
    const int types[] = {0, 1, 2};
    const int indices[] = {-1, 4, 5};
    for (const int channel : {0, 3, 11})
        for (const int audio_type : types)
            for (const int audio_index : indices)
                for (const int audio_window : {-1, channel, 7})
                    for (const int old_type : types)
                        for (const int old_index : indices)
                            for (const int new_type : types)
                                for (const int new_index : indices) {
                                    const SourceState state = {
                                        audio_type, audio_index, audio_window,
                                        video_source(channel, old_type, old_index)};
                                    data_AudioOutSourceChange[0] =
                                        audio_source(audio_type, audio_index);
                                    audWndIdx = audio_window;
                                    data_VideoOutSourceChange[2 * channel] = state.previous;
                                    const auto record = video_source(channel, new_type, new_index);
                                    int window = audio_window;
                                    const Events expected =
                                        new_type == old_type && new_index == old_index
                                            ? Events{}
                                            : source_reference(state, channel, record, &window);
                                    ASSERT_EQ(set_VideoOutSourceChange(channel, &record), 0);
                                    ASSERT_EQ(take_events(), expected)
                                        << "audio " << audio_type << "/" << audio_index << " at "
                                        << audio_window << ", channel " << channel << " from "
                                        << old_type << "/" << old_index << " to " << new_type << "/"
                                        << new_index;
                                    ASSERT_EQ(audWndIdx, window);
                                }
}

TEST_F(Settings, AudioWindowFollowsTheAudioSourceInEveryCase) {
    const int types[] = {-1, 0, 1, 2, 3};
    const int indices[] = {-1, 2, 9, 40};
    data_VideoOutSourceChange[4] = video_source(4, 1, 9);
    data_VideoOutSourceChange[6] = video_source(6, 0, 9);
    data_VideoOutSourceChange[8] = video_source(8, 0, 9);
    data_VideoOutSourceChange[15] = video_source(15, 0, -1);
    const auto window_of = [](int index) { return index == 9 ? 6 : index == -1 ? 15 : -1; };
    for (const int old_type : types)
        for (const int old_index : indices)
            for (const int new_type : types)
                for (const int new_index : indices) {
                    data_AudioOutSourceChange[0] = audio_source(old_type, old_index);
                    audWndIdx = 12;
                    auto record = audio_source(new_type, new_index);
                    put(record.if_name, "other");
                    int posted = -1;
                    int window = -1;
                    if (new_type == 2) posted = new_index;
                    if (new_type == 0) posted = window = window_of(new_index);
                    const bool same = new_type == old_type && new_index == old_index;
                    ASSERT_EQ(set_AudioOutSourceChange(0, &record), 0);
                    ASSERT_EQ(take_events(), same ? Events{} : Events{number_event(1006, posted)})
                        << old_type << "/" << old_index << " to " << new_type << "/" << new_index;
                    ASSERT_EQ(audWndIdx, same ? 12 : window);
                    ASSERT_EQ(bytes_of(data_AudioOutSourceChange[0]), bytes_of(record))
                        << "stored also when nothing differed";
                }
}

TEST_F(Settings, OnlyTheFirstAudioOutputIsHandled) {
    const AudioOutSourceChange record = audio_source(2, 3);
    for (const int output : {1, 2, -1, INT_MAX, INT_MIN}) {
        expect_no_effect([&] { return set_AudioOutSourceChange(output, &record); });
    }
}

TEST_F(Settings, NullSourcesAreRefused) {
    const std::string before = store_bytes();
    errors_of([] {
        EXPECT_EQ(set_VideoOutSourceChange(0, nullptr), -2);
        EXPECT_EQ(set_AudioOutSourceChange(0, nullptr), -2);
        EXPECT_EQ(set_StreamingInputStatusChange(nullptr), -2);
    });
    EXPECT_EQ(store_bytes(), before);
    EXPECT_EQ(take_events(), Events{});
}

// ---- start --------------------------------------------------------------------------------------

class Start : public Settings {
protected:
    /** The events that come whatever the device supports, after the audio window's. */
    Events always(int split) {
        return {record_event(1001, device.display),
                run_event(1005, device.splits.data(), kSplitRecords), number_event(1004, split)};
    }
    Events osd_events() {
        Events events = {run_event(1011, data_StreamingInputStatusChange, kStreams),
                         run_event(1012, data_VideoOutSourceChange, kChannels)};
        for (size_t i = 0; i < device.osd.size(); ++i) {
            events.push_back(record_event(1010, device.osd[i], static_cast<int>(i)));
        }
        return events;
    }
    Events watermark_events() {
        return {record_event(1003, device.texts[0]), record_event(1002, device.pictures[0]),
                record_event(1009, device.dots[0])};
    }
};

TEST_F(Start, PushesTheWholeStateInOrder) {
    for (const int osd : {0, 1, -1}) {
        for (const int watermark : {0, 1, 7}) {
            data_VideoOutputInterface[0].OSDSupported = osd;
            data_VideoOutputInterface[0].WatermarkSupported = watermark;
            data_VideoOutputInterface[1].OSDSupported = !osd;
            data_VideoOutputInterface[1].WatermarkSupported = !watermark;
            Events expected = {number_event(1006, -1)};
            const auto append = [&](const Events &more) {
                expected.insert(expected.end(), more.begin(), more.end());
            };
            append(always(static_cast<int>(getSplitMode("Mode4"))));
            if (osd != 0) append(osd_events());
            if (watermark != 0) append(watermark_events());
            EXPECT_EQ(events_of(start_process), expected) << osd << " " << watermark;
        }
    }
}

TEST_F(Start, SelectsTheAudioWindowByTheAudioSource) {
    data_VideoOutSourceChange[6] = video_source(6, 0, 9);
    data_VideoOutSourceChange[8] = video_source(8, 0, 9);
    struct Row {
        int type, index, posted, stored;
    };
    const Row rows[] = {{2, 5, 5, -1},  {2, -1, -1, -1}, {0, 9, 6, 6},   {0, 10, -1, -1},
                        {1, 7, -1, -1}, {3, 9, -1, -1},  {-1, 9, -1, -1}};
    for (const Row &row : rows) {
        data_AudioOutSourceChange[0] = audio_source(row.type, row.index);
        audWndIdx = 3;
        const Events events = events_of(start_process);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events[0], number_event(1006, row.posted)) << row.type << "/" << row.index;
        EXPECT_EQ(audWndIdx, row.stored);
    }
}

TEST_F(Start, SelectsTheSplitOfTheFirstInterface) {
    struct Row {
        int layout;
        int mode;
    };
    const int named = static_cast<int>(getSplitMode("Mode4"));
    const Row rows[] = {{-1, named}, {0, 26}, {3, 29}, {4, named}, {INT_MAX, named}};
    data_VideoOutputInterfaceParameter[1].UserSplitIndex = 2;
    for (const Row &row : rows) {
        data_VideoOutputInterfaceParameter[0].UserSplitIndex = row.layout;
        const Events events = events_of(start_process);
        ASSERT_GT(events.size(), 3u);
        EXPECT_EQ(events[3], number_event(1004, row.mode)) << row.layout;
    }
}

TEST_F(Start, PushesTheStateThatWasPreparedBeforeWhatWasChangedMeanwhile) {
    prepare_start_process();
    const VideoOutputDisplayParameter loaded = device.display;
    VideoOutputDisplayParameter changed = loaded;
    changed.BorderWidth = loaded.BorderWidth + 1;
    const Events events = events_of([&] {
        // What the message thread does while the main thread has not come to start_process() yet.
        EXPECT_EQ(set_VideoOutputDisplayParameter(&changed), 0);
        return start_process();
    });
    ASSERT_GT(events.size(), 2u);
    EXPECT_EQ(events[1], record_event(1001, loaded));
    EXPECT_EQ(events.back(), record_event(1001, changed));
    EXPECT_EQ(data_VideoOutputDisplayParameter[0].BorderWidth, changed.BorderWidth);
}

TEST_F(Start, ASecondTimePushesTheStateOfThen) {
    prepare_start_process();
    events_of(start_process);
    data_VideoOutputDisplayParameter[0].BorderWidth = 42;
    const Events events = events_of(start_process);
    ASSERT_GT(events.size(), 2u);
    EXPECT_EQ(events[1], record_event(1001, data_VideoOutputDisplayParameter[0]));
}

}  // namespace
