/** @file gui_cfg_test.cpp Get, update and set operations of the store. */

#include "gui_cfg.h"

#include <climits>

#include "record_codec/record_codec.h"
#include "store_fixture.h"
#include "wnd_split.h"

using namespace store_test;
namespace fs = std::filesystem;

namespace {

const std::string kLookUp = "get_VideoOutputInterface_intf: if_name=";

// ---- accessors ----------------------------------------------------------------------------------

TEST_F(Settings, AccessorsGiveTheFirstElements) {
    EXPECT_EQ(get_ptr_VideoOutputInterface(), data_VideoOutputInterface);
    EXPECT_EQ(get_ptr_AudioOutputCapabilitySet(), data_AudioOutputCapabilitySet);
    EXPECT_EQ(get_ptr_VideoDecodeCapabilitySet(), data_VideoDecodeCapabilitySet);
    EXPECT_EQ(get_ptr_StreamingInputCapabilitySet(), data_StreamingInputCapabilitySet);
    EXPECT_EQ(get_ptr_VideoOutputInterfaceParameter(), data_VideoOutputInterfaceParameter);
    EXPECT_EQ(get_ptr_VideoOutputScreenSplitParameter(), data_VideoOutputScreenSplitParameter);
    EXPECT_EQ(get_ptr_VideoOutputDisplayParameter(), data_VideoOutputDisplayParameter);
    EXPECT_EQ(get_ptr_AudioOutSourceChange(), data_AudioOutSourceChange);
    EXPECT_EQ(get_ptr_VideoOutputOSDParameter(), data_VideoOutputOSDParameter);
    EXPECT_EQ(get_ptr_WatermarkOSDParameter(), data_WatermarkOSDParameter);
    EXPECT_EQ(get_ptr_WatermarkPictureParameter(), data_WatermarkPictureParameter);
    EXPECT_EQ(get_ptr_WatermarkDotmatrixParameter(), data_WatermarkDotmatrixParameter);
}

TEST_F(Settings, FindsAnInterfaceByItsName) {
    EXPECT_EQ(get_VideoOutputInterface_intf("HDMI1"), 0);
    EXPECT_EQ(get_VideoOutputInterface_intf("HDMI2"), 1);
    for (const char *name : {"", "HDMI", "HDMI11", "hdmi1", "HDMI3"}) {
        EXPECT_EQ(errors_of([&] { EXPECT_EQ(get_VideoOutputInterface_intf(name), -1); },
                            "apps/app_gui/src/gui_cfg.cpp"),
                  (Lines{kLookUp + name + " invalid\n"}));
    }
    errors_of([] { EXPECT_EQ(get_VideoOutputInterface_intf(nullptr), -1); });
    num_VideoOutputInterface = 1;
    errors_of([] { EXPECT_EQ(get_VideoOutputInterface_intf("HDMI2"), -1); });
}

// ---- get ----------------------------------------------------------------------------------------

template <typename R>
void expect_get(int (*get)(const char *, R *), const std::vector<R> &expected) {
    for (int i = 0; i < kInterfaces; ++i) {
        R out{};
        EXPECT_EQ(get(interface_name(i), &out), 0);
        EXPECT_EQ(bytes_of(out), bytes_of(expected[static_cast<size_t>(i)]));
    }
    R out{};
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(get("HDMI9", &out), -2); }),
              (Lines{kLookUp + "HDMI9 invalid\n"}));
    EXPECT_EQ(bytes_of(out), bytes_of(R{}));
    EXPECT_EQ(get("HDMI1", nullptr), -2);
}

TEST_F(Settings, GetCopiesTheRecordOfTheNamedInterface) {
    expect_get(get_VideoOutputInterfaceParameter, device.interface_parameters);
    expect_get(get_WatermarkOSDParameter, device.texts);
    expect_get(get_WatermarkPictureParameter, device.pictures);
    expect_get(get_WatermarkDotmatrixParameter, device.dots);
}

