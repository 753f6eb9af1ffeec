/**
 * @file command_table.h
 * The device's commands: their names, keys and records.
 *
 * The one place that knows them. The library serves messages from it, `rpc.discover` publishes it
 * and the command-line client reads it.
 *
 * Thread: any; everything here is constant.
 */
#ifndef COMMAND_PROTOCOL_COMMAND_TABLE_H
#define COMMAND_PROTOCOL_COMMAND_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace command_protocol {

enum class Direction : uint8_t {
    kGet,        ///< reads the records of a key
    kSet,        ///< changes the records of a key; fields left out keep their value
    kEvent,      ///< hands over one record that says itself what it is about; fields left out are 0
    kUpload,     ///< announces new content for a key; carries no record
    kKeepalive,  ///< answered by the library: the process and how long it has been running
    kDiscover,   ///< answered by the library: the description of all commands
};

enum class KeyKind : uint8_t {
    kNone,
    kInterface,     ///< `if_name`; "" or absent for every interface
    kOneInterface,  ///< `if_name`, required
    kChannel,       ///< `Channel`; -1 or absent for every channel
};

/** One row of the table. */
struct Command {
    const char
        *name;  ///< method of the message and, unless the library answers, name of the handler
    Direction direction;
    KeyKind key;
    const char *record;  ///< record type of the parameters or the result; "" for none
    /// Of a Get: the handler that tells how many records a key has, "" where it is always one.
    /// Of a Set: the Get that reads what the Set changes.
    const char *companion;
    const char *meaning;  ///< one phrase
};

/** Sorted by name. */
inline constexpr Command kCommands[] = {
    {"GetVideoOutputDisplayParameter", Direction::kGet, KeyKind::kNone,
     "VideoOutputDisplayParameter", "", "Read the window borders and the playing mode"},
    {"GetVideoOutputInterfaceParameter", Direction::kGet, KeyKind::kInterface,
     "VideoOutputInterfaceParameter", "GetVideoOutputInterfaceParameterSize",
     "Read timing and screen split"},
    {"GetVideoOutputOSDParameter", Direction::kGet, KeyKind::kChannel, "VideoOutputOSDParameter",
     "GetVideoOutputOSDParameterSize", "Read the OSD texts of a window"},
    {"GetVideoOutputScreenSplitParameter", Direction::kGet, KeyKind::kInterface,
     "VideoOutputScreenSplitParameter", "GetVideoOutputScreenSplitParameterSize",
     "Read the user layouts"},
    {"GetWatermarkDotmatrixParameter", Direction::kGet, KeyKind::kInterface,
     "WatermarkDotmatrixParameter", "GetWatermarkDotmatrixParameterSize",
     "Read the moving dot watermark"},
    {"GetWatermarkOSDParameter", Direction::kGet, KeyKind::kInterface, "WatermarkOSDParameter",
     "GetWatermarkOSDParameterSize", "Read the watermark text"},
    {"GetWatermarkPictureParameter", Direction::kGet, KeyKind::kInterface,
     "WatermarkPictureParameter", "GetWatermarkPictureParameterSize", "Read the watermark picture"},
    {"Keepalive", Direction::kKeepalive, KeyKind::kNone, "", "",
     "Tell that the process is alive and for how long"},
    {"SetAudioOutSourceChange", Direction::kEvent, KeyKind::kNone, "AudioOutSourceChange", "",
     "Tell that an audio output plays another source"},
    {"SetStreamingInputStatusChange", Direction::kEvent, KeyKind::kNone,
     "StreamingInputStatusChange", "", "Tell that a stream has another name, address or status"},
    {"SetVideoOutSourceChange", Direction::kEvent, KeyKind::kNone, "VideoOutSourceChange", "",
     "Tell that a window shows another source"},
    {"SetVideoOutputDisplayParameter", Direction::kSet, KeyKind::kNone,
     "VideoOutputDisplayParameter", "GetVideoOutputDisplayParameter",
     "Change the window borders and the playing mode"},
    {"SetVideoOutputInterfaceParameter", Direction::kSet, KeyKind::kInterface,
     "VideoOutputInterfaceParameter", "GetVideoOutputInterfaceParameter",
     "Change timing and screen split"},
    {"SetVideoOutputOSDParameter", Direction::kSet, KeyKind::kChannel, "VideoOutputOSDParameter",
     "GetVideoOutputOSDParameter", "Change the OSD texts of a window"},
    {"SetVideoOutputScreenSplitParameter", Direction::kSet, KeyKind::kInterface,
     "VideoOutputScreenSplitParameter", "GetVideoOutputScreenSplitParameter",
     "Change the user layouts"},
    {"SetWatermarkDotmatrixParameter", Direction::kSet, KeyKind::kInterface,
     "WatermarkDotmatrixParameter", "GetWatermarkDotmatrixParameter",
     "Change the moving dot watermark"},
    {"SetWatermarkOSDParameter", Direction::kSet, KeyKind::kInterface, "WatermarkOSDParameter",
     "GetWatermarkOSDParameter", "Change the watermark text"},
    {"SetWatermarkPictureParameter", Direction::kSet, KeyKind::kInterface,
     "WatermarkPictureParameter", "GetWatermarkPictureParameter", "Change the watermark picture"},
    {"UploadWatermarkPicture", Direction::kUpload, KeyKind::kOneInterface, "", "",
     "Tell that the watermark picture's file has new content"},
    {"rpc.discover", Direction::kDiscover, KeyKind::kNone, "", "",
     "Describe all commands (OpenRPC)"},
};

inline constexpr size_t kCommandCount = sizeof(kCommands) / sizeof(kCommands[0]);

/** Position in kCommands of the command of that name, kCommandCount for none. */
constexpr size_t command_index(std::string_view name) {
    size_t low = 0, high = kCommandCount;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        const int order = name.compare(kCommands[middle].name);
        if (order == 0) return middle;
        (order < 0 ? high : low) = order < 0 ? middle : middle + 1;
    }
    return kCommandCount;
}

/** The command of that name, or null. */
inline const Command *find_command(std::string_view name) {
    const size_t index = command_index(name);
    return index < kCommandCount ? &kCommands[index] : nullptr;
}

/** The name of the member of `params` that holds a key of that kind, "" for none. */
constexpr const char *key_member(KeyKind key) {
    constexpr const char *kNames[] = {"", "if_name", "if_name", "Channel"};
    return kNames[static_cast<size_t>(key)];
}

namespace audit {

constexpr bool names_ascend() {
    for (size_t i = 1; i < kCommandCount; ++i) {
        if (std::string_view(kCommands[i - 1].name) >= kCommands[i].name) return false;
    }
    return true;
}

constexpr bool sets_read_what_they_change() {
    for (const Command &set : kCommands) {
        if (set.direction != Direction::kSet) continue;
        const size_t index = command_index(set.companion);
        if (index == kCommandCount) return false;
        const Command &get = kCommands[index];
        if (get.direction != Direction::kGet || get.key != set.key ||
            std::string_view(get.record) != set.record) {
            return false;
        }
    }
    return true;
}

static_assert(names_ascend(), "kCommands is searched by halving");
static_assert(sets_read_what_they_change(), "a Set stands beside the Get of its key and record");

}  // namespace audit

}  // namespace command_protocol

#endif
