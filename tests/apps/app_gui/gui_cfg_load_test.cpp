/** @file gui_cfg_load_test.cpp What the store holds, says and writes back after loading. */

#include <climits>

#include "store_fixture.h"
#include "wnd_split.h"

using namespace store_test;
namespace fs = std::filesystem;

namespace {

using Load = Store;

/** The line that a failed reading prints under the step's name. */
std::string read_line(const std::string &step, const fs::path &path, int result) {
    return step + ": read " + path.string() + " fail ret=" + std::to_string(result) + "\n";
}

std::string init_line(const std::string &message, int result) {
    return "init_parameters: " + message + " fail ret:" + std::to_string(result) + "\n";
}

template <typename R, size_t N>
bool all_zero(const R (&records)[N]) {
    const std::string bytes = bytes_of(records, N);
    return bytes == std::string(bytes.size(), '\0');
}

// ---- a whole device -----------------------------------------------------------------------------

TEST_F(Load, FillsEveryArrayAndCountFromTheUserFiles) {
    load();
    EXPECT_EQ(bytes_of(data_DeviceCapabilitySet[0]), bytes_of(device.device));
    EXPECT_EQ(bytes_of(data_VideoDecodeCapabilitySet[0]), bytes_of(device.decode));
    EXPECT_EQ(bytes_of(data_StreamingInputCapabilitySet[0]), bytes_of(device.streaming));
    expect_stored(data_VideoOutputCapabilitySet, device.channels);
    expect_stored(data_VideoOutputInterface, device.interfaces);
    expect_stored(data_AudioOutputCapabilitySet, device.audio_outputs);
    EXPECT_EQ(bytes_of(data_VideoOutputDisplayParameter[0]), bytes_of(device.display));
    expect_stored(data_VideoOutputInterfaceParameter, device.interface_parameters);
    expect_stored(data_VideoOutputScreenSplitParameter, device.splits);
    expect_stored(data_VideoOutputOSDParameter, device.osd);
    expect_stored(data_WatermarkOSDParameter, device.texts);
    expect_stored(data_WatermarkPictureParameter, device.pictures);
    expect_stored(data_WatermarkDotmatrixParameter, device.dots);
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[0]), bytes_of(device.audio[0]));

    EXPECT_EQ(num_VideoOutputInterface, 2u);
    EXPECT_EQ(num_VideoOutSourceChange, 16u);
    EXPECT_EQ(num_VideoOutputOSDParameter, 64u);
    EXPECT_EQ(num_WatermarkOSDParameter, 2u);
    EXPECT_EQ(num_WatermarkPictureParameter, 2u);
    EXPECT_EQ(num_WatermarkDotmatrixParameter, 2u);
    EXPECT_EQ(num_StreamingInputStatusChange, unsigned{kStreams});
    EXPECT_EQ(audWndIdx, -1);
}

TEST_F(Load, TurnsSourceAndStreamFilesIntoStoreRecords) {
    load();
    for (int c = 0; c < kChannels; ++c) {
        VideoOutSourceChange expected{};
        expected.Channel = c;
        expected.index = (c + 3) % kStreams;
        expected.type = 1;
        EXPECT_EQ(bytes_of(data_VideoOutSourceChange[c]), bytes_of(expected)) << c;
    }
    for (int c = kChannels; c < kSourceElements; ++c) {
        EXPECT_EQ(bytes_of(data_VideoOutSourceChange[c]), bytes_of(VideoOutSourceChange{})) << c;
    }
    for (int i = 0; i < kStreams; ++i) {
        StreamingInputStatusChange expected{};
        expected.index = i;
        put(expected.url, "rtsp://10.0.0." + std::to_string(i) + "/live");
        put(expected.name, "camera " + std::to_string(i));
        EXPECT_EQ(bytes_of(data_StreamingInputStatusChange[i]), bytes_of(expected)) << i;
    }
    EXPECT_EQ(bytes_of(data_StreamingInputStatusChange[kStreams]),
              bytes_of(StreamingInputStatusChange{}));
}

TEST_F(Load, KeepsOnlyTheFirstAudioOutput) {
    load();
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[1]), bytes_of(AudioOutSourceChange{}));
    EXPECT_EQ(bytes_of(data_AudioOutSourceChange[2]), bytes_of(AudioOutSourceChange{}));
}

