#include "fb_mode.h"

#include <cstdint>

namespace qws {
namespace {

constexpr unsigned kBytesPerPixel = kDepth / 8;
constexpr unsigned kLongest = kLongestSide;
constexpr unsigned kHighestShift = kDepth - 8;
/// Rows that a driver may have panned by: several screens, yet no products beyond 64 bits.
constexpr unsigned kFurthestPan = 16 * kLongest;

std::string number(uint64_t value) {
    return std::to_string(value);
}

bool isWholeByte(const fb_bitfield &channel) {
    return channel.length == 8 && channel.offset <= kHighestShift;
}

/// Channels that are no bytes of a pixel leave the usual places: a picture in odd colours serves
/// the device better than none.
PixelLayout readLayout(const fb_var_screeninfo &var, std::string *problem) {
    PixelLayout layout;
#ifdef APP_GUI_PREMULTIPLIED_ALPHA
    layout.straight = false;
#endif
    if (!isWholeByte(var.red) || !isWholeByte(var.green) || !isWholeByte(var.blue)) {
        *problem = "colour channels are not 8 bits each, taken as ARGB";
        return layout;
    }
    layout.red = var.red.offset;
    layout.green = var.green.offset;
    layout.blue = var.blue.offset;
    layout.alpha = var.transp.offset;
    layout.hasAlpha = isWholeByte(var.transp);
    if (!layout.hasAlpha) {
        layout.alpha = 0;
        *problem = "mode has no alpha bits, the layer hides the video";
    }
    return layout;
}

std::string sizeProblem(const fb_var_screeninfo &var) {
    if (var.bits_per_pixel != kDepth) {
        return number(var.bits_per_pixel) + " bits per pixel instead of " + number(kDepth);
    }
    if (var.xres < 1 || var.yres < 1 || var.xres > kLongest || var.yres > kLongest) {
        return "impossible size " + number(var.xres) + "x" + number(var.yres);
    }
    if (var.xoffset > kLongest || var.yoffset > kFurthestPan) {
        return "impossible offset " + number(var.xoffset) + "," + number(var.yoffset);
    }
    return {};
}

}  // namespace

std::optional<FbMode> readMode(const fb_var_screeninfo &var, const fb_fix_screeninfo &fix,
                               std::string *problem) {
    *problem = sizeProblem(var);
    if (!problem->empty()) return std::nullopt;

    const uint64_t rowBytes = uint64_t{var.xres} * kBytesPerPixel;
    const uint64_t lineLength = fix.line_length;
    const uint64_t origin = var.yoffset * lineLength + uint64_t{var.xoffset} * kBytesPerPixel;
    const uint64_t end = origin + (var.yres - 1) * lineLength + rowBytes;
    if (lineLength < rowBytes) {
        *problem = "line length " + number(lineLength) + " is less than the " + number(rowBytes) +
                   " bytes of a row";
        return std::nullopt;
    }
    if (end > fix.smem_len) {
        *problem = "memory of " + number(fix.smem_len) + " bytes is less than the " + number(end) +
                   " of the mode";
        return std::nullopt;
    }
    FbMode mode;
    mode.width = static_cast<int>(var.xres);
    mode.height = static_cast<int>(var.yres);
    mode.lineLength = lineLength;
    mode.origin = origin;
    mode.mapLength = end;
    mode.layout = readLayout(var, problem);
    return mode;
}

fb_var_screeninfo modeRequest(const fb_var_screeninfo &current, int width, int height) {
    fb_var_screeninfo request = current;
    request.xres = request.xres_virtual = static_cast<unsigned>(width);
    request.yres = request.yres_virtual = static_cast<unsigned>(height);
    request.xoffset = request.yoffset = 0;
    if (current.bits_per_pixel != kDepth) {
        // Some drivers choose the pixel format by the channels, not by the depth.
        request.bits_per_pixel = kDepth;
        request.red = {16, 8, 0};
        request.green = {8, 8, 0};
        request.blue = {0, 8, 0};
        request.transp = {24, 8, 0};
    }
    request.activate = FB_ACTIVATE_NOW;
    return request;
}

std::string devicePath(const char *display) {
    const std::string text = display ? display : "";
    const size_t colon = text.find(":/");
    return colon == std::string::npos ? "/dev/fb0" : text.substr(colon + 1);
}

}  // namespace qws
