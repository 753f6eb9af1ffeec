#include "gui_cfg.h"

#include <algorithm>

#include "app_gui.h"
#include "diagnostics.h"
#include "gui_cfg_store.h"
#include "wnd_split.h"

using namespace gui_cfg;

// ---- storage ----------------------------------------------------------------------------------

DeviceCapabilitySet data_DeviceCapabilitySet[1];
VideoOutputCapabilitySet data_VideoOutputCapabilitySet[kMaxChannels];
VideoOutputInterface data_VideoOutputInterface[kMaxInterfaces];
AudioOutputCapabilitySet data_AudioOutputCapabilitySet[kMaxAudioOutputs];
VideoDecodeCapabilitySet data_VideoDecodeCapabilitySet[1];
StreamingInputCapabilitySet data_StreamingInputCapabilitySet[1];
VideoOutputInterfaceParameter data_VideoOutputInterfaceParameter[kMaxInterfaces];
VideoOutputScreenSplitParameter data_VideoOutputScreenSplitParameter[kMaxSplitRecords];
VideoOutputDisplayParameter data_VideoOutputDisplayParameter[1];
VideoOutSourceChange data_VideoOutSourceChange[kSourceElements];
AudioOutSourceChange data_AudioOutSourceChange[kMaxAudioOutputs];
VideoOutputOSDParameter data_VideoOutputOSDParameter[kMaxOsdEntries];
WatermarkOSDParameter data_WatermarkOSDParameter[kMaxInterfaces];
WatermarkPictureParameter data_WatermarkPictureParameter[kMaxInterfaces];
WatermarkDotmatrixParameter data_WatermarkDotmatrixParameter[kMaxInterfaces];
StreamingInputStatusChange data_StreamingInputStatusChange[kMaxStreams];

uint32_t num_VideoOutputInterface;
uint32_t num_VideoOutSourceChange;
uint32_t num_VideoOutputOSDParameter;
uint32_t num_WatermarkOSDParameter;
uint32_t num_WatermarkPictureParameter;
uint32_t num_WatermarkDotmatrixParameter;
uint32_t num_StreamingInputStatusChange;

int32_t audWndIdx = -1;

// ---- accessors ----------------------------------------------------------------------------------

#define GUI_CFG_ACCESSOR(R) \
    R *get_ptr_##R() {      \
        return data_##R;    \
    }
GUI_CFG_ACCESSOR(VideoOutputInterface)
GUI_CFG_ACCESSOR(AudioOutputCapabilitySet)
GUI_CFG_ACCESSOR(VideoDecodeCapabilitySet)
GUI_CFG_ACCESSOR(StreamingInputCapabilitySet)
GUI_CFG_ACCESSOR(VideoOutputInterfaceParameter)
GUI_CFG_ACCESSOR(VideoOutputScreenSplitParameter)
GUI_CFG_ACCESSOR(VideoOutputDisplayParameter)
GUI_CFG_ACCESSOR(AudioOutSourceChange)
GUI_CFG_ACCESSOR(VideoOutputOSDParameter)
GUI_CFG_ACCESSOR(WatermarkOSDParameter)
GUI_CFG_ACCESSOR(WatermarkPictureParameter)
GUI_CFG_ACCESSOR(WatermarkDotmatrixParameter)
#undef GUI_CFG_ACCESSOR

int get_VideoOutputInterface_size() {
    return static_cast<int>(num_VideoOutputInterface);
}

int get_VideoOutputOSDParameter_chn_size() {
    return data_DeviceCapabilitySet[0].VideoOutputChannelNum;
}

int get_VideoOutputOSDParameter_per_chn_size() {
    const VideoOutputInterface &first = data_VideoOutputInterface[0];
    return first.OSDSupported != 0 ? first.OSDNumPerChannel : 0;
}

int get_VideoOutputScreenSplitParameter_per_intf_size() {
    return data_VideoOutputInterface[0].SplitParamNum;
}

int get_VideoOutSourceChange_chn_size() {
    return data_DeviceCapabilitySet[0].VideoOutputChannelNum;
}

int get_AudioOutputParameter_chn_size() {
    return data_DeviceCapabilitySet[0].AudioOutputNum;
}

int get_VideoOutputInterface_intf(const char *if_name) {
    const int count = std::min<int>(get_VideoOutputInterface_size(), kMaxInterfaces);
    for (int i = 0; if_name && i < count; ++i) {
        if (same_name(data_VideoOutputInterface[i].if_name, if_name)) return i;
    }
    ERROR_LINE("if_name=%s invalid\n", printable(if_name));
    return -1;
}