TEST_F(Settings, GetCopiesTheSplitBlockOfTheNamedInterface) {
    for (int i = 0; i < kInterfaces; ++i) {
        VideoOutputScreenSplitParameter out[kSplitRecords + 1] = {};
        EXPECT_EQ(get_VideoOutputScreenSplitParameter(interface_name(i), out), 0);
        EXPECT_EQ(bytes_of(out, kSplitRecords),
                  bytes_of(&device.splits[static_cast<size_t>(i * kSplitRecords)], kSplitRecords));
        EXPECT_EQ(bytes_of(out[kSplitRecords]), bytes_of(VideoOutputScreenSplitParameter{}));
    }
    VideoOutputScreenSplitParameter out[kSplitRecords];
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(get_VideoOutputScreenSplitParameter("X", out), -2); }),
              (Lines{kLookUp + "X invalid\n"}));
    EXPECT_EQ(errors_of([&] {
                  EXPECT_EQ(get_VideoOutputScreenSplitParameter(nullptr, out), -2);
                  EXPECT_EQ(get_VideoOutputScreenSplitParameter("HDMI1", nullptr), -2);
              }),
              Lines{});
}

TEST_F(Settings, GetCopiesTheDisplayRecord) {
    VideoOutputDisplayParameter out{};
    EXPECT_EQ(get_VideoOutputDisplayParameter(&out), 0);
    EXPECT_EQ(bytes_of(out), bytes_of(device.display));
}

TEST_F(Settings, GetCopiesTheOsdEntriesOfAChannel) {
    for (const int channel : {0, 9, kChannels - 1}) {
        VideoOutputOSDParameter out[kOsdEntries + 1] = {};
        EXPECT_EQ(get_VideoOutputOSDParameter(channel, out), 0);
        EXPECT_EQ(bytes_of(out, kOsdEntries),
                  bytes_of(&device.osd[static_cast<size_t>(channel * kOsdEntries)], kOsdEntries));
        EXPECT_EQ(bytes_of(out[kOsdEntries]), bytes_of(VideoOutputOSDParameter{}));
    }
    VideoOutputOSDParameter out[kOsdEntries] = {};
    for (const int channel : {-1, kChannels, INT_MAX, INT_MIN}) {
        EXPECT_EQ(
            errors_of([&] { EXPECT_EQ(get_VideoOutputOSDParameter(channel, out), -2); }),
            (Lines{"get_VideoOutputOSDParameter: chn" + std::to_string(channel) + " invalid\n"}));
    }
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(get_VideoOutputOSDParameter(2, nullptr), -2); }),
              (Lines{"get_VideoOutputOSDParameter: chn2 invalid\n"}));
    data_VideoOutputInterface[0].OSDSupported = 0;
    EXPECT_EQ(get_VideoOutputOSDParameter(2, out), 0);
    EXPECT_EQ(bytes_of(out, kOsdEntries), std::string(sizeof out, '\0')) << "copies nothing";
}

// ---- update -------------------------------------------------------------------------------------

template <typename R>
void expect_update(const std::string &function, int (*update)(const char *, const R *), R *stored,
                   R changed) {
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(update("HDMI9", &changed), -2); }),
              (Lines{kLookUp + "HDMI9 invalid\n", function + ": HDMI9 invalid\n"}));
    // Neither the name in the record nor anything else is validated.
    std::memset(changed.if_name, 'z', sizeof changed.if_name);
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(update("HDMI2", &changed), 0); }), Lines{});
    EXPECT_EQ(bytes_of(stored[1]), bytes_of(changed));
    EXPECT_EQ(take_events(), Events{});
}

TEST_F(Settings, UpdateStoresWithoutValidationOrNotification) {
    expect_update("update_VideoOutputInterfaceParameter", update_VideoOutputInterfaceParameter,
                  data_VideoOutputInterfaceParameter, device.interface_parameters[1]);
}

