/** @file gui_cfg_check.cpp Which records the store accepts, and what replaces those it does not. */

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "diagnostics.h"
#include "gui_cfg_store.h"

using namespace gui_cfg;

// ---- lists

namespace {

/** Reads a decimal number at `text` as "%d" does and moves behind it; too large ones saturate. */
bool read_number(const char *&text, int &number) {
    char *end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text) return false;
    number = static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
    text = end;
    return true;
}

/** One item of a numeric list: "5" or "2-7". */
bool item_holds(const std::string &item, int n) {
    const char *at = item.c_str();
    int first = 0;
    if (!read_number(at, first)) return false;
    if (item.find('-') == std::string::npos) return first == n;
    int last = 0;
    if (*at++ != '-' || !read_number(at, last)) return false;
    const auto [low, high] = std::minmax(first, last);
    return low <= n && n <= high;
}

bool list_holds(std::string_view list, int n) {
    return any_item(list, [n](const std::string &item) { return item_holds(item, n); });
}

template <size_t N>
bool names_hold(std::string_view list, const char (&name)[N]) {
    const std::string wanted(text_of(name));
    return any_item(
        list, [&](const std::string &item) { return same_name(item.c_str(), wanted.c_str()); });
}

/** An input number that a list of the device's capabilities allows; -1 stands for none. */
bool input_allowed(std::string_view list, int index) {
    return index == -1 || list_holds(list, index);
}

/** For "%.*s": a field of a record that need not hold a NUL. */
#define TEXT_ARGS(field) static_cast<int>(text_of(field).size()), (field)

}  // namespace

int find_num(const char *list, int n) {
    return list && list_holds(list, n) ? 1 : 0;
}

// ---- identity

namespace {

/** The record must be there and bear the name of a loaded interface. -1 or the interface's
 * position. */
template <typename R>
int identify(const char *function, const char *if_name, const R *record) {
    const int position = get_VideoOutputInterface_intf(if_name);
    if (position < 0 || !record) {
        ERROR_LINE_AS(function, "if_name=%s invalid\n", printable(if_name));
        return -1;
    }
    if (!same_name(if_name, record->if_name)) {
        ERROR_LINE_AS(function, "if_name %s!=%.*s invalid\n", if_name, TEXT_ARGS(record->if_name));
        return -1;
    }
    return position;
}

template <typename R>
int check_watermark(const char *function, const char *if_name, const R *record) {
    return identify(function, if_name, record) < 0 ? 0 : 1;
}

bool cache_in_range(const char *function, int cache) {
    const int largest = data_VideoDecodeCapabilitySet[0].MaxCache;
    if (cache < -1) {
        ERROR_LINE_AS(function, "cache=%d < -1 invalid\n", cache);
        return false;
    }
    if (cache > largest) {
        ERROR_LINE_AS(function, "cache=%d > max=%d invalid\n", cache, largest);
        return false;
    }
    return true;
}

bool is_channel(int channel) {
    return channel >= 0 && channel < data_DeviceCapabilitySet[0].VideoOutputChannelNum &&
           channel < kMaxChannels;
}

bool is_audio_output(int output) {
    return output >= 0 && output < data_DeviceCapabilitySet[0].AudioOutputNum &&
           output < kMaxAudioOutputs;
}

bool is_stream(int position) {
    return position >= 0 && position < data_StreamingInputCapabilitySet[0].StreamingInputNum &&
           position < kMaxStreams;
}

/** OSD entries of a channel as the checks count them. */
int osd_entries() {
    return std::min<int>(get_VideoOutputOSDParameter_per_chn_size(), kMaxOsdEntries);
}

}  // namespace

// ---- checks