TEST_F(Load, WritesNothingWhenEveryRecordIsValid) {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "default_parameters");
    fs::remove(factory("VideoOutputOSDParameters.json"));
    device.write_parameters(root / "app_parameters");
    const auto before = fs::last_write_time(user("WatermarkOSDParameters.json"));
    const auto text = text_of_file(user("WatermarkOSDParameters.json"));
    EXPECT_EQ(load_files(), 0);
    EXPECT_EQ(user_files(), 10u);
    EXPECT_EQ(fs::last_write_time(user("WatermarkOSDParameters.json")), before);
    EXPECT_EQ(text_of_file(user("WatermarkOSDParameters.json")), text);
}

TEST_F(Load, RemovesTheLeftoversOfTheFilesThatThisProcessWritesAndNoOthers) {
    const char *const written[] = {"VideoOutputOSDParameters.json", "WatermarkOSDParameters.json",
                                   "WatermarkPictureParameters.json",
                                   "WatermarkDotmatrixParameters.json"};
    // Another process may be saving these now.
    const char *const foreign[] = {"VideoOutputInterfaceParameters.json",
                                   "VideoOutputDisplayParameters.json",
                                   "VideoOutputAccessParameters.json",
                                   "VideoOutputScreenSplitParameters.json",
                                   "AudioOutputParameters.json",
                                   "StreamingInputParameters.json",
                                   "NetworkParameters.json"};
    for (const char *const suffix : {".x4Tq0z.tmp", ".backup.tmp"}) {
        for (const std::string file : written)
            write_text(user(file + suffix), "[{");
        for (const std::string file : foreign)
            write_text(user(file + suffix), "[{");
    }
    load();
    for (const char *const suffix : {".x4Tq0z.tmp", ".backup.tmp"}) {
        for (const std::string file : written)
            EXPECT_FALSE(fs::exists(user(file + suffix))) << file;
        for (const std::string file : foreign)
            EXPECT_EQ(text_of_file(user(file + suffix)), "[{") << file;
    }
}

TEST_F(Load, BuildsTheSplitCatalogueLast) {
    load();
    EXPECT_EQ(getSplitWndNum(9), 9);
}

TEST_F(Load, StartsFromAnEmptyStoreASecondTime) {
    load();
    device = SampleDevice();
    device.device.VideoOutputChannelNum = 3;
    device.streaming.StreamingInputNum = 2;
    device.interfaces.resize(1);
    device.write_capabilities(root / "capability_sets");
    EXPECT_EQ(load_files(), 0);
    EXPECT_EQ(num_VideoOutputInterface, 1u);
    EXPECT_EQ(num_VideoOutSourceChange, 3u);
    EXPECT_EQ(bytes_of(data_VideoOutSourceChange[3]), bytes_of(VideoOutSourceChange{}));
    EXPECT_EQ(bytes_of(data_StreamingInputStatusChange[2]), bytes_of(StreamingInputStatusChange{}));
}

// ---- capability files ---------------------------------------------------------------------------

struct CapabilityStep {
    const char *file;
    const char *step;
    const char *message;
    int result_of_missing;  ///< of init_parameters when the file is not there
    int result_of_broken;   ///< when it is not JSON
};
constexpr CapabilityStep kCapabilitySteps[] = {
    {"DeviceCapabilitySet.json", "init_DeviceCapabilitySet", "get dev cap", -7, -2},
    {"VideoOutputCapabilitySet.json", "init_VideoOutputCapabilitySet", "get decode video cap", -1,
     -1},
    {"VideoOutputInterfaces.json", "init_VideoOutputInterface", "get decode video cap", -1, -1},
    {"AudioOutputCapabilitySet.json", "init_AudioOutputCapabilitySet", "get decode audio cap", -1,
     -1},
    {"VideoDecodeCapabilitySet.json", "init_VideoDecodeCapabilitySet", "get decode video cap", -7,
     -2},
    {"StreamingInputCapabilitySet.json", "init_StreamingInputCapabilitySet", "get stream input cap",
     -7, -2},
};

TEST_F(Load, EndsAtAMissingCapabilityFile) {
    device.write_parameters(root / "app_parameters");
    for (const CapabilityStep &row : kCapabilitySteps) {
        device.write_capabilities(root / "capability_sets");
        fs::remove(capability(row.file));
        Lines errors;
        EXPECT_EQ(load_files(&errors), row.result_of_missing) << row.file;
        EXPECT_EQ(errors, (Lines{read_line(row.step, capability(row.file), -7),
                                 init_line(row.message, row.result_of_missing)}));
    }
}

