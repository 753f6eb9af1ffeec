/** @file gui_cfg_check_test.cpp Which records the store accepts, and what it puts in their place.
 */

#include <climits>

#include "store_fixture.h"

using namespace store_test;

namespace {

constexpr const char *kFile = "apps/app_gui/src/gui_cfg_check.cpp";

class Check : public Store {
protected:
    Check() { load(); }
};

/** A valid record with one change, and what the check says to it. */
template <typename R>
struct Case {
    const char *name;
    std::function<void(R &)> change;
    int result;
    Lines errors;
};

template <typename R, typename Run>
void expect_cases(const R &valid, const std::vector<Case<R>> &cases, Run check) {
    for (const Case<R> &one : cases) {
        R record = valid;
        one.change(record);
        int result = -100;
        EXPECT_EQ(errors_of([&] { result = check(&record); }), one.errors) << one.name;
        EXPECT_EQ(result, one.result) << one.name;
    }
}

// ---- find_num -----------------------------------------------------------------------------------

TEST(FindNum, KnowsNumbersAndRangesInBothDirections) {
    struct Row {
        const char *list;
        std::vector<int> held;
        std::vector<int> missing;
    };
    const Row rows[] = {
        {"1;3-5;9-7", {1, 3, 4, 5, 7, 8, 9}, {0, 2, 6, 10, -1, 13, INT_MAX, INT_MIN}},
        {"", {}, {0, 1, -1}},
        {";;;", {}, {0, 1, -1}},
        {";;4;;", {4}, {0, 3, 5}},
        {"5", {5}, {4, 6, 55}},
        {"05", {5}, {0}},
        {"2-2", {2}, {1, 3}},
        {"7-", {}, {7, 0, 6, 8}},
        {"-7", {}, {7, -7, 0}},
        {"a-7", {}, {0, 7}},
        {"3-a;8", {8}, {3, 4, 0}},
        {"x;6", {6}, {5, 7}},
        {"-5--3", {-5, -4, -3}, {-6, -2, 3, 4, 5}},
        {"0-2147483647", {0, 1, INT_MAX}, {-1, INT_MIN}},
        {"0-99999999999999999999", {0, INT_MAX}, {-1}},
    };
    for (const Row &row : rows) {
        for (const int n : row.held)
            EXPECT_EQ(find_num(row.list, n), 1) << row.list << " " << n;
        for (const int n : row.missing)
            EXPECT_EQ(find_num(row.list, n), 0) << row.list << " " << n;
    }
}

TEST(FindNum, HoldsNothingInANullList) {
    EXPECT_EQ(find_num(nullptr, 0), 0);
}

// ---- interface identity -------------------------------------------------------------------------

template <typename R>
struct NamedCheck {
    const char *function;
    int (*check)(const char *, const R *);
    R valid;
};

template <typename R>
void expect_identity_told_twice(const NamedCheck<R> &family) {
    const std::string function = family.function;
    int result = -100;
    EXPECT_EQ(errors_of([&] { result = family.check("HDMI9", &family.valid); }),
              (Lines{"get_VideoOutputInterface_intf: if_name=HDMI9 invalid\n",
                     function + ": if_name=HDMI9 invalid\n"}));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(errors_of([&] { result = family.check("HDMI1", nullptr); }, kFile),
              (Lines{function + ": if_name=HDMI1 invalid\n"}));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(errors_of([&] { result = family.check("HDMI2", &family.valid); }, kFile),
              (Lines{function + ": if_name HDMI2!=HDMI1 invalid\n"}));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(errors_of([&] { result = family.check("HDMI1", &family.valid); }), Lines{});
    EXPECT_EQ(result, 1);
}

TEST_F(Check, TellsAnUnknownInterfaceUnderTheLookUpAndUnderTheCheck) {
    expect_identity_told_twice<VideoOutputInterfaceParameter>(
        {"check_VideoOutputInterfaceParameter", check_VideoOutputInterfaceParameter,
         device.interface_parameters[0]});
    expect_identity_told_twice<WatermarkOSDParameter>(
        {"check_WatermarkOSDParameter", check_WatermarkOSDParameter, device.texts[0]});
    expect_identity_told_twice<WatermarkPictureParameter>(
        {"check_WatermarkPictureParameter", check_WatermarkPictureParameter, device.pictures[0]});
    expect_identity_told_twice<WatermarkDotmatrixParameter>(
        {"check_WatermarkDotmatrixParameter", check_WatermarkDotmatrixParameter, device.dots[0]});
}

TEST_F(Check, ComparesOnlySixtyFourCharactersOfAnInterfaceName) {
    const std::string name(64, 'n');
    std::memcpy(data_VideoOutputInterface[1].if_name, name.data(), 64);
    WatermarkOSDParameter record = device.texts[1];
    std::memcpy(record.if_name, name.data(), 64);
    EXPECT_EQ(errors_of([&] {
                  EXPECT_EQ(get_VideoOutputInterface_intf((name + "tail").c_str()), 1);
                  EXPECT_EQ(check_WatermarkOSDParameter((name + "other").c_str(), &record), 1);
              }),
              Lines{});
    record.if_name[63] = 'x';
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(check_WatermarkOSDParameter(name.c_str(), &record), 0); }),
              (Lines{"check_WatermarkOSDParameter: if_name " + name + "!=" + name.substr(1) +
                     "x invalid\n"}));
}

