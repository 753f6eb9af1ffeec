/** @file gui_cfg_load.cpp Fills the store from the JSON files at start. */

#include <algorithm>

#include "diagnostics.h"
#include "gui_cfg_store.h"
#include "wnd_split.h"

using namespace gui_cfg;

namespace gui_cfg {

std::string config_root = "/mnt/usr/config/";

std::string capability_path(const char *file) {
    return config_root + "capability_sets/" + file;
}

std::string user_path(const char *file) {
    return config_root + "app_parameters/" + file;
}

std::string factory_path(const char *file) {
    return config_root + "default_parameters/" + file;
}

}  // namespace gui_cfg

namespace {

struct LoadStep;

/** What loading does after a step. */
struct Outcome {
    bool ends = false;  ///< loading stops here, with `result`
    int result = 0;
};
constexpr Outcome kGoOn{};

/** One step of loading, in the order of the table below. */
struct LoadStep {
    const char *name;     ///< printed in the step's error lines
    const char *file;     ///< file name in its folder
    const char *failure;  ///< start of the line that init_parameters() prints when it fails
    Outcome (*run)(const LoadStep &step);
};

/** What steps tell each other while one loading goes on. */
struct LoadState {
    /// Kept: once an OSD or watermark record was repaired, every later watermark file is written
    /// back.
    bool rewrite = false;
};
LoadState state;

void tell_failure(const LoadStep &step, int result) {
    ERROR_LINE_AS("init_parameters", "%s fail ret:%d\n", step.failure, result);
}

// ---- reading

/** `read` takes a path and returns a reader's result, which is told when it is not 0. */
template <typename Read>
int read_told(const LoadStep &step, const std::string &path, Read read) {
    const int result = read(path.c_str());
    if (result != 0) ERROR_LINE_AS(step.name, "read %s fail ret=%d\n", path.c_str(), result);
    return result;
}

/** Capability files must be there. */
template <typename Read>
int read_capability(const LoadStep &step, Read read) {
    return read_told(step, capability_path(step.file), read);
}

/** The user's file, else the factory's, else zeroes. */
template <typename Read, typename Clear>
void read_parameter(const LoadStep &step, Read read, Clear clear) {
    clear();
    if (read_told(step, user_path(step.file), read) == 0) return;
    const int result = read_told(step, factory_path(step.file), read);
    if (result == 0) return;
    clear();
    tell_failure(step, result);
}

/** The same for an array; returns the number of records read. */
template <typename R>
unsigned read_parameters(const LoadStep &step, int (*reader)(const char *, R *, unsigned *),
                         R *records, unsigned capacity) {
    unsigned count = 0;
    read_parameter(
        step,
        [&](const char *path) {
            count = capacity;
            return reader(path, records, &count);
        },
        [&] {
            std::fill_n(records, capacity, R{});
            count = 0;
        });
    return count;
}

/** Cuts a capability figure to what the store has room for. */
void limit(const char *name, int32_t &value, int largest) {
    const int32_t used = std::clamp(value, 0, largest);
    if (used == value) return;
    ERROR_LINE_AS("init_parameters", "%s=%d used as %d\n", name, value, used);
    value = used;
}

int interfaces() {
    return get_VideoOutputInterface_size();
}

const char *interface_name(int position) {
    return data_VideoOutputInterface[position].if_name;
}

// ---- capability steps

Outcome init_DeviceCapabilitySet(const LoadStep &step) {
    DeviceCapabilitySet &set = data_DeviceCapabilitySet[0];
    const int result = read_capability(
        step, [&](const char *path) { return f2s_DeviceCapabilitySet(path, &set); });
    if (result != 0) {
        tell_failure(step, result);
        return {true, result};
    }
    limit("VideoOutputChannelNum", set.VideoOutputChannelNum, kMaxChannels);
    limit("AudioOutputNum", set.AudioOutputNum, kMaxAudioOutputs);
    return kGoOn;
}

/** A reader's failure in the steps of the output capabilities counts as -1. */
Outcome failed_output_capability(const LoadStep &step) {
    tell_failure(step, -1);
    return {true, -1};
}

Outcome init_VideoOutputCapabilitySet(const LoadStep &step) {
    unsigned count = kMaxChannels;
    const int result = read_capability(step, [&](const char *path) {
        return f2s_array_VideoOutputCapabilitySet(path, data_VideoOutputCapabilitySet, &count);
    });
    return result == 0 ? kGoOn : failed_output_capability(step);
}

Outcome init_VideoOutputInterface(const LoadStep &step) {
    unsigned count = kMaxInterfaces;
    const int result = read_capability(step, [&](const char *path) {
        return f2s_array_VideoOutputInterface(path, data_VideoOutputInterface, &count);
    });
    if (result != 0) return failed_output_capability(step);
    if (data_VideoOutputInterface[0].DisplaySupported == 0) return {true, -4};
    num_VideoOutputInterface = count;
    const int channels = std::max(data_DeviceCapabilitySet[0].VideoOutputChannelNum, 1);
    for (unsigned i = 0; i < count; ++i) {
        VideoOutputInterface &interface = data_VideoOutputInterface[i];
        limit("SplitParamNum", interface.SplitParamNum, kMaxSplitRecords / static_cast<int>(count));
        limit("OSDNumPerChannel", interface.OSDNumPerChannel, kMaxOsdEntries / channels);
    }
    return kGoOn;
}

Outcome init_AudioOutputCapabilitySet(const LoadStep &step) {
    const int needed = data_DeviceCapabilitySet[0].AudioOutputNum;
    unsigned count = static_cast<unsigned>(needed);
    const int result = read_capability(step, [&](const char *path) {
        return f2s_array_AudioOutputCapabilitySet(path, data_AudioOutputCapabilitySet, &count);
    });
    if (result != 0) return failed_output_capability(step);
    if (static_cast<int>(count) != needed) {
        // Kept: loading ends here with success; everything that would be loaded later stays zero.
        ERROR_LINE_AS(step.name, "AudioOutputCapabilitySet need[%d], read[%d]\n", needed,
                      static_cast<int>(count));
        return {true, 0};
    }
    return kGoOn;
}

template <typename R>
Outcome read_single_capability(const LoadStep &step, int (*reader)(const char *, R *), R *set) {
    const int result = read_capability(step, [&](const char *path) { return reader(path, set); });
    if (result == 0) return kGoOn;
    tell_failure(step, result);
    return {true, result};
}

Outcome init_VideoDecodeCapabilitySet(const LoadStep &step) {
    return read_single_capability(step, f2s_VideoDecodeCapabilitySet,
                                  data_VideoDecodeCapabilitySet);
}

Outcome init_StreamingInputCapabilitySet(const LoadStep &step) {
    const Outcome outcome = read_single_capability(step, f2s_StreamingInputCapabilitySet,
                                                   data_StreamingInputCapabilitySet);
    if (!outcome.ends) {
        limit("StreamingInputNum", data_StreamingInputCapabilitySet[0].StreamingInputNum,
              kMaxStreams);
    }
    return outcome;
}

// ---- parameter steps

Outcome init_VideoOutputInterfaceParameter(const LoadStep &step) {
    VideoOutputInterfaceParameter *records = data_VideoOutputInterfaceParameter;
    read_parameters(step, f2s_array_VideoOutputInterfaceParameter, records, kMaxInterfaces);
    for (int i = 0; i < interfaces(); ++i) {
        if (check_VideoOutputInterfaceParameter(interface_name(i), &records[i]) == 1) continue;
        ERROR_LINE_AS(step.name, "intf=%s invalid\n", interface_name(i));
        default_VideoOutputInterfaceParameter(interface_name(i), &records[i]);
    }
    return kGoOn;
}

/** The default, except that the record's second word is left as it was read. */
void reset_display(VideoOutputDisplayParameter &record) {
    uint8_t second_word[4];
    std::memcpy(second_word, record.reserved_0 + 4, sizeof second_word);
    default_VideoOutputDisplayParameter(&record);
    std::memcpy(record.reserved_0 + 4, second_word, sizeof second_word);
}

Outcome init_VideoOutputDisplayParameter(const LoadStep &step) {
    VideoOutputDisplayParameter &record = data_VideoOutputDisplayParameter[0];
    read_parameter(
        step, [&](const char *path) { return f2s_VideoOutputDisplayParameter(path, &record); },
        [&] { record = {}; });
    if (check_VideoOutputDisplayParameter(&record) != 1) {
        ERROR_LINE_AS(step.name, "chn=%d invalid\n", 0);
        reset_display(record);
    }
    return kGoOn;
}

Outcome init_VideoOutputSourceParameter(const LoadStep &step) {
    VideoOutputSourceParameter file[kMaxChannels];
    read_parameters(step, f2s_array_VideoOutputSourceParameter, file, kMaxChannels);
    std::fill(std::begin(data_VideoOutSourceChange), std::end(data_VideoOutSourceChange),
              VideoOutSourceChange{});
    const int channels = data_DeviceCapabilitySet[0].VideoOutputChannelNum;
    for (int c = 0; c < channels; ++c) {
        if (check_VideoOutputSourceParameter(c, &file[c]) != 1) {
            ERROR_LINE_AS(step.name, "chn=%d invalid\n", c);
            default_VideoOutputSourceParameter(c, &file[c]);
        }
        VideoOutSourceChange &stored = data_VideoOutSourceChange[c];
        stored.Channel = file[c].Channel;
        stored.index = file[c].index;
        stored.type = file[c].type;
    }
    num_VideoOutSourceChange = static_cast<uint32_t>(channels);
    return kGoOn;
}

Outcome init_VideoOutputScreenSplitParameter(const LoadStep &step) {
    VideoOutputScreenSplitParameter *records = data_VideoOutputScreenSplitParameter;
    read_parameters(step, f2s_array_VideoOutputScreenSplitParameter, records, kMaxSplitRecords);
    const int block = split_records_from(0);
    for (int i = 0; i < interfaces(); ++i) {
        VideoOutputScreenSplitParameter *first = records + i * block;
        if (check_VideoOutputScreenSplitParameter(interface_name(i), first) == 1) continue;
        ERROR_LINE_AS(step.name, "intf=%s invalid\n", interface_name(i));
        default_VideoOutputScreenSplitParameter(interface_name(i), first);
    }
    return kGoOn;
}

Outcome init_AudioOutputParameter(const LoadStep &step) {
    AudioOutputParameter file[kMaxAudioOutputs];
    read_parameters(step, f2s_array_AudioOutputParameter, file, kMaxAudioOutputs);
    const int outputs = data_DeviceCapabilitySet[0].AudioOutputNum;
    for (int a = 0; a < outputs; ++a) {
        if (check_AudioOutputParameter(a, &file[a]) == 1) continue;
        ERROR_LINE_AS(step.name, "chn=%d invalid\n", a);
        default_AudioOutputParameter(a, &file[a]);
    }
    // The device plays the first output only.
    static_assert(sizeof(AudioOutSourceChange) == sizeof(AudioOutputParameter));
    std::memcpy(&data_AudioOutSourceChange[0], &file[0], sizeof file[0]);
    return kGoOn;
}

Outcome init_VideoOutputOSDParameter(const LoadStep &step) {
    VideoOutputOSDParameter *entries = data_VideoOutputOSDParameter;
    const unsigned read =
        read_parameters(step, f2s_array_VideoOutputOSDParameter, entries, kMaxOsdEntries);
    const int channels = data_DeviceCapabilitySet[0].VideoOutputChannelNum;
    const int per_channel = get_VideoOutputOSDParameter_per_chn_size();
    for (int c = 0; c < channels; ++c) {
        VideoOutputOSDParameter *block = entries + c * per_channel;
        if (check_VideoOutputOSDParameter(c, block) == 1) continue;
        ERROR_LINE_AS(step.name, "chn=%d invalid\n", c);
        default_VideoOutputOSDParameter(c, block);
        state.rewrite = true;
    }
    num_VideoOutputOSDParameter = std::max(static_cast<unsigned>(per_channel * channels), read);
    if (state.rewrite) save_osd_entries();
    return kGoOn;
}

template <typename R>
Outcome init_watermark(const LoadStep &step) {
    using Family = InterfaceFamily<R>;
    R *records = Family::records();
    const unsigned read = read_parameters<R>(step, Family::read, records, kMaxInterfaces);
    for (int i = 0; i < interfaces(); ++i) {
        if (Family::check(interface_name(i), &records[i]) == 1) continue;
        ERROR_LINE_AS(step.name, "intf=%s invalid\n", interface_name(i));
        Family::make_default(interface_name(i), &records[i]);
        state.rewrite = true;
    }
    Family::count() = std::max(read, num_VideoOutputInterface);
    if (state.rewrite) save_family<R>();
    return kGoOn;
}

Outcome init_StreamingInputParameter(const LoadStep &step) {
    StreamingInputParameter file[kMaxStreams];
    read_parameters(step, f2s_array_StreamingInputParameter, file, kMaxStreams);
    const int inputs = data_StreamingInputCapabilitySet[0].StreamingInputNum;
    for (int i = 0; i < inputs; ++i) {
        StreamingInputStatusChange &stored = data_StreamingInputStatusChange[i];
        stored = {};
        stored.index = i;
        if (check_StreamingInputParameter(i, &file[i]) == 1) {
            set_text(stored.url, text_of(file[i].url));
            set_text(stored.name, text_of(file[i].name));
        } else {
            ERROR_LINE_AS(step.name, "index=%d invalid\n", i);
            set_text(stored.name, "Window" + std::to_string(i + 1));
        }
    }
    num_StreamingInputStatusChange = static_cast<uint32_t>(inputs);
    return kGoOn;
}

// ---- the order of loading

/** A step whose function bears the name that its error lines print. */
#define STEP(name, file, failure) \
    { #name, file, failure, name }

const LoadStep kLoadSteps[] = {
    STEP(init_DeviceCapabilitySet, "DeviceCapabilitySet.json", "get dev cap"),
    STEP(init_VideoOutputCapabilitySet, "VideoOutputCapabilitySet.json", "get decode video cap"),
    STEP(init_VideoOutputInterface, "VideoOutputInterfaces.json", "get decode video cap"),
    STEP(init_AudioOutputCapabilitySet, "AudioOutputCapabilitySet.json", "get decode audio cap"),
    STEP(init_VideoOutputInterfaceParameter, "VideoOutputInterfaceParameters.json",
         "get decode vointf para"),
    STEP(init_VideoDecodeCapabilitySet, "VideoDecodeCapabilitySet.json", "get decode video cap"),
    STEP(init_StreamingInputCapabilitySet, "StreamingInputCapabilitySet.json",
         "get stream input cap"),
    STEP(init_VideoOutputDisplayParameter, "VideoOutputDisplayParameters.json",
         "get decode vod para"),
    STEP(init_VideoOutputSourceParameter, "VideoOutputAccessParameters.json",
         "get decode voa para"),
    STEP(init_VideoOutputScreenSplitParameter, "VideoOutputScreenSplitParameters.json",
         "get decode voss para"),
    STEP(init_AudioOutputParameter, "AudioOutputParameters.json", "get decode ao para"),
    STEP(init_VideoOutputOSDParameter, kOsdFile, "get vo osd para"),
    {"init_WatermarkOSDParameter", InterfaceFamily<WatermarkOSDParameter>::kFile,
     "get watermark osd para", init_watermark<WatermarkOSDParameter>},
    // Kept: a missing picture file is told with the words for the text file.
    {"init_WatermarkPictureParameter", InterfaceFamily<WatermarkPictureParameter>::kFile,
     "get watermark osd para", init_watermark<WatermarkPictureParameter>},
    {"init_WatermarkDotmatrixParameter", InterfaceFamily<WatermarkDotmatrixParameter>::kFile,
     "get watermark dot para", init_watermark<WatermarkDotmatrixParameter>},
    STEP(init_StreamingInputParameter, "StreamingInputParameters.json", "get stream input para"),
};
#undef STEP

template <typename R, size_t N>
void clear(R (&records)[N]) {
    std::fill_n(records, N, R{});
}

/** Loading starts from an empty store, also when it runs a second time. */
void clear_store() {
    state = {};
    clear(data_DeviceCapabilitySet);
    clear(data_VideoOutputCapabilitySet);
    clear(data_VideoOutputInterface);
    clear(data_AudioOutputCapabilitySet);
    clear(data_VideoDecodeCapabilitySet);
    clear(data_StreamingInputCapabilitySet);
    clear(data_VideoOutputInterfaceParameter);
    clear(data_VideoOutputScreenSplitParameter);
    clear(data_VideoOutputDisplayParameter);
    clear(data_VideoOutSourceChange);
    clear(data_AudioOutSourceChange);
    clear(data_VideoOutputOSDParameter);
    clear(data_WatermarkOSDParameter);
    clear(data_WatermarkPictureParameter);
    clear(data_WatermarkDotmatrixParameter);
    clear(data_StreamingInputStatusChange);
    for (uint32_t *count :
         {&num_VideoOutputInterface, &num_VideoOutSourceChange, &num_VideoOutputOSDParameter,
          &num_WatermarkOSDParameter, &num_WatermarkPictureParameter,
          &num_WatermarkDotmatrixParameter, &num_StreamingInputStatusChange}) {
        *count = 0;
    }
}

}  // namespace

int init_parameters() {
    clear_store();
    for (const char *file : kSavedFiles)
        remove_temporary_files(user_path(file).c_str());
    for (const LoadStep &step : kLoadSteps) {
        const Outcome outcome = step.run(step);
        if (outcome.ends) return outcome.result;
    }
    init_split();
    init_split_info();
    return 0;
}
