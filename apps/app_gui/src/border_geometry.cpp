#include "border_geometry.h"

#include <algorithm>

namespace {

/// Farther out than any screen reaches; keeps sums of positions and widths within an int.
constexpr qint64 kFar = 1 << 24;

struct Span {
    int low;
    int high;
};

/// From the lower of two positions less `reach` to the higher plus `reach`.
Span widened(qint64 a, qint64 b, qint64 reach) {
    const qint64 low = std::min(a, b) - reach;
    const qint64 high = std::max(a, b) + reach;
    return {static_cast<int>(std::clamp(low, -kFar, kFar)),
            static_cast<int>(std::clamp(high, -kFar, kFar))};
}

QRect widened_box(qint64 x1, qint64 y1, qint64 x2, qint64 y2, qint64 reach) {
    const Span h = widened(x1, x2, reach);
    const Span v = widened(y1, y2, reach);
    return QRect(QPoint(h.low, v.low), QPoint(h.high, v.high));
}

QRegion outline_region(const QRect &outline, qint64 reach) {
    const qint64 x = outline.x();
    const qint64 y = outline.y();
    const QRect outer = widened_box(x, y, x + outline.width(), y + outline.height(), reach);
    const int hole = static_cast<int>(2 * reach + 1);
    const QRect inner = outer.adjusted(hole, hole, -hole, -hole);
    return inner.isValid() ? QRegion(outer) - inner : QRegion(outer);
}

bool same_stroke(const BorderStroke &a, const BorderStroke &b) {
    return a.shape == b.shape && a.outline == b.outline && a.line == b.line && a.colour == b.colour;
}

QRegion picture_region(const BorderPicture &picture, qsizetype first) {
    QRegion region;
    for (qsizetype i = first; i < picture.strokes.size(); ++i) {
        region += stroke_region(picture.strokes[i], picture.width);
    }
    return region;
}

}  // namespace

QRect border_outline(const QRect &window, int width) {
    return QRect(window.x() + width / 2, window.y() + width / 2, window.width() - width,
                 window.height() - width);
}

BorderPicture window_borders(const QVector<QRect> &windows, int count, const BorderStyle &style) {
    BorderPicture picture;
    if (style.width <= 0) {
        return picture;
    }
    picture.width = style.width;
    const int drawn = std::min<int>(count, windows.size());
    for (int i = 0; i < drawn; ++i) {
        picture.strokes.append({BorderStroke::kOutline, border_outline(windows[i], style.width),
                                QLineF(), i == style.audioWindow ? style.audio : style.video});
    }
    return picture;
}

BorderPicture line_borders(const QVector<QLineF> &lines, const QVector<QColor> &colours,
                           int width) {
    BorderPicture picture;
    if (width <= 0) {
        return picture;
    }
    picture.width = width;
    const qsizetype drawn = std::min(lines.size(), colours.size());
    for (qsizetype i = 0; i < drawn; ++i) {
        picture.strokes.append({BorderStroke::kLine, QRect(), lines[i], colours[i].rgb()});
    }
    return picture;
}

QRegion stroke_region(const BorderStroke &stroke, int width) {
    // Half the width to either side, and one pixel for the rounding of odd widths.
    const qint64 reach = std::min<qint64>(width, kFar) / 2 + 1;
    if (stroke.shape == BorderStroke::kOutline) {
        return outline_region(stroke.outline, reach);
    }
    const QLineF &line = stroke.line;
    return widened_box(static_cast<qint64>(line.x1()), static_cast<qint64>(line.y1()),
                       static_cast<qint64>(line.x2()), static_cast<qint64>(line.y2()), reach);
}

QRegion changed_region(const BorderPicture &before, const BorderPicture &after) {
    if (before.width != after.width) {
        return picture_region(before, 0) + picture_region(after, 0);
    }
    QRegion region;
    const qsizetype common = std::min(before.strokes.size(), after.strokes.size());
    for (qsizetype i = 0; i < common; ++i) {
        if (!same_stroke(before.strokes[i], after.strokes[i])) {
            region += stroke_region(before.strokes[i], before.width);
            region += stroke_region(after.strokes[i], after.width);
        }
    }
    return region + picture_region(before, common) + picture_region(after, common);
}