// ---- the checks ---------------------------------------------------------------------------------

TEST_F(Check, WantsTimingAndSplitModeFromTheListsOfTheInterface) {
    using R = VideoOutputInterfaceParameter;
    const std::string function = "check_VideoOutputInterfaceParameter: ";
    const std::string timings = "1920x1080P@60;1280x720P@60;3840x2160P@30";
    const std::string modes = "Mode1;Mode4;Mode9;Mode16";
    const std::vector<Case<R>> cases = {
        {"as it is", [](R &) {}, 1, {}},
        {"last timing", [](R &r) { put(r.Timing, "3840x2160P@30"); }, 1, {}},
        {"another timing",
         [](R &r) { put(r.Timing, "640x480P@60"); },
         0,
         {function + "Timing:640x480P@60 buf:" + timings + "\n"}},
        {"part of a timing",
         [](R &r) { put(r.Timing, "1280x720P"); },
         0,
         {function + "Timing:1280x720P buf:" + timings + "\n"}},
        {"empty timing",
         [](R &r) { put(r.Timing, ""); },
         0,
         {function + "Timing: buf:" + timings + "\n"}},
        {"last mode", [](R &r) { put(r.ScreenSplitMode, "Mode16"); }, 1, {}},
        {"another mode",
         [](R &r) { put(r.ScreenSplitMode, "Mode2_0"); },
         0,
         {function + "ScreenSplitMode:Mode2_0 buf:" + modes + "\n"}},
        {"both wrong",
         [](R &r) { put(r.Timing, "t"), put(r.ScreenSplitMode, "m"); },
         0,
         {function + "Timing:t buf:" + timings + "\n"}},
        {"text without an end",
         [](R &r) { std::memset(r.Timing, 'T', sizeof r.Timing); },
         0,
         {function + "Timing:" + std::string(64, 'T') + " buf:" + timings + "\n"}},
        {"any layout and size", [](R &r) { r.UserSplitIndex = INT_MIN, r.Width = INT_MAX; }, 1, {}},
    };
    expect_cases<R>(device.interface_parameters[0], cases, [](const R *record) {
        return check_VideoOutputInterfaceParameter("HDMI1", record);
    });
}

