/**
 * @file label_paint.h
 * How overlay texts are coloured and drawn.
 *
 * Thread: display.
 */
#ifndef APP_GUI_LABEL_PAINT_H
#define APP_GUI_LABEL_PAINT_H

#include <QByteArray>
#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>

#include "record_text.h"

class QPainter;

/** Colour of a name such as "#RRGGBB" (Latin-1) with an alpha, cut to 0 to 255; black for no
 * colour. */
QColor record_color(const QByteArray &name, int alpha);

/** The colours of a text. */
struct TextColors {
    QColor fore;
    QColor back;
    bool outlined;  ///< the back colour is drawn around the characters, not as a box below them
};

/** The colours of a record of texts. */
template <typename Record>
TextColors record_colors(const Record &record) {
    return {record_color(record_bytes(record.forecolor), record.forealpha),
            record_color(record_bytes(record.backcolor), record.backalpha), record.stroke != 0};
}

/**
 * Draws the text, first four times in the back colour, a pixel off in each diagonal direction,
 * where it is outlined. The box of other texts is the caller's.
 * @param alignment  Qt::Alignment of the lines in `rect`.
 * @param visible    what of the painter's device is seen or kept, before the painter's own
 *                   transformation; lines that lie outside need not be drawn.
 */
void draw_text(QPainter &painter, const QRect &rect, int alignment, const QString &text,
               const TextColors &colors, const QRect &visible);

/** Frees the texts whose characters draw_text() keeps placed. */
void forget_placed_texts();

/**
 * What of `rect` draws otherwise when a text at its top left, outlined or not, becomes another one;
 * where that is not known, all of it. A clock's second hand changes two characters of many.
 */
QRect changed_part(const QRect &rect, const QString &before, const QString &after,
                   const QFont &font);

#endif