TEST_F(Settings, SplitUpdateNeedsAKnownInterface) {
    expect_refused(
        [&] { return update_VideoOutputScreenSplitParameter("HDMI9", device.splits.data()); },
        {kLookUp + "HDMI9 invalid\n", "update_VideoOutputScreenSplitParameter: HDMI9 invalid\n"});
}

TEST_F(Settings, DisplayUpdateStoresWithoutValidationOrNotification) {
    VideoOutputDisplayParameter changed = device.display;
    changed.playmode = 77;
    EXPECT_EQ(events_of([&] { return update_VideoOutputDisplayParameter(&changed); }), Events{});
    EXPECT_EQ(bytes_of(data_VideoOutputDisplayParameter[0]), bytes_of(changed));
    EXPECT_FALSE(fs::exists(root / "app_parameters" / "VideoOutputDisplayParameter.json"));
}

template <typename R>
void expect_saving_update(const std::string &function, int (*update)(const char *, const R *),
                          int (*reader)(const char *, R *, unsigned *), const R *stored,
                          const fs::path &file, R changed) {
    R same = stored[1];
    fs::remove(file);
    EXPECT_EQ(update("HDMI2", &same), 0);
    EXPECT_FALSE(fs::exists(file)) << "an identical record writes nothing";
    changed.visible ^= 1;
    EXPECT_EQ(update("HDMI2", &changed), 0);
    EXPECT_EQ(bytes_of(stored[1]), bytes_of(changed));
    const std::vector<R> written = read_back(reader, file);
    ASSERT_EQ(written.size(), 2u) << "the whole array";
    EXPECT_EQ(bytes_of(written[0]), bytes_of(stored[0]));
    EXPECT_EQ(bytes_of(written[1]), bytes_of(changed));
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(update("HDMI9", &changed), -2); }),
              (Lines{kLookUp + "HDMI9 invalid\n", function + ": HDMI9 invalid\n"}));
    EXPECT_EQ(take_events(), Events{});
}

TEST_F(Settings, WatermarkUpdatesWriteTheirFile) {
    expect_saving_update("update_WatermarkOSDParameter", update_WatermarkOSDParameter,
                         f2s_array_WatermarkOSDParameter, data_WatermarkOSDParameter,
                         user("WatermarkOSDParameters.json"), device.texts[1]);
    expect_saving_update("update_WatermarkPictureParameter", update_WatermarkPictureParameter,
                         f2s_array_WatermarkPictureParameter, data_WatermarkPictureParameter,
                         user("WatermarkPictureParameters.json"), device.pictures[1]);
    expect_saving_update("update_WatermarkDotmatrixParameter", update_WatermarkDotmatrixParameter,
                         f2s_array_WatermarkDotmatrixParameter, data_WatermarkDotmatrixParameter,
                         user("WatermarkDotmatrixParameters.json"), device.dots[1]);
}

TEST_F(Settings, OsdUpdateRepeatsTheChecksAndWritesItsFile) {
    std::vector<VideoOutputOSDParameter> block(&device.osd[12], &device.osd[16]);
    const fs::path file = user("VideoOutputOSDParameters.json");
    fs::remove(file);
    expect_no_effect([&] { return update_VideoOutputOSDParameter(3, block.data()); });
    EXPECT_FALSE(fs::exists(file));
    expect_refused([&] { return update_VideoOutputOSDParameter(16, block.data()); },
                   {"update_VideoOutputOSDParameter: chn16 invalid\n"});
    expect_refused([&] { return update_VideoOutputOSDParameter(3, nullptr); },
                   {"update_VideoOutputOSDParameter: chn3 invalid\n"});
    expect_refused([&] { return update_VideoOutputOSDParameter(2, block.data()); },
                   {"check_VideoOutputOSDParameter: Channel[3] invalid\n",
                    "update_VideoOutputOSDParameter: chn=2 invalid\n"});
    block[2].visible = 0;
    EXPECT_EQ(events_of([&] { return update_VideoOutputOSDParameter(3, block.data()); }), Events{});
    device.osd[14] = block[2];
    const auto written = read_back(f2s_array_VideoOutputOSDParameter, file);
    ASSERT_EQ(written.size(), device.osd.size());
    EXPECT_EQ(bytes_of(written.data(), 64), bytes_of(device.osd.data(), 64));
    EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter, 64), bytes_of(device.osd.data(), 64));
}