TEST_F(Check, LooksAtTheFirstSplitRecordOnly) {
    VideoOutputScreenSplitParameter records[kSplitRecords];
    std::copy_n(device.splits.begin(), kSplitRecords, records);
    put(records[1].if_name, "nobody");
    EXPECT_EQ(
        errors_of([&] { EXPECT_EQ(check_VideoOutputScreenSplitParameter("HDMI1", records), 1); }),
        Lines{});
    EXPECT_EQ(errors_of([&] {
                  EXPECT_EQ(check_VideoOutputScreenSplitParameter("HDMI1", records + 1), 0);
              }),
              (Lines{"check_VideoOutputScreenSplitParameter: if_name HDMI1!=nobody invalid\n"}));
    EXPECT_EQ(
        errors_of([&] { EXPECT_EQ(check_VideoOutputScreenSplitParameter("HDMI9", records), 0); }),
        (Lines{"get_VideoOutputInterface_intf: if_name=HDMI9 invalid\n"}));
}

TEST_F(Check, AnswersMinusTwoToNullSplitArguments) {
    const Lines para = {"check_VideoOutputScreenSplitParameter: para invalid\n"};
    EXPECT_EQ(errors_of([&] {
                  EXPECT_EQ(check_VideoOutputScreenSplitParameter(nullptr, device.splits.data()),
                            -2);
              }),
              para);
    EXPECT_EQ(
        errors_of([&] { EXPECT_EQ(check_VideoOutputScreenSplitParameter("HDMI1", nullptr), -2); }),
        para);
}

TEST_F(Check, BoundsTheDisplayRecord) {
    using R = VideoOutputDisplayParameter;
    const std::string function = "check_VideoOutputDisplayParameter: ";
    const std::vector<Case<R>> cases = {
        {"as it is", [](R &) {}, 1, {}},
        {"no background", [](R &r) { put(r.BackgroundColor, ""); }, 0, {}},
        {"any background", [](R &r) { put(r.BackgroundColor, "x"); }, 1, {}},
        {"smallest cache", [](R &r) { r.cache = -1; }, 1, {}},
        {"smaller cache", [](R &r) { r.cache = -2; }, 0, {function + "cache=-2 < -1 invalid\n"}},
        {"largest cache", [](R &r) { r.cache = kLargestCache; }, 1, {}},
        {"larger cache",
         [](R &r) { r.cache = kLargestCache + 1; },
         0,
         {function + "cache=51 > max=50 invalid\n"}},
        {"playmode 0", [](R &r) { r.playmode = 0; }, 1, {}},
        {"playmode 2",
         [](R &r) { r.playmode = 2; },
         0,
         {function + "playmode=2 > max=1 invalid\n"}},
        {"playmode below zero",
         [](R &r) { r.playmode = static_cast<uint32_t>(-1); },
         0,
         {function + "playmode=-1 > max=1 invalid\n"}},
        {"cache before playmode",
         [](R &r) { r.cache = INT_MIN, r.playmode = 9; },
         0,
         {function + "cache=-2147483648 < -1 invalid\n"}},
    };
    expect_cases<R>(device.display, cases, check_VideoOutputDisplayParameter);
    EXPECT_EQ(errors_of([] { EXPECT_EQ(check_VideoOutputDisplayParameter(nullptr), 0); }), Lines{});
}