TEST_F(Load, EndsAtABrokenCapabilityFile) {
    device.write_parameters(root / "app_parameters");
    for (const CapabilityStep &row : kCapabilitySteps) {
        device.write_capabilities(root / "capability_sets");
        write_text(capability(row.file), "{\"half\": ");
        Lines errors;
        EXPECT_EQ(load_files(&errors), row.result_of_broken) << row.file;
        EXPECT_EQ(errors, (Lines{read_line(row.step, capability(row.file), -2),
                                 init_line(row.message, row.result_of_broken)}));
    }
}

TEST_F(Load, EndsSilentlyWhereTheFirstInterfaceHasNoDisplay) {
    device.interfaces[0].DisplaySupported = 0;
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "app_parameters");
    Lines errors;
    EXPECT_EQ(load_files(&errors), -4);
    EXPECT_EQ(errors, Lines{});
    EXPECT_EQ(num_VideoOutputInterface, 0u);
}

TEST_F(Load, DoesNotMindASecondInterfaceWithoutDisplay) {
    device.interfaces[1].DisplaySupported = 0;
    load();
    EXPECT_EQ(num_VideoOutputInterface, 2u);
}

TEST_F(Load, LoadingEndsHereWithSuccessEverythingThatWouldBeLoadedLaterStaysZero) {
    device.audio_outputs.resize(1);
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "app_parameters");
    Lines errors;
    EXPECT_EQ(load_files(&errors), 0);
    EXPECT_EQ(errors, (Lines{"init_AudioOutputCapabilitySet: AudioOutputCapabilitySet need[2], "
                             "read[1]\n"}));
    EXPECT_EQ(num_VideoOutputInterface, 2u) << "loaded before";
    EXPECT_TRUE(all_zero(data_VideoOutputInterfaceParameter));
    EXPECT_TRUE(all_zero(data_VideoDecodeCapabilitySet));
    EXPECT_TRUE(all_zero(data_StreamingInputCapabilitySet));
    EXPECT_TRUE(all_zero(data_VideoOutputDisplayParameter));
    EXPECT_TRUE(all_zero(data_VideoOutSourceChange));
    EXPECT_TRUE(all_zero(data_VideoOutputScreenSplitParameter));
    EXPECT_TRUE(all_zero(data_AudioOutSourceChange));
    EXPECT_TRUE(all_zero(data_VideoOutputOSDParameter));
    EXPECT_TRUE(all_zero(data_WatermarkOSDParameter));
    EXPECT_TRUE(all_zero(data_WatermarkPictureParameter));
    EXPECT_TRUE(all_zero(data_WatermarkDotmatrixParameter));
    EXPECT_TRUE(all_zero(data_StreamingInputStatusChange));
    EXPECT_EQ(num_VideoOutSourceChange + num_VideoOutputOSDParameter + num_WatermarkOSDParameter +
                  num_WatermarkPictureParameter + num_WatermarkDotmatrixParameter +
                  num_StreamingInputStatusChange,
              0u);
}

TEST_F(Load, ReadsNoMoreAudioOutputsThanTheDeviceHas) {
    device.audio_outputs.push_back(device.audio_outputs[0]);
    load();
    EXPECT_EQ(bytes_of(data_AudioOutputCapabilitySet[2]), bytes_of(AudioOutputCapabilitySet{}));
}

// ---- capability numbers -------------------------------------------------------------------------

/** A capability number that does not fit, and what it is used as. */
struct Limit {
    const char *name;
    std::function<int32_t &(SampleDevice &)> number;
    std::function<int32_t()> loaded;
    int largest;
};

