#include "font_memory.h"

#include <QFont>
#include <QHashFunctions>

#include "label_paint.h"
#include "label_picture.h"
#include "window_server/qws_fonts.h"

namespace {

/// A loaded font: its tables, sizes and the index of its glyphs.
constexpr qint64 kDrawingFont = 16 * 1024;
/// A family that is none: the list of the families that stand in for it.
constexpr qint64 kMeasuringFont = 4 * 1024;
/// What belongs to a glyph besides its pixels.
constexpr qint64 kGlyph = 128;

/// A sign that no text holds, for the font itself.
constexpr uint kTheFont = 0xFFFFFFFF;

void drop_when_exhausted(FontMemory &memory) {
    if (!memory.isExhausted()) return;
    forget_placed_texts();
    forget_label_pictures();
    qws::dropFontCaches();
    memory.clear();
}

FontMemory &font_memory() {
    static FontMemory memory;
    return memory;
}

}  // namespace

bool FontMemory::isNew(size_t font, uint sign) {
    const quint64 key = (quint64{static_cast<quint32>(font)} << 32) | sign;
    const auto before = mKnown.size();
    mKnown.insert(key);
    return mKnown.size() != before;
}

void FontMemory::noteDrawn(const QString &text, const QFont &font, int angle) {
    const size_t key = qHashMulti(0, font.family(), font.pointSize(), font.weight(), angle);
    if (isNew(key, kTheFont)) mBytes += kDrawingFont;
    const qint64 pixels = qint64{font.pointSize()} * font.pointSize();
    for (const QChar sign : text) {
        if (isNew(key, sign.unicode())) mBytes += kGlyph + pixels;
    }
}

void FontMemory::noteMeasured(const QFont &font) {
    if (isNew(qHashMulti(0, font.family(), font.pointSize()), kTheFont)) mBytes += kMeasuringFont;
}

void FontMemory::clear() {
    mKnown.clear();
    mBytes = 0;
}

void note_drawn_text(const QString &text, const QFont &font, int angle) {
    font_memory().noteDrawn(text, font, angle);
    drop_when_exhausted(font_memory());
}

void note_measuring_font(const QFont &font) {
    font_memory().noteMeasured(font);
    drop_when_exhausted(font_memory());
}