namespace gui_cfg {

int split_records_from(int first) {
    return std::clamp(get_VideoOutputScreenSplitParameter_per_intf_size(), 0,
                      std::max(kMaxSplitRecords - first, 0));
}

void save_osd_entries() {
    (void)s2f_array_VideoOutputOSDParameter(
        user_path(kOsdFile).c_str(), data_VideoOutputOSDParameter, num_VideoOutputOSDParameter);
}

namespace {

/** Window that shows video input `index`, or -1. */
int window_of_input(int index) {
    const int count = std::min<int>(static_cast<int>(num_VideoOutSourceChange), kMaxChannels);
    for (int i = 0; i < count; ++i) {
        const VideoOutSourceChange &source = data_VideoOutSourceChange[i];
        if (source.type == 0 && source.index == index) return i;
    }
    return -1;
}

}  // namespace

AudioWindow audio_window(const AudioOutSourceChange &source) {
    if (source.type == 2) return {source.index, -1};
    const int window = source.type == 0 ? window_of_input(source.index) : -1;
    return {window, window};
}

void show_split(const VideoOutputInterfaceParameter &record) {
    const int layout = record.UserSplitIndex;
    if (layout >= 0 && layout < get_VideoOutputScreenSplitParameter_per_intf_size()) {
        gui_switch_split(layout + kFirstUserSplitMode);
        return;
    }
    const std::string name(text_of(record.ScreenSplitMode));
    gui_switch_split(static_cast<int>(getSplitMode(name.c_str())));
}

}  // namespace gui_cfg

namespace {

/** First record of the interface's block of user layouts. */
int split_block(int interface) {
    return interface * split_records_from(0);
}

/** A channel's entries, as far as they lie within the storage. */
struct OsdBlock {
    int first;  ///< entry number of the first one
    int count;
    VideoOutputOSDParameter *entries;
};

/** Requires: a channel of the device. */
OsdBlock osd_block(int channel) {
    const int wanted =
        std::clamp(get_VideoOutputOSDParameter_per_chn_size(), 0, int{kMaxOsdEntries});
    const int first = std::min(channel * wanted, int{kMaxOsdEntries});
    return {first, std::min(wanted, kMaxOsdEntries - first), data_VideoOutputOSDParameter + first};
}

bool is_channel(int channel) {
    return channel >= 0 && channel < data_DeviceCapabilitySet[0].VideoOutputChannelNum &&
           channel < kMaxChannels;
}

// ---- one shape for the families of one record per interface

template <typename R>
int get_record(const char *if_name, R *out) {
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0 || !out) return -2;
    *out = InterfaceFamily<R>::records()[position];
    return 0;
}

template <typename R>
int update_record(const char *function, const char *if_name, const R *record) {
    using Family = InterfaceFamily<R>;
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0 || !record) {
        ERROR_LINE_AS(function, "%s invalid\n", printable(if_name));
        return -2;
    }
    R &stored = Family::records()[position];
    if (same_bytes(&stored, record)) return 0;
    stored = *record;
    if constexpr (Family::kSaved) save_family<R>();
    return 0;
}

/** Checks, compares, tells the display through `notify`, stores and saves. */
template <typename R, typename Notify>
int set_watermark(const char *function, const char *if_name, const R *record, Notify notify) {
    using Family = InterfaceFamily<R>;
    if (Family::check(if_name, record) == 0) {
        ERROR_LINE_AS(function, "%s invalid\n", printable(if_name));
        return -2;
    }
    const int position = get_VideoOutputInterface_intf(if_name);
    if (same_bytes(&Family::records()[position], record)) return 0;
    notify(record);
    return Family::update(if_name, record);
}

/**
 * Stores a record and tells the display. When the display cannot be told, the old record is put
 * back and `undo` takes back what else was changed: the same request then still counts as a change.
 */
template <typename R, typename Undo>
int store_and_tell(R &stored, const R &record, int (*tell)(const R *, int), Undo undo) {
    const R previous = stored;
    stored = record;
    const auto take_back = [&] {
        stored = previous;
        undo();
    };
    int result = 0;
    try {
        result = tell(&stored, 1);
    } catch (...) {
        take_back();
        throw;
    }
    if (result != 0) take_back();
    return result;
}

// ---- audio window

void show_audio_window(int window, int stored) {
    gui_set_ao_window(window);
    audWndIdx = stored;
}

/** The window whose audio plays may change with what a window shows. */
void follow_video_source(int channel, const VideoOutSourceChange &source) {
    const AudioOutSourceChange &audio = data_AudioOutSourceChange[0];
    if (audio.type == 0 && source.type == 0 && source.index == audio.index) {
        show_audio_window(channel, channel);
    } else if (audWndIdx == channel) {
        show_audio_window(-1, -1);
    }
}

