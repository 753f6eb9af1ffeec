/**
 * @file wnd_split.h
 * The catalogue of split modes and the geometry of their windows.
 *
 * Modes are numbered 0 to 34; 0 to 29 may be switched to, 26 to 29 are the user layouts (their
 * catalogue entry is one full-screen window). Windows are given as fractions of the canvas or as
 * pixels of a 1920 x 1080 reference canvas.
 *
 * Thread: init_split() and init_split_info() run once at start, before any other thread; everything
 * else only reads afterwards and may run on any thread.
 */
#ifndef APP_GUI_WND_SPLIT_H
#define APP_GUI_WND_SPLIT_H

#include <cstddef>
#include <cstdint>

#include "exported.h"

enum SplitConstants {
    kSplitModes = 35,           ///< numbers of the catalogue
    kSplitWindows = 16,         ///< windows that a description can carry
    kFirstUserSplitMode = 26,   ///< mode of user layout 0
    kUserSplits = 4,            ///< user layouts
};

/** Corner that a window's x and y are measured from. */
enum SplitAnchor : uint8_t {
    kAnchorTopLeft = 0,
    kAnchorTopRight = 1,
    kAnchorBottomLeft = 2,
    kAnchorBottomRight = 3,
};

/** A coordinate: a fraction of the canvas, or whole pixels. */
struct SplitCoordinate {
    uint8_t isRatio;  ///< 1: `ratio` holds, 0: `pixels` does
    uint8_t second;   ///< 0; carried, shown in the debug trace
    uint8_t padding[6];
    union {
        double ratio;
        uint32_t pixels;
    };
};

/** Where one window lies. */
struct SplitWndInfo {
    uint8_t anchor;    ///< SplitAnchor
    uint8_t topLayer;  ///< 255 for a window laid over the others, else 0
    uint8_t reserved;
    uint8_t kind;  ///< 6
    uint8_t padding[4];
    SplitCoordinate x, y, w, h;
};

/** One mode. */
struct SplitInfo {
    uint32_t wndCnt;   ///< 1 to 16
    uint8_t inverted;  ///< 1 when the layer marks were inverted
    uint8_t padding[3];
    SplitWndInfo wnd[kSplitWindows];  ///< the first `wndCnt` are meaningful
};

static_assert(sizeof(SplitCoordinate) == 16, "a coordinate slot has 16 bytes");
static_assert(sizeof(SplitWndInfo) == 72, "a window's description has 72 bytes");
static_assert(sizeof(SplitInfo) == 1160, "a mode's description has 1160 bytes");

extern "C" {

/** Sets the preview description. */
APP_GUI_API void init_split();
/** Builds the working table from the catalogue. Requires: init_split(). */
APP_GUI_API void init_split_info();

/** Copies the mode's SplitInfo (1160 bytes) to `out`; 0, or -2 for a mode above 34 or null. */
APP_GUI_API int hal_get_split_info(unsigned mode, void *out);
/** Windows of the mode; 0 for a mode above 34. */
APP_GUI_API int getSplitWndNum(unsigned mode);
/** 1 for the modes that may be switched to (0 to 29), else 0. */
APP_GUI_API unsigned checkSplitValid(unsigned mode);
/** Number of the mode of that name, e.g. 25 for "Mode6_4"; 1 after an error line for others. */
APP_GUI_API unsigned getSplitMode(const char *name);
/**
 * Places a window on a canvas. All edges come out even: positions round up, sizes down.
 * @param canvas  left, top, right, bottom in pixels; right and bottom are one past the last pixel.
 * @param rect    receives left, top, right, bottom likewise, e.g. {640, 360, 1280, 720} for the
 *                middle window of "Mode9" on {0, 0, 1920, 1080}.
 * @return 0, or -2 for a null pointer (nothing is written).
 */
APP_GUI_API int hal_get_split_wnd_info(const unsigned canvas[4], const SplitWndInfo *window,
                                       int rect[4]);
/** The preview's rectangle (0, 0, 1920, 1080); 0, or -2 for null. */
APP_GUI_API int hal_get_preview_rect(unsigned rect[4]);
/** Always 1. */
APP_GUI_API unsigned hal_get_max_channel();
/** Reads "#rrggbb" into r, g, b; what does not match is left as it was. Always 0. */
APP_GUI_API unsigned getBorderCorlor(const char *color, int *r, int *g, int *b);

}  // extern "C"

#endif