TEST_F(Check, WantsASourceFromTheListOfItsType) {
    using R = VideoOutputSourceParameter;
    const std::string function = "check_VideoOutputSourceParameter: ";
    const std::vector<Case<R>> cases = {
        {"as it is", [](R &) {}, 1, {}},
        {"another channel", [](R &r) { r.Channel = 4; }, 0, {function + "Channel[4] invalid\n"}},
        {"video input", [](R &r) { r.type = 0, r.index = 40; }, 1, {}},
        {"no video input", [](R &r) { r.type = 0, r.index = -1; }, 1, {}},
        {"unlisted video input",
         [](R &r) { r.type = 0, r.index = 4; },
         0,
         {function + "SupportedVideoInputChannelList:4 buf:0-3;40\n"}},
        {"stream", [](R &r) { r.index = 19; }, 1, {}},
        {"no stream", [](R &r) { r.index = -1; }, 1, {}},
        {"unlisted stream",
         [](R &r) { r.index = 20; },
         0,
         {function + "SupportedInputStreamingIndexList:20 buf:0-19\n"}},
        {"index below none",
         [](R &r) { r.index = -2; },
         0,
         {function + "SupportedInputStreamingIndexList:-2 buf:0-19\n"}},
        {"type 2", [](R &r) { r.type = 2; }, 0, {}},
        {"type 2 without input", [](R &r) { r.type = 2, r.index = -1; }, 0, {}},
        {"type 3", [](R &r) { r.type = 3; }, 0, {}},
        {"type -1", [](R &r) { r.type = -1; }, 0, {}},
        {"smallest cache", [](R &r) { r.cache = -1; }, 1, {}},
        {"smaller cache",
         [](R &r) { r.cache = -2; },
         0,
         {function + "chn=5 para cache=-2 < -1 invalid\n"}},
        {"largest cache", [](R &r) { r.cache = kLargestCache; }, 1, {}},
        {"larger cache",
         [](R &r) { r.cache = INT_MAX; },
         0,
         {function + "chn=5 para cache=2147483647 > max=50 invalid\n"}},
        {"list before cache",
         [](R &r) { r.index = 99, r.cache = -9; },
         0,
         {function + "SupportedInputStreamingIndexList:99 buf:0-19\n"}},
    };
    expect_cases<R>(device.sources[5], cases,
                    [](const R *record) { return check_VideoOutputSourceParameter(5, record); });
}

TEST_F(Check, AcceptsAWindowWithoutInputWhateverTheList) {
    std::memset(&data_VideoOutputCapabilitySet[2], 0, sizeof data_VideoOutputCapabilitySet[2]);
    const VideoOutputSourceParameter record = {2, -1, 0, kLargestCache};
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(check_VideoOutputSourceParameter(2, &record), 1); }),
              Lines{});
}

TEST_F(Check, RefusesSourcesPastTheStorage) {
    for (const int channel : {-1, int{kMaxChannels}, INT_MAX, INT_MIN}) {
        const VideoOutputSourceParameter record = {channel, -1, 0, 0};
        errors_of([&] { EXPECT_EQ(check_VideoOutputSourceParameter(channel, &record), 0); });
        errors_of([&] { EXPECT_EQ(check_VideoOutputSourceParameter(channel, nullptr), 0); });
    }
}

TEST_F(Check, WantsAnAudioSourceFromTheListOfItsType) {
    using R = AudioOutputParameter;
    const std::string function = "check_AudioOutputParameter: ";
    const std::vector<Case<R>> cases = {
        {"as it is", [](R &) {}, 1, {}},
        {"another output", [](R &r) { r.Channel = 0; }, 0, {function + "chn1 Channel0\n"}},
        {"unlisted interface",
         [](R &r) { put(r.if_name, "DP1"); },
         0,
         {function + "if_name:;HDMI2;HDMI1 :DP1\n"}},
        {"empty interface",
         [](R &r) { put(r.if_name, ""); },
         0,
         {function + "if_name:;HDMI2;HDMI1 :\n"}},
        {"bound", [](R &r) { r.type = 0, r.index = 40; }, 1, {}},
        {"bound to none", [](R &r) { r.type = 0, r.index = -1; }, 1, {}},
        {"unlisted bound",
         [](R &r) { r.type = 0, r.index = 5; },
         0,
         {function + "bound_list:0-3;40 5\n"}},
        {"index 5", [](R &r) { r.index = 5; }, 1, {}},
        {"index of none", [](R &r) { r.index = -1; }, 1, {}},
        {"unlisted index", [](R &r) { r.index = 6; }, 0, {function + "index_list:5;7 6\n"}},
        {"listed window", [](R &r) { r.type = 2, r.index = 15; }, 1, {}},
        {"no window", [](R &r) { r.type = 2, r.index = -1; }, 1, {}},
        {"unlisted window",
         [](R &r) { r.type = 2, r.index = 16; },
         0,
         {function + "banyin_list:0-15 16\n"}},
        {"type 3", [](R &r) { r.type = 3, r.index = 999; }, 1, {}},
        {"type -1", [](R &r) { r.type = -1, r.index = -999; }, 1, {}},
    };
    expect_cases<R>(device.audio[1], cases,
                    [](const R *record) { return check_AudioOutputParameter(1, record); });
}

