/**
 * @file border_geometry.h
 * The borders that the main window paints, as values: which strokes there are and which pixels each
 * of them may touch. No widget and no painter.
 *
 * Coordinates are pixels of the window. A border is a stroke of `width` pixels centred on an
 * outline that lies half a width inside the window's rectangle.
 */
#ifndef APP_GUI_BORDER_GEOMETRY_H
#define APP_GUI_BORDER_GEOMETRY_H

#include <QColor>
#include <QLineF>
#include <QRect>
#include <QRegion>
#include <QVector>

/** One stroke: the outline of a window, or a line of a user layout. */
struct BorderStroke {
    enum Shape { kOutline, kLine };

    Shape shape;
    QRect outline;  ///< of kOutline; may have a negative size where the width is large
    QLineF line;    ///< of kLine
    QRgb colour;
};

/** All strokes in painting order: a later one lies over an earlier one. */
struct BorderPicture {
    int width = 0;  ///< pixels; at 0 and below there are no strokes
    QVector<BorderStroke> strokes;
};

/** How the borders look. */
struct BorderStyle {
    int width;        ///< pixels; 0 and below draws nothing
    QRgb video;       ///< border of a window
    QRgb audio;       ///< border of the window whose audio plays
    int audioWindow;  ///< index of that window, -1 for none
};

/**
 * The outline on which the border of a window is centred, e.g. (2, 2, 1916, 1076) in the window
 * (0, 0, 1920, 1080) at width 4.
 */
QRect border_outline(const QRect &window, int width);

/** Borders of the first `count` windows; a window without a rectangle has none. */
BorderPicture window_borders(const QVector<QRect> &windows, int count, const BorderStyle &style);

/** Borders of a user layout: its lines in the colours that were fixed when they were built. */
BorderPicture line_borders(const QVector<QLineF> &lines, const QVector<QColor> &colours, int width);

/** The pixels that a stroke may touch. */
QRegion stroke_region(const BorderStroke &stroke, int width);

/** The pixels in which two pictures may differ: those of the strokes that only one of them has. */
QRegion changed_region(const BorderPicture &before, const BorderPicture &after);

#endif