/** The display was told of the window that is stored. While there is no memory to tell it of the
 * old one, the stored one stays. */
void take_back_audio_window(int32_t window) {
    if (audWndIdx != window) show_audio_window(window, window);
}

bool same_border(const VideoOutputDisplayParameter &a, const VideoOutputDisplayParameter &b) {
    return a.BorderWidth == b.BorderWidth && same_name(a.VideoBorderColor, b.VideoBorderColor) &&
           same_name(a.AudioBorderColor, b.AudioBorderColor);
}

}  // namespace

// ---- get

int get_VideoOutputInterfaceParameter(const char *if_name, VideoOutputInterfaceParameter *out) {
    return get_record(if_name, out);
}

int get_WatermarkOSDParameter(const char *if_name, WatermarkOSDParameter *out) {
    return get_record(if_name, out);
}

int get_WatermarkPictureParameter(const char *if_name, WatermarkPictureParameter *out) {
    return get_record(if_name, out);
}

int get_WatermarkDotmatrixParameter(const char *if_name, WatermarkDotmatrixParameter *out) {
    return get_record(if_name, out);
}

int get_VideoOutputScreenSplitParameter(const char *if_name, VideoOutputScreenSplitParameter *out) {
    if (!if_name || !out) return -2;
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0) return -2;
    const int first = split_block(position);
    std::copy_n(data_VideoOutputScreenSplitParameter + first, split_records_from(first), out);
    return 0;
}

int get_VideoOutputDisplayParameter(VideoOutputDisplayParameter *out) {
    if (!out) return -2;
    *out = data_VideoOutputDisplayParameter[0];
    return 0;
}

int get_VideoOutputOSDParameter(int channel, VideoOutputOSDParameter *out) {
    if (!is_channel(channel) || !out) {
        ERROR_LINE("chn%d invalid\n", channel);
        return -2;
    }
    const OsdBlock block = osd_block(channel);
    std::copy_n(block.entries, block.count, out);
    return 0;
}

// ---- update

int update_VideoOutputInterfaceParameter(const char *if_name,
                                         const VideoOutputInterfaceParameter *record) {
    return update_record(__func__, if_name, record);
}

int update_WatermarkOSDParameter(const char *if_name, const WatermarkOSDParameter *record) {
    return update_record(__func__, if_name, record);
}

int update_WatermarkPictureParameter(const char *if_name, const WatermarkPictureParameter *record) {
    return update_record(__func__, if_name, record);
}

int update_WatermarkDotmatrixParameter(const char *if_name,
                                       const WatermarkDotmatrixParameter *record) {
    return update_record(__func__, if_name, record);
}

int update_VideoOutputScreenSplitParameter(const char *if_name,
                                           const VideoOutputScreenSplitParameter *records) {
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0 || !records) {
        ERROR_LINE("%s invalid\n", printable(if_name));
        return -2;
    }
    // Kept: an interface's layouts are stored from the record of the interface's position on, not
    // from its block: those of the second interface land in the first one's block.
    const int count = split_records_from(position);
    VideoOutputScreenSplitParameter *stored = data_VideoOutputScreenSplitParameter + position;
    if (!same_bytes(stored, records, static_cast<size_t>(count)))
        std::copy_n(records, count, stored);
    return 0;
}

int update_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record) {
    if (!record) return -2;
    if (same_bytes(data_VideoOutputDisplayParameter, record)) return 0;
    data_VideoOutputDisplayParameter[0] = *record;
    return 0;
}

int update_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries) {
    if (!is_channel(channel) || !entries) {
        ERROR_LINE("chn%d invalid\n", channel);
        return -2;
    }
    if (check_VideoOutputOSDParameter(channel, entries) == 0) {
        ERROR_LINE("chn=%d invalid\n", channel);
        return -2;
    }
    const OsdBlock block = osd_block(channel);
    if (same_bytes(block.entries, entries, static_cast<size_t>(block.count))) return 0;
    std::copy_n(entries, block.count, block.entries);
    save_osd_entries();
    return 0;
}

// ---- set

int set_VideoOutputInterfaceParameter(const char *if_name,
                                      const VideoOutputInterfaceParameter *record) {
    if (check_VideoOutputInterfaceParameter(if_name, record) == 0) {
        ERROR_LINE("%s invalid\n", printable(if_name));
        return -2;
    }
    const int position = get_VideoOutputInterface_intf(if_name);
    const VideoOutputInterfaceParameter &stored = data_VideoOutputInterfaceParameter[position];
    if (same_bytes(&stored, record)) return 0;
    if (!same_name(stored.ScreenSplitMode, record->ScreenSplitMode) ||
        stored.UserSplitIndex != record->UserSplitIndex) {
        show_split(*record);
    }
    return update_VideoOutputInterfaceParameter(if_name, record);
}