TEST_F(Check, KnowsOnlyTheAudioOutputsOfTheDevice) {
    for (const int output : {-1, kAudioOutputs, INT_MAX, INT_MIN}) {
        const Lines told = {"check_AudioOutputParameter: chn" + std::to_string(output) +
                            " invalid\n"};
        EXPECT_EQ(errors_of([&] {
                      EXPECT_EQ(check_AudioOutputParameter(output, device.audio.data()), 0);
                  }),
                  told);
    }
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(check_AudioOutputParameter(1, nullptr), 0); }),
              Lines{"check_AudioOutputParameter: chn1 invalid\n"});
}

using OsdBlock = std::vector<VideoOutputOSDParameter>;

TEST_F(Check, WantsOsdEntriesOfTheirChannelInOrder) {
    const std::string function = "check_VideoOutputOSDParameter: ";
    const OsdBlock valid(device.osd.begin() + 3 * kOsdEntries,
                         device.osd.begin() + 4 * kOsdEntries);
    const std::vector<Case<OsdBlock>> cases = {
        {"as it is", [](OsdBlock &) {}, 1, {}},
        {"first of another channel",
         [](OsdBlock &b) { b[0].Channel = 2; },
         0,
         {function + "Channel[2] invalid\n"}},
        {"last of another channel",
         [](OsdBlock &b) { b[3].Channel = -1; },
         0,
         {function + "Channel[-1] invalid\n"}},
        {"wrong position",
         [](OsdBlock &b) { b[2].Index = 3; },
         0,
         {function + "Index[3] invalid\n"}},
        {"channel before position",
         [](OsdBlock &b) { b[1].Channel = 9, b[1].Index = 9; },
         0,
         {function + "Channel[9] invalid\n"}},
        {"entry before entry", [](OsdBlock &b) { b[1].Index = 8, b[0].x = 9000; }, 0, {}},
        {"y far out", [](OsdBlock &b) { b[0].y = UINT32_MAX; }, 1, {}},
    };
    expect_cases<OsdBlock>(valid, cases, [](const OsdBlock *block) {
        return check_VideoOutputOSDParameter(3, block->data());
    });
}

TEST_F(Check, XIsHeldAgainstBothLimitsYAgainstNone) {
    OsdBlock block(device.osd.begin(), device.osd.begin() + kOsdEntries);
    struct Row {
        uint32_t limit_x, limit_y, x;
        int result;
    };
    const Row rows[] = {
        {8192, 8000, 8000, 1},
        {8192, 8000, 8001, 0},
        {8000, 8192, 8000, 1},
        {8000, 8192, 8001, 0},
        {8192, 8000, UINT32_MAX, 0},
        {UINT32_MAX, UINT32_MAX, UINT32_MAX, 1},
        {0, 0, 0, 1},
        {0, 8192, 1, 0},
    };
    for (const Row &row : rows) {
        data_VideoOutputInterface[0].OSDMaxX = row.limit_x;
        data_VideoOutputInterface[0].OSDMaxY = row.limit_y;
        for (VideoOutputOSDParameter &entry : block)
            entry.x = 0;
        block[3].x = row.x;
        block[3].y = UINT32_MAX;
        EXPECT_EQ(errors_of([&] {
                      EXPECT_EQ(check_VideoOutputOSDParameter(0, block.data()), row.result)
                          << row.limit_x << " " << row.limit_y << " " << row.x;
                  }),
                  Lines{})
            << "refused without a message";
    }
}

