/** @file app_model_interface_test.cpp The command handlers: keys, feature flags, failure lines. */

#include "app_model_interface.h"

#include <climits>

#include "store_fixture.h"

using namespace store_test;

namespace {

constexpr const char *kFile = "apps/app_gui/src/app_model_interface.cpp";

class Handlers : public Store {
protected:
    Handlers() { load(); }
};

/** Error lines of `work` whose function is `function`. */
Lines lines_of(const std::string &function, const std::function<void()> &work) {
    Lines lines;
    for (const std::string &line : errors_of(work)) {
        if (line.compare(0, function.size() + 2, function + ": ") == 0) lines.push_back(line);
    }
    return lines;
}

// ---- interface keys -----------------------------------------------------------------------------

/** One family of handlers with an interface key. */
template <typename R>
struct Family {
    std::string name;
    int (*size)(const char *);
    int (*get)(const char *, R *);
    int (*set)(const char *, const R *);
    int per_interface;
    int event;  ///< posted for a change of the records, 0 for none
    R *stored;
    void (*change)(R &);  ///< makes another valid record of it
};

template <typename R>
void expect_sizes(const Family<R> &family) {
    EXPECT_EQ(family.size(nullptr), 0) << family.name;
    EXPECT_EQ(family.size(""), kInterfaces * family.per_interface) << family.name;
    EXPECT_EQ(family.size("HDMI1"), family.per_interface) << family.name;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(family.size("unknown"), family.per_interface); }), Lines{})
        << "whether or not such an interface exists";
}

template <typename R>
void expect_gets(const Family<R> &family) {
    const auto count = static_cast<size_t>(family.per_interface);
    for (int i = 0; i < kInterfaces; ++i) {
        std::vector<R> out(count + 1);
        EXPECT_EQ(family.get(interface_name(i), out.data()), 0);
        EXPECT_EQ(bytes_of(out.data(), count),
                  bytes_of(family.stored + i * family.per_interface, count))
            << family.name;
        EXPECT_EQ(bytes_of(out[count]), bytes_of(R{}));
    }
    std::vector<R> all(2 * count + 1);
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(family.get("", all.data()), 0); }), Lines{});
    EXPECT_EQ(bytes_of(all.data(), 2 * count), bytes_of(family.stored, 2 * count)) << family.name;
    EXPECT_EQ(bytes_of(all[2 * count]), bytes_of(R{}));

    const Lines told = {"Get" + family.name + ": if_name:HDMI9 fail ret:-2\n"};
    EXPECT_EQ(
        lines_of("Get" + family.name, [&] { EXPECT_EQ(family.get("HDMI9", all.data()), -2); }),
        told);
    EXPECT_EQ(lines_of("Get" + family.name, [&] { EXPECT_EQ(family.get("", nullptr), -2); }),
              (Lines{"Get" + family.name + ": if_name:HDMI1 fail ret:-2\n"}));
    errors_of([&] { EXPECT_EQ(family.get(nullptr, all.data()), -2); });
}

template <typename R>
void expect_sets(const Family<R> &family) {
    const auto count = static_cast<size_t>(family.per_interface);
    const std::string function = "Set" + family.name;
    std::vector<R> all(family.stored, family.stored + 2 * count);
    const std::vector<R> before = all;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(family.set("", all.data()), 0); }), Lines{});
    EXPECT_EQ(take_events(), Events{}) << "nothing differs: " << family.name;

    family.change(all[0]);
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(family.set("HDMI1", all.data()), 0); }), Lines{});
    EXPECT_EQ(bytes_of(family.stored[0]), bytes_of(all[0])) << family.name;
    EXPECT_EQ(take_events().size(), family.event == 0 ? 0u : 1u) << family.name;

    EXPECT_EQ(lines_of(function, [&] { EXPECT_EQ(family.set("HDMI2", all.data()), -2); }),
              (Lines{function + ": if_name:HDMI2 fail ret:-2\n"}));
    EXPECT_EQ(lines_of(function, [&] { EXPECT_EQ(family.set("", nullptr), -2); }),
              (Lines{function + ": if_name:HDMI1 fail ret:-2\n"}));
    take_events();
}

