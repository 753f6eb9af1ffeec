/** @file gui_cfg_repair_test.cpp What replaces records that fail their check while loading. */

#include "record_codec/record_codec.h"
#include "store_fixture.h"

using namespace store_test;
namespace fs = std::filesystem;

namespace {

class Repair : public Store {
protected:
    /** Loads `device` and returns the error lines. */
    Lines repaired() {
        device.write_capabilities(root / "capability_sets");
        device.write_parameters(root / "app_parameters");
        Lines errors;
        EXPECT_EQ(load_files(&errors), 0);
        return errors;
    }
    /** Whether the user's file still is what the test wrote. */
    bool untouched(const std::string &file) {
        device.write_parameters(root / "default_parameters");
        return text_of_file(user(file)) == text_of_file(factory(file));
    }
};

TEST_F(Repair, InterfaceGetsItsDefaultInMemoryOnly) {
    put(device.interface_parameters[1].Timing, "640x480P@60");
    device.interface_parameters[1].reserved_128[5] = 77;
    EXPECT_EQ(repaired(), (Lines{"check_VideoOutputInterfaceParameter: Timing:640x480P@60 "
                                 "buf:1920x1080P@60;1280x720P@60;3840x2160P@30\n",
                                 "init_VideoOutputInterfaceParameter: intf=HDMI2 invalid\n"}));
    VideoOutputInterfaceParameter expected = device.interface_parameters[1];
    EXPECT_EQ(default_VideoOutputInterfaceParameter("HDMI2", &expected), 0);
    EXPECT_EQ(bytes_of(data_VideoOutputInterfaceParameter[1]), bytes_of(expected));
    EXPECT_EQ(data_VideoOutputInterfaceParameter[1].reserved_128[5], 77);
    EXPECT_EQ(bytes_of(data_VideoOutputInterfaceParameter[0]),
              bytes_of(device.interface_parameters[0]));
    EXPECT_TRUE(untouched("VideoOutputInterfaceParameters.json"));
}

TEST_F(Repair, TheDefaultExceptThatTheRecordsSecondWordIsLeftAsItWasRead) {
    device.display.cache = kLargestCache + 1;
    EXPECT_EQ(repaired(), (Lines{"check_VideoOutputDisplayParameter: cache=51 > max=50 invalid\n",
                                 "init_VideoOutputDisplayParameter: chn=0 invalid\n"}));
    VideoOutputDisplayParameter expected{};
    expected.reserved_0[4] = 9;
    expected.BorderWidth = 1;
    put(expected.BackgroundColor, "#000000");
    put(expected.VideoBorderColor, "#00FF00");
    put(expected.AudioBorderColor, "#FF0000");
    EXPECT_EQ(bytes_of(data_VideoOutputDisplayParameter[0]), bytes_of(expected));
    EXPECT_TRUE(untouched("VideoOutputDisplayParameters.json"));
}

TEST_F(Repair, SourceBecomesTheStreamOfTheChannelsNumber) {
    device.sources[2].type = 2;
    device.sources[6].Channel = 0;
    device.sources.resize(14);
    EXPECT_EQ(repaired(), (Lines{"init_VideoOutputSourceParameter: chn=2 invalid\n",
                                 "check_VideoOutputSourceParameter: Channel[0] invalid\n",
                                 "init_VideoOutputSourceParameter: chn=6 invalid\n",
                                 "check_VideoOutputSourceParameter: Channel[0] invalid\n",
                                 "init_VideoOutputSourceParameter: chn=14 invalid\n",
                                 "check_VideoOutputSourceParameter: Channel[0] invalid\n",
                                 "init_VideoOutputSourceParameter: chn=15 invalid\n"}));
    for (const int c : {2, 6, 14, 15}) {
        VideoOutSourceChange expected{};
        expected.Channel = c;
        expected.index = c;
        expected.type = 1;
        EXPECT_EQ(bytes_of(data_VideoOutSourceChange[c]), bytes_of(expected)) << c;
    }
    EXPECT_EQ(data_VideoOutSourceChange[3].index, 6);
    EXPECT_TRUE(untouched("VideoOutputAccessParameters.json"));
}

TEST_F(Repair, SplitBlockIsRewrittenWhenItsFirstRecordFails) {
    put(device.splits[4].if_name, "HDMI1");
    put(device.splits[1].if_name, "nobody");
    EXPECT_EQ(repaired(),
              (Lines{"check_VideoOutputScreenSplitParameter: if_name HDMI2!=HDMI1 invalid\n",
                     "init_VideoOutputScreenSplitParameter: intf=HDMI2 invalid\n"}));
    for (int k = 0; k < kSplitRecords; ++k) {
        EXPECT_EQ(bytes_of(data_VideoOutputScreenSplitParameter[k]), bytes_of(device.splits[k]))
            << "only the first record of a block is looked at";
        VideoOutputScreenSplitParameter expected{};
        put(expected.if_name, "HDMI2");
        expected.Index = k;
        expected.WindowNum = 1;
        put(expected.SplitString, "0,0,8196,8196,0");
        EXPECT_EQ(bytes_of(data_VideoOutputScreenSplitParameter[kSplitRecords + k]),
                  bytes_of(expected));
    }
    EXPECT_TRUE(untouched("VideoOutputScreenSplitParameters.json"));
}

TEST_F(Repair, AudioOutputGetsItsDefaultAndOnlyTheFirstIsKept) {
    device.audio[0].index = 6;
    device.audio[1].Channel = 5;
    EXPECT_EQ(repaired(), (Lines{"check_AudioOutputParameter: index_list:5;7 6\n",
                                 "init_AudioOutputParameter: chn=0 invalid\n",
                                 "check_AudioOutputParameter: chn1 Channel5\n",
                                 "init_AudioOutputParameter: chn=1 invalid\n"}));
    AudioOutSourceChange expected{};
    put(expected.if_name, "HDMI2");
    expected.type = 2;
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[0]), bytes_of(expected));
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[1]), bytes_of(AudioOutSourceChange{}));
    EXPECT_TRUE(untouched("AudioOutputParameters.json"));
}

