#include "device_files.h"

#include <filesystem>

namespace vdevice {
namespace {

namespace fs = std::filesystem;

/** Debian's places of fonts-dejavu-core and fonts-droid-fallback, then those of other systems. */
constexpr const char *kFonts[] = {
    "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
    "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
    "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf",
    "/usr/share/fonts/TTF/DejaVuSans.ttf",
    "/usr/share/fonts/TTF/DejaVuSans-Bold.ttf",
};

std::string first_existing(const std::vector<fs::path> &places) {
    for (const fs::path &place : places) {
        if (fs::exists(place)) return place.lexically_normal();
    }
    return places.front().lexically_normal();
}

}  // namespace

DeviceFiles find_device_files() {
    const fs::path bin = fs::read_symlink("/proc/self/exe").parent_path();
    DeviceFiles files;
    files.program = bin / "app_gui";
    files.shim = first_existing({bin / "../lib/libfbemu.so", bin / VDEVICE_SHIM_FROM_BIN});
    files.config = first_existing({bin / VDEVICE_CONFIG_FROM_BIN, VDEVICE_SOURCE_CONFIG});
    for (const char *font : kFonts) {
        if (fs::exists(font)) files.fonts.push_back(font);
    }
    return files;
}

}  // namespace vdevice