/** The second of two records is refused: the first one stays applied. */
template <typename R>
void expect_partial_set(const Family<R> &family) {
    const auto count = static_cast<size_t>(family.per_interface);
    const std::string function = "Set" + family.name;
    std::vector<R> all(family.stored, family.stored + 2 * count);
    const std::vector<R> before = all;
    family.change(all[0]);
    put(all[count].if_name, "nobody");
    EXPECT_EQ(lines_of(function, [&] { EXPECT_EQ(family.set("", all.data()), -2); }),
              (Lines{function + ": if_name:HDMI2 fail ret:-2\n"}));
    EXPECT_EQ(bytes_of(family.stored[0]), bytes_of(all[0])) << "stays applied: " << family.name;
    EXPECT_EQ(bytes_of(family.stored[count]), bytes_of(before[count])) << family.name;
    const Events events = take_events();
    ASSERT_EQ(events.size(), family.event == 0 ? 0u : 1u) << family.name;
    if (family.event != 0) {
        EXPECT_EQ(events[0].type, family.event);
    }

    // The first of two records is refused: the second one is not looked at.
    std::copy(before.begin(), before.end(), all.begin());
    std::copy(before.begin(), before.end(), family.stored);
    put(all[0].if_name, "nobody");
    family.change(all[count]);
    EXPECT_EQ(lines_of(function, [&] { EXPECT_EQ(family.set("", all.data()), -2); }),
              (Lines{function + ": if_name:HDMI1 fail ret:-2\n"}));
    EXPECT_EQ(bytes_of(family.stored, 2 * count), bytes_of(before.data(), 2 * count));
    EXPECT_EQ(take_events(), Events{});
}

template <typename Run>
void for_every_family(Run run) {
    run(Family<VideoOutputInterfaceParameter>{
        "VideoOutputInterfaceParameter", GetVideoOutputInterfaceParameterSize,
        GetVideoOutputInterfaceParameter, SetVideoOutputInterfaceParameter, 1, 1004,
        data_VideoOutputInterfaceParameter,
        [](VideoOutputInterfaceParameter &r) { r.UserSplitIndex = 1; }});
    run(Family<VideoOutputScreenSplitParameter>{
        "VideoOutputScreenSplitParameter", GetVideoOutputScreenSplitParameterSize,
        GetVideoOutputScreenSplitParameter, SetVideoOutputScreenSplitParameter, kSplitRecords, 1005,
        data_VideoOutputScreenSplitParameter,
        [](VideoOutputScreenSplitParameter &r) { r.WindowNum += 1; }});
    run(Family<WatermarkOSDParameter>{"WatermarkOSDParameter", GetWatermarkOSDParameterSize,
                                      GetWatermarkOSDParameter, SetWatermarkOSDParameter, 1, 1003,
                                      data_WatermarkOSDParameter,
                                      [](WatermarkOSDParameter &r) { r.visible += 1; }});
    run(Family<WatermarkPictureParameter>{
        "WatermarkPictureParameter", GetWatermarkPictureParameterSize, GetWatermarkPictureParameter,
        SetWatermarkPictureParameter, 1, 1002, data_WatermarkPictureParameter,
        [](WatermarkPictureParameter &r) { r.visible += 1; }});
    run(Family<WatermarkDotmatrixParameter>{
        "WatermarkDotmatrixParameter", GetWatermarkDotmatrixParameterSize,
        GetWatermarkDotmatrixParameter, SetWatermarkDotmatrixParameter, 1, 0,
        data_WatermarkDotmatrixParameter, [](WatermarkDotmatrixParameter &r) { r.visible += 1; }});
}

TEST_F(Handlers, SizeIsNoneForNullAllForTheEmptyKeyElseOne) {
    for_every_family([](const auto &family) { expect_sizes(family); });
}

TEST_F(Handlers, GetFillsTheRecordsOfOneOrOfEveryInterface) {
    for_every_family([](const auto &family) { expect_gets(family); });
}

TEST_F(Handlers, SetAppliesTheRecordsOfOneOrOfEveryInterface) {
    for_every_family([](const auto &family) { expect_sets(family); });
}

TEST_F(Handlers, WhatWasAppliedBeforeAFailureStaysApplied) {
    for_every_family([](const auto &family) { expect_partial_set(family); });
}

TEST_F(Handlers, EveryKeyIsDoneWithoutInterfaces) {
    num_VideoOutputInterface = 0;
    for_every_family([](const auto &family) {
        std::vector<std::decay_t<decltype(*family.stored)>> record(1);
        EXPECT_EQ(family.size(""), 0);
        EXPECT_EQ(family.get("", record.data()), 0);
        EXPECT_EQ(family.get("", nullptr), 0);
        EXPECT_EQ(family.set("", record.data()), 0);
    });
}

