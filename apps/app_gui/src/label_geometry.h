/**
 * @file label_geometry.h
 * Where overlay labels lie and how they move: pure functions over rectangles.
 *
 * A *screen* is the rectangle that a label lives in: in pixels of the parent where it is the actual
 * one, in units of the records where it is the virtual one. Edges are those of QRect: `right` and
 * `bottom` belong to the rectangle. Any number is a legal argument: sums and products are exact or
 * wrap where a function says so, and corners are kept within kFarthest.
 */
#ifndef APP_GUI_LABEL_GEOMETRY_H
#define APP_GUI_LABEL_GEOMETRY_H

#include <QPoint>
#include <QRect>
#include <QSize>
#include <cstdint>

/** No corner lies farther out, so that a widget's right edge always fits an `int`. */
constexpr int kFarthest = 1 << 30;

/** Width and height of a screen; exact where QRect::width() would overflow. */
int64_t screen_width(const QRect &screen);
int64_t screen_height(const QRect &screen);

/** The screen's size as a widget's: neither negative nor beyond what the toolkit takes. */
QSize widget_size(const QRect &screen);

/** A corner at (x, y), brought within kFarthest. */
QPoint corner_at(int64_t x, int64_t y);

/** False for a virtual screen without any unit, in which no position exists. */
bool has_units(const QRect &virtualScreen);

/**
 * The pixel position of the record position (x, y): (1, 1) of 8192 x 8192 units on 1920 x 1080
 * pixels at (0, 0) gives (0, 0), (4096, 4096) gives (960, 540). Quotients are cut toward zero.
 * Requires: has_units(virtualScreen).
 */
QPoint placed_signed(int x, int y, const QRect &actual, const QRect &virtualScreen);
/** Likewise with products that wrap at 32 bits and an unsigned division. */
QPoint placed_unsigned(int x, int y, const QRect &actual, const QRect &virtualScreen);

/** `wanted` held by the left and top edge. */
QPoint held_top_left(const QPoint &wanted, const QRect &screen);
/** `wanted` held by all edges; a label larger than the screen is held by the right and bottom one.
 */
QPoint held_on_all_sides(const QPoint &wanted, const QSize &label, const QRect &screen);

/**
 * Pixels from a record position to the far edge, on `extent` pixels of 8192 units, wrapping at 32
 * bits: 480 for 6144 on 1920.
 */
uint32_t room_after(uint32_t position, int64_t extent);

/** True on the ticks that a scrolling label moves on: every `speed`th, each one when it is 0. */
bool moves_on(int tick, int speed);

/** One scroll step. */
struct ScrollStep {
    QPoint corner;
    bool forward;  ///< sense of the next step: right or down
};

/**
 * The step after `now`. Directions 0 and 2 move along x, 1 and 3 along y, others not at all; the
 * sense is `now.forward` alone. A label that passes an edge is put at it and turns.
 *
 * Kept: a label turns one pixel short of the right and bottom edges, and one larger than the screen
 * lies at that edge after every step, perhaps left of or above the screen, and never turns forward.
 */
ScrollStep scrolled(const ScrollStep &now, const QSize &label, const QRect &screen, int direction,
                    int step);

/**
 * Point size of a font class: the class's size on 1080 lines taken to `lines` lines for classes 0
 * (and below) to 6, `size` for 7 and more; 6 to 72. Class 3, 36 points, is 18 on 540 lines.
 */
int point_size(int font, int size, double lines);

#endif