TEST_F(Load, CutsCapabilityNumbersThatDoNotFitWithOneLineEach) {
    const Limit limits[] = {
        {"VideoOutputChannelNum",
         [](SampleDevice &d) -> int32_t & { return d.device.VideoOutputChannelNum; },
         [] { return data_DeviceCapabilitySet[0].VideoOutputChannelNum; }, 16},
        {"AudioOutputNum", [](SampleDevice &d) -> int32_t & { return d.device.AudioOutputNum; },
         [] { return data_DeviceCapabilitySet[0].AudioOutputNum; }, 3},
        {"SplitParamNum",
         [](SampleDevice &d) -> int32_t & { return d.interfaces[0].SplitParamNum; },
         [] { return data_VideoOutputInterface[0].SplitParamNum; }, 4},
        {"OSDNumPerChannel",
         [](SampleDevice &d) -> int32_t & { return d.interfaces[0].OSDNumPerChannel; },
         [] { return data_VideoOutputInterface[0].OSDNumPerChannel; }, 4},
        {"StreamingInputNum",
         [](SampleDevice &d) -> int32_t & { return d.streaming.StreamingInputNum; },
         [] { return data_StreamingInputCapabilitySet[0].StreamingInputNum; }, 64},
    };
    for (const Limit &limit : limits) {
        for (const int value : {limit.largest + 1, INT_MAX, -1, INT_MIN}) {
            device = SampleDevice();
            device.audio_outputs.resize(3, device.audio_outputs[0]);
            device.device.AudioOutputNum = 3;
            limit.number(device) = value;
            device.write_capabilities(root / "capability_sets");
            device.write_parameters(root / "app_parameters");
            Lines errors;
            EXPECT_EQ(load_files(&errors), 0) << limit.name << " " << value;
            const int used = value < 0 ? 0 : limit.largest;
            EXPECT_EQ(limit.loaded(), used) << limit.name << " " << value;
            const std::string line = std::string("init_parameters: ") + limit.name + "=" +
                                     std::to_string(value) + " used as " + std::to_string(used) +
                                     "\n";
            EXPECT_EQ(std::count(errors.begin(), errors.end(), line), 1) << line;
            start_process();
            take_events();
        }
    }
}

TEST_F(Load, GivesASingleInterfaceAllSplitRecordsAndAFewChannelsMoreOsdEntries) {
    device.interfaces.resize(1);
    device.interface_parameters.resize(1);
    device.texts.resize(1);
    device.pictures.resize(1);
    device.dots.resize(1);
    device.interfaces[0].SplitParamNum = 8;
    device.device.VideoOutputChannelNum = 3;
    device.interfaces[0].OSDNumPerChannel = 21;
    device.osd.clear();
    for (int c = 0; c < 3; ++c) {
        for (int k = 0; k < 21; ++k) {
            VideoOutputOSDParameter entry{};
            entry.Channel = c;
            entry.Index = k;
            device.osd.push_back(entry);
        }
    }
    load();
    EXPECT_EQ(get_VideoOutputScreenSplitParameter_per_intf_size(), 8);
    EXPECT_EQ(get_VideoOutputOSDParameter_per_chn_size(), 21);
    EXPECT_EQ(num_VideoOutputOSDParameter, 63u);
    EXPECT_EQ(get_VideoOutputOSDParameter_chn_size(), 3);
    EXPECT_EQ(get_VideoOutSourceChange_chn_size(), 3);
    EXPECT_EQ(get_AudioOutputParameter_chn_size(), kAudioOutputs);
    EXPECT_EQ(get_VideoOutputInterface_size(), 1);
}

TEST_F(Load, CountsNoOsdEntriesWhereOsdIsNotSupported) {
    device.interfaces[0].OSDSupported = 0;
    load();
    EXPECT_EQ(get_VideoOutputOSDParameter_per_chn_size(), 0);
    EXPECT_EQ(data_VideoOutputInterface[0].OSDNumPerChannel, kOsdEntries);
    EXPECT_EQ(num_VideoOutputOSDParameter, 64u) << "the number read";
}

TEST_F(Load, CountsTheOsdEntriesReadWhereThereAreNoChannels) {
    device.device.VideoOutputChannelNum = 0;
    device.osd.resize(5);
    load();
    EXPECT_EQ(num_VideoOutputOSDParameter, 5u);
    EXPECT_EQ(num_VideoOutSourceChange, 0u);
}

// ---- parameter files: user, factory, default ----------------------------------------------------

