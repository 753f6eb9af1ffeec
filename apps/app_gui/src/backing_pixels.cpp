#include "backing_pixels.h"

#include <QBackingStore>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>
#include <algorithm>

namespace {

const QRgb *picture_row(const QImage &picture, const QPoint &first, int row) {
    const uchar *bits = picture.constScanLine(first.y() + row);
    return reinterpret_cast<const QRgb *>(bits) + first.x();
}

/// Pixels that are filled together.
constexpr int kStrip = 4;

/// Pixels that are looked at together; a fixed number, so that they make vector code.
constexpr int kBlock = 16;

/** A pixel of `b` where `a` has one, too; 0 for most. */
QRgb met(QRgb a, QRgb b) {
    return (a != 0 ? ~QRgb{0} : 0) & b;
}

/** Whether there is a pixel that both rows have painted; `a` has few. */
bool meet(const QRgb *a, const QRgb *b, int count) {
    for (; count >= kBlock; count -= kBlock, a += kBlock, b += kBlock) {
        QRgb painted = 0;
        for (int i = 0; i < kBlock; ++i)
            painted |= a[i];
        if (painted == 0) continue;
        QRgb both = 0;
        for (int i = 0; i < kBlock; ++i)
            both |= met(a[i], b[i]);
        if (both != 0) return true;
    }
    QRgb both = 0;
    for (int i = 0; i < count; ++i)
        both |= met(a[i], b[i]);
    return both != 0;
}

void unite(QRgb *__restrict a, const QRgb *__restrict b, int count) {
    for (; count >= kBlock; count -= kBlock, a += kBlock, b += kBlock) {
        for (int i = 0; i < kBlock; ++i)
            a[i] |= b[i];
    }
    for (int i = 0; i < count; ++i)
        a[i] |= b[i];
}

}  // namespace

BackingPixels::BackingPixels(const QPainter &painter, const QWidget &widget) {
    const QBackingStore *store = widget.backingStore();
    const QPaintEngine *engine = painter.paintEngine();
    if (store == nullptr || engine == nullptr) return;
    QPaintDevice *device = engine->paintDevice();
    if (device == nullptr || device->devType() != QInternal::Image) return;
    if (device != const_cast<QBackingStore *>(store)->paintDevice()) return;
    const QTransform &transform = painter.deviceTransform();
    auto *image = static_cast<QImage *>(device);
    if (transform.type() > QTransform::TxTranslate ||
        image->format() != QImage::Format_ARGB32_Premultiplied) {
        return;
    }
    // Not bits(), which would part the image from one that somebody else holds.
    mBits = const_cast<uchar *>(image->constBits());
    mLineLength = image->bytesPerLine();
    mBounds = image->rect().translated(-QPointF(transform.dx(), transform.dy()).toPoint());
}

QRect BackingPixels::add(const QImage &picture, const QPoint &corner, const QRect &part) const {
    const QPoint first = part.topLeft() - corner;
    for (int y = 0; y < part.height(); ++y) {
        QRgb *below = at({part.left(), part.top() + y});
        const QRgb *above = picture_row(picture, first, y);
        if (meet(below, above, part.width())) return part.adjusted(0, y, 0, 0);
        unite(below, above, part.width());
    }
    return {};
}

void BackingPixels::fill(const QRect &part, QRgb colour) const {
    QRgb strip[kStrip];
    std::fill_n(strip, kStrip, colour | 0xFF000000);
    auto *row = reinterpret_cast<uchar *>(at(part.topLeft()));
    for (int rows = part.height(); rows > 0; --rows, row += mLineLength) {
        auto *pixels = reinterpret_cast<QRgb *>(row);
        int left = part.width();
        for (; left >= kStrip; left -= kStrip, pixels += kStrip)
            std::copy_n(strip, kStrip, pixels);
        std::copy_n(strip, left, pixels);
    }
}

QRgb *BackingPixels::at(const QPoint &place) const {
    const QPoint pixel = place - mBounds.topLeft();
    return reinterpret_cast<QRgb *>(mBits + pixel.y() * mLineLength) + pixel.x();
}