TEST_F(Repair, StreamGetsTheNameOfItsWindow) {
    device.streams[5].index = 6;
    EXPECT_EQ(repaired(), (Lines{"check_StreamingInputParameter: index invalid[5,6]\n",
                                 "init_StreamingInputParameter: index=5 invalid\n"}));
    StreamingInputStatusChange expected{};
    expected.index = 5;
    put(expected.name, "Window6");
    EXPECT_EQ(bytes_of(data_StreamingInputStatusChange[5]), bytes_of(expected));
    EXPECT_STREQ(data_StreamingInputStatusChange[6].name, "camera 6");
    EXPECT_TRUE(untouched("StreamingInputParameters.json"));
}

TEST_F(Repair, OsdChannelGetsItsDefaultsAndTheFileIsWrittenBack) {
    device.osd[7 * kOsdEntries + 2].x = kOsdLimitY + 1;
    EXPECT_EQ(repaired(), (Lines{"init_VideoOutputOSDParameter: chn=7 invalid\n"}));
    std::vector<VideoOutputOSDParameter> expected = device.osd;
    EXPECT_EQ(default_VideoOutputOSDParameter(7, &expected[7 * kOsdEntries]), 0);
    EXPECT_STREQ(expected[7 * kOsdEntries + 1].content, "osd 7/1") << "left as it was";
    EXPECT_STREQ(expected[7 * kOsdEntries].head, "head") << "left as it was";
    expect_stored(data_VideoOutputOSDParameter, expected);
    const auto file =
        read_back(f2s_array_VideoOutputOSDParameter, user("VideoOutputOSDParameters.json"));
    ASSERT_EQ(file.size(), 64u);
    expect_stored(file.data(), expected);
}

TEST_F(Repair, OsdFileOfTooFewRecordsIsCompleted) {
    device.osd.resize(10);
    Lines expected;
    for (int c = 2; c < kChannels; ++c) {
        expected.push_back("check_VideoOutputOSDParameter: Channel[0] invalid\n");
        expected.push_back("init_VideoOutputOSDParameter: chn=" + std::to_string(c) + " invalid\n");
    }
    EXPECT_EQ(repaired(), expected);
    EXPECT_EQ(num_VideoOutputOSDParameter, 64u);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(bytes_of(data_VideoOutputOSDParameter[i]), bytes_of(device.osd[i])) << i;
    }
    EXPECT_STREQ(data_VideoOutputOSDParameter[63].content, "URL");
    EXPECT_EQ(
        read_back(f2s_array_VideoOutputOSDParameter, user("VideoOutputOSDParameters.json")).size(),
        64u);
}

TEST_F(Repair, WatermarkGetsItsDefaultAndTheFileIsWrittenBack) {
    put(device.texts[1].if_name, "HDMI1");
    EXPECT_EQ(repaired(), (Lines{"check_WatermarkOSDParameter: if_name HDMI2!=HDMI1 invalid\n",
                                 "init_WatermarkOSDParameter: intf=HDMI2 invalid\n"}));
    std::vector<WatermarkOSDParameter> expected = device.texts;
    EXPECT_EQ(default_WatermarkOSDParameter("HDMI2", &expected[1]), 0);
    expect_stored(data_WatermarkOSDParameter, expected);
    expect_stored(
        read_back(f2s_array_WatermarkOSDParameter, user("WatermarkOSDParameters.json")).data(),
        expected);
}

TEST_F(Repair, WatermarkCountIsTheLargerOfReadRecordsAndInterfaces) {
    device.texts.resize(1);
    device.pictures.clear();
    repaired();
    EXPECT_EQ(num_WatermarkOSDParameter, 2u);
    EXPECT_EQ(num_WatermarkPictureParameter, 2u);
    device = SampleDevice();
    device.interfaces.resize(1);
    repaired();
    EXPECT_EQ(num_WatermarkOSDParameter, 2u) << "two were read for one interface";
}