struct ParameterStep {
    const char *file;
    const char *step;
    const char *message;
    bool rewritten;  ///< what was repaired is written to the user's folder
};
const ParameterStep kParameterSteps[] = {
    {"VideoOutputInterfaceParameters.json", "init_VideoOutputInterfaceParameter",
     "get decode vointf para", false},
    {"VideoOutputDisplayParameters.json", "init_VideoOutputDisplayParameter", "get decode vod para",
     false},
    {"VideoOutputAccessParameters.json", "init_VideoOutputSourceParameter", "get decode voa para",
     false},
    {"VideoOutputScreenSplitParameters.json", "init_VideoOutputScreenSplitParameter",
     "get decode voss para", false},
    {"AudioOutputParameters.json", "init_AudioOutputParameter", "get decode ao para", false},
    {"VideoOutputOSDParameters.json", "init_VideoOutputOSDParameter", "get vo osd para", true},
    {"WatermarkOSDParameters.json", "init_WatermarkOSDParameter", "get watermark osd para", true},
    // A missing picture file is told with the words for the text file.
    {"WatermarkPictureParameters.json", "init_WatermarkPictureParameter", "get watermark osd para",
     true},
    {"WatermarkDotmatrixParameters.json", "init_WatermarkDotmatrixParameter",
     "get watermark dot para", true},
    {"StreamingInputParameters.json", "init_StreamingInputParameter", "get stream input para",
     false},
};

TEST_F(Load, FallsBackToTheFactoryFileAndWritesNothing) {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "default_parameters");
    Lines expected;
    for (const ParameterStep &row : kParameterSteps) {
        expected.push_back(read_line(row.step, user(row.file), -7));
    }
    Lines errors;
    EXPECT_EQ(load_files(&errors), 0);
    EXPECT_EQ(errors, expected);
    EXPECT_EQ(user_files(), 0u);
    EXPECT_EQ(bytes_of(data_VideoOutputDisplayParameter[0]), bytes_of(device.display));
    expect_stored(data_VideoOutputInterfaceParameter, device.interface_parameters);
    expect_stored(data_VideoOutputOSDParameter, device.osd);
    expect_stored(data_WatermarkDotmatrixParameter, device.dots);
    EXPECT_EQ(data_VideoOutSourceChange[4].index, 7);
    EXPECT_STREQ(data_StreamingInputStatusChange[9].name, "camera 9");
}

TEST_F(Load, FallsBackToTheFactoryFileBehindABrokenUserFile) {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "app_parameters");
    device.write_parameters(root / "default_parameters");
    write_text(user("WatermarkOSDParameters.json"), "[{\"visible\": \"yes\"}]");
    Lines errors;
    EXPECT_EQ(load_files(&errors), 0);
    EXPECT_EQ(
        errors,
        (Lines{read_line("init_WatermarkOSDParameter", user("WatermarkOSDParameters.json"), -2)}));
    expect_stored(data_WatermarkOSDParameter, device.texts);
    EXPECT_EQ(text_of_file(user("WatermarkOSDParameters.json")), "[{\"visible\": \"yes\"}]");
}

TEST_F(Load, ReadsAsManyFactoryRecordsAsFitAfterAFailedUserFile) {
    device.write_capabilities(root / "capability_sets");
    device.write_parameters(root / "app_parameters");
    device.write_parameters(root / "default_parameters");
    write_text(user("VideoOutputOSDParameters.json"), "[{\"Channel\": 0}, 5]");
    EXPECT_EQ(load_files(), 0);
    EXPECT_EQ(num_VideoOutputOSDParameter, 64u);
    expect_stored(data_VideoOutputOSDParameter, device.osd);
}

TEST_F(Load, TellsBothFailuresOfAParameterFileAndGoesOn) {
    device.write_capabilities(root / "capability_sets");
    for (const ParameterStep &row : kParameterSteps) {
        device.write_parameters(root / "app_parameters");
        fs::remove(user(row.file));
        write_text(factory(row.file), "no JSON");
        Lines errors;
        EXPECT_EQ(load_files(&errors), 0) << row.file;
        ASSERT_GE(errors.size(), 3u) << row.file;
        EXPECT_EQ(errors[0], read_line(row.step, user(row.file), -7));
        EXPECT_EQ(errors[1], read_line(row.step, factory(row.file), -2));
        EXPECT_EQ(errors[2], init_line(row.message, -2));
        EXPECT_EQ(fs::exists(user(row.file)), row.rewritten) << row.file;
        fs::remove(factory(row.file));
    }
}

TEST(Life, HasStepsThatDoNothing) {
    EXPECT_EQ(uninit_parameters(), 0);
    EXPECT_EQ(stop_process(), 0);
}

}  // namespace