int set_VideoOutputScreenSplitParameter(const char *if_name,
                                        const VideoOutputScreenSplitParameter *records) {
    const int valid = check_VideoOutputScreenSplitParameter(if_name, records);
    if (valid != 1) {
        ERROR_LINE("%s check ret = %d\n", printable(if_name), valid);
        return -2;
    }
    const int first = split_block(get_VideoOutputInterface_intf(if_name));
    const int count = split_records_from(first);
    if (same_bytes(data_VideoOutputScreenSplitParameter + first, records,
                   static_cast<size_t>(count))) {
        return 0;
    }
    gui_update_user_split(records, count);
    return update_VideoOutputScreenSplitParameter(if_name, records);
}

int set_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record) {
    if (check_VideoOutputDisplayParameter(record) == 0) {
        ERROR_LINE("invalid\n");
        return -2;
    }
    const VideoOutputDisplayParameter &stored = data_VideoOutputDisplayParameter[0];
    if (same_bytes(&stored, record)) return 0;
    if (!same_border(stored, *record)) gui_update_video_display(record);
    return update_VideoOutputDisplayParameter(record);
}

int set_VideoOutSourceChange(int channel, const VideoOutSourceChange *record) {
    if (!is_channel(channel) || !record) {
        ERROR_LINE("chn %d invalid\n", channel);
        return -2;
    }
    // Kept: the previous record is read at twice the channel's number.
    const VideoOutSourceChange &previous = data_VideoOutSourceChange[2 * channel];
    if (same_bytes(&previous, record)) return 0;
    const bool other_stream =
        record->index != previous.index && record->type == 1 && previous.type == 1;
    const int32_t window = audWndIdx;
    if (!other_stream) follow_video_source(channel, *record);
    return store_and_tell(data_VideoOutSourceChange[channel], *record, gui_update_video_source,
                          [window] { take_back_audio_window(window); });
}

int set_AudioOutSourceChange(int output, const AudioOutSourceChange *record) {
    // Kept: only the first audio output is handled.
    if (output != 0) return 0;
    if (!record) return -2;
    AudioOutSourceChange &stored = data_AudioOutSourceChange[0];
    if (record->index != stored.index || record->type != stored.type) {
        const AudioWindow window = audio_window(*record);
        show_audio_window(window.shown, window.stored);
    }
    stored = *record;
    return 0;
}

int set_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries, int silent) {
    if (!is_channel(channel) || !entries) {
        ERROR_LINE("chn%d invalid\n", channel);
        return -2;
    }
    if (check_VideoOutputOSDParameter(channel, entries) == 0) {
        ERROR_LINE("chn=%d invalid\n", channel);
        return -2;
    }
    const OsdBlock block = osd_block(channel);
    bool changed = false;
    for (int k = 0; k < block.count; ++k) {
        if (same_bytes(block.entries + k, entries + k)) continue;
        changed = true;
        if (silent == 0) gui_update_videooutput_osd(entries + k, block.first + k);
    }
    return changed ? update_VideoOutputOSDParameter(channel, entries) : 0;
}

int set_WatermarkOSDParameter(const char *if_name, const WatermarkOSDParameter *record) {
    return set_watermark(__func__, if_name, record, gui_update_watermark_osd);
}

int set_WatermarkPictureParameter(const char *if_name, const WatermarkPictureParameter *record) {
    return set_watermark(__func__, if_name, record, gui_update_watermark_pic);
}

int set_WatermarkDotmatrixParameter(const char *if_name,
                                    const WatermarkDotmatrixParameter *record) {
    // Kept: the display is not told; a changed dot watermark shows at the next start.
    return set_watermark(__func__, if_name, record, [](const WatermarkDotmatrixParameter *) {});
}

int set_StreamingInputStatusChange(const StreamingInputStatusChange *record) {
    const int count =
        std::min<int>(data_StreamingInputCapabilitySet[0].StreamingInputNum, kMaxStreams);
    if (!record || record->index < 0 || record->index >= count) {
        ERROR_LINE("index %d invalid\n", record ? record->index : -1);
        return -2;
    }
    StreamingInputStatusChange &stored = data_StreamingInputStatusChange[record->index];
    if (same_bytes(&stored, record)) return 0;
    return store_and_tell(stored, *record, gui_update_urlinfo, [] {});
}

int upload_WatermarkPicture(const char *if_name) {
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0) return -2;
    gui_update_watermark_pic(&data_WatermarkPictureParameter[position]);
    return 0;
}