TEST_F(Settings, ASettingThatCannotBeSavedIsInForceAllTheSame) {
    fs::remove_all(root / "app_parameters");
    WatermarkOSDParameter changed = device.texts[0];
    changed.visible = 0;
    EXPECT_EQ(errors_of([&] { EXPECT_EQ(set_WatermarkOSDParameter("HDMI1", &changed), 0); }),
              Lines{})
        << "only the codec's own line";
    EXPECT_EQ(bytes_of(data_WatermarkOSDParameter[0]), bytes_of(changed));
    EXPECT_EQ(take_events(), (Events{record_event(1003, changed)}));
}

// ---- interface and split ------------------------------------------------------------------------

TEST_F(Settings, InterfacePostsTheSplitWhenTheChoiceChanged) {
    struct Row {
        const char *mode;
        int layout;
        int posted;  ///< -1: nothing
    };
    // Stored is Mode4 without a layout; each row starts from there.
    const Row rows[] = {
        {"Mode4", -1, -1},
        {"Mode9", -1, static_cast<int>(getSplitMode("Mode9"))},
        {"Mode16", -5, static_cast<int>(getSplitMode("Mode16"))},
        {"Mode4", -2, static_cast<int>(getSplitMode("Mode4"))},
        {"Mode4", 0, 26},
        {"Mode9", 3, 29},
        {"Mode4", kSplitRecords, static_cast<int>(getSplitMode("Mode4"))},
        {"Mode1", INT_MAX, static_cast<int>(getSplitMode("Mode1"))},
        {"Mode1", INT_MIN, static_cast<int>(getSplitMode("Mode1"))},
    };
    for (const Row &row : rows) {
        for (int i = 0; i < kInterfaces; ++i) {
            data_VideoOutputInterfaceParameter[i] =
                device.interface_parameters[static_cast<size_t>(i)];
            VideoOutputInterfaceParameter changed = data_VideoOutputInterfaceParameter[i];
            put(changed.ScreenSplitMode, row.mode);
            changed.UserSplitIndex = row.layout;
            changed.Width = 1;
            const Events expected =
                row.posted < 0 ? Events{} : Events{number_event(1004, row.posted)};
            EXPECT_EQ(events_of([&] {
                          return set_VideoOutputInterfaceParameter(interface_name(i), &changed);
                      }),
                      expected)
                << row.mode << " " << row.layout;
            EXPECT_EQ(bytes_of(data_VideoOutputInterfaceParameter[i]), bytes_of(changed));
        }
    }
}

TEST_F(Settings, InterfaceIsNeverWrittenToAFile) {
    const std::string before = text_of_file(user("VideoOutputInterfaceParameters.json"));
    VideoOutputInterfaceParameter changed = device.interface_parameters[0];
    changed.FrameRate = 30;
    events_of([&] { return set_VideoOutputInterfaceParameter("HDMI1", &changed); });
    EXPECT_EQ(text_of_file(user("VideoOutputInterfaceParameters.json")), before);
    EXPECT_EQ(user_files(), 10u);
}

TEST_F(Settings, InterfaceIgnoresAnIdenticalRecordAndTakesOneThatDiffersInAReservedSpan) {
    VideoOutputInterfaceParameter record = device.interface_parameters[0];
    expect_no_effect([&] { return set_VideoOutputInterfaceParameter("HDMI1", &record); });
    record.reserved_128[191] = 1;
    EXPECT_EQ(events_of([&] { return set_VideoOutputInterfaceParameter("HDMI1", &record); }),
              Events{});
    EXPECT_EQ(data_VideoOutputInterfaceParameter[0].reserved_128[191], 1);
}

