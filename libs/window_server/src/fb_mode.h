/**
 * @file fb_mode.h
 * The kernel's description of a framebuffer mode (linux/fb.h) as values this library can rely on.
 *
 * Nothing a driver answers is believed: a mode that would lead outside the mapped memory, or that
 * is not 32 bits wide, is no mode.
 *
 * Pure: no descriptors. Thread: any.
 */
#ifndef WINDOW_SERVER_FB_MODE_H
#define WINDOW_SERVER_FB_MODE_H

#include <linux/fb.h>

#include <cstddef>
#include <optional>
#include <string>

#include "pixel_rows.h"

namespace qws {

/** The longest side of a screen, in pixels. */
constexpr int kLongestSide = 16384;
constexpr int kDepth = 32;

/** A usable mode: every visible row lies within `mapLength` bytes from the start of the memory. */
struct FbMode {
    int width = 0;
    int height = 0;
    size_t lineLength = 0;  ///< bytes from one row to the next
    size_t origin = 0;      ///< bytes from the start of the memory to the first visible pixel
    size_t mapLength = 0;   ///< bytes to map
    PixelLayout layout;
};

/**
 * Turns the driver's answers into a mode.
 * @param problem  why there is none, or, with a mode, what is odd about it; else empty.
 */
std::optional<FbMode> readMode(const fb_var_screeninfo &var, const fb_fix_screeninfo &fix,
                               std::string *problem);

/** What to ask the driver for to get from `current` to another size: no panning, effective now. */
fb_var_screeninfo modeRequest(const fb_var_screeninfo &current, int width, int height);

/**
 * The device in a display text: "linuxFB:/dev/fb1" gives "/dev/fb1", as do options between
 * the colons. The part from the first '/' that follows a colon counts.
 * @param display  may be null. @return "/dev/fb0" where no device is named.
 */
std::string devicePath(const char *display);

}  // namespace qws

#endif
