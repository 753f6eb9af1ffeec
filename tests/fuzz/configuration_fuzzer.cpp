// One or more configuration files of a device hold anything: it loads or says why not, and what it
// loaded can be shown. An input is a list of files with an empty line between them: a letter for
// the file's place in kFiles ('a' is the first), then the file's content.

#include "device_store.h"

namespace {

constexpr const char *kFiles[] = {
    "capability_sets/DeviceCapabilitySet.json",
    "capability_sets/VideoOutputCapabilitySet.json",
    "capability_sets/VideoOutputInterfaces.json",
    "capability_sets/AudioOutputCapabilitySet.json",
    "capability_sets/VideoDecodeCapabilitySet.json",
    "capability_sets/StreamingInputCapabilitySet.json",
    "app_parameters/VideoOutputDisplayParameters.json",
    "app_parameters/VideoOutputInterfaceParameters.json",
    "app_parameters/VideoOutputAccessParameters.json",
    "app_parameters/VideoOutputScreenSplitParameters.json",
    "app_parameters/AudioOutputParameters.json",
    "app_parameters/VideoOutputOSDParameters.json",
    "app_parameters/WatermarkOSDParameters.json",
    "app_parameters/WatermarkPictureParameters.json",
    "app_parameters/WatermarkDotmatrixParameters.json",
    "app_parameters/StreamingInputParameters.json",
};

const char *file_of(uint8_t letter) {
    return kFiles[static_cast<uint8_t>(letter - 'a') % std::size(kFiles)];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static fuzz::DeviceStore store;
    fuzz::Input input(data, size);
    while (!input.empty()) {
        const char *const file = file_of(input.byte());
        store.replaceFile(file, input.until("\n\n"));
    }
    store.reload();
    // Loading repairs and saves files of its own.
    for (const char *file : kFiles) {
        store.restoreFile(file);
    }
    return 0;
}