TEST_F(Settings, InterfaceRefusesWhatItsCheckRefuses) {
    VideoOutputInterfaceParameter record = device.interface_parameters[0];
    expect_refused([&] { return set_VideoOutputInterfaceParameter("HDMI9", &record); },
                   {kLookUp + "HDMI9 invalid\n",
                    "check_VideoOutputInterfaceParameter: if_name=HDMI9 invalid\n",
                    "set_VideoOutputInterfaceParameter: HDMI9 invalid\n"});
    expect_refused([&] { return set_VideoOutputInterfaceParameter("HDMI1", nullptr); },
                   {"check_VideoOutputInterfaceParameter: if_name=HDMI1 invalid\n",
                    "set_VideoOutputInterfaceParameter: HDMI1 invalid\n"});
    put(record.ScreenSplitMode, "Mode2_0");
    expect_refused([&] { return set_VideoOutputInterfaceParameter("HDMI1", &record); },
                   {"check_VideoOutputInterfaceParameter: ScreenSplitMode:Mode2_0 "
                    "buf:Mode1;Mode4;Mode9;Mode16\n",
                    "set_VideoOutputInterfaceParameter: HDMI1 invalid\n"});
}

using Splits = std::vector<VideoOutputScreenSplitParameter>;

TEST_F(Settings, SplitOfTheFirstInterfaceIsPostedAndStoredInItsBlock) {
    Splits block(device.splits.begin(), device.splits.begin() + kSplitRecords);
    expect_no_effect([&] { return set_VideoOutputScreenSplitParameter("HDMI1", block.data()); });
    block[3].WindowNum = 5;
    EXPECT_EQ(events_of([&] { return set_VideoOutputScreenSplitParameter("HDMI1", block.data()); }),
              (Events{run_event(1005, block.data(), kSplitRecords)}));
    device.splits[3].WindowNum = 5;
    EXPECT_EQ(bytes_of(data_VideoOutputScreenSplitParameter, 8), bytes_of(device.splits.data(), 8));
    expect_no_effect([&] { return set_VideoOutputScreenSplitParameter("HDMI1", block.data()); });
}

// An interface's layouts are stored from the record of the interface's position on, not from its
// block: those of the second interface land in the first one's block.
TEST_F(Settings, LayoutsOfTheSecondInterfaceLandInTheFirstOnesBlock) {
    Splits block(device.splits.begin() + kSplitRecords, device.splits.end());
    expect_no_effect([&] { return set_VideoOutputScreenSplitParameter("HDMI2", block.data()); });
    block[0].WindowNum = 9;
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(
            events_of([&] { return set_VideoOutputScreenSplitParameter("HDMI2", block.data()); }),
            (Events{run_event(1005, block.data(), kSplitRecords)}))
            << "compared with the block, which never becomes equal";
        std::copy(block.begin(), block.end(), device.splits.begin() + 1);
        EXPECT_EQ(bytes_of(data_VideoOutputScreenSplitParameter, 8),
                  bytes_of(device.splits.data(), 8));
    }
}

TEST_F(Settings, SplitRefusesWithTheResultOfItsCheck) {
    Splits block(device.splits.begin(), device.splits.begin() + kSplitRecords);
    expect_refused([&] { return set_VideoOutputScreenSplitParameter("HDMI2", block.data()); },
                   {"check_VideoOutputScreenSplitParameter: if_name HDMI2!=HDMI1 invalid\n",
                    "set_VideoOutputScreenSplitParameter: HDMI2 check ret = 0\n"});
    expect_refused([&] { return set_VideoOutputScreenSplitParameter("HDMI9", block.data()); },
                   {kLookUp + "HDMI9 invalid\n",
                    "set_VideoOutputScreenSplitParameter: HDMI9 check ret = 0\n"});
    std::string before = store_bytes();
    errors_of([&] {
        EXPECT_EQ(set_VideoOutputScreenSplitParameter("HDMI1", nullptr), -2);
        EXPECT_EQ(set_VideoOutputScreenSplitParameter(nullptr, block.data()), -2);
    });
    EXPECT_EQ(store_bytes(), before);
    EXPECT_EQ(take_events(), Events{});
}