TEST_F(Handlers, FailureLinesNameTheHandlersFile) {
    WatermarkOSDParameter record{};
    const std::string text = captured(2, [&] { SetWatermarkOSDParameter("HDMI9", &record); });
    EXPECT_NE(text.find(std::string("\033[1;31m<ERROR! ") + kFile + ":"), text.npos);
    EXPECT_NE(text.find(", SetWatermarkOSDParameter>: if_name:HDMI9 fail ret:-2\n\033[0m"),
              text.npos);
}

TEST_F(Handlers, AnUnknownInterfaceIsToldByEveryLayer) {
    VideoOutputInterfaceParameter record{};
    EXPECT_EQ(errors_of([&] {
                  EXPECT_EQ(GetVideoOutputInterfaceParameterSize("HDMI9"), 1);
                  EXPECT_EQ(GetVideoOutputInterfaceParameter("HDMI9", &record), -2);
              }),
              (Lines{"get_VideoOutputInterface_intf: if_name=HDMI9 invalid\n",
                     "GetVideoOutputInterfaceParameter: if_name:HDMI9 fail ret:-2\n"}));
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetVideoOutputInterfaceParameter("HDMI9", &record), -2); }),
              (Lines{"get_VideoOutputInterface_intf: if_name=HDMI9 invalid\n",
                     "check_VideoOutputInterfaceParameter: if_name=HDMI9 invalid\n",
                     "set_VideoOutputInterfaceParameter: HDMI9 invalid\n",
                     "SetVideoOutputInterfaceParameter: if_name:HDMI9 fail ret:-2\n"}));
}

// ---- feature flags ------------------------------------------------------------------------------

TEST_F(Handlers, WatermarksNeedTheFlagOfTheFirstInterface) {
    data_VideoOutputInterface[0].WatermarkSupported = 0;
    const std::string before = store_bytes();
    WatermarkOSDParameter text{};
    WatermarkPictureParameter picture{};
    WatermarkDotmatrixParameter dots{};
    const Lines errors = errors_of([&] {
        for (const char *key : {"", "HDMI1", "HDMI2", "HDMI9"}) {
            EXPECT_EQ(GetWatermarkOSDParameterSize(key), 0);
            EXPECT_EQ(GetWatermarkPictureParameterSize(key), 0);
            EXPECT_EQ(GetWatermarkDotmatrixParameterSize(key), 0);
            EXPECT_EQ(GetWatermarkOSDParameter(key, &text), -4);
            EXPECT_EQ(GetWatermarkPictureParameter(key, &picture), -4);
            EXPECT_EQ(GetWatermarkDotmatrixParameter(key, &dots), -4);
            EXPECT_EQ(SetWatermarkOSDParameter(key, &text), -4);
            EXPECT_EQ(SetWatermarkPictureParameter(key, &picture), -4);
            EXPECT_EQ(SetWatermarkDotmatrixParameter(key, &dots), -4);
        }
    });
    EXPECT_EQ(errors, Lines{});
    EXPECT_EQ(take_events(), Events{});
    EXPECT_EQ(store_bytes(), before);
}

TEST_F(Handlers, FlagsOfTheSecondInterfaceDoNotCount) {
    data_VideoOutputInterface[1].WatermarkSupported = 0;
    data_VideoOutputInterface[1].OSDSupported = 0;
    WatermarkOSDParameter text{};
    VideoOutputOSDParameter entries[kOsdEntries];
    EXPECT_EQ(GetWatermarkOSDParameter("HDMI2", &text), 0);
    EXPECT_EQ(GetVideoOutputOSDParameter(0, entries), 0);
    data_VideoOutputInterface[0].WatermarkSupported = 0;
    data_VideoOutputInterface[1].WatermarkSupported = 1;
    EXPECT_EQ(GetWatermarkOSDParameter("HDMI2", &text), -4);
    data_VideoOutputInterface[0].WatermarkSupported = -1;
    EXPECT_EQ(GetWatermarkOSDParameter("HDMI2", &text), 0) << "any value but 0";
}

TEST_F(Handlers, UploadIsNotGatedAndHasNoEveryKeyForm) {
    data_VideoOutputInterface[0].WatermarkSupported = 0;
    EXPECT_EQ(errors_of([] { EXPECT_EQ(UploadWatermarkPicture("HDMI2"), 0); }), Lines{});
    EXPECT_EQ(take_events(), (Events{record_event(1002, device.pictures[1])}));
    EXPECT_EQ(errors_of([] { EXPECT_EQ(UploadWatermarkPicture(""), -2); }),
              (Lines{"get_VideoOutputInterface_intf: if_name= invalid\n",
                     "UploadWatermarkPicture: if_name: fail ret:-2\n"}));
    errors_of([] { EXPECT_EQ(UploadWatermarkPicture(nullptr), -2); });
    EXPECT_EQ(take_events(), Events{});
}

