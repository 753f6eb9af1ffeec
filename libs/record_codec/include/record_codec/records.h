/**
 * @file records.h
 * The parameter and capability records of the device: fixed layouts without pointers.
 *
 * The records travel between processes and libraries as plain bytes: they are copied and compared
 * whole, so order, width and offset of every field are a format, and so are the spans that no field
 * names (members `reserved_<offset>`). All integers are 32-bit little-endian; texts are
 * NUL-terminated UTF-8 in fixed arrays; a "list" is a text of items separated by ";" where an item
 * is a name, a decimal number (5) or an inclusive range of two numbers (2-7).
 *
 * Positions in `x` and `y` are virtual units: 1/8192 of the width or height of the area that the
 * record belongs to. Colours are texts of the form "#RRGGBB", alphas run from 0 (transparent) to
 * 255 (opaque).
 */
#ifndef RECORD_CODEC_RECORDS_H
#define RECORD_CODEC_RECORDS_H

#include <cstddef>
#include <cstdint>

/** What the device as a whole offers. */
struct DeviceCapabilitySet {
    uint8_t reserved_0[24];
    int32_t VideoOutputChannelNum;  ///< video output channels (windows), used as 0 to 16
    uint8_t reserved_28[8];
    int32_t AudioOutputNum;  ///< audio outputs, used as 0 to 3
    uint8_t reserved_40[24];
};

/** What the video decoder offers. */
struct VideoDecodeCapabilitySet {
    uint8_t reserved_0[276];
    int32_t MaxCache;  ///< largest accepted `cache`; the smallest is -1
};

/** What the stream receiver offers. */
struct StreamingInputCapabilitySet {
    uint8_t reserved_0[20];
    int32_t StreamingInputNum;  ///< streaming inputs, used as 0 to 64
    uint8_t reserved_24[4];
};

/** What may feed one video output channel; the element's index is the channel number. */
struct VideoOutputCapabilitySet {
    char SupportedVideoInputChannelList[256];    ///< numeric list for source type 0
    char SupportedInputStreamingIndexList[256];  ///< numeric list for source type 1
    uint8_t reserved_512[256];
};

/** What may feed one audio output; the element's index is the output's number. */
struct AudioOutputCapabilitySet {
    char bound_list[256];    ///< numeric list for source type 0 (audio that follows a video input)
    char if_name_list[256];  ///< names of output interfaces; the first one is the default
    char index_list[256];    ///< numeric list for source type 1
    char banyin_list[256];   ///< numeric list for source type 2
};

/** What one physical video output interface offers. */
struct VideoOutputInterface {
    char if_name[64];  ///< the key of every per-interface record
    uint8_t reserved_64[144];
    char Timing[2112];  ///< list of accepted timing names
    uint32_t OSDMaxX;   ///< first limit of an OSD entry's `x`
    uint32_t OSDMaxY;   ///< second limit of an OSD entry's `x`
    uint8_t reserved_2328[8];
    int32_t SplitParamNum;       ///< user split records of an interface
    char ScreenSplitMode[256];   ///< list of accepted split mode names
    int32_t DisplaySupported;    ///< 0 on the first interface: the process does not start
    int32_t WatermarkSupported;  ///< non-zero: watermarks are served and shown
    int32_t OSDSupported;        ///< non-zero: OSD texts, sources and streams are served and shown
    int32_t OSDNumPerChannel;    ///< OSD entries of a channel
};

/** Timing and screen split of one interface. */
struct VideoOutputInterfaceParameter {
    char if_name[64];
    char Timing[64];  ///< an item of the interface's `Timing` list
    uint8_t reserved_128[192];
    int32_t TimingCustom;
    int32_t Width;      ///< pixels
    int32_t Height;     ///< pixels
    int32_t FrameRate;  ///< frames per second
    uint8_t reserved_336[12];
    int32_t PictureLevel[4];
    char AudioInterface[64];
    char ScreenSplitMode[64];  ///< an item of the interface's `ScreenSplitMode` list
    int32_t UserSplitIndex;    ///< 0 to `SplitParamNum` - 1: that user layout; else the named mode
    int32_t Enable;
};

/** One user layout of an interface. */
struct VideoOutputScreenSplitParameter {
    char if_name[64];
    int32_t Index;           ///< position within the interface
    int32_t WindowNum;       ///< windows of the layout, used as 0 to 16
    char SplitString[2048];  ///< "x,y,w,h,layer" per window in virtual units, joined by ";"
};

/** Borders of the windows and the playing mode. */
struct VideoOutputDisplayParameter {
    uint8_t reserved_0[8];
    char BackgroundColor[64];  ///< must not be empty
    char VideoBorderColor[64];
    int32_t BorderWidth;        ///< pixels
    char AudioBorderColor[64];  ///< border of the window whose audio plays
    int32_t cache;              ///< -1 to `MaxCache`
    uint32_t playmode;          ///< 0 or 1
};

/** Source of one window as its file holds it. */
struct VideoOutputSourceParameter {
    int32_t Channel;  ///< equals the record's position in the file
    int32_t index;    ///< input number, -1 for none
    int32_t type;     ///< 0 video input, 1 streaming input
    int32_t cache;    ///< -1 to `MaxCache`
};

/** Source of one window. */
struct VideoOutSourceChange {
    int32_t Channel;   ///< window number
    char if_name[64];  ///< empty
    int32_t index;     ///< input number, -1 for none
    int32_t type;      ///< 0 video input, 1 streaming input
};

/** Source of one audio output. */
struct AudioOutSourceChange {
    int32_t Channel;   ///< audio output number
    char if_name[64];  ///< output interface
    int32_t index;     ///< input number, -1 for none
    int32_t type;      ///< 0 of `bound_list`, 1 of `index_list`, 2 of `banyin_list`
};

