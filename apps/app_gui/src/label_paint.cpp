#include "label_paint.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHash>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

constexpr int kPenWidth = 1;

constexpr Qt::Alignment kTopLeft = Qt::AlignLeft | Qt::AlignTop;

/** Texts that need no more than characters side by side and lines below each other. */
bool is_simple(const QString &text) {
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return character == QLatin1Char('\n') ||
               (character >= QLatin1Char(' ') && character <= QLatin1Char('~'));
    });
}

/** One drawn sign of a text. */
struct Glyph {
    quint32 index;  ///< in the text's font
    QPointF position;
    QRectF box;  ///< what it covers, from the text's top left corner on
};

bool operator==(const Glyph &a, const Glyph &b) {
    // Exactly equal: signs a fraction of a pixel apart differ.
    return a.index == b.index && a.position.x() == b.position.x() &&
           a.position.y() == b.position.y();
}

constexpr qreal kNoLimit = 1 << 24;

/** A text whose characters are placed, from its top left corner on. */
struct PlacedText {
    PlacedText(const QString &text, const QFont &font) : layout(text, font) {}

    QTextLayout layout;
    QSizeF size;
    std::vector<Glyph> glyphs;  ///< none where they come from several fonts
};

std::vector<Glyph> glyphs_of(const QTextLayout &layout) {
    std::vector<Glyph> glyphs;
    QRawFont font;
    for (const QGlyphRun &run : layout.glyphRuns()) {
        if (!glyphs.empty() && run.rawFont() != font) return {};
        font = run.rawFont();
        const QList<quint32> indexes = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (int i = 0; i < indexes.size(); ++i) {
            const QRectF box = font.boundingRect(indexes[i]).translated(positions[i]);
            glyphs.push_back({indexes[i], positions[i], box});
        }
    }
    return glyphs;
}

/** As QPainter::drawText() places the lines of a text: each begins on a whole pixel, and none below
 * one that reaches `room`. */
std::unique_ptr<PlacedText> placed(QString text, const QFont &font, qreal room) {
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
        // Not height(), which is rounded up: the middle of a text depends on it.
        height += line.ascent() + line.descent();
        width = std::max(width, line.naturalTextWidth());
        if (height >= room) break;
    }
    result->layout.endLayout();
    result->size = QSizeF(width, height);
    result->glyphs = glyphs_of(result->layout);
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
        return *mTexts.emplace(key, placed(text, font, kNoLimit)).first->second;
    }
    void clear() { mTexts.clear(); }

private:
    using Key = std::pair<QString, QFont>;
    struct Hash {
        size_t operator()(const Key &key) const { return qHash(key); }
    };
    /// Twice the number of labels, so that those of one refresh fit.
    static constexpr size_t kMost = 128;
    std::unordered_map<Key, std::unique_ptr<PlacedText>, Hash> mTexts;
};

/** They hold fonts, which end before the application object does. */
PlacedTexts &placed_texts() {
    static PlacedTexts texts;
    static const bool clearedAtEnd = [] {
        qAddPostRoutine([] { placed_texts().clear(); });
        return true;
    }();
    Q_UNUSED(clearedAtEnd);
    return texts;
}

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

/// From so many lines on a turned text is drawn line by line.
constexpr int kManyLines = 32;

/** What the characters of a line cover, from the text's top left corner on. */
QRectF inkOf(const QTextLine &line) {
    // Edges are made smooth, and begin on a fraction of a pixel.
    constexpr qreal kBeyond = 2;
    QRectF ink;
    for (const QGlyphRun &run : line.glyphRuns()) {
        const QRectF box = run.boundingRect();
        // Without a font there are boxes, which nobody tells the size of.
        ink |= box.isEmpty() ? line.naturalTextRect() : box;
    }
    return ink.adjusted(-kBeyond, -kBeyond, kBeyond, kBeyond);
}

/** QPainter::drawText() in the middle of `rect`; only the lines that are to be seen. */
void drawLineByLine(QPainter &painter, const QRect &rect, const PlacedText &text,
                    const QRect &visible) {
    const bool isCut = text.size.width() > rect.width() || text.size.height() > rect.height();
    if (isCut) {
        painter.save();
        painter.setClipRect(rect, Qt::IntersectClip);
    }
    const qreal top = rect.y() + (rect.height() - text.size.height()) / 2;
    const QRectF seen = painter.worldTransform().inverted().mapRect(QRectF(visible));
    for (int i = 0; i < text.layout.lineCount(); ++i) {
        const QTextLine line = text.layout.lineAt(i);
        const QPointF corner(rect.x() + (rect.width() - line.horizontalAdvance()) / 2, top);
        if (inkOf(line).translated(corner).intersects(seen)) line.draw(&painter, corner);
    }
    if (isCut) painter.restore();
}

bool isTurned(const QPainter &painter) {
    return painter.worldTransform().type() > QTransform::TxScale;
}

/** Whether the painter, for each piece of a text, switches to smooth edges and back: where it is
 * turned by no quarter. */