// ---- display ------------------------------------------------------------------------------------

TEST_F(Settings, DisplayPostsBorderChangesOnly) {
    using R = VideoOutputDisplayParameter;
    struct Row {
        const char *name;
        std::function<void(R &)> change;
        bool posted;
    };
    const Row rows[] = {
        {"border width", [](R &r) { r.BorderWidth = 9; }, true},
        {"video colour", [](R &r) { put(r.VideoBorderColor, "#FFFFFF"); }, true},
        {"audio colour", [](R &r) { put(r.AudioBorderColor, "#FFFFFF"); }, true},
        {"background", [](R &r) { put(r.BackgroundColor, "#FFFFFF"); }, false},
        {"cache", [](R &r) { r.cache = -1; }, false},
        {"playmode", [](R &r) { r.playmode = 0; }, false},
        {"first reserved word", [](R &r) { r.reserved_0[0] = 99; }, false},
        {"second reserved word", [](R &r) { r.reserved_0[7] = 99; }, false},
        {"bytes behind a colour's end", [](R &r) { r.VideoBorderColor[63] = 'x'; }, false},
    };
    for (const Row &row : rows) {
        data_VideoOutputDisplayParameter[0] = device.display;
        R changed = device.display;
        row.change(changed);
        EXPECT_EQ(events_of([&] { return set_VideoOutputDisplayParameter(&changed); }),
                  row.posted ? Events{record_event(1001, changed)} : Events{})
            << row.name;
        EXPECT_EQ(bytes_of(data_VideoOutputDisplayParameter[0]), bytes_of(changed)) << row.name;
        expect_no_effect([&] { return set_VideoOutputDisplayParameter(&changed); });
    }
    EXPECT_EQ(user_files(), 10u);
}

TEST_F(Settings, DisplayRefusesWhatItsCheckRefuses) {
    VideoOutputDisplayParameter record = device.display;
    const std::string own = "set_VideoOutputDisplayParameter: invalid\n";
    expect_refused([] { return set_VideoOutputDisplayParameter(nullptr); }, {own});
    record.BackgroundColor[0] = '\0';
    expect_refused([&] { return set_VideoOutputDisplayParameter(&record); }, {own});
    record = device.display;
    record.playmode = 2;
    expect_refused([&] { return set_VideoOutputDisplayParameter(&record); },
                   {"check_VideoOutputDisplayParameter: playmode=2 > max=1 invalid\n", own});
    record = device.display;
    record.cache = -2;
    expect_refused([&] { return set_VideoOutputDisplayParameter(&record); },
                   {"check_VideoOutputDisplayParameter: cache=-2 < -1 invalid\n", own});
    record.cache = 51;
    expect_refused([&] { return set_VideoOutputDisplayParameter(&record); },
                   {"check_VideoOutputDisplayParameter: cache=51 > max=50 invalid\n", own});
}

// ---- OSD ----------------------------------------------------------------------------------------

using OsdBlock = std::vector<VideoOutputOSDParameter>;

OsdBlock block_of(const SampleDevice &device, int channel) {
    const auto first = device.osd.begin() + channel * kOsdEntries;
    return OsdBlock(first, first + kOsdEntries);
}