int check_VideoOutputInterfaceParameter(const char *if_name,
                                        const VideoOutputInterfaceParameter *record) {
    const int position = identify(__func__, if_name, record);
    if (position < 0) return 0;
    const VideoOutputInterface &interface = data_VideoOutputInterface[position];
    if (!names_hold(text_of(interface.Timing), record->Timing)) {
        ERROR_LINE("Timing:%.*s buf:%.*s\n", TEXT_ARGS(record->Timing),
                   TEXT_ARGS(interface.Timing));
        return 0;
    }
    if (!names_hold(text_of(interface.ScreenSplitMode), record->ScreenSplitMode)) {
        ERROR_LINE("ScreenSplitMode:%.*s buf:%.*s\n", TEXT_ARGS(record->ScreenSplitMode),
                   TEXT_ARGS(interface.ScreenSplitMode));
        return 0;
    }
    return 1;
}

int check_VideoOutputScreenSplitParameter(const char *if_name,
                                          const VideoOutputScreenSplitParameter *records) {
    if (!if_name || !records) {
        ERROR_LINE("para invalid\n");
        return -2;
    }
    if (get_VideoOutputInterface_intf(if_name) < 0) return 0;
    if (!same_name(if_name, records->if_name)) {
        ERROR_LINE("if_name %s!=%.*s invalid\n", if_name, TEXT_ARGS(records->if_name));
        return 0;
    }
    return 1;
}

int check_VideoOutputDisplayParameter(const VideoOutputDisplayParameter *record) {
    constexpr uint32_t kLargestPlaymode = 1;
    if (!record || record->BackgroundColor[0] == '\0') return 0;
    if (!cache_in_range(__func__, record->cache)) return 0;
    if (record->playmode > kLargestPlaymode) {
        ERROR_LINE("playmode=%d > max=%d invalid\n", static_cast<int>(record->playmode),
                   static_cast<int>(kLargestPlaymode));
        return 0;
    }
    return 1;
}

namespace {

/** The source's number must be in the list of its type; other types are refused without a word. */
bool source_allowed(const char *function, int channel, const VideoOutputSourceParameter &record) {
    const VideoOutputCapabilitySet &set = data_VideoOutputCapabilitySet[channel];
    struct Row {
        int type;
        const char *name;
        std::string_view list;
    };
    const Row rows[] = {
        {0, "SupportedVideoInputChannelList", text_of(set.SupportedVideoInputChannelList)},
        {1, "SupportedInputStreamingIndexList", text_of(set.SupportedInputStreamingIndexList)},
    };
    for (const Row &row : rows) {
        if (row.type != record.type) continue;
        if (input_allowed(row.list, record.index)) return true;
        ERROR_LINE_AS(function, "%s:%d buf:%.*s\n", row.name, record.index,
                      static_cast<int>(row.list.size()), row.list.data());
        return false;
    }
    return false;
}

/** Kinds of audio source with a list; other kinds are accepted as they are. */
bool audio_source_allowed(const char *function, int output, const AudioOutputParameter &record) {
    const AudioOutputCapabilitySet &set = data_AudioOutputCapabilitySet[output];
    struct Row {
        int type;
        const char *name;
        std::string_view list;
    };
    const Row rows[] = {
        {2, "banyin_list", text_of(set.banyin_list)},
        {0, "bound_list", text_of(set.bound_list)},
        {1, "index_list", text_of(set.index_list)},
    };
    for (const Row &row : rows) {
        if (row.type != record.type) continue;
        if (input_allowed(row.list, record.index)) return true;
        ERROR_LINE_AS(function, "%s:%.*s %d\n", row.name, static_cast<int>(row.list.size()),
                      row.list.data(), record.index);
        return false;
    }
    return true;
}

}  // namespace

int check_VideoOutputSourceParameter(int channel, const VideoOutputSourceParameter *record) {
    if (!record || channel < 0 || channel >= kMaxChannels || record->Channel != channel) {
        ERROR_LINE("Channel[%d] invalid\n", record ? record->Channel : channel);
        return 0;
    }
    if (!source_allowed(__func__, channel, *record)) return 0;
    const int largest = data_VideoDecodeCapabilitySet[0].MaxCache;
    if (record->cache < -1) {
        ERROR_LINE("chn=%d para cache=%d < -1 invalid\n", channel, record->cache);
        return 0;
    }
    if (record->cache > largest) {
        ERROR_LINE("chn=%d para cache=%d > max=%d invalid\n", channel, record->cache, largest);
        return 0;
    }
    return 1;
}

