#include "app_model_interface.h"

#include "diagnostics.h"
#include "gui_cfg.h"
#include "gui_cfg_store.h"

namespace {

using gui_cfg::printable;

// ---- feature flags: those of the first interface count for every key ---------------------------

constexpr int kNotSupported = -4;

bool always() {
    return true;
}

bool watermark_supported() {
    return data_VideoOutputInterface[0].WatermarkSupported != 0;
}

bool osd_supported() {
    return data_VideoOutputInterface[0].OSDSupported != 0;
}

using Supported = bool (*)();

int one() {
    return 1;
}

int split_records() {
    return get_VideoOutputScreenSplitParameter_per_intf_size();
}

// ---- interface keys ----------------------------------------------------------------------------

/** Records for a key: none for null, those of every interface for "", else those of one. */
int interface_size(Supported supported, const char *if_name, int per_interface) {
    if (!supported() || !if_name) return 0;
    return (*if_name == '\0' ? get_VideoOutputInterface_size() : 1) * per_interface;
}

/** One store operation; its failure is told under the handler's name. */
template <typename Record>
int call_for(const char *handler, int (*operation)(const char *, Record *), const char *if_name,
             Record *records) {
    const int result = operation(if_name, records);
    if (result != 0) {
        ERROR_LINE_AS(handler, "if_name:%s fail ret:%d\n", printable(if_name), result);
    }
    return result;
}

/** The store operation for the named interface, or for each in store order when the name is "". */
template <typename Record>
int for_interfaces(const char *handler, Supported supported, const char *if_name, Record *records,
                   int per_interface, int (*operation)(const char *, Record *)) {
    if (!supported()) return kNotSupported;
    if (!if_name || *if_name != '\0') return call_for(handler, operation, if_name, records);
    const int count = get_VideoOutputInterface_size();
    for (int i = 0; i < count; ++i) {
        const std::string name(gui_cfg::text_of(get_ptr_VideoOutputInterface()[i].if_name));
        const int result = call_for(handler, operation, name.c_str(), records + i * per_interface);
        if (result != 0) return result;
    }
    return 0;
}

// ---- channel keys ------------------------------------------------------------------------------

int channels() {
    return get_VideoOutputOSDParameter_chn_size();
}

/**
 * The store operation for one channel, or for each when the channel is -1; `failure` takes the
 * channel and the result.
 */
template <typename Record, typename Operation, typename Failure>
int for_channels(const char *handler, int channel, Record *records, Operation operation,
                 Failure failure) {
    if (!osd_supported()) return kNotSupported;
    if (channel != -1 && (channel < 0 || channel >= channels())) {
        ERROR_LINE_AS(handler, "chn %d invalid\n", channel);
        return -2;
    }
    const int first = channel == -1 ? 0 : channel;
    const int end = channel == -1 ? channels() : channel + 1;
    for (int c = first; c < end; ++c) {
        const int result =
            operation(c, records + (c - first) * get_VideoOutputOSDParameter_per_chn_size());
        if (result != 0) {
            failure(c, result);
            return result;
        }
    }
    return 0;
}

}  // namespace

// One row per family: feature flag, records per interface, store operations.
#define INTERFACE_HANDLERS(Record, supported, per_interface)                                     \
    int Get##Record##Size(const char *if_name) {                                                 \
        return interface_size(supported, if_name, per_interface());                              \
    }                                                                                            \
    int Get##Record(const char *if_name, Record *out) {                                          \
        return for_interfaces(__func__, supported, if_name, out, per_interface(), get_##Record); \
    }                                                                                            \
    int Set##Record(const char *if_name, const Record *in) {                                     \
        return for_interfaces(__func__, supported, if_name, in, per_interface(), set_##Record);  \
    }
INTERFACE_HANDLERS(VideoOutputInterfaceParameter, always, one)
INTERFACE_HANDLERS(VideoOutputScreenSplitParameter, always, split_records)
INTERFACE_HANDLERS(WatermarkOSDParameter, watermark_supported, one)
INTERFACE_HANDLERS(WatermarkPictureParameter, watermark_supported, one)
INTERFACE_HANDLERS(WatermarkDotmatrixParameter, watermark_supported, one)
#undef INTERFACE_HANDLERS

int GetVideoOutputDisplayParameter(VideoOutputDisplayParameter *out) {
    return get_VideoOutputDisplayParameter(out);
}

int SetVideoOutputDisplayParameter(const VideoOutputDisplayParameter *in) {
    return set_VideoOutputDisplayParameter(in);
}

int GetVideoOutputOSDParameterSize(int channel) {
    if (!osd_supported()) return 0;
    const int per_channel = get_VideoOutputOSDParameter_per_chn_size();
    if (channel == -1) return channels() * per_channel;
    return channel >= 0 && channel < channels() ? per_channel : 0;
}

int GetVideoOutputOSDParameter(int channel, VideoOutputOSDParameter *out) {
    const auto failure = [](int c, int result) {
        ERROR_LINE_AS("GetVideoOutputOSDParameter", "chn%d fail ret:%d\n", c, result);
    };
    return for_channels(__func__, channel, out, get_VideoOutputOSDParameter, failure);
}

int SetVideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *in) {
    const auto operation = [](int c, const VideoOutputOSDParameter *entries) {
        return set_VideoOutputOSDParameter(c, entries, 0);
    };
    const auto failure = [](int c, int result) {
        ERROR_LINE_AS("SetVideoOutputOSDParameter", "%d fail[%d]\n", c, result);
    };
    return for_channels(__func__, channel, in, operation, failure);
}

int SetVideoOutSourceChange(const VideoOutSourceChange *in) {
    if (!in) return -2;
    const int result = set_VideoOutSourceChange(in->Channel, in);
    if (result != 0) ERROR_LINE("%d fail[%d]\n", in->Channel, result);
    return result;
}

int SetAudioOutSourceChange(const AudioOutSourceChange *in) {
    if (!in) return -2;
    // Kept: only audio output 0 is served; a record for another is ignored.
    if (in->Channel != 0) return 0;
    const int result = set_AudioOutSourceChange(0, in);
    if (result != 0) ERROR_LINE("%d fail[%d]\n", in->Channel, result);
    return result;
}

int SetStreamingInputStatusChange(const StreamingInputStatusChange *in) {
    if (!osd_supported()) return kNotSupported;
    const int result = set_StreamingInputStatusChange(in);
    if (result != 0) ERROR_LINE("fail ret:%d\n", result);
    return result;
}

int UploadWatermarkPicture(const char *if_name) {
    const int result = upload_WatermarkPicture(if_name);
    if (result != 0) ERROR_LINE("if_name:%s fail ret:%d\n", printable(if_name), result);
    return result;
}