/** Source of one audio output as its file holds it. */
struct AudioOutputParameter {
    int32_t Channel;
    char if_name[64];
    int32_t index;
    int32_t type;
};

/** One OSD text of a window. */
struct VideoOutputOSDParameter {
    int32_t Channel;  ///< window number
    int32_t Index;    ///< position within the window's entries
    int32_t type;     ///< 0 date and time, 1 and 2 plain text, 3 name or address of the source
    int32_t visible;
    int32_t font;  ///< 0 to 6: preset size; 7 or more: `size`
    int32_t size;  ///< points
    int32_t bold;
    int32_t stroke;  ///< non-zero: outline in `backcolor` in place of a box
    char forecolor[64];
    int32_t forealpha;
    char backcolor[64];
    int32_t backalpha;
    int32_t corner;  ///< 0 top-left, 1 top-right, 2 bottom-left, 3 bottom-right
    uint32_t x;      ///< virtual units from the corner
    uint32_t y;      ///< virtual units from the corner
    int32_t scale;
    char content[256];  ///< format of date and time, the text, or "URL" or "Name"
    char head[64];      ///< line before the content
    char tail[64];      ///< line after the content
};

/** The watermark text of an interface. */
struct WatermarkOSDParameter {
    char if_name[64];
    int32_t visible;
    int32_t font;  ///< 0 to 6: preset size; 7 or more: `size`
    int32_t size;  ///< points
    int32_t bold;
    int32_t stroke;  ///< non-zero: outline in `backcolor` in place of a box
    char forecolor[64];
    int32_t forealpha;
    char backcolor[64];
    int32_t backalpha;
    uint8_t reserved_220[4];
    int32_t x;  ///< virtual units
    int32_t y;  ///< virtual units
    uint8_t reserved_232[4];
    char contet[256];          ///< the watermark text
    int32_t type1;             ///< first slot: 0 text, 1 date-time format, 2 MAC and IP template
    char text1[256];           ///< text of the first slot
    int32_t type2;             ///< second slot, as `type1`
    char text2[256];           ///< text of the second slot
    int32_t angle;             ///< degrees, clockwise
    int32_t arrangement_mode;  ///< N of the N x N arrangement, 0 for none
    int32_t en;                ///< non-zero: the text scrolls
    int32_t step;              ///< pixels a move
    int32_t speed;             ///< ticks of 500 ms a move
    int32_t direction;         ///< 0 and 2 horizontal, 1 and 3 vertical
};

/** The watermark picture of an interface. */
struct WatermarkPictureParameter {
    char if_name[64];
    int32_t visible;
    uint8_t reserved_68[4];
    int32_t x;  ///< virtual units
    int32_t y;  ///< virtual units
    uint8_t reserved_80[4];
    int32_t w;
    int32_t h;
    char file[256];    ///< path of the picture
    int32_t alpha;     ///< opacity of the picture
    int32_t sizemode;  ///< 1 tile, 2 stretch, 3 fit, else as it is
    int32_t angle;     ///< degrees, clockwise
    int32_t arramode;  ///< N of the N x N arrangement, 0 for none
    int32_t en;        ///< 1: the picture scrolls
    int32_t step;      ///< pixels a move
    int32_t speed;     ///< ticks of 500 ms a move
    int32_t direction;
};

/** The moving dot watermark of an interface. */
struct WatermarkDotmatrixParameter {
    char if_name[64];
    int32_t visible;
    char color[64];
    int32_t alpha;
    int32_t en;
    int32_t step;   ///< pixels a move
    int32_t speed;  ///< ticks of 500 ms a move
    int32_t direction;
    char text[256];
};

/** One streaming input as its file holds it. */
struct StreamingInputParameter {
    int32_t index;  ///< equals the record's position in the file
    char url[256];
    char name[64];
    uint8_t reserved_324[32];
};

/** One streaming input. */
struct StreamingInputStatusChange {
    int32_t index;
    char url[256];
    char name[64];
    int32_t status;
    int32_t status2;
};

/**
 * Every record type once, as `ROW(name, size in bytes)`; the one list from which the readers, the
 * writers and the tables of fields are made.
 */
#define RECORD_CODEC_RECORDS(ROW)              \
    ROW(DeviceCapabilitySet, 64)               \
    ROW(VideoDecodeCapabilitySet, 280)         \
    ROW(StreamingInputCapabilitySet, 28)       \
    ROW(VideoOutputCapabilitySet, 768)         \
    ROW(AudioOutputCapabilitySet, 1024)        \
    ROW(VideoOutputInterface, 2612)            \
    ROW(VideoOutputInterfaceParameter, 500)    \
    ROW(VideoOutputScreenSplitParameter, 2120) \
    ROW(VideoOutputDisplayParameter, 212)      \
    ROW(VideoOutputSourceParameter, 16)        \
    ROW(VideoOutSourceChange, 76)              \
    ROW(AudioOutSourceChange, 76)              \
    ROW(AudioOutputParameter, 76)              \
    ROW(VideoOutputOSDParameter, 568)          \
    ROW(WatermarkOSDParameter, 1036)           \
    ROW(WatermarkPictureParameter, 380)        \
    ROW(WatermarkDotmatrixParameter, 408)      \
    ROW(StreamingInputParameter, 356)          \
    ROW(StreamingInputStatusChange, 332)

#define RECORD_CODEC_CHECK_SIZE(name, bytes) \
    static_assert(sizeof(name) == (bytes) && alignof(name) <= 4, #name " has another layout");
RECORD_CODEC_RECORDS(RECORD_CODEC_CHECK_SIZE)
#undef RECORD_CODEC_CHECK_SIZE

#endif