int check_AudioOutputParameter(int output, const AudioOutputParameter *record) {
    if (!is_audio_output(output) || !record) {
        ERROR_LINE("chn%d invalid\n", output);
        return 0;
    }
    if (record->Channel != output) {
        ERROR_LINE("chn%d Channel%d\n", output, record->Channel);
        return 0;
    }
    const AudioOutputCapabilitySet &set = data_AudioOutputCapabilitySet[output];
    if (!names_hold(text_of(set.if_name_list), record->if_name)) {
        ERROR_LINE("if_name:%.*s :%.*s\n", TEXT_ARGS(set.if_name_list), TEXT_ARGS(record->if_name));
        return 0;
    }
    return audio_source_allowed(__func__, output, *record) ? 1 : 0;
}

int check_VideoOutputOSDParameter(int channel, const VideoOutputOSDParameter *entries) {
    if (!is_channel(channel) || !entries) {
        ERROR_LINE("chn%d invalid\n", channel);
        return 0;
    }
    const VideoOutputInterface &first = data_VideoOutputInterface[0];
    for (int k = 0; k < osd_entries(); ++k) {
        if (entries[k].Channel != channel) {
            ERROR_LINE("Channel[%d] invalid\n", entries[k].Channel);
            return 0;
        }
        if (entries[k].Index != k) {
            ERROR_LINE("Index[%d] invalid\n", entries[k].Index);
            return 0;
        }
        // Kept: x is held against both limits, y against none.
        if (entries[k].x > first.OSDMaxX || entries[k].x > first.OSDMaxY) return 0;
    }
    return 1;
}

int check_WatermarkOSDParameter(const char *if_name, const WatermarkOSDParameter *record) {
    return check_watermark(__func__, if_name, record);
}

int check_WatermarkPictureParameter(const char *if_name, const WatermarkPictureParameter *record) {
    return check_watermark(__func__, if_name, record);
}

int check_WatermarkDotmatrixParameter(const char *if_name,
                                      const WatermarkDotmatrixParameter *record) {
    return check_watermark(__func__, if_name, record);
}

namespace {

template <typename R>
int check_stream(const char *function, int position, const R *record) {
    if (!is_stream(position) || !record) {
        ERROR_LINE_AS(function, "index=%d invalid\n", position);
        return 0;
    }
    if (record->index != position) {
        ERROR_LINE_AS(function, "index invalid[%d,%d]\n", position, record->index);
        return 0;
    }
    return 1;
}

}  // namespace

int check_StreamingInputParameter(int position, const StreamingInputParameter *record) {
    return check_stream(__func__, position, record);
}

int check_StreamingInputStatusChange(int position, const StreamingInputStatusChange *record) {
    return check_stream(__func__, position, record);
}

// ---- defaults

int default_VideoOutputInterfaceParameter(const char *if_name,
                                          VideoOutputInterfaceParameter *record) {
    if (get_VideoOutputInterface_intf(if_name) < 0 || !record) return -2;
    set_name(record->if_name, if_name);
    set_text(record->Timing, "1920x1080P@60");
    record->TimingCustom = 0;
    record->Width = 1920;
    record->Height = 1080;
    record->FrameRate = 60;
    std::fill(std::begin(record->reserved_336), std::end(record->reserved_336), uint8_t{0});
    std::fill(std::begin(record->PictureLevel), std::end(record->PictureLevel), 128);
    set_text(record->AudioInterface, "HDMI1");
    set_text(record->ScreenSplitMode, "Mode1");
    record->UserSplitIndex = -1;
    record->Enable = 1;
    return 0;
}

int default_VideoOutputScreenSplitParameter(const char *if_name,
                                            VideoOutputScreenSplitParameter *records) {
    if (!if_name || !records) return -2;
    for (int i = 0; i < split_records_from(0); ++i) {
        set_name(records[i].if_name, if_name);
        records[i].Index = i;
        records[i].WindowNum = 1;
        set_text(records[i].SplitString, "0,0,8196,8196,0");
    }
    return 0;
}