TEST_F(Settings, OsdPostsEveryChangedEntryAndWritesTheFile) {
    OsdBlock block = block_of(device, 5);
    fs::remove(user("VideoOutputOSDParameters.json"));
    expect_no_effect([&] { return set_VideoOutputOSDParameter(5, block.data(), 0); });
    EXPECT_EQ(user_files(), 9u);
    block[1].visible = 0;
    put(block[3].tail, "tail");
    EXPECT_EQ(events_of([&] { return set_VideoOutputOSDParameter(5, block.data(), 0); }),
              (Events{record_event(1010, block[1], 21), record_event(1010, block[3], 23)}));
    std::copy(block.begin(), block.end(), device.osd.begin() + 20);
    EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter, 64), bytes_of(device.osd.data(), 64));
    EXPECT_EQ(
        bytes_of(read_back(f2s_array_VideoOutputOSDParameter, user("VideoOutputOSDParameters.json"))
                     .data(),
                 64),
        bytes_of(device.osd.data(), 64));
}

TEST_F(Settings, SilentOsdIsStoredAndWrittenButNotPosted) {
    OsdBlock block = block_of(device, 15);
    fs::remove(user("VideoOutputOSDParameters.json"));
    block[3].y = 1;
    for (const int silent : {1, -1}) {
        block[3].y += 1;
        EXPECT_EQ(events_of([&] { return set_VideoOutputOSDParameter(15, block.data(), silent); }),
                  Events{});
        EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter[63]), bytes_of(block[3]));
    }
    EXPECT_TRUE(fs::exists(user("VideoOutputOSDParameters.json")));
}

TEST_F(Settings, OsdRefusesChannelsAndEntries) {
    OsdBlock block = block_of(device, 5);
    for (const int channel : {-1, kChannels, INT_MAX, INT_MIN}) {
        expect_refused(
            [&] { return set_VideoOutputOSDParameter(channel, block.data(), 0); },
            {"set_VideoOutputOSDParameter: chn" + std::to_string(channel) + " invalid\n"});
    }
    expect_refused([&] { return set_VideoOutputOSDParameter(5, nullptr, 0); },
                   {"set_VideoOutputOSDParameter: chn5 invalid\n"});
    expect_refused([&] { return set_VideoOutputOSDParameter(4, block.data(), 0); },
                   {"check_VideoOutputOSDParameter: Channel[5] invalid\n",
                    "set_VideoOutputOSDParameter: chn=4 invalid\n"});
    block[0].visible = 9;
    block[2].Index = 7;
    expect_refused([&] { return set_VideoOutputOSDParameter(5, block.data(), 0); },
                   {"check_VideoOutputOSDParameter: Index[7] invalid\n",
                    "set_VideoOutputOSDParameter: chn=5 invalid\n"});
}

TEST_F(Settings, OsdDoesNothingWhereItIsNotSupported) {
    OsdBlock block = block_of(device, 5);
    block[0].Channel = 99;
    data_VideoOutputInterface[0].OSDSupported = 0;
    expect_no_effect([&] { return set_VideoOutputOSDParameter(5, block.data(), 0); });
}

// ---- watermarks ---------------------------------------------------------------------------------

template <typename R>
struct WatermarkFamily {
    std::string name;
    int (*set)(const char *, const R *);
    const R *stored;
    int event;  ///< 0 for none
    fs::path file;
};

template <typename R>
void expect_watermark_set(const WatermarkFamily<R> &family) {
    const auto errors_and_result = [&](const char *name, const R *record, int result) {
        return errors_of([&] { EXPECT_EQ(family.set(name, record), result); });
    };
    const std::string check = "check_" + family.name + ": ";
    const std::string set = "set_" + family.name + ": ";
    R record = family.stored[1];
    const std::string before = store_bytes();
    fs::remove(family.file);
    EXPECT_EQ(errors_and_result("HDMI2", &record, 0), Lines{});
    EXPECT_EQ(errors_and_result("HDMI9", &record, -2),
              (Lines{kLookUp + "HDMI9 invalid\n", check + "if_name=HDMI9 invalid\n",
                     set + "HDMI9 invalid\n"}));
    EXPECT_EQ(errors_and_result("HDMI1", &record, -2),
              (Lines{check + "if_name HDMI1!=HDMI2 invalid\n", set + "HDMI1 invalid\n"}));
    EXPECT_EQ(errors_and_result("HDMI2", nullptr, -2),
              (Lines{check + "if_name=HDMI2 invalid\n", set + "HDMI2 invalid\n"}));
    EXPECT_EQ(take_events(), Events{});
    EXPECT_EQ(store_bytes(), before);
    EXPECT_FALSE(fs::exists(family.file));

    record.visible += 1;
    EXPECT_EQ(errors_and_result("HDMI2", &record, 0), Lines{});
    EXPECT_EQ(take_events(),
              family.event == 0 ? Events{} : Events{record_event(family.event, record)});
    EXPECT_EQ(bytes_of(family.stored[1]), bytes_of(record));
    EXPECT_TRUE(fs::exists(family.file));
}

