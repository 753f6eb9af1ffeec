#include "label_paint.h"

#include <QFontMetricsF>
#include <QHash>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <utility>

namespace {

constexpr int kPenWidth = 1;

constexpr Qt::Alignment kTopLeft = Qt::AlignLeft | Qt::AlignTop;

/** Texts that need no more than characters side by side and lines below each other. */
bool isPrintableAscii(const QString &text) {
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return character == QLatin1Char('\n') ||
               (character >= QLatin1Char(' ') && character <= QLatin1Char('~'));
    });
}

/** A text whose characters are placed, from its top left corner on. */
struct PlacedText {
    PlacedText(const QString &text, const QFont &font) : layout(text, font) {}

    QTextLayout layout;
    QSizeF size;
};

/** As QPainter::drawText() places the lines of a text: each begins on a whole pixel. */
std::unique_ptr<PlacedText> placed(QString text, const QFont &font) {
    constexpr qreal kNoLimit = 1 << 24;
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    auto result = std::make_unique<PlacedText>(text, font);
    QTextOption option(Qt::AlignLeft);
    option.setTextDirection(Qt::LeftToRight);
    result->layout.setTextOption(option);
    result->layout.setCacheEnabled(true);
    const qreal leading = QFontMetricsF(font).leading();
    qreal width = 0;
    qreal height = -leading;
    result->layout.beginLayout();
    for (QTextLine line = result->layout.createLine(); line.isValid();
         line = result->layout.createLine()) {
        line.setLineWidth(kNoLimit);
        height = std::ceil(height + leading);
        line.setPosition(QPointF(0, height));
        height += line.height();
        width = std::max(width, line.horizontalAdvance());
    }
    result->layout.endLayout();
    result->size = QSizeF(width, height);
    return result;
}

/**
 * The placed texts that are on show: placing the characters takes longer than painting them, an
 * outlined text is painted five times and most windows show the same clock.
 */
class PlacedTexts {
public:
    const PlacedText &of(const QString &text, const QFont &font) {
        const Key key(text, font);
        const auto known = mTexts.find(key);
        if (known != mTexts.end()) return *known->second;
        if (mTexts.size() >= kMost) mTexts.clear();
        return *mTexts.emplace(key, placed(text, font)).first->second;
    }

private:
    using Key = std::pair<QString, QFont>;
    struct Hash {
        size_t operator()(const Key &key) const { return qHash(key); }
    };
    /// Twice the number of labels, so that those of one refresh fit.
    static constexpr size_t kMost = 128;
    std::unordered_map<Key, std::unique_ptr<PlacedText>, Hash> mTexts;
};

/** QPainter::drawText() at the top left of `rect`, with what is already placed. */
void drawPlaced(QPainter &painter, const QRect &rect, const PlacedText &text) {
    const bool fits = QRectF(rect).contains(QRectF(rect.topLeft(), text.size));
    if (!fits) {
        painter.save();
        painter.setClipRect(rect, Qt::IntersectClip);
    }
    for (int i = 0; i < text.layout.lineCount(); ++i)
        text.layout.lineAt(i).draw(&painter, rect.topLeft());
    if (!fits) painter.restore();
}

void drawAligned(QPainter &painter, const QRect &rect, int alignment, const QString &text) {
    static PlacedTexts texts;
    const bool simple = alignment == static_cast<int>(kTopLeft) && !text.isEmpty() &&
                        painter.layoutDirection() == Qt::LeftToRight && isPrintableAscii(text);
    if (simple) {
        drawPlaced(painter, rect, texts.of(text, painter.font()));
    } else {
        painter.drawText(rect, alignment, text);
    }
}

}  // namespace

QColor record_color(const QByteArray &name, int alpha) {
    QColor color;
    color.setNamedColor(QLatin1String(name));
    color.setAlpha(std::clamp(alpha, 0, 255));
    return color;
}

void draw_text(QPainter &painter, const QRect &rect, int alignment, const QString &text,
               const TextColors &colors) {
    // Pens, because a painter that is handed a colour of no name drops its alpha.
    if (colors.outlined) {
        painter.setPen(QPen(colors.back, kPenWidth));
        for (const QPoint offset : {QPoint(-1, -1), QPoint(1, -1), QPoint(1, 1), QPoint(-1, 1)}) {
            drawAligned(painter, rect.translated(offset), alignment, text);
        }
    }
    painter.setPen(QPen(colors.fore, kPenWidth));
    drawAligned(painter, rect, alignment, text);
}
