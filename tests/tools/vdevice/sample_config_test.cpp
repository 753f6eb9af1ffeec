// The sample configuration: every file is there, is read whole and says nothing that would be
// repaired.

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "record_codec/record_codec.h"

namespace {

const std::string kCapabilities = CONFIG_FOLDER "/capability_sets/";
const std::string kParameters = CONFIG_FOLDER "/default_parameters/";

/** The records of a file; a record more than there may be would show. */
template <typename Record>
std::vector<Record> records(const std::string &path,
                            int (*read)(const char *, Record *, unsigned *)) {
    std::vector<Record> all(100);
    unsigned count = unsigned(all.size());
    EXPECT_EQ(read(path.c_str(), all.data(), &count), 0) << path;
    all.resize(count);
    return all;
}

std::vector<std::string> items(const std::string &list) {
    std::vector<std::string> all;
    size_t from = 0;
    for (size_t to; (to = list.find(';', from)) != std::string::npos; from = to + 1) {
        all.push_back(list.substr(from, to - from));
    }
    all.push_back(list.substr(from));
    return all;
}

bool has_item(const std::string &list, const std::string &item) {
    for (const std::string &one : items(list)) {
        if (one == item) return true;
    }
    return false;
}

std::vector<VideoOutputInterface> interfaces() {
    return records(kCapabilities + "VideoOutputInterfaces.json", f2s_array_VideoOutputInterface);
}

TEST(SampleConfig, IsThereAndIsJson) {
    const char *files[] = {"capability_sets/DeviceCapabilitySet.json",
                           "capability_sets/VideoOutputCapabilitySet.json",
                           "capability_sets/VideoOutputInterfaces.json",
                           "capability_sets/AudioOutputCapabilitySet.json",
                           "capability_sets/VideoDecodeCapabilitySet.json",
                           "capability_sets/StreamingInputCapabilitySet.json",
                           "default_parameters/VideoOutputInterfaceParameters.json",
                           "default_parameters/VideoOutputDisplayParameters.json",
                           "default_parameters/VideoOutputAccessParameters.json",
                           "default_parameters/VideoOutputScreenSplitParameters.json",
                           "default_parameters/AudioOutputParameters.json",
                           "default_parameters/VideoOutputOSDParameters.json",
                           "default_parameters/WatermarkOSDParameters.json",
                           "default_parameters/WatermarkPictureParameters.json",
                           "default_parameters/WatermarkDotmatrixParameters.json",
                           "default_parameters/StreamingInputParameters.json"};
    for (const char *file : files) {
        std::ifstream stream(std::string(CONFIG_FOLDER "/") + file);
        EXPECT_TRUE(stream.good()) << file;
        EXPECT_FALSE(nlohmann::json::parse(stream, nullptr, false).is_discarded()) << file;
    }
}

TEST(SampleConfig, OffersSixteenWindowsThreeAudioOutputsAndSixtyFourStreams) {
    DeviceCapabilitySet device;
    ASSERT_EQ(
        f2s_DeviceCapabilitySet((kCapabilities + "DeviceCapabilitySet.json").c_str(), &device), 0);
    EXPECT_EQ(device.VideoOutputChannelNum, 16);
    EXPECT_EQ(device.AudioOutputNum, 3);
    StreamingInputCapabilitySet streams;
    ASSERT_EQ(f2s_StreamingInputCapabilitySet(
                  (kCapabilities + "StreamingInputCapabilitySet.json").c_str(), &streams),
              0);
    EXPECT_EQ(streams.StreamingInputNum, 64);
    VideoDecodeCapabilitySet decoder;
    ASSERT_EQ(f2s_VideoDecodeCapabilitySet(
                  (kCapabilities + "VideoDecodeCapabilitySet.json").c_str(), &decoder),
              0);
    EXPECT_GE(decoder.MaxCache, 0);
    EXPECT_EQ(
        records(kCapabilities + "VideoOutputCapabilitySet.json", f2s_array_VideoOutputCapabilitySet)
            .size(),
        16u);
    EXPECT_EQ(
        records(kCapabilities + "AudioOutputCapabilitySet.json", f2s_array_AudioOutputCapabilitySet)
            .size(),
        3u);
}

TEST(SampleConfig, OffersEveryNamedModeOnBothInterfaces) {
    ASSERT_EQ(interfaces().size(), 2u);
    for (const VideoOutputInterface &interface : interfaces()) {
        const auto modes = items(interface.ScreenSplitMode);
        EXPECT_EQ(modes.size(), 25u);
        EXPECT_EQ(std::set<std::string>(modes.begin(), modes.end()).size(), 25u);
        EXPECT_TRUE(has_item(interface.Timing, "1920x1080P@60"));
        EXPECT_EQ(interface.SplitParamNum, 4);
        EXPECT_EQ(interface.OSDNumPerChannel, 4);
        EXPECT_NE(interface.DisplaySupported, 0);
        EXPECT_NE(interface.OSDSupported, 0);
        EXPECT_NE(interface.WatermarkSupported, 0);
    }
}

TEST(SampleConfig, StartsEachInterfaceInATimingAndSplitThatItOffers) {
    const auto offered = interfaces();
    const auto set = records(kParameters + "VideoOutputInterfaceParameters.json",
                             f2s_array_VideoOutputInterfaceParameter);
    ASSERT_EQ(set.size(), offered.size());
    for (size_t i = 0; i < set.size(); ++i) {
        EXPECT_STREQ(set[i].if_name, offered[i].if_name);
        EXPECT_TRUE(has_item(offered[i].Timing, set[i].Timing));
        EXPECT_TRUE(has_item(offered[i].ScreenSplitMode, set[i].ScreenSplitMode));
    }
}

TEST(SampleConfig, CountsTheWindowsOfItsUserLayouts) {
    const auto offered = interfaces();
    const auto layouts = records(kParameters + "VideoOutputScreenSplitParameters.json",
                                 f2s_array_VideoOutputScreenSplitParameter);
    ASSERT_EQ(layouts.size(), 8u);
    for (size_t i = 0; i < layouts.size(); ++i) {
        EXPECT_STREQ(layouts[i].if_name, offered[i / 4].if_name);
        EXPECT_EQ(layouts[i].Index, int(i % 4));
        EXPECT_EQ(size_t(layouts[i].WindowNum), items(layouts[i].SplitString).size());
    }
}

TEST(SampleConfig, FeedsEveryWindowAndAudioOutput) {
    const auto sources = records(kParameters + "VideoOutputAccessParameters.json",
                                 f2s_array_VideoOutputSourceParameter);
    ASSERT_EQ(sources.size(), 16u);
    for (size_t i = 0; i < sources.size(); ++i) {
        EXPECT_EQ(sources[i].Channel, int(i));
        EXPECT_TRUE(sources[i].type == 0 || sources[i].type == 1);
        EXPECT_GE(sources[i].cache, -1);
    }
    const auto offered = records(kCapabilities + "AudioOutputCapabilitySet.json",
                                 f2s_array_AudioOutputCapabilitySet);
    const auto audio =
        records(kParameters + "AudioOutputParameters.json", f2s_array_AudioOutputParameter);
    ASSERT_EQ(audio.size(), 3u);
    for (size_t i = 0; i < audio.size(); ++i) {
        EXPECT_EQ(audio[i].Channel, int(i));
        EXPECT_TRUE(has_item(offered[i].if_name_list, audio[i].if_name));
    }
}

TEST(SampleConfig, HoldsFourOsdTextsForEachWindow) {
    const auto texts =
        records(kParameters + "VideoOutputOSDParameters.json", f2s_array_VideoOutputOSDParameter);
    ASSERT_EQ(texts.size(), 64u);
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i].Channel, int(i / 4));
        EXPECT_EQ(texts[i].Index, int(i % 4));
        EXPECT_EQ(texts[i].type, int(i % 4));
        EXPECT_LE(texts[i].x, interfaces()[0].OSDMaxX);
        EXPECT_LE(texts[i].x, interfaces()[0].OSDMaxY);
    }
}

