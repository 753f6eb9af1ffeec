#include "label_paint.h"

#include <QPainter>
#include <algorithm>

QColor record_color(const QByteArray &name, int alpha) {
    QColor color;
    color.setNamedColor(QLatin1String(name));
    color.setAlpha(std::clamp(alpha, 0, 255));
    return color;
}

void draw_text(QPainter &painter, const QRect &rect, int alignment, const QString &text,
               const TextColors &colors) {
    if (colors.outlined) {
        painter.setPen(colors.back);
        for (const QPoint offset : {QPoint(-1, -1), QPoint(1, -1), QPoint(1, 1), QPoint(-1, 1)}) {
            painter.drawText(rect.translated(offset), alignment, text);
        }
    }
    painter.setPen(colors.fore);
    painter.drawText(rect, alignment, text);
}
