/**
 * @file font_memory.h
 * Bounds what the toolkit keeps of the fonts and glyphs of the overlay texts: it never forgets a
 * glyph of a font in use, and texts, sizes and angles come from outside for years.
 *
 * Thread: display.
 */
#ifndef APP_GUI_FONT_MEMORY_H
#define APP_GUI_FONT_MEMORY_H

#include <QSet>
#include <QString>

class QFont;

/** An estimate, from above, of what showing texts makes the toolkit keep. */
class FontMemory {
public:
    /// Bytes. Many times what a screen full of clocks needs.
    static constexpr qint64 kBudget = 1024 * 1024;

    /** Notes that a text is drawn in a font, turned by so many degrees. */
    void noteDrawn(const QString &text, const QFont &font, int angle = 0);
    /** Notes that texts are measured in a font. */
    void noteMeasured(const QFont &font);

    /** Bytes noted since the last clear(), each sign of each font and angle once. */
    qint64 bytes() const { return mBytes; }
    bool isExhausted() const { return mBytes > kBudget; }
    void clear();

private:
    bool isNew(size_t font, uint sign);

    QSet<quint64> mKnown;  ///< a hash of the font and the angle, and a sign
    qint64 mBytes = 0;
};

/**
 * Tells that a label is about to show a text in a font; drops the toolkit's caches when too much
 * has come together. Not for use while something is being painted.
 */
void note_drawn_text(const QString &text, const QFont &font, int angle = 0);
/** The same for a font that texts are measured in. */
void note_measuring_font(const QFont &font);

#endif
