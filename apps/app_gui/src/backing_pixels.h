/**
 * @file backing_pixels.h
 * The pixels that a paint event paints on, for what goes faster without a painter: filling many
 * small rectangles, and pictures that lie beside what is painted already.
 *
 * Thread: display. Valid as long as the painter that it was made of is active.
 */
#ifndef APP_GUI_BACKING_PIXELS_H
#define APP_GUI_BACKING_PIXELS_H

#include <QPoint>
#include <QRect>
#include <QRgb>

class QImage;
class QPainter;
class QWidget;

class BackingPixels {
public:
    /**
     * Those of a painter without a transformation of its own, in the widget's paint event. None
     * where it does not paint on the window's backing store, as in QWidget::grab().
     */
    BackingPixels(const QPainter &painter, const QWidget &widget);

    /** Whether there are pixels here. Nothing below is for use where there are none. */
    explicit operator bool() const { return mBits != nullptr; }

    /** The part of the widget that has pixels. */
    QRect bounds() const { return mBounds; }

    /**
     * Puts a part of a picture beside what is there, which is what painting it would give; stops
     * before the first row in which it would lie on a painted pixel.
     * @param picture  Format_ARGB32_Premultiplied; its top left corner lies on `corner`.
     * @param part     in bounds() and in the picture.
     * @return the rows that are not done, the lower ones of the part.
     */
    QRect add(const QImage &picture, const QPoint &corner, const QRect &part) const;

    /** Makes all pixels of a part of bounds() that opaque colour, whatever the painter's clip. */
    void fill(const QRect &part, QRgb colour) const;

private:
    QRgb *at(const QPoint &place) const;

    uchar *mBits = nullptr;  ///< of an image of Format_ARGB32_Premultiplied
    qsizetype mLineLength = 0;
    QRect mBounds;
};

#endif