bool smoothsPieces(const QPainter &painter) {
    const QTransform &turn = painter.worldTransform();
    const bool quarter = (qFuzzyIsNull(turn.m11()) && qFuzzyIsNull(turn.m22())) ||
                         (qFuzzyIsNull(turn.m12()) && qFuzzyIsNull(turn.m21()));
    return isTurned(painter) && !quarter;
}

/** Smooth edges for a whole text: each switch makes the painter work out again which pixels of
 * all rows a turned clip holds, twice for each line. */
class SmoothEdges {
public:
    explicit SmoothEdges(QPainter &painter)
        : mPainter(painter),
          mSwitched(smoothsPieces(painter) && !painter.testRenderHint(QPainter::Antialiasing)) {
        if (mSwitched) mPainter.setRenderHint(QPainter::Antialiasing);
    }
    SmoothEdges(const SmoothEdges &) = delete;
    SmoothEdges &operator=(const SmoothEdges &) = delete;
    ~SmoothEdges() {
        if (mSwitched) mPainter.setRenderHint(QPainter::Antialiasing, false);
    }

private:
    QPainter &mPainter;
    bool mSwitched;
};

/** The characters that QPainter::drawText() shows, which knows no tabs. Of several versions of a
 * text, with U+009C between them, it takes one that has room: so long a text has none, and it is
 * the last. */
QString drawnCharacters(const QString &text) {
    QString drawn = text.section(QChar(0x9C), -1);
    drawn.replace(QLatin1Char('\r'), QLatin1Char(' '));
    drawn.replace(QLatin1Char('\t'), QLatin1Char(' '));
    return drawn;
}

void drawAligned(QPainter &painter, const QRect &rect, int alignment, const QString &text,
                 const QRect &visible) {
    const bool fromLeft = painter.layoutDirection() == Qt::LeftToRight;
    if (alignment == static_cast<int>(kTopLeft) && fromLeft && is_simple(text)) {
        drawPlaced(painter, rect, placed_texts().of(text, painter.font()));
    } else if (alignment == static_cast<int>(Qt::AlignCenter) && fromLeft && isTurned(painter) &&
               text.count(QLatin1Char('\n')) >= kManyLines) {
        const auto lines = placed(drawnCharacters(text), painter.font(), rect.height());
        drawLineByLine(painter, rect, *lines, visible);
    } else {
        painter.drawText(rect, alignment, text);
    }
}

/** The columns that signs cover which only one of the texts has there; `all` when they are not
 * known. */
QRect changed_columns(const PlacedText &before, const PlacedText &after, const QRect &all) {
    if (before.glyphs.empty() || after.glyphs.empty()) return all;
    const auto head = std::mismatch(before.glyphs.begin(), before.glyphs.end(),
                                    after.glyphs.begin(), after.glyphs.end());
    const auto tail = std::mismatch(before.glyphs.rbegin(), std::make_reverse_iterator(head.first),
                                    after.glyphs.rbegin(), std::make_reverse_iterator(head.second));
    QRectF changed;
    for (auto glyph = head.first; glyph != tail.first.base(); ++glyph)
        changed |= glyph->box;
    for (auto glyph = head.second; glyph != tail.second.base(); ++glyph)
        changed |= glyph->box;
    if (changed.isEmpty()) return all;
    // Outlines, and edges that are rounded to whole pixels and made smooth.
    constexpr int kBeyond = kPenWidth + 2;
    const QRect columns = changed.toAlignedRect().adjusted(-kBeyond, 0, kBeyond, 0);
    return QRect(all.left() + columns.left(), all.top(), columns.width(), all.height()) & all;
}

}  // namespace

QColor record_color(const QByteArray &name, int alpha) {
    QColor color;
    color.setNamedColor(QLatin1String(name));
    color.setAlpha(std::clamp(alpha, 0, 255));
    return color;
}

void draw_text(QPainter &painter, const QRect &rect, int alignment, const QString &text,
               const TextColors &colors, const QRect &visible) {
    const SmoothEdges smooth(painter);
    // Pens, because a painter that is handed a colour of no name drops its alpha.
    if (colors.outlined && colors.back.alpha() != 0) {
        painter.setPen(QPen(colors.back, kPenWidth));
        for (const QPoint offset : {QPoint(-1, -1), QPoint(1, -1), QPoint(1, 1), QPoint(-1, 1)}) {
            drawAligned(painter, rect.translated(offset), alignment, text, visible);
        }
    }
    painter.setPen(QPen(colors.fore, kPenWidth));
    drawAligned(painter, rect, alignment, text, visible);
}

void forget_placed_texts() {
    placed_texts().clear();
}

QRect changed_part(const QRect &rect, const QString &before, const QString &after,
                   const QFont &font) {
    if (!is_simple(before) || !is_simple(after)) return rect;
    PlacedTexts &texts = placed_texts();
    texts.of(before, font);  // both are to be held at once
    const PlacedText &shown = texts.of(after, font);
    return changed_columns(texts.of(before, font), shown, rect);
}