TEST_F(Check, KnowsOnlyTheChannelsOfTheDevice) {
    data_DeviceCapabilitySet[0].VideoOutputChannelNum = 12;
    for (const int channel : {-1, 12, 16, INT_MAX, INT_MIN}) {
        EXPECT_EQ(
            errors_of(
                [&] { EXPECT_EQ(check_VideoOutputOSDParameter(channel, device.osd.data()), 0); }),
            (Lines{"check_VideoOutputOSDParameter: chn" + std::to_string(channel) + " invalid\n"}));
    }
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(check_VideoOutputOSDParameter(0, nullptr), 0); }),
              Lines{"check_VideoOutputOSDParameter: chn0 invalid\n"});
}

TEST_F(Check, AcceptsAnyEntriesWhereTheDeviceShowsNone) {
    VideoOutputOSDParameter entry{};
    entry.Channel = 99;
    data_VideoOutputInterface[0].OSDSupported = 0;
    EXPECT_EQ(check_VideoOutputOSDParameter(0, &entry), 1);
    EXPECT_EQ(get_VideoOutputOSDParameter_per_chn_size(), 0);
    data_VideoOutputInterface[0].OSDSupported = 1;
    for (const int entries : {0, -1, INT_MIN}) {
        data_VideoOutputInterface[0].OSDNumPerChannel = entries;
        EXPECT_EQ(check_VideoOutputOSDParameter(0, &entry), 1) << entries;
    }
}

template <typename R>
void expect_stream_rules(const std::string &function, int (*check)(int, const R *)) {
    R record{};
    const auto told = [&](int position, const R *one, int result) {
        return errors_of([&] { EXPECT_EQ(check(position, one), result) << position; });
    };
    record.index = kStreams - 1;
    EXPECT_EQ(told(kStreams - 1, &record, 1), Lines{});
    EXPECT_EQ(told(3, &record, 0), Lines{function + ": index invalid[3,19]\n"});
    EXPECT_EQ(told(3, nullptr, 0), Lines{function + ": index=3 invalid\n"});
    for (const int position : {-1, kStreams, INT_MAX, INT_MIN}) {
        record.index = position;
        EXPECT_EQ(told(position, &record, 0),
                  Lines{function + ": index=" + std::to_string(position) + " invalid\n"});
    }
}

TEST_F(Check, WantsStreamsAtTheirPosition) {
    expect_stream_rules<StreamingInputParameter>("check_StreamingInputParameter",
                                                 check_StreamingInputParameter);
    expect_stream_rules<StreamingInputStatusChange>("check_StreamingInputStatusChange",
                                                    check_StreamingInputStatusChange);
}

// ---- defaults -----------------------------------------------------------------------------------

/** A record all of whose bytes are 0xA5, to see which ones a default writes. */
template <typename R>
R dirty() {
    R record;
    std::memset(static_cast<void *>(&record), 0xA5, sizeof record);
    return record;
}

TEST_F(Check, DefaultInterfaceKeepsTheBytesItDoesNotName) {
    auto record = dirty<VideoOutputInterfaceParameter>();
    auto expected = record;
    put(expected.if_name, "HDMI2");
    put(expected.Timing, "1920x1080P@60");
    expected.TimingCustom = 0;
    expected.Width = 1920;
    expected.Height = 1080;
    expected.FrameRate = 60;
    std::memset(expected.reserved_336, 0, sizeof expected.reserved_336);
    for (int32_t &level : expected.PictureLevel)
        level = 128;
    put(expected.AudioInterface, "HDMI1");
    put(expected.ScreenSplitMode, "Mode1");
    expected.UserSplitIndex = -1;
    expected.Enable = 1;
    EXPECT_EQ(default_VideoOutputInterfaceParameter("HDMI2", &record), 0);
    EXPECT_EQ(bytes_of(record), bytes_of(expected));
}

