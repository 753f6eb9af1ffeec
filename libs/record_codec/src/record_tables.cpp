#include "record_tables.h"

#include <iterator>
#include <type_traits>

namespace record_codec {
namespace {

template <typename Member>
constexpr FieldKind kind_of() {
    if constexpr (std::is_same_v<Member, int32_t>) {
        return FieldKind::kInt32;
    } else if constexpr (std::is_same_v<Member, uint32_t>) {
        return FieldKind::kUint32;
    } else if constexpr (std::is_same_v<std::remove_extent_t<Member>, char>) {
        return FieldKind::kText;
    } else {
        static_assert(std::is_same_v<std::remove_extent_t<Member>, int32_t>);
        return FieldKind::kInt32Array;
    }
}

/**
 * A row whose place is asserted: the offset and the size in bytes are the format, the structure in
 * records.h has to agree with them.
 */
template <typename Member, size_t actual_offset, size_t offset, size_t size>
constexpr Field row(const char *name, const char *unit, const char *range, const char *default_value,
                    const char *readers, const char *meaning) {
    static_assert(actual_offset == offset && sizeof(Member) == size, "the field lies elsewhere");
    return {name,          static_cast<uint32_t>(offset), static_cast<uint32_t>(size),
            kind_of<Member>(), unit, range, default_value, readers, meaning};
}

#define FIELD(record, name, offset, size, ...) \
    row<decltype(record::name), offsetof(record, name), offset, size>(#name, __VA_ARGS__)

// Columns: record, field, offset, bytes, unit, range, default, readers, meaning.
// clang-format off

constexpr Field kDeviceCapabilitySet[] = {
    FIELD(DeviceCapabilitySet, VideoOutputChannelNum, 24, 4, "channels", "0 to 16", "0", "store", "video output channels (windows)"),
    FIELD(DeviceCapabilitySet, AudioOutputNum, 36, 4, "outputs", "0 to 3", "0", "store", "audio outputs"),
};

constexpr Field kVideoDecodeCapabilitySet[] = {
    FIELD(VideoDecodeCapabilitySet, MaxCache, 276, 4, "", "-1 or more", "0", "store", "largest accepted cache value"),
};

constexpr Field kStreamingInputCapabilitySet[] = {
    FIELD(StreamingInputCapabilitySet, StreamingInputNum, 20, 4, "inputs", "0 to 64", "0", "store", "streaming inputs"),
};

constexpr Field kVideoOutputCapabilitySet[] = {
    FIELD(VideoOutputCapabilitySet, SupportedVideoInputChannelList, 0, 256, "", "numeric list", "", "store", "video inputs that may feed the channel (source type 0)"),
    FIELD(VideoOutputCapabilitySet, SupportedInputStreamingIndexList, 256, 256, "", "numeric list", "", "store", "streaming inputs that may feed the channel (source type 1)"),
};

constexpr Field kAudioOutputCapabilitySet[] = {
    FIELD(AudioOutputCapabilitySet, bound_list, 0, 256, "", "numeric list", "", "store", "inputs accepted for source type 0, audio that follows a video input"),
    FIELD(AudioOutputCapabilitySet, if_name_list, 256, 256, "", "list of names", "", "store", "output interfaces; the first non-empty item is the default"),
    FIELD(AudioOutputCapabilitySet, index_list, 512, 256, "", "numeric list", "", "store", "inputs accepted for source type 1"),
    FIELD(AudioOutputCapabilitySet, banyin_list, 768, 256, "", "numeric list", "", "store", "inputs accepted for source type 2"),
};

constexpr Field kVideoOutputInterface[] = {
    FIELD(VideoOutputInterface, if_name, 0, 64, "", "name of at most 63 bytes", "", "store, commands", "name of the interface; the key of every per-interface record"),
    FIELD(VideoOutputInterface, Timing, 208, 2112, "", "list of names", "", "store", "accepted timings"),
    FIELD(VideoOutputInterface, OSDMaxX, 2320, 4, "1/8192 of the window", "0 or more", "0", "store", "first limit of an OSD entry's x"),
    FIELD(VideoOutputInterface, OSDMaxY, 2324, 4, "1/8192 of the window", "0 or more", "0", "store", "second limit of an OSD entry's x"),
    FIELD(VideoOutputInterface, SplitParamNum, 2336, 4, "records", "0 to 8 in all", "0", "store, commands", "user split records of an interface"),
    FIELD(VideoOutputInterface, ScreenSplitMode, 2340, 256, "", "list of names", "", "store", "accepted split modes"),
    FIELD(VideoOutputInterface, DisplaySupported, 2596, 4, "", "0, else yes", "0", "start-up", "0 on the first interface ends start-up"),
    FIELD(VideoOutputInterface, WatermarkSupported, 2600, 4, "", "0, else yes", "0", "commands, start-up", "watermarks are served and shown"),
    FIELD(VideoOutputInterface, OSDSupported, 2604, 4, "", "0, else yes", "0", "commands, store, start-up", "OSD texts, sources and streams are served and shown"),
    FIELD(VideoOutputInterface, OSDNumPerChannel, 2608, 4, "entries", "0 to 64 in all", "0", "store, commands", "OSD entries of a channel"),
};

constexpr Field kVideoOutputInterfaceParameter[] = {
    FIELD(VideoOutputInterfaceParameter, if_name, 0, 64, "", "name of at most 63 bytes", "the interface", "store", "output interface; the record's key"),
    FIELD(VideoOutputInterfaceParameter, Timing, 64, 64, "", "an item of the interface's Timing list", "1920x1080P@60", "store", "output timing"),
    FIELD(VideoOutputInterfaceParameter, TimingCustom, 320, 4, "", "32-bit signed", "0", "carried", "custom timing in use"),
    FIELD(VideoOutputInterfaceParameter, Width, 324, 4, "pixels", "32-bit signed", "1920", "carried", "width of the timing"),
    FIELD(VideoOutputInterfaceParameter, Height, 328, 4, "pixels", "32-bit signed", "1080", "carried", "height of the timing"),
    FIELD(VideoOutputInterfaceParameter, FrameRate, 332, 4, "frames per second", "32-bit signed", "60", "carried", "frame rate of the timing"),
    FIELD(VideoOutputInterfaceParameter, PictureLevel, 348, 16, "", "four numbers, each 32-bit signed", "128, 128, 128, 128", "carried", "picture levels"),
    FIELD(VideoOutputInterfaceParameter, AudioInterface, 364, 64, "", "name of at most 63 bytes", "HDMI1", "carried", "audio interface that goes with the picture"),
    FIELD(VideoOutputInterfaceParameter, ScreenSplitMode, 428, 64, "", "an item of the interface's ScreenSplitMode list", "Mode1", "store, main window", "standard split mode"),
    FIELD(VideoOutputInterfaceParameter, UserSplitIndex, 492, 4, "", "0 to SplitParamNum - 1, else the standard mode", "-1", "store, main window", "user layout shown in place of the standard mode"),
    FIELD(VideoOutputInterfaceParameter, Enable, 496, 4, "", "32-bit signed", "1", "carried", "interface switched on"),
};

constexpr Field kVideoOutputScreenSplitParameter[] = {
    FIELD(VideoOutputScreenSplitParameter, if_name, 0, 64, "", "name of at most 63 bytes", "the interface", "store", "output interface; the record's key"),
    FIELD(VideoOutputScreenSplitParameter, Index, 64, 4, "", "32-bit signed", "position within the interface", "carried", "number of the layout"),
    FIELD(VideoOutputScreenSplitParameter, WindowNum, 68, 4, "windows", "used as 0 to 16", "1", "main window", "windows of the layout"),
    FIELD(VideoOutputScreenSplitParameter, SplitString, 72, 2048, "1/8192 of the screen", "windows \"x,y,w,h,layer\" joined by \";\"", "0,0,8196,8196,0", "main window", "rectangles and stacking of the windows"),
};

constexpr Field kVideoOutputDisplayParameter[] = {
    FIELD(VideoOutputDisplayParameter, BackgroundColor, 8, 64, "", "\"#RRGGBB\", not empty", "#000000", "store", "colour behind the video"),
    FIELD(VideoOutputDisplayParameter, VideoBorderColor, 72, 64, "", "\"#RRGGBB\"", "#00FF00", "main window", "border colour of the windows"),
    FIELD(VideoOutputDisplayParameter, BorderWidth, 136, 4, "pixels", "0 or less draws none", "1", "main window", "width of the borders"),
    FIELD(VideoOutputDisplayParameter, AudioBorderColor, 140, 64, "", "\"#RRGGBB\"", "#FF0000", "main window", "border colour of the window whose audio plays"),
    FIELD(VideoOutputDisplayParameter, cache, 204, 4, "", "-1 to MaxCache", "0", "store", "decoder cache"),
    FIELD(VideoOutputDisplayParameter, playmode, 208, 4, "", "0 or 1", "0", "store", "playing mode"),
};

constexpr Field kVideoOutputSourceParameter[] = {
    FIELD(VideoOutputSourceParameter, Channel, 0, 4, "", "the record's position in the file", "position", "store", "window"),
    FIELD(VideoOutputSourceParameter, index, 4, 4, "", "-1 for none, else an item of the list for its type", "position", "store, OSD labels", "input number"),
    FIELD(VideoOutputSourceParameter, type, 8, 4, "", "0 or 1", "1", "store, OSD labels", "0 video input, 1 streaming input"),
    FIELD(VideoOutputSourceParameter, cache, 12, 4, "", "-1 to MaxCache", "-1", "store", "decoder cache of the window"),
};

constexpr Field kVideoOutSourceChange[] = {
    FIELD(VideoOutSourceChange, Channel, 0, 4, "", "0 to VideoOutputChannelNum - 1", "", "store, main window", "window"),
    FIELD(VideoOutSourceChange, if_name, 4, 64, "", "name of at most 63 bytes", "", "carried", "empty"),
    FIELD(VideoOutSourceChange, index, 68, 4, "", "-1 for none", "", "store, OSD labels", "input number"),
    FIELD(VideoOutSourceChange, type, 72, 4, "", "0 or 1", "", "store, OSD labels", "0 video input, 1 streaming input"),
};

constexpr Field kAudioOutSourceChange[] = {
    FIELD(AudioOutSourceChange, Channel, 0, 4, "", "0 to AudioOutputNum - 1", "position", "store", "audio output"),
    FIELD(AudioOutSourceChange, if_name, 4, 64, "", "an item of the output's if_name_list", "first of if_name_list, else HDMI1, HDMI2, ... by output", "store", "output interface"),
    FIELD(AudioOutSourceChange, index, 68, 4, "", "-1 for none, else an item of the list for its type", "0", "store, main window", "input number"),
    FIELD(AudioOutSourceChange, type, 72, 4, "", "0 bound_list, 1 index_list, 2 banyin_list", "2", "store, main window", "kind of source"),
};

constexpr Field kAudioOutputParameter[] = {
    FIELD(AudioOutputParameter, Channel, 0, 4, "", "0 to AudioOutputNum - 1", "position", "store", "audio output"),
    FIELD(AudioOutputParameter, if_name, 4, 64, "", "an item of the output's if_name_list", "first of if_name_list, else HDMI1, HDMI2, ... by output", "store", "output interface"),
    FIELD(AudioOutputParameter, index, 68, 4, "", "-1 for none, else an item of the list for its type", "0", "store, main window", "input number"),
    FIELD(AudioOutputParameter, type, 72, 4, "", "0 bound_list, 1 index_list, 2 banyin_list", "2", "store, main window", "kind of source"),
};

constexpr Field kVideoOutputOSDParameter[] = {
    FIELD(VideoOutputOSDParameter, Channel, 0, 4, "", "the channel", "the channel", "store, main window", "window that the text belongs to"),
    FIELD(VideoOutputOSDParameter, Index, 4, 4, "", "position within the channel", "position", "store", "number of the channel's entry"),
    FIELD(VideoOutputOSDParameter, type, 8, 4, "", "0 to 3", "Index for 0 to 3, else 2", "OSD label", "0 date and time, 1 and 2 plain text, 3 name or address of the source"),
    FIELD(VideoOutputOSDParameter, visible, 12, 4, "", "0, else yes", "0", "OSD label", "text is shown"),
    FIELD(VideoOutputOSDParameter, font, 16, 4, "", "0 to 6 preset, 7 or more: size", "3", "OSD label", "font size class"),
    FIELD(VideoOutputOSDParameter, size, 20, 4, "points", "used as 6 to 72", "30", "OSD label", "font size when font is 7 or more"),
    FIELD(VideoOutputOSDParameter, bold, 24, 4, "", "0, else yes", "0", "OSD label", "bold text"),
    FIELD(VideoOutputOSDParameter, stroke, 28, 4, "", "0, else yes", "0", "OSD label", "outline in place of a box"),
    FIELD(VideoOutputOSDParameter, forecolor, 32, 64, "", "\"#RRGGBB\"", "#FFFFFF", "OSD label", "colour of the text"),
    FIELD(VideoOutputOSDParameter, forealpha, 96, 4, "", "0 to 255", "255", "OSD label", "opacity of the text"),
    FIELD(VideoOutputOSDParameter, backcolor, 100, 64, "", "\"#RRGGBB\"", "#000000", "OSD label", "colour of box or outline"),
    FIELD(VideoOutputOSDParameter, backalpha, 164, 4, "", "0 to 255", "0", "OSD label", "opacity of box or outline"),
    FIELD(VideoOutputOSDParameter, corner, 168, 4, "", "0 to 3", "0", "OSD label, main window", "anchoring corner: 0 top-left, 1 top-right, 2 bottom-left, 3 bottom-right"),
    FIELD(VideoOutputOSDParameter, x, 172, 4, "1/8192 of the window", "0 to OSDMaxX and OSDMaxY", "64", "store, main window", "distance from the corner"),
    FIELD(VideoOutputOSDParameter, y, 176, 4, "1/8192 of the window", "32-bit unsigned", "64, 448, 832, 7808 by Index, then 0", "main window", "distance from the corner"),
    FIELD(VideoOutputOSDParameter, scale, 180, 4, "percent", "32-bit signed", "100", "carried", "scale"),
    FIELD(VideoOutputOSDParameter, content, 184, 256, "", "text of at most 255 bytes", "yyyy-MM-dd hh:mm:ss, empty, empty, URL, empty by Index", "OSD label", "date-time format, text, or \"URL\" or \"Name\" by type"),
    FIELD(VideoOutputOSDParameter, head, 440, 64, "", "text of at most 63 bytes", "", "OSD label", "line before the content"),
    FIELD(VideoOutputOSDParameter, tail, 504, 64, "", "text of at most 63 bytes", "", "OSD label", "line after the content"),
};

constexpr Field kWatermarkOSDParameter[] = {
    FIELD(WatermarkOSDParameter, if_name, 0, 64, "", "name of at most 63 bytes", "the interface", "store", "output interface; the record's key"),
    FIELD(WatermarkOSDParameter, visible, 64, 4, "", "0, else yes", "0", "watermark label", "text is shown"),
    FIELD(WatermarkOSDParameter, font, 68, 4, "", "0 to 6 preset, 7 or more: size", "2", "watermark label", "font size class"),
    FIELD(WatermarkOSDParameter, size, 72, 4, "points", "used as 6 to 72", "0", "watermark label", "font size when font is 7 or more"),
    FIELD(WatermarkOSDParameter, bold, 76, 4, "", "0, else yes", "0", "watermark label", "bold text"),
    FIELD(WatermarkOSDParameter, stroke, 80, 4, "", "0, else yes", "0", "watermark label", "outline in place of a box"),
    FIELD(WatermarkOSDParameter, forecolor, 84, 64, "", "\"#RRGGBB\"", "#FF0000", "watermark label", "colour of the text"),
    FIELD(WatermarkOSDParameter, forealpha, 148, 4, "", "0 to 255", "255", "watermark label", "opacity of the text"),
    FIELD(WatermarkOSDParameter, backcolor, 152, 64, "", "\"#RRGGBB\"", "#000000", "watermark label", "colour of box or outline"),
    FIELD(WatermarkOSDParameter, backalpha, 216, 4, "", "0 to 255", "0", "watermark label", "opacity of box or outline"),
    FIELD(WatermarkOSDParameter, x, 224, 4, "1/8192 of the screen", "32-bit signed", "0", "watermark label", "position"),
    FIELD(WatermarkOSDParameter, y, 228, 4, "1/8192 of the screen", "32-bit signed", "0", "watermark label", "position"),
    FIELD(WatermarkOSDParameter, contet, 236, 256, "", "text of at most 255 bytes", "", "watermark label", "the watermark text"),
    FIELD(WatermarkOSDParameter, type1, 492, 4, "", "0 to 2", "0", "watermark label", "first slot: 0 plain text, 1 date-time format, 2 template with MAC and IP"),
    FIELD(WatermarkOSDParameter, text1, 496, 256, "", "text of at most 255 bytes", "", "watermark label", "text of the first slot"),
    FIELD(WatermarkOSDParameter, type2, 752, 4, "", "0 to 2", "0", "watermark label", "second slot, as type1"),
    FIELD(WatermarkOSDParameter, text2, 756, 256, "", "text of at most 255 bytes", "", "watermark label", "text of the second slot"),
    FIELD(WatermarkOSDParameter, angle, 1012, 4, "degrees", "32-bit signed", "0", "watermark label", "clockwise rotation"),
    FIELD(WatermarkOSDParameter, arrangement_mode, 1016, 4, "", "0 or less: none; at most 16 cells are used", "1", "main window, watermark label", "N of the N x N arrangement"),
    FIELD(WatermarkOSDParameter, en, 1020, 4, "", "0, else yes", "0", "watermark label", "text scrolls"),
    FIELD(WatermarkOSDParameter, step, 1024, 4, "pixels", "32-bit signed", "1", "watermark label", "distance of a move"),
    FIELD(WatermarkOSDParameter, speed, 1028, 4, "ticks of 500 ms", "32-bit signed", "1", "watermark label", "time between moves"),
    FIELD(WatermarkOSDParameter, direction, 1032, 4, "", "0 to 3", "0", "watermark label", "axis: 0 and 2 horizontal, 1 and 3 vertical, others none"),
};

constexpr Field kWatermarkPictureParameter[] = {
    FIELD(WatermarkPictureParameter, if_name, 0, 64, "", "name of at most 63 bytes", "the interface", "store", "output interface; the record's key"),
    FIELD(WatermarkPictureParameter, visible, 64, 4, "", "0, else yes", "0", "picture label", "picture is shown"),
    FIELD(WatermarkPictureParameter, x, 72, 4, "1/8192 of the screen", "32-bit signed", "0", "picture label", "position"),
    FIELD(WatermarkPictureParameter, y, 76, 4, "1/8192 of the screen", "32-bit signed", "0", "picture label", "position"),
    FIELD(WatermarkPictureParameter, w, 84, 4, "1/8192 of the screen", "32-bit signed", "0", "carried", "width"),
    FIELD(WatermarkPictureParameter, h, 88, 4, "1/8192 of the screen", "32-bit signed", "0", "carried", "height"),
    FIELD(WatermarkPictureParameter, file, 92, 256, "", "path of at most 255 bytes", "", "picture label", "picture file"),
    FIELD(WatermarkPictureParameter, alpha, 348, 4, "", "0 to 255", "255", "picture label", "opacity"),
    FIELD(WatermarkPictureParameter, sizemode, 352, 4, "", "1 tile, 2 stretch, 3 fit, else as it is", "0", "picture label", "how the picture fills its cell"),
    FIELD(WatermarkPictureParameter, angle, 356, 4, "degrees", "used modulo 180", "0", "picture label", "clockwise rotation"),
    FIELD(WatermarkPictureParameter, arramode, 360, 4, "", "0 or less: none; at most 16 cells are used", "1", "main window", "N of the N x N arrangement"),
    FIELD(WatermarkPictureParameter, en, 364, 4, "", "1 for yes", "0", "picture label", "picture scrolls"),
    FIELD(WatermarkPictureParameter, step, 368, 4, "pixels", "32-bit signed", "1", "picture label", "distance of a move"),
    FIELD(WatermarkPictureParameter, speed, 372, 4, "ticks of 500 ms", "32-bit signed", "1", "picture label", "time between moves"),
    FIELD(WatermarkPictureParameter, direction, 376, 4, "", "0 to 3", "0", "picture label", "axis: 0 and 2 horizontal, 1 and 3 vertical, others none"),
};

constexpr Field kWatermarkDotmatrixParameter[] = {
    FIELD(WatermarkDotmatrixParameter, if_name, 0, 64, "", "name of at most 63 bytes", "the interface", "store", "output interface; the record's key"),
    FIELD(WatermarkDotmatrixParameter, visible, 64, 4, "", "0, else yes", "0", "main window", "watermark is on"),
    FIELD(WatermarkDotmatrixParameter, color, 68, 64, "", "\"#RRGGBB\"", "", "carried", "colour"),
    FIELD(WatermarkDotmatrixParameter, alpha, 132, 4, "", "0 to 255", "0", "carried", "opacity"),
    FIELD(WatermarkDotmatrixParameter, en, 136, 4, "", "0, else yes", "0", "main window", "watermark moves"),
    FIELD(WatermarkDotmatrixParameter, step, 140, 4, "pixels", "32-bit signed", "0", "main window", "distance of a move"),
    FIELD(WatermarkDotmatrixParameter, speed, 144, 4, "ticks of 500 ms", "32-bit signed", "0", "main window", "time between moves"),
    FIELD(WatermarkDotmatrixParameter, direction, 148, 4, "", "0 left, 1 up, 2 right, 3 down", "0", "main window", "direction of the moves"),
    FIELD(WatermarkDotmatrixParameter, text, 152, 256, "", "text of at most 255 bytes", "", "carried", "text"),
};

constexpr Field kStreamingInputParameter[] = {
    FIELD(StreamingInputParameter, index, 0, 4, "", "the record's position in the file", "position", "store", "input number"),
    FIELD(StreamingInputParameter, url, 4, 256, "", "text of at most 255 bytes", "", "OSD label", "address of the stream"),
    FIELD(StreamingInputParameter, name, 260, 64, "", "text of at most 63 bytes", "", "OSD label", "name of the stream"),
};

constexpr Field kStreamingInputStatusChange[] = {
    FIELD(StreamingInputStatusChange, index, 0, 4, "", "0 to StreamingInputNum - 1", "position", "store, main window", "input number"),
    FIELD(StreamingInputStatusChange, url, 4, 256, "", "text of at most 255 bytes", "", "OSD label", "address of the stream"),
    FIELD(StreamingInputStatusChange, name, 260, 64, "", "text of at most 63 bytes", "Window1, Window2, ... by position", "OSD label", "name of the stream"),
    FIELD(StreamingInputStatusChange, status, 324, 4, "", "32-bit signed", "0", "carried", "state of the stream"),
    FIELD(StreamingInputStatusChange, status2, 328, 4, "", "32-bit signed", "0", "carried", "second state of the stream"),
};

// clang-format on
#undef FIELD

constexpr Record kRecords[] = {
    {"DeviceCapabilitySet", sizeof(DeviceCapabilitySet), kDeviceCapabilitySet, std::size(kDeviceCapabilitySet),
     "What the device as a whole offers"},
    {"VideoDecodeCapabilitySet", sizeof(VideoDecodeCapabilitySet), kVideoDecodeCapabilitySet, std::size(kVideoDecodeCapabilitySet),
     "What the video decoder offers"},
    {"StreamingInputCapabilitySet", sizeof(StreamingInputCapabilitySet), kStreamingInputCapabilitySet, std::size(kStreamingInputCapabilitySet),
     "What the stream receiver offers"},
    {"VideoOutputCapabilitySet", sizeof(VideoOutputCapabilitySet), kVideoOutputCapabilitySet, std::size(kVideoOutputCapabilitySet),
     "What may feed one video output channel"},
    {"AudioOutputCapabilitySet", sizeof(AudioOutputCapabilitySet), kAudioOutputCapabilitySet, std::size(kAudioOutputCapabilitySet),
     "What may feed one audio output"},
    {"VideoOutputInterface", sizeof(VideoOutputInterface), kVideoOutputInterface, std::size(kVideoOutputInterface),
     "What one physical video output interface offers"},
    {"VideoOutputInterfaceParameter", sizeof(VideoOutputInterfaceParameter), kVideoOutputInterfaceParameter, std::size(kVideoOutputInterfaceParameter),
     "Timing and screen split of one interface"},
    {"VideoOutputScreenSplitParameter", sizeof(VideoOutputScreenSplitParameter), kVideoOutputScreenSplitParameter, std::size(kVideoOutputScreenSplitParameter),
     "One user layout of an interface"},
    {"VideoOutputDisplayParameter", sizeof(VideoOutputDisplayParameter), kVideoOutputDisplayParameter, std::size(kVideoOutputDisplayParameter),
     "Borders of the windows and the playing mode"},
    {"VideoOutputSourceParameter", sizeof(VideoOutputSourceParameter), kVideoOutputSourceParameter, std::size(kVideoOutputSourceParameter),
     "Source of one window, as its file holds it"},
    {"VideoOutSourceChange", sizeof(VideoOutSourceChange), kVideoOutSourceChange, std::size(kVideoOutSourceChange),
     "Source of one window"},
    {"AudioOutSourceChange", sizeof(AudioOutSourceChange), kAudioOutSourceChange, std::size(kAudioOutSourceChange),
     "Source of one audio output"},
    {"AudioOutputParameter", sizeof(AudioOutputParameter), kAudioOutputParameter, std::size(kAudioOutputParameter),
     "Source of one audio output, as its file holds it"},
    {"VideoOutputOSDParameter", sizeof(VideoOutputOSDParameter), kVideoOutputOSDParameter, std::size(kVideoOutputOSDParameter),
     "One OSD text of a window"},
    {"WatermarkOSDParameter", sizeof(WatermarkOSDParameter), kWatermarkOSDParameter, std::size(kWatermarkOSDParameter),
     "The watermark text of an interface"},
    {"WatermarkPictureParameter", sizeof(WatermarkPictureParameter), kWatermarkPictureParameter, std::size(kWatermarkPictureParameter),
     "The watermark picture of an interface"},
    {"WatermarkDotmatrixParameter", sizeof(WatermarkDotmatrixParameter), kWatermarkDotmatrixParameter, std::size(kWatermarkDotmatrixParameter),
     "The moving dot watermark of an interface"},
    {"StreamingInputParameter", sizeof(StreamingInputParameter), kStreamingInputParameter, std::size(kStreamingInputParameter),
     "One streaming input, as its file holds it"},
    {"StreamingInputStatusChange", sizeof(StreamingInputStatusChange), kStreamingInputStatusChange, std::size(kStreamingInputStatusChange),
     "One streaming input"},
};

constexpr bool same_text(const char *a, const char *b) {
    return std::string_view(a) == b;
}

constexpr size_t index_of(const char *name) {
    size_t index = 0;
    while (!same_text(kRecords[index].name, name)) {
        ++index;
    }
    return index;
}

constexpr bool ascending_without_overlap() {
    for (const Record &record : kRecords) {
        uint32_t end = 0;
        for (size_t i = 0; i < record.field_count; ++i) {
            if (record.fields[i].offset < end) return false;
            end = record.fields[i].offset + record.fields[i].size;
        }
        if (end > record.size) return false;
    }
    return true;
}
static_assert(ascending_without_overlap(), "rows stand in the order of their offsets");

}  // namespace

const Record *all_records(size_t *count) {
    *count = std::size(kRecords);
    return kRecords;
}

#define RECORD_CODEC_TABLE(X, bytes)                \
    template <>                                     \
    const Record &record_of<X>() {                  \
        constexpr size_t index = index_of(#X);      \
        static_assert(kRecords[index].size == bytes); \
        return kRecords[index];                     \
    }
RECORD_CODEC_RECORDS(RECORD_CODEC_TABLE)
#undef RECORD_CODEC_TABLE

}  // namespace record_codec
