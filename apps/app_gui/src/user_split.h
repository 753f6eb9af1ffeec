/**
 * @file user_split.h
 * User-defined layouts: the text that lists a layout's windows, and the border lines of windows
 * that may cover one another.
 *
 * A split text is a list of windows separated by ";", each "x,y,w,h,layer" with x, y, w and h in
 * 1/8192 of the canvas: "0,0,4096,4096,0;4096,0,4096,4096,0" are two windows side by side in the
 * upper half. Rectangles are in pixels of the 1920 x 1080 reference canvas.
 *
 * Thread: any; nothing is kept between calls.
 */
#ifndef APP_GUI_USER_SPLIT_H
#define APP_GUI_USER_SPLIT_H

#include <QColor>
#include <QLineF>
#include <QVector>
#include <cstdint>

#include "exported.h"

/** One window of a user layout, in pixels of the reference canvas. */
struct tagWinRect {
    int32_t x;
    int32_t y;
    int32_t w;
    int32_t h;
    int32_t
        layer;  ///< a higher layer covers a lower one, a later window an equal layer's earlier one
    int32_t color;  ///< border colour 0xRRGGBB; the caller's, parse_win_splitstr() leaves it alone
};

/**
 * Reads the first `n` windows of a split text into `rects`, e.g. "4096,0,4096,4096,0" as
 * (960, 0, 960, 540) on layer 0. A field that is no number, and every field after it, keeps what
 * the window before had there (0 for the first). Numbers outside 32 bits are cut to their low 32
 * bits.
 * @param text   NUL-terminated; null reads as empty.
 * @param n      entries of `rects`; the entries past the text's last window are left as they are.
 * @return -1, always: callers ignore it.
 */
extern "C" APP_GUI_API int parse_win_splitstr(const char *text, unsigned n, tagWinRect *rects);

/**
 * Turns the outlines of `n` windows into the segments that no covering window hides, in window
 * order. The covering window's box includes its own outline, so a border that two windows share is
 * drawn once, by the covering one. Two windows side by side give seven lines.
 * @param lines    emptied, then receives the segments.
 * @param colours  emptied, then receives the colour of each segment.
 */
void trans_win_rects_to_QLine(const tagWinRect *rects, int n, QVector<QLineF> &lines,
                              QVector<QColor> &colours);

#endif