TEST_F(Check, DefaultSplitFillsTheBlockOfAnInterface) {
    VideoOutputScreenSplitParameter records[kSplitRecords + 1];
    for (auto &record : records)
        record = dirty<VideoOutputScreenSplitParameter>();
    EXPECT_EQ(default_VideoOutputScreenSplitParameter("anything", records), 0);
    for (int k = 0; k < kSplitRecords; ++k) {
        VideoOutputScreenSplitParameter expected{};
        put(expected.if_name, "anything");
        expected.Index = k;
        expected.WindowNum = 1;
        put(expected.SplitString, "0,0,8196,8196,0");
        EXPECT_EQ(bytes_of(records[k]), bytes_of(expected)) << k;
    }
    EXPECT_EQ(bytes_of(records[kSplitRecords]), bytes_of(dirty<VideoOutputScreenSplitParameter>()));
}

TEST_F(Check, DefaultDisplayWritesTheWholeRecordAndReturnsOne) {
    auto record = dirty<VideoOutputDisplayParameter>();
    VideoOutputDisplayParameter expected{};
    put(expected.BackgroundColor, "#000000");
    put(expected.VideoBorderColor, "#00FF00");
    put(expected.AudioBorderColor, "#FF0000");
    expected.BorderWidth = 1;
    EXPECT_EQ(default_VideoOutputDisplayParameter(&record), 1);
    EXPECT_EQ(bytes_of(record), bytes_of(expected));
}

TEST_F(Check, DefaultSourceIsTheStreamOfTheChannelsNumber) {
    VideoOutputSourceParameter record = {9, 9, 9, 9};
    EXPECT_EQ(default_VideoOutputSourceParameter(7, &record), 0);
    const VideoOutputSourceParameter expected = {7, 7, 1, -1};
    EXPECT_EQ(bytes_of(record), bytes_of(expected));
}

TEST_F(Check, DefaultAudioTakesTheFirstListedInterface) {
    struct Row {
        const char *list;
        const char *name;
    };
    const Row rows[] = {
        {";HDMI2;HDMI1", "HDMI2"}, {"LINE", "LINE"}, {"", "HDMI2"}, {";;", "HDMI2"}};
    for (const Row &row : rows) {
        put(data_AudioOutputCapabilitySet[1].if_name_list, row.list);
        auto record = dirty<AudioOutputParameter>();
        AudioOutputParameter expected{};
        expected.Channel = 1;
        put(expected.if_name, row.name);
        expected.index = 0;
        expected.type = 2;
        EXPECT_EQ(default_AudioOutputParameter(1, &record), 0);
        EXPECT_EQ(bytes_of(record), bytes_of(expected)) << row.list;
    }
}

VideoOutputOSDParameter default_entry(VideoOutputOSDParameter entry, int channel, int index) {
    const int types[] = {0, 1, 2, 3, 2};
    const uint32_t heights[] = {64, 448, 832, 7808, 0};
    entry.Channel = channel;
    entry.Index = index;
    entry.type = types[index];
    entry.visible = 0;
    entry.font = 3;
    entry.size = 30;
    entry.bold = entry.stroke = 0;
    put(entry.forecolor, "#FFFFFF");
    entry.forealpha = 255;
    put(entry.backcolor, "#000000");
    entry.backalpha = 0;
    entry.corner = 0;
    entry.x = 64;
    entry.y = heights[index];
    entry.scale = 100;
    if (index == 0) put(entry.content, "yyyy-MM-dd hh:mm:ss");
    if (index == 3) put(entry.content, "URL");
    if (index == 4) put(entry.content, "");
    return entry;
}

TEST_F(Check, DefaultOsdLeavesPlainTextsHeadAndTail) {
    data_VideoOutputInterface[0].OSDNumPerChannel = 5;
    VideoOutputOSDParameter entries[6];
    for (auto &entry : entries)
        entry = dirty<VideoOutputOSDParameter>();
    EXPECT_EQ(default_VideoOutputOSDParameter(2, entries), 0);
    for (int k = 0; k < 5; ++k) {
        const auto expected = default_entry(dirty<VideoOutputOSDParameter>(), 2, k);
        EXPECT_EQ(bytes_of(entries[k]), bytes_of(expected)) << k;
    }
    EXPECT_EQ(bytes_of(entries[5]), bytes_of(dirty<VideoOutputOSDParameter>()));
}