/** Files that steps 12 to 15 write, in order. */
constexpr const char *kWatchedFiles[] = {
    "VideoOutputOSDParameters.json", "WatermarkOSDParameters.json",
    "WatermarkPictureParameters.json", "WatermarkDotmatrixParameters.json"};

TEST_F(Repair, OnceAnOsdOrWatermarkRecordWasRepairedEveryLaterWatermarkFileIsWrittenBack) {
    const std::function<void(SampleDevice &)> damages[] = {
        [](SampleDevice &d) { d.osd[0].Channel = 1; },
        [](SampleDevice &d) { put(d.texts[0].if_name, ""); },
        [](SampleDevice &d) { put(d.pictures[0].if_name, ""); },
        [](SampleDevice &d) { put(d.dots[0].if_name, ""); },
    };
    device.write_capabilities(root / "capability_sets");
    for (size_t damaged = 0; damaged < std::size(damages); ++damaged) {
        device = SampleDevice();
        damages[damaged](device);
        device.write_parameters(root / "default_parameters");
        for (const char *file : kWatchedFiles)
            fs::remove(user(file));
        EXPECT_EQ(load_files(), 0);
        for (size_t i = 0; i < std::size(kWatchedFiles); ++i) {
            EXPECT_EQ(fs::exists(user(kWatchedFiles[i])), i >= damaged)
                << kWatchedFiles[i] << " after damage " << damaged;
        }
        EXPECT_EQ(user_files(), std::size(kWatchedFiles) - damaged);
    }
}

TEST_F(Repair, ARepairOfAnEarlierLoadingWritesNothingInTheNext) {
    device.osd[0].Channel = 1;
    repaired();
    device = SampleDevice();
    device.write_parameters(root / "default_parameters");
    device.write_parameters(root / "app_parameters");
    fs::remove(user("WatermarkDotmatrixParameters.json"));
    EXPECT_EQ(load_files(), 0);
    EXPECT_FALSE(fs::exists(user("WatermarkDotmatrixParameters.json")));
}

TEST_F(Repair, OtherRepairsDoNotWriteWatermarkFilesBack) {
    device.display.playmode = 2;
    device.sources[0].type = 9;
    device.interface_parameters.clear();
    device.splits.clear();
    device.audio.clear();
    device.streams.clear();
    repaired();
    for (const char *file : kWatchedFiles)
        EXPECT_TRUE(untouched(file)) << file;
}

TEST_F(Repair, EveryParameterFileMissingGivesTheDefaultDevice) {
    device.write_capabilities(root / "capability_sets");
    EXPECT_EQ(load_files(), 0);
    EXPECT_EQ(user_files(), 4u);
    for (const char *file : kWatchedFiles)
        EXPECT_TRUE(fs::exists(user(file))) << file;

    for (int i = 0; i < kInterfaces; ++i) {
        VideoOutputInterfaceParameter parameter{};
        default_VideoOutputInterfaceParameter(interface_name(i), &parameter);
        EXPECT_EQ(bytes_of(data_VideoOutputInterfaceParameter[i]), bytes_of(parameter));
        WatermarkPictureParameter picture{};
        default_WatermarkPictureParameter(interface_name(i), &picture);
        EXPECT_EQ(bytes_of(data_WatermarkPictureParameter[i]), bytes_of(picture));
    }
    EXPECT_STREQ(data_VideoOutputDisplayParameter[0].VideoBorderColor, "#00FF00");
    for (int c = 0; c < kChannels; ++c) {
        VideoOutSourceChange source{};
        source.Channel = c;
        // The zero record of channel 0 lacks nothing: it names channel 0 and the listed input 0.
        source.index = c;
        source.type = c == 0 ? 0 : 1;
        EXPECT_EQ(bytes_of(data_VideoOutSourceChange[c]), bytes_of(source)) << c;
        EXPECT_STREQ(data_VideoOutputOSDParameter[c * kOsdEntries + 3].content, "URL") << c;
    }
    EXPECT_STREQ(data_StreamingInputStatusChange[1].name, "Window2");
    EXPECT_STREQ(data_StreamingInputStatusChange[0].name, "")
        << "the zero record of input 0 passes";
    EXPECT_EQ(num_StreamingInputStatusChange, unsigned{kStreams});
}

TEST_F(Repair, AFolderThatCannotBeWrittenIsToldAndLoadingSucceeds) {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "default_parameters");
    fs::remove(factory("WatermarkOSDParameters.json"));
    fs::remove_all(root / "app_parameters");
    EXPECT_EQ(load_files(), 0);
    EXPECT_STREQ(data_WatermarkOSDParameter[0].forecolor, "#FF0000");
    EXPECT_FALSE(fs::exists(root / "app_parameters"));
}

}  // namespace