TEST_F(Settings, WatermarkTextIsPostedStoredAndWritten) {
    expect_watermark_set<WatermarkOSDParameter>({"WatermarkOSDParameter", set_WatermarkOSDParameter,
                                                 data_WatermarkOSDParameter, 1003,
                                                 user("WatermarkOSDParameters.json")});
    WatermarkOSDParameter record = data_WatermarkOSDParameter[0];
    record.reserved_220[3] = 1;
    EXPECT_EQ(events_of([&] { return set_WatermarkOSDParameter("HDMI1", &record); }),
              (Events{record_event(1003, record)}))
        << "a difference in a reserved span is a change";
}

TEST_F(Settings, WatermarkPictureIsPostedStoredAndWritten) {
    expect_watermark_set<WatermarkPictureParameter>(
        {"WatermarkPictureParameter", set_WatermarkPictureParameter, data_WatermarkPictureParameter,
         1002, user("WatermarkPictureParameters.json")});
}

TEST_F(Settings, TheDisplayIsNotToldAChangedDotWatermarkShowsAtTheNextStart) {
    expect_watermark_set<WatermarkDotmatrixParameter>(
        {"WatermarkDotmatrixParameter", set_WatermarkDotmatrixParameter,
         data_WatermarkDotmatrixParameter, 0, user("WatermarkDotmatrixParameters.json")});
    const auto changed = data_WatermarkDotmatrixParameter[1];
    EXPECT_EQ(load_files(), 0);
    EXPECT_EQ(bytes_of(data_WatermarkDotmatrixParameter[1]), bytes_of(changed));
}

TEST_F(Settings, UploadPostsTheStoredPicture) {
    for (int i = 0; i < kInterfaces; ++i) {
        EXPECT_EQ(events_of([&] { return upload_WatermarkPicture(interface_name(i)); }),
                  (Events{record_event(1002, device.pictures[static_cast<size_t>(i)])}));
    }
    expect_refused([] { return upload_WatermarkPicture("HDMI9"); }, {kLookUp + "HDMI9 invalid\n"});
    expect_refused([] { return upload_WatermarkPicture(""); }, {kLookUp + " invalid\n"});
}

// ---- streams ------------------------------------------------------------------------------------

TEST_F(Settings, StreamIsStoredAndPosted) {
    StreamingInputStatusChange record = data_StreamingInputStatusChange[kStreams - 1];
    expect_no_effect([&] { return set_StreamingInputStatusChange(&record); });
    record.status2 = -1;
    EXPECT_EQ(events_of([&] { return set_StreamingInputStatusChange(&record); }),
              (Events{run_event(1011, &record, 1)}));
    EXPECT_EQ(bytes_of(data_StreamingInputStatusChange[kStreams - 1]), bytes_of(record));
    for (const int index : {-1, kStreams, 64, INT_MAX, INT_MIN}) {
        record.index = index;
        expect_refused(
            [&] { return set_StreamingInputStatusChange(&record); },
            {"set_StreamingInputStatusChange: index " + std::to_string(index) + " invalid\n"});
    }
    EXPECT_EQ(user_files(), 10u);
}

}  // namespace
