#include "configuration_files.h"

#include <iterator>

namespace configuration_doc {
namespace {

constexpr auto kObject = FileForm::kObject;
constexpr auto kArray = FileForm::kArray;
constexpr auto kCapability = FileKind::kCapability;
constexpr auto kParameter = FileKind::kParameter;
constexpr auto kWrittenBack = FileKind::kWrittenBackToFile;

// clang-format off
constexpr ConfigurationFile kFiles[] = {
    {"DeviceCapabilitySet.json", "DeviceCapabilitySet", kObject, 1, kCapability,
     "The numbers of channels and outputs that every later file is read by.", ""},
    {"VideoOutputCapabilitySet.json", "VideoOutputCapabilitySet", kArray, 16, kCapability,
     "One record per video output channel, in the order of the channels.", ""},
    {"VideoOutputInterfaces.json", "VideoOutputInterface", kArray, 2, kCapability,
     "One record per video output interface. The switches and numbers of the first one "
     "(`DisplaySupported`, `OSDSupported`, `OSDNumPerChannel`, `SplitParamNum`, "
     "`WatermarkSupported`) hold for the whole device.", ""},
    {"AudioOutputCapabilitySet.json", "AudioOutputCapabilitySet", kArray, 3, kCapability,
     "Exactly `AudioOutputNum` records, in the order of the audio outputs. With another number "
     "loading ends here without an error, and every parameter stays zero.", ""},
    {"VideoOutputInterfaceParameters.json", "VideoOutputInterfaceParameter", kArray, 2, kParameter,
     "One record per interface, in the order of VideoOutputInterfaces.json.",
     "`if_name` is not the interface's, or `Timing` or `ScreenSplitMode` is not in the interface's "
     "list."},
    {"VideoDecodeCapabilitySet.json", "VideoDecodeCapabilitySet", kObject, 1, kCapability,
     "The limit of every `cache` value.", ""},
    {"StreamingInputCapabilitySet.json", "StreamingInputCapabilitySet", kObject, 1, kCapability,
     "The number of streaming inputs.", ""},
    {"VideoOutputDisplayParameters.json", "VideoOutputDisplayParameter", kObject, 1, kParameter,
     "One record for the device.",
     "`BackgroundColor` is empty, or `cache` or `playmode` is out of range."},
    {"VideoOutputAccessParameters.json", "VideoOutputSourceParameter", kArray, 16, kParameter,
     "The source of each window: one record per video output channel, in the order of the "
     "channels.",
     "`Channel` is not the record's position, `type` is 2, `index` is neither -1 nor in the "
     "channel's list for its type, or `cache` is out of range."},
    {"VideoOutputScreenSplitParameters.json", "VideoOutputScreenSplitParameter", kArray, 8,
     kParameter,
     "The user layouts: `SplitParamNum` records per interface, interface after interface.",
     "`if_name` of an interface's first record is not the interface's; all its records are then "
     "replaced."},
    {"AudioOutputParameters.json", "AudioOutputParameter", kArray, 3, kParameter,
     "The source of each audio output, in the order of the outputs. Only the first one is used.",
     "`Channel` is not the record's position, `if_name` is not in the output's list, or `index` is "
     "neither -1 nor in the output's list for its type."},
    {"VideoOutputOSDParameters.json", "VideoOutputOSDParameter", kArray, 64, kWrittenBack,
     "The OSD texts: `OSDNumPerChannel` records per video output channel, channel after channel.",
     "`Channel` or `Index` is not the record's place, or `x` is above `OSDMaxX` or `OSDMaxY` of "
     "the first interface; all records of the channel are then replaced."},
    {"WatermarkOSDParameters.json", "WatermarkOSDParameter", kArray, 2, kWrittenBack,
     "One record per interface, in the order of VideoOutputInterfaces.json.",
     "`if_name` is not the interface's."},
    {"WatermarkPictureParameters.json", "WatermarkPictureParameter", kArray, 2, kWrittenBack,
     "One record per interface, in the order of VideoOutputInterfaces.json.",
     "`if_name` is not the interface's."},
    {"WatermarkDotmatrixParameters.json", "WatermarkDotmatrixParameter", kArray, 2, kWrittenBack,
     "One record per interface, in the order of VideoOutputInterfaces.json.",
     "`if_name` is not the interface's."},
    {"StreamingInputParameters.json", "StreamingInputParameter", kArray, 64, kParameter,
     "One record per streaming input, in the order of the inputs.",
     "`index` is not the record's position; the input is then named Window1, Window2, ... by its "
     "place."},
};
// clang-format on

}  // namespace

const ConfigurationFile *configuration_files(size_t *count) {
    *count = std::size(kFiles);
    return kFiles;
}

}  // namespace configuration_doc
