/**
 * @file window_geometry.h
 * Where the main window's parts lie: resolutions, hit testing, OSD labels in their windows, cells
 * of a watermark arrangement, the path of the dot watermark. Pure functions over pixels of the
 * window; virtual units are named as such.
 *
 * Arguments may come from records with any content: sums and products wrap at 32 bits where they
 * would not fit.
 */
#ifndef APP_GUI_WINDOW_GEOMETRY_H
#define APP_GUI_WINDOW_GEOMETRY_H

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QVector>

#include "record_codec/records.h"
#include "wnd_split.h"

enum WindowGeometryConstants {
    kVirtualExtent = 8192,  ///< virtual units of a width or height
    kWatermarkLabels = 16,  ///< labels of each kind of watermark
    kResolutionCodes = 14,  ///< codes of resolution_size()
};

/** Screen size of a resolution code below 14, e.g. 1366 x 768 for 7; an empty size for others. */
QSize resolution_size(unsigned code);

/**
 * The window at `point`: among the windows of the mode that contain it the one on the top layer
 * with the highest index; 0 when there is none. A window without a rectangle is never hit.
 */
int hit_window(const SplitInfo &split, const QVector<QRect> &windows, const QPoint &point);

/**
 * Top left corner of an OSD label of size `label` in the window `window`. The record's `x` and `y`
 * are virtual units from its `corner`: with (0, 0) from corner 3 the label's bottom right corner
 * lies on the window's.
 */
QPoint osd_position(const VideoOutputOSDParameter &osd, const QRect &window, const QSize &label);

/** One cell of an N x N arrangement and the label that fills it. */
struct WatermarkCell {
    int label;
    QRect virtualScreen;  ///< in virtual units of the whole screen
    QRect actualScreen;   ///< in pixels
};

/**
 * The cells of an arrangement in row order, as far as there are labels. None for an arrangement of
 * 0 or below, or one so large that a cell has no virtual unit. With 3 on 1366 x 768 the cells are
 * 455 wide and 256 high and start at x 0, 455 and 910.
 */
QVector<WatermarkCell> watermark_cells(const QSize &screen, int arrangement);

/** True when the dot watermark moves on this tick: on every `speed`th, on each when it is 0. */
bool dot_moves_on(unsigned tick, int speed);

/**
 * The dot watermark one move on. It enters again at the opposite edge of the screen; a direction
 * other than 0 left, 1 up, 2 right and 3 down does not move it.
 */
QPoint moved_dot(const QPoint &dot, const WatermarkDotmatrixParameter &record, const QSize &screen);

#endif