TEST(SampleConfig, HoldsOneWatermarkOfEachKindForEachInterface) {
    const auto offered = interfaces();
    const auto texts =
        records(kParameters + "WatermarkOSDParameters.json", f2s_array_WatermarkOSDParameter);
    const auto pictures = records(kParameters + "WatermarkPictureParameters.json",
                                  f2s_array_WatermarkPictureParameter);
    const auto dots = records(kParameters + "WatermarkDotmatrixParameters.json",
                              f2s_array_WatermarkDotmatrixParameter);
    ASSERT_EQ(texts.size(), 2u);
    ASSERT_EQ(pictures.size(), 2u);
    ASSERT_EQ(dots.size(), 2u);
    for (size_t i = 0; i < offered.size(); ++i) {
        EXPECT_STREQ(texts[i].if_name, offered[i].if_name);
        EXPECT_STREQ(pictures[i].if_name, offered[i].if_name);
        EXPECT_STREQ(dots[i].if_name, offered[i].if_name);
    }
}

TEST(SampleConfig, NumbersItsStreams) {
    const auto streams =
        records(kParameters + "StreamingInputParameters.json", f2s_array_StreamingInputParameter);
    ASSERT_EQ(streams.size(), 64u);
    for (size_t i = 0; i < streams.size(); ++i) {
        EXPECT_EQ(streams[i].index, int(i));
        EXPECT_STRNE(streams[i].url, "");
        EXPECT_STRNE(streams[i].name, "");
    }
}

TEST(SampleConfig, HasABackgroundAndBorders) {
    VideoOutputDisplayParameter display;
    const std::string path = kParameters + "VideoOutputDisplayParameters.json";
    ASSERT_EQ(f2s_VideoOutputDisplayParameter(path.c_str(), &display), 0);
    EXPECT_STREQ(display.BackgroundColor, "#000000");
    EXPECT_GT(display.BorderWidth, 0);
    EXPECT_LE(display.playmode, 1u);
}

}  // namespace