TEST_F(Check, DefaultOsdWritesNothingWhereTheDeviceShowsNone) {
    data_VideoOutputInterface[0].OSDSupported = 0;
    auto entry = dirty<VideoOutputOSDParameter>();
    EXPECT_EQ(default_VideoOutputOSDParameter(0, &entry), 0);
    EXPECT_EQ(bytes_of(entry), bytes_of(dirty<VideoOutputOSDParameter>()));
}

TEST_F(Check, DefaultWatermarksStartFromZero) {
    auto text = dirty<WatermarkOSDParameter>();
    WatermarkOSDParameter expected_text{};
    put(expected_text.if_name, "HDMI1");
    expected_text.font = 2;
    put(expected_text.forecolor, "#FF0000");
    expected_text.forealpha = 255;
    put(expected_text.backcolor, "#000000");
    expected_text.arrangement_mode = 1;
    expected_text.step = 1;
    expected_text.speed = 1;
    EXPECT_EQ(default_WatermarkOSDParameter("HDMI1", &text), 0);
    EXPECT_EQ(bytes_of(text), bytes_of(expected_text));

    auto picture = dirty<WatermarkPictureParameter>();
    WatermarkPictureParameter expected_picture{};
    put(expected_picture.if_name, "HDMI2");
    expected_picture.alpha = 255;
    expected_picture.arramode = 1;
    expected_picture.step = 1;
    expected_picture.speed = 1;
    EXPECT_EQ(default_WatermarkPictureParameter("HDMI2", &picture), 0);
    EXPECT_EQ(bytes_of(picture), bytes_of(expected_picture));

    auto dots = dirty<WatermarkDotmatrixParameter>();
    WatermarkDotmatrixParameter expected_dots{};
    put(expected_dots.if_name, "HDMI2");
    EXPECT_EQ(default_WatermarkDotmatrixParameter("HDMI2", &dots), 0);
    EXPECT_EQ(bytes_of(dots), bytes_of(expected_dots));
}

template <typename R>
void expect_known_interface_needed(int (*make_default)(const char *, R *)) {
    R record = dirty<R>();
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(make_default("HDMI9", &record), -2); }),
              Lines{"get_VideoOutputInterface_intf: if_name=HDMI9 invalid\n"});
    EXPECT_EQ(bytes_of(record), bytes_of(dirty<R>()));
}

TEST_F(Check, DefaultsNeedAKnownInterface) {
    expect_known_interface_needed(default_VideoOutputInterfaceParameter);
    expect_known_interface_needed(default_WatermarkOSDParameter);
    expect_known_interface_needed(default_WatermarkPictureParameter);
    expect_known_interface_needed(default_WatermarkDotmatrixParameter);
}

TEST_F(Check, DefaultsOfUnknownChannelsAndOutputsAreRefused) {
    auto audio = dirty<AudioOutputParameter>();
    auto entry = dirty<VideoOutputOSDParameter>();
    for (const int number : {-1, kChannels, INT_MAX, INT_MIN}) {
        const std::string message = ": chn" + std::to_string(number) + " invalid\n";
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(default_AudioOutputParameter(number, &audio), -2); }),
                  Lines{"default_AudioOutputParameter" + message});
        EXPECT_EQ(
            errors_of([&] { EXPECT_EQ(default_VideoOutputOSDParameter(number, &entry), -2); }),
            Lines{"default_VideoOutputOSDParameter" + message});
    }
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(default_AudioOutputParameter(0, nullptr), -2); }),
              Lines{"default_AudioOutputParameter: chn0 invalid\n"});
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(default_VideoOutputOSDParameter(0, nullptr), -2); }),
              Lines{"default_VideoOutputOSDParameter: chn0 invalid\n"});
    EXPECT_EQ(bytes_of(audio), bytes_of(dirty<AudioOutputParameter>()));
    EXPECT_EQ(bytes_of(entry), bytes_of(dirty<VideoOutputOSDParameter>()));
}

}  // namespace