// ---- the display record -------------------------------------------------------------------------

TEST_F(Handlers, DisplayIsForwardedWithoutALineOfItsOwn) {
    VideoOutputDisplayParameter record{};
    EXPECT_EQ(GetVideoOutputDisplayParameter(&record), 0);
    EXPECT_EQ(bytes_of(record), bytes_of(device.display));
    record.BorderWidth = 7;
    EXPECT_EQ(SetVideoOutputDisplayParameter(&record), 0);
    EXPECT_EQ(take_events(), (Events{record_event(1001, record)}));
    record.playmode = 5;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetVideoOutputDisplayParameter(&record), -2); }),
              (Lines{"check_VideoOutputDisplayParameter: playmode=5 > max=1 invalid\n",
                     "set_VideoOutputDisplayParameter: invalid\n"}));
    EXPECT_EQ(GetVideoOutputDisplayParameter(nullptr), -2);
}

// ---- channel keys -------------------------------------------------------------------------------

TEST_F(Handlers, OsdSizeIsThatOfOneOrOfEveryChannel) {
    struct Row {
        int channel, size;
    };
    const Row rows[] = {{-1, kChannels * kOsdEntries},
                        {0, kOsdEntries},
                        {15, kOsdEntries},
                        {16, 0},
                        {-2, 0},
                        {INT_MAX, 0},
                        {INT_MIN, 0}};
    for (const Row &row : rows) {
        EXPECT_EQ(GetVideoOutputOSDParameterSize(row.channel), row.size) << row.channel;
    }
    data_VideoOutputInterface[0].OSDSupported = 0;
    for (const Row &row : rows)
        EXPECT_EQ(GetVideoOutputOSDParameterSize(row.channel), 0);
}

TEST_F(Handlers, OsdGetFillsOneOrEveryChannel) {
    std::vector<VideoOutputOSDParameter> out(65);
    EXPECT_EQ(GetVideoOutputOSDParameter(6, out.data()), 0);
    EXPECT_EQ(bytes_of(out.data(), 4), bytes_of(&device.osd[24], 4));
    EXPECT_EQ(bytes_of(out[4]), bytes_of(VideoOutputOSDParameter{}));
    EXPECT_EQ(GetVideoOutputOSDParameter(-1, out.data()), 0);
    EXPECT_EQ(bytes_of(out.data(), 64), bytes_of(device.osd.data(), 64));
    EXPECT_EQ(bytes_of(out[64]), bytes_of(VideoOutputOSDParameter{}));
    for (const int key : {0, -1}) {
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(GetVideoOutputOSDParameter(key, nullptr), -2); }),
                  (Lines{"get_VideoOutputOSDParameter: chn0 invalid\n",
                         "GetVideoOutputOSDParameter: chn0 fail ret:-2\n"}));
    }
}

TEST_F(Handlers, ChannelsThatTheDeviceLacksAreInvalid) {
    std::vector<VideoOutputOSDParameter> entries(64);
    for (const int channel : {-2, kChannels, INT_MAX, INT_MIN}) {
        const std::string message = ": chn " + std::to_string(channel) + " invalid\n";
        EXPECT_EQ(
            errors_of([&] { EXPECT_EQ(GetVideoOutputOSDParameter(channel, entries.data()), -2); },
                      kFile),
            Lines{"GetVideoOutputOSDParameter" + message});
        EXPECT_EQ(
            errors_of([&] { EXPECT_EQ(SetVideoOutputOSDParameter(channel, entries.data()), -2); },
                      kFile),
            Lines{"SetVideoOutputOSDParameter" + message});
    }
}

TEST_F(Handlers, OsdSetAppliesOneOrEveryChannelAndTellsTheDisplay) {
    std::vector<VideoOutputOSDParameter> all = device.osd;
    all[30].visible = 5;
    EXPECT_EQ(SetVideoOutputOSDParameter(7, &all[28]), 0);
    EXPECT_EQ(take_events(), (Events{record_event(1010, all[30], 30)})) << "never silent";
    all[1].size = 11;
    all[63].size = 12;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetVideoOutputOSDParameter(-1, all.data()), 0); }),
              Lines{});
    EXPECT_EQ(take_events(),
              (Events{record_event(1010, all[1], 1), record_event(1010, all[63], 63)}));
    EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter, 64), bytes_of(all.data(), 64));
}

