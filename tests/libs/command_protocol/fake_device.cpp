#include "fake_device.h"

#include <cstring>

#define FAKE_HANDLER extern "C" __attribute__((visibility("default"))) int

namespace {

constexpr const char *kNames[kFakeInterfaces] = {"HDMI1", "HDMI2"};
constexpr int kUnknownKey = -2;

void note(const char *handler, const std::string &key) {
    fake_device().calls.push_back(std::string(handler) + "(" + key + ")");
}

/** First record of the key and how many there are; 0 for an unknown key. */
struct Range {
    int first;
    int count;
};

Range interface_range(const char *if_name, int each) {
    if (*if_name == '\0') return {0, kFakeInterfaces * each};
    for (int i = 0; i < kFakeInterfaces; ++i) {
        if (std::strcmp(if_name, kNames[i]) == 0) return {i * each, each};
    }
    return {0, 0};
}

Range channel_range(int channel) {
    if (channel == -1) return {0, kFakeChannels * kFakeTextsPerChannel};
    if (channel < 0 || channel >= kFakeChannels) return {0, 0};
    return {channel * kFakeTextsPerChannel, kFakeTextsPerChannel};
}

template <class X>
int read(Range range, const X *store, X *out) {
    const int status = fake_device().get_status;
    if (status < 0) return status;
    if (range.count == 0) return kUnknownKey;
    std::memcpy(out, store + range.first, range.count * sizeof(X));
    return 0;
}

template <class X>
int write(Range range, X *store, const X *in) {
    const int status = fake_device().set_status;
    if (status != 0) return status;
    if (range.count == 0) return kUnknownKey;
    std::memcpy(store + range.first, in, range.count * sizeof(X));
    return 0;
}

int size_by_name(const char *handler, const char *if_name, int each) {
    note(handler, if_name);
    return *if_name == '\0' ? kFakeInterfaces * each : each;
}

}  // namespace

FakeDevice::FakeDevice() {
    for (int i = 0; i < kFakeInterfaces; ++i) {
        for (char *name : {interfaces[i].if_name, watermarks[i].if_name, pictures[i].if_name}) {
            std::strcpy(name, kNames[i]);
        }
        std::strcpy(interfaces[i].ScreenSplitMode, "Mode4");
        interfaces[i].UserSplitIndex = -1;
        for (int k = 0; k < kFakeLayoutsPerInterface; ++k) {
            std::strcpy(layouts[i * kFakeLayoutsPerInterface + k].if_name, kNames[i]);
            layouts[i * kFakeLayoutsPerInterface + k].Index = k;
        }
    }
    std::strcpy(display.BackgroundColor, "#000000");
    for (int i = 0; i < kFakeChannels * kFakeTextsPerChannel; ++i) {
        texts[i].Channel = i / kFakeTextsPerChannel;
        texts[i].Index = i % kFakeTextsPerChannel;
    }
}

FakeDevice &fake_device() {
    static FakeDevice device;
    return device;
}

#define FAKE_INTERFACE_HANDLERS(X, store, each)                                \
    FAKE_HANDLER Get##X(const char *if_name, X *out) {                         \
        note("Get" #X, if_name);                                               \
        return read(interface_range(if_name, each), fake_device().store, out); \
    }                                                                          \
    FAKE_HANDLER Set##X(const char *if_name, const X *in) {                    \
        note("Set" #X, if_name);                                               \
        return write(interface_range(if_name, each), fake_device().store, in); \
    }

FAKE_INTERFACE_HANDLERS(VideoOutputInterfaceParameter, interfaces, 1)
FAKE_INTERFACE_HANDLERS(VideoOutputScreenSplitParameter, layouts, kFakeLayoutsPerInterface)
FAKE_INTERFACE_HANDLERS(WatermarkOSDParameter, watermarks, 1)
FAKE_INTERFACE_HANDLERS(WatermarkPictureParameter, pictures, 1)

FAKE_HANDLER GetVideoOutputInterfaceParameterSize(const char *if_name) {
    return size_by_name("GetVideoOutputInterfaceParameterSize", if_name, 1);
}

FAKE_HANDLER GetVideoOutputScreenSplitParameterSize(const char *if_name) {
    return size_by_name("GetVideoOutputScreenSplitParameterSize", if_name,
                        kFakeLayoutsPerInterface);
}

FAKE_HANDLER GetWatermarkOSDParameterSize(const char *if_name) {
    const int size = size_by_name("GetWatermarkOSDParameterSize", if_name, 1);
    return fake_device().watermark_size != 0 ? fake_device().watermark_size : size;
}

FAKE_HANDLER GetWatermarkPictureParameterSize(const char *if_name) {
    return size_by_name("GetWatermarkPictureParameterSize", if_name, 1);
}

FAKE_HANDLER GetWatermarkDotmatrixParameter(const char *if_name, WatermarkDotmatrixParameter *) {
    note("GetWatermarkDotmatrixParameter", if_name);
    return 0;
}

FAKE_HANDLER SetWatermarkDotmatrixParameter(const char *if_name,
                                            const WatermarkDotmatrixParameter *) {
    note("SetWatermarkDotmatrixParameter", if_name);
    return 0;
}

FAKE_HANDLER GetVideoOutputOSDParameterSize(int channel) {
    note("GetVideoOutputOSDParameterSize", std::to_string(channel));
    return channel_range(channel).count;
}

FAKE_HANDLER GetVideoOutputOSDParameter(int channel, VideoOutputOSDParameter *out) {
    note("GetVideoOutputOSDParameter", std::to_string(channel));
    return read(channel_range(channel), fake_device().texts, out);
}

FAKE_HANDLER SetVideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *in) {
    note("SetVideoOutputOSDParameter", std::to_string(channel));
    return write(channel_range(channel), fake_device().texts, in);
}

FAKE_HANDLER GetVideoOutputDisplayParameter(VideoOutputDisplayParameter *out) {
    note("GetVideoOutputDisplayParameter", "");
    return read({0, 1}, &fake_device().display, out);
}

FAKE_HANDLER SetVideoOutputDisplayParameter(const VideoOutputDisplayParameter *in) {
    note("SetVideoOutputDisplayParameter", "");
    return write({0, 1}, &fake_device().display, in);
}

FAKE_HANDLER SetVideoOutSourceChange(const VideoOutSourceChange *in) {
    note("SetVideoOutSourceChange", "");
    return write({0, 1}, &fake_device().video_source, in);
}

FAKE_HANDLER SetAudioOutSourceChange(const AudioOutSourceChange *in) {
    note("SetAudioOutSourceChange", "");
    return write({0, 1}, &fake_device().audio_source, in);
}

FAKE_HANDLER SetStreamingInputStatusChange(const StreamingInputStatusChange *in) {
    note("SetStreamingInputStatusChange", "");
    return write({0, 1}, &fake_device().stream, in);
}

FAKE_HANDLER UploadWatermarkPicture(const char *if_name) {
    note("UploadWatermarkPicture", if_name);
    if (fake_device().set_status != 0) return fake_device().set_status;
    if (*if_name == '\0' || interface_range(if_name, 1).count == 0) return kUnknownKey;
    ++fake_device().uploads;
    return 0;
}