int default_VideoOutputDisplayParameter(VideoOutputDisplayParameter *record) {
    if (!record) return -2;
    std::fill(std::begin(record->reserved_0), std::end(record->reserved_0), uint8_t{0});
    record->cache = 0;
    record->playmode = 0;
    record->BorderWidth = 1;
    set_text(record->BackgroundColor, "#000000");
    set_text(record->VideoBorderColor, "#00FF00");
    set_text(record->AudioBorderColor, "#FF0000");
    return 1;
}

int default_VideoOutputSourceParameter(int channel, VideoOutputSourceParameter *record) {
    if (!record) return -2;
    *record = {channel, channel, 1, -1};
    return 0;
}

int default_AudioOutputParameter(int output, AudioOutputParameter *record) {
    if (!is_audio_output(output) || !record) {
        ERROR_LINE("chn%d invalid\n", output);
        return -2;
    }
    record->Channel = output;
    record->index = 0;
    record->type = 2;
    set_text(record->if_name, "HDMI" + std::to_string(output + 1));
    any_item(text_of(data_AudioOutputCapabilitySet[output].if_name_list),
             [&](const std::string &first) {
                 set_name(record->if_name, first.c_str());
                 return true;
             });
    return 0;
}

namespace {

/** What the default OSD entries of a channel differ in; the last row serves all further ones. */
struct OsdDefault {
    int32_t type;
    uint32_t y;
    const char *content;  ///< null: left as it was
};
constexpr OsdDefault kOsdDefaults[] = {
    {0, 64, "yyyy-MM-dd hh:mm:ss"},
    {1, 448, nullptr},
    {2, 832, nullptr},
    {3, 7808, "URL"},
    {2, 0, ""},
};

void make_default_entry(int channel, int index, VideoOutputOSDParameter &entry) {
    const OsdDefault &row =
        kOsdDefaults[std::min<size_t>(static_cast<size_t>(index), std::size(kOsdDefaults) - 1)];
    entry.Channel = channel;
    entry.Index = index;
    entry.type = row.type;
    entry.visible = 0;
    entry.font = 3;
    entry.size = 30;
    entry.bold = 0;
    entry.stroke = 0;
    set_text(entry.forecolor, "#FFFFFF");
    entry.forealpha = 255;
    set_text(entry.backcolor, "#000000");
    entry.backalpha = 0;
    entry.corner = 0;
    entry.x = 64;
    entry.y = row.y;
    entry.scale = 100;
    if (row.content) set_text(entry.content, row.content);
}

/** A zeroed record under the interface's name; false when there is no such interface. */
template <typename R>
bool start_default(const char *if_name, R *record) {
    if (get_VideoOutputInterface_intf(if_name) < 0 || !record) return false;
    *record = R{};
    set_name(record->if_name, if_name);
    return true;
}

}  // namespace

int default_VideoOutputOSDParameter(int channel, VideoOutputOSDParameter *entries) {
    if (!is_channel(channel) || !entries) {
        ERROR_LINE("chn%d invalid\n", channel);
        return -2;
    }
    for (int k = 0; k < osd_entries(); ++k) {
        make_default_entry(channel, k, entries[k]);
    }
    return 0;
}

int default_WatermarkOSDParameter(const char *if_name, WatermarkOSDParameter *record) {
    if (!start_default(if_name, record)) return -2;
    record->font = 2;
    set_text(record->forecolor, "#FF0000");
    record->forealpha = 255;
    set_text(record->backcolor, "#000000");
    record->arrangement_mode = 1;
    record->step = 1;
    record->speed = 1;
    return 0;
}

int default_WatermarkPictureParameter(const char *if_name, WatermarkPictureParameter *record) {
    if (!start_default(if_name, record)) return -2;
    record->alpha = 255;
    record->arramode = 1;
    record->step = 1;
    record->speed = 1;
    return 0;
}

int default_WatermarkDotmatrixParameter(const char *if_name, WatermarkDotmatrixParameter *record) {
    return start_default(if_name, record) ? 0 : -2;
}