TEST_F(Handlers, OsdSetOfEveryChannelStopsAtTheFirstFailure) {
    std::vector<VideoOutputOSDParameter> all = device.osd;
    for (VideoOutputOSDParameter &entry : all)
        entry.size = 99;
    all[5 * kOsdEntries].Channel = 4;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetVideoOutputOSDParameter(-1, all.data()), -2); }),
              (Lines{"check_VideoOutputOSDParameter: Channel[4] invalid\n",
                     "set_VideoOutputOSDParameter: chn=5 invalid\n",
                     "SetVideoOutputOSDParameter: 5 fail[-2]\n"}));
    EXPECT_EQ(take_events().size(), 5u * kOsdEntries);
    EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter, 20), bytes_of(all.data(), 20));
    EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter + 20, 44), bytes_of(&device.osd[20], 44));
}

TEST_F(Handlers, OsdAndStreamsNeedTheFlagOfTheFirstInterface) {
    data_VideoOutputInterface[0].OSDSupported = 0;
    StreamingInputStatusChange stream = data_StreamingInputStatusChange[0];
    stream.status = 1;
    EXPECT_EQ(errors_of([&] {
                  for (const int channel : {-1, 0, 15, 16}) {
                      EXPECT_EQ(GetVideoOutputOSDParameter(channel, device.osd.data()), -4);
                      EXPECT_EQ(SetVideoOutputOSDParameter(channel, device.osd.data()), -4);
                  }
                  EXPECT_EQ(SetStreamingInputStatusChange(&stream), -4);
                  EXPECT_EQ(SetStreamingInputStatusChange(nullptr), -4);
              }),
              Lines{});
    EXPECT_EQ(take_events(), Events{});
    EXPECT_EQ(data_StreamingInputStatusChange[0].status, 0);
}

// ---- notifications ------------------------------------------------------------------------------

TEST_F(Handlers, SourceChangeIsForTheWindowInTheRecord) {
    VideoOutSourceChange record{};
    record.Channel = 9;
    record.index = 2;
    EXPECT_EQ(SetVideoOutSourceChange(&record), 0);
    EXPECT_EQ(take_events(), (Events{run_event(1012, &record, 1)}));
    EXPECT_EQ(bytes_of(data_VideoOutSourceChange[9]), bytes_of(record));
    for (const int channel : {-1, 16, INT_MAX, INT_MIN}) {
        record.Channel = channel;
        const std::string number = std::to_string(channel);
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetVideoOutSourceChange(&record), -2); }),
                  (Lines{"set_VideoOutSourceChange: chn " + number + " invalid\n",
                         "SetVideoOutSourceChange: " + number + " fail[-2]\n"}));
    }
    errors_of([] { EXPECT_EQ(SetVideoOutSourceChange(nullptr), -2); });
}

TEST_F(Handlers, OnlyAudioOutputZeroIsServedARecordForAnotherIsIgnored) {
    const std::string before = store_bytes();
    AudioOutSourceChange record{};
    record.type = 2;
    record.index = 3;
    for (const int output : {1, 2, -1, INT_MAX, INT_MIN}) {
        record.Channel = output;
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetAudioOutSourceChange(&record), 0); }), Lines{});
    }
    EXPECT_EQ(take_events(), Events{});
    EXPECT_EQ(store_bytes(), before);
    record.Channel = 0;
    EXPECT_EQ(SetAudioOutSourceChange(&record), 0);
    EXPECT_EQ(take_events(), (Events{number_event(1006, 3)}));
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[0]), bytes_of(record));
    EXPECT_EQ(SetAudioOutSourceChange(nullptr), -2);
}

TEST_F(Handlers, StreamStatusIsForTheStreamInTheRecord) {
    StreamingInputStatusChange record{};
    record.index = 4;
    record.status = 2;
    EXPECT_EQ(SetStreamingInputStatusChange(&record), 0);
    EXPECT_EQ(take_events(), (Events{run_event(1011, &record, 1)}));
    record.index = kStreams;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(SetStreamingInputStatusChange(&record), -2); }),
              (Lines{"set_StreamingInputStatusChange: index 20 invalid\n",
                     "SetStreamingInputStatusChange: fail ret:-2\n"}));
}

}  // namespace
