#include "border_paint.h"

#include <QImage>
#include <QPainter>
#include <QPen>

namespace {

/** The pixels that a row of an outline lacks at either end. */
struct Indent {
    int left;
    int right;
};

bool operator==(const Indent &a, const Indent &b) {
    return a.left == b.left && a.right == b.right;
}

/** The bevelled rows of an outline, as many as it is wide: from the top and from the bottom on. */
struct OutlineEnds {
    int width = 0;
    QVector<Indent> top;
    QVector<Indent> bottom;
};

/** The border of a window as rectangles. */
struct FilledBorder {
    QRect window;
    QVector<QRect> parts;
    QRgb colour;
};

constexpr int kInsideWidths = 4;

void stroke_outline(QPainter &painter, const QRect &outline, QRgb colour, int width) {
    painter.setPen(QPen(QColor(colour), width));
    painter.drawRect(outline);
}

Indent indent_of(const QImage &sample, int y) {
    Indent indent{0, 0};
    const int last = sample.width() - 1;
    while (indent.left < last && sample.pixel(indent.left, y) == 0)
        ++indent.left;
    while (indent.right < last && sample.pixel(last - indent.right, y) == 0)
        ++indent.right;
    return indent;
}

/** Which pixels of the corners a stroke leaves out is the painter's own matter: one is painted. */
OutlineEnds painted_ends(int width) {
    const int extent = kInsideWidths * width + 1;
    QImage sample(extent, extent, QImage::Format_ARGB32_Premultiplied);
    sample.fill(Qt::transparent);
    {
        QPainter painter(&sample);
        stroke_outline(painter, border_outline(sample.rect(), width), qRgb(0, 0, 0), width);
    }
    OutlineEnds ends;
    ends.width = width;
    for (int i = 0; i < width; ++i) {
        ends.top.append(indent_of(sample, i));
        ends.bottom.append(indent_of(sample, extent - 1 - i));
    }
    return ends;
}

const OutlineEnds &outline_ends(int width) {
    static OutlineEnds latest;
    if (latest.width != width) latest = painted_ends(width);
    return latest;
}

/** Rows `step` apart from `y` on, those with the same ends as one rectangle. */
void append_rows(QVector<QRect> &parts, const QRect &window, int y, int step,
                 const QVector<Indent> &ends) {
    for (qsizetype i = 0; i < ends.size(); ++i, y += step) {
        const QRect row(QPoint(window.left() + ends[i].left, y),
                        QPoint(window.right() - ends[i].right, y));
        if (i > 0 && ends[i] == ends[i - 1]) {
            parts.last() |= row;
        } else {
            parts.append(row);
        }
    }
}

/** Whether two rectangles have a pixel in common; neither is empty. */
bool meet(const QRect &a, const QRect &b) {
    return a.left() <= b.right() && b.left() <= a.right() && a.top() <= b.bottom() &&
           b.top() <= a.bottom();
}

/** The rectangle that lies half a width around an outline. */
QRect window_of(const QRect &outline, int width) {
    return QRect(outline.x() - width / 2, outline.y() - width / 2, outline.width() + width,
                 outline.height() + width);
}

/** A stroke as rectangles within `bounds`; without parts where only a stroke will do. */
FilledBorder filled_border(const BorderStroke &stroke, int width, const QRect &bounds) {
    if (stroke.shape != BorderStroke::kOutline || width > kWidestFilledBorder) return {};
    const QRect window = window_of(stroke.outline, width);
    if (!bounds.contains(window)) return {};
    return {window, outline_parts(window, width), stroke.colour};
}

/** All strokes as rectangles; none when there is one that only a stroke will do for. */
QVector<FilledBorder> filled_borders(const BorderPicture &picture, const QRect &bounds) {
    QVector<FilledBorder> borders;
    for (const BorderStroke &stroke : picture.strokes) {
        borders.append(filled_border(stroke, picture.width, bounds));
        if (borders.last().parts.isEmpty()) return {};
    }
    return borders;
}

void fill_part(const BackingPixels &pixels, const FilledBorder &border, const QRect &dirty) {
    if (!meet(border.window, dirty)) return;
    for (const QRect &part : border.parts) {
        if (meet(part, dirty)) pixels.fill(part & dirty, border.colour);
    }
}

void paint_stroke(QPainter &painter, const BorderStroke &stroke, int width) {
    if (stroke.shape == BorderStroke::kLine) {
        painter.setPen(QPen(QColor(stroke.colour), width));
        painter.drawLines(&stroke.line, 1);
    } else {
        stroke_outline(painter, stroke.outline, stroke.colour, width);
    }
}

}  // namespace

QVector<QRect> outline_parts(const QRect &window, int width) {
    QVector<QRect> parts;
    const bool simple = width >= 1 && width <= kWidestFilledBorder &&
                        window.width() > kInsideWidths * width &&
                        window.height() > kInsideWidths * width;
    if (!simple) return parts;
    const OutlineEnds &ends = outline_ends(width);
    append_rows(parts, window, window.top(), 1, ends.top);
    append_rows(parts, window, window.bottom(), -1, ends.bottom);
    const QRect between = window.adjusted(0, width, 0, -width);
    parts.append(QRect(between.topLeft(), QSize(width, between.height())));
    parts.append(QRect(QPoint(between.right() + 1 - width, between.top()), between.bottomRight()));
    return parts;
}

/// A painter would first make a list of all stretches of a row of all dirty rectangles.
void paint_borders(QPainter &painter, const BackingPixels &pixels, const BorderPicture &picture,
                   const QRegion &dirty) {
    const QVector<FilledBorder> borders =
        pixels ? filled_borders(picture, pixels.bounds()) : QVector<FilledBorder>();
    if (borders.isEmpty()) {
        for (const BorderStroke &stroke : picture.strokes) {
            if (stroke_region(stroke, picture.width).intersects(dirty))
                paint_stroke(painter, stroke, picture.width);
        }
        return;
    }
    for (const QRect &part : dirty) {
        for (const FilledBorder &border : borders)
            fill_part(pixels, border, part);
    }
}
