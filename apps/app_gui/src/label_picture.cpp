#include "label_picture.h"

#include <QCache>
#include <QCoreApplication>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <algorithm>

#include "backing_pixels.h"

namespace {

/// From so many paintings on a picture pays for itself.
constexpr int kPaintingsBefore = 3;

/// Bytes: some thirty texts of usual size, each with a picture of its own. Beyond it those are
/// forgotten that were not painted for longest.
constexpr qsizetype kBudget = 1024 * 1024;

/// What an entry counts besides its pixels: so that a few hundred texts are remembered at most, and
/// a clock, which never shows one again, does not fill the memory with them.
constexpr qsizetype kEntry = kBudget / 256;

/** All that the pixels of a label depend on. */
struct Appearance {
    QString text;
    QFont font;
    QSize size;
    quint64 fore;  ///< with 16 bits a channel, as names of colours have them
    quint64 back;
    bool outlined;
    Qt::LayoutDirection direction;
};

bool operator==(const Appearance &a, const Appearance &b) {
    return a.size == b.size && a.fore == b.fore && a.back == b.back && a.outlined == b.outlined &&
           a.direction == b.direction && a.text == b.text && a.font == b.font;
}

size_t qHash(const Appearance &label, size_t seed) {
    return qHashMulti(seed, label.text, label.size.width(), label.size.height(), label.fore,
                      label.back, label.outlined);
}

struct Picture {
    QImage image;   ///< null where there is none
    QRect painted;  ///< holds all of its pixels that are not transparent
};

struct Known {
    int paintings = 0;
    Picture picture;  ///< none before kPaintingsBefore
};

using Pictures = QCache<Appearance, Known>;

/** They hold fonts, which end before the application object does. */
Pictures &label_pictures() {
    static Pictures pictures(kBudget);
    static const bool clearedAtEnd = [] {
        qAddPostRoutine(forget_label_pictures);
        return true;
    }();
    Q_UNUSED(clearedAtEnd);
    return pictures;
}

void paint_directly(QPainter &painter, const QRect &rect, const QString &text,
                    const TextColors &colors) {
    if (!colors.outlined && colors.back.alpha() != 0) painter.fillRect(rect, colors.back);
    draw_text(painter, rect, Qt::AlignLeft | Qt::AlignTop, text, colors, rect);
}

bool is_empty_row(const QImage &image, int y) {
    const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
    return std::all_of(row, row + image.width(), [](QRgb pixel) { return pixel == 0; });
}

/** The rows from the first to the last that is not empty. */
QRect painted_rows(const QImage &image) {
    int top = 0;
    int bottom = image.height() - 1;
    while (top <= bottom && is_empty_row(image, top))
        ++top;
    while (bottom > top && is_empty_row(image, bottom))
        --bottom;
    return {QPoint(0, top), QPoint(image.width() - 1, bottom)};
}

Picture picture_of(const QPainter &painter, const QSize &size, const QString &text,
                   const TextColors &colors) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return {};
    image.fill(Qt::transparent);
    {
        QPainter painting(&image);
        painting.setRenderHints(painter.renderHints());
        painting.setLayoutDirection(painter.layoutDirection());
        painting.setFont(painter.font());
        paint_directly(painting, QRect(QPoint(), size), text, colors);
    }
    return {image, painted_rows(image)};
}

bool can_have_picture(const QSize &size) {
    return !size.isEmpty() && qint64{size.width()} * size.height() * 4 <= kBudget / 4;
}

/** The picture of a label that is about to be painted; none where it is not worth one yet. */
Picture known_picture(const QPainter &painter, const QSize &size, const QString &text,
                      const TextColors &colors) {
    const Appearance label{text,
                           painter.font(),
                           size,
                           colors.fore.rgba64(),
                           colors.back.rgba64(),
                           colors.outlined,
                           painter.layoutDirection()};
    Known *known = label_pictures().object(label);
    if (known == nullptr) {
        known = new Known;
        if (!label_pictures().insert(label, known, kEntry)) return {};
    }
    if (!known->picture.image.isNull() || ++known->paintings < kPaintingsBefore)
        return known->picture;
    const Picture picture = picture_of(painter, size, text, colors);
    label_pictures().insert(label, new Known{0, picture}, kEntry + picture.image.sizeInBytes());
    return picture;
}

/** Puts the picture beside what is there; returns what of the dirty parts is not painted so. */
QRegion rest_of_picture(const BackingPixels &pixels, const Picture &picture, const QPoint &corner,
                        const QRegion &dirty) {
    const QRect painted = picture.painted.translated(corner) & pixels.bounds();
    QRegion rest;
    for (const QRect &part : dirty) {
        const QRect shown = part & painted;
        if (!shown.isEmpty()) rest += pixels.add(picture.image, corner, shown);
    }
    return rest;
}

}  // namespace

void paint_label(QPainter &painter, const BackingPixels &pixels, const QRect &rect,
                 const QRegion &dirty, const QString &text, const TextColors &colors) {
    const Picture picture = pixels && can_have_picture(rect.size())
                                ? known_picture(painter, rect.size(), text, colors)
                                : Picture();
    if (!picture.image.isNull()) {
        const QRegion rest = rest_of_picture(pixels, picture, rect.topLeft(), dirty);
        if (rest.isEmpty()) return;
        painter.setClipRegion(rest);
    }
    paint_directly(painter, rect, text, colors);
}

void forget_label_pictures() {
    label_pictures().clear();
}
