/**
 * @file border_paint.h
 * Paints the borders of the video windows.
 *
 * Thread: display.
 */
#ifndef APP_GUI_BORDER_PAINT_H
#define APP_GUI_BORDER_PAINT_H

#include <QRect>
#include <QRegion>
#include <QVector>

#include "backing_pixels.h"
#include "border_geometry.h"

class QPainter;

/// Wider borders, and those of windows with little room inside them, are always stroked.
constexpr int kWidestFilledBorder = 64;

/**
 * The pixels that a painter's stroke of that width along border_outline(`window`) sets, as
 * rectangles that do not overlap: its corners are bevelled. None where the stroke is not as simple:
 * a width out of 1 to kWidestFilledBorder, or a window that is not wider and higher than four
 * times the width.
 */
QVector<QRect> outline_parts(const QRect &window, int width);

/**
 * Paints the strokes of a picture, in order.
 * @param painter  of the window's paint event.
 * @param pixels   what the painter paints on.
 * @param dirty    what the paint event paints; the painter's clip.
 */
void paint_borders(QPainter &painter, const BackingPixels &pixels, const BorderPicture &picture,
                   const QRegion &dirty);

#endif
