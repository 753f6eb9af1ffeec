/**
 * @file watermark_text.h
 * How the watermark's text is put together and wrapped. Pure functions over texts and widths.
 *
 * Widths are in pixels. A text is measured once, by "A" for characters of ASCII and one ideograph
 * for CJK characters, and wrapped by these two widths.
 */
#ifndef APP_GUI_WATERMARK_TEXT_H
#define APP_GUI_WATERMARK_TEXT_H

#include <QRect>
#include <QString>

/** Kinds of a slot's text; others give no line. */
enum WatermarkSlot {
    kSlotText = 0,      ///< as it is
    kSlotDateTime = 1,  ///< the format of date and time
    kSlotAddresses = 2  ///< a text in which "MAC" and "IP" stand for the host's addresses
};

/** Measures of the font that wrapping is judged by. */
struct TextMeasure {
    int latin = 0;      ///< width of "A"
    int ideograph = 0;  ///< width of one CJK ideograph
    int lineHeight = 0;
};

/** Width to wrap at in a cell: 3/4 of the cell in a 3 x 3 arrangement, 2/3 in 4 x 4, else 1/2. */
int wrap_width(const QRect &cell, int arrangement);

/**
 * `text` in two lines when it is too wide for one: the first as long as "A" fits into `limit`.
 * @param width  of the text.
 *
 * Kept: a text of fewer, wider characters is filled up with blanks to that length.
 */
QString wrapped_once(const QString &text, int width, int limit, const TextMeasure &measure);

/** `text` with every blank a new line when it is too wide for one. */
QString wrapped_at_blanks(const QString &text, int width, int limit, const TextMeasure &measure);

/** The parts, each on lines of its own; an empty one adds nothing. */
QString joined_lines(const QString &first, const QString &contet, const QString &second);

/** A text wrapped by the widths of its characters. */
struct MeasuredText {
    QString text;
    int lines;
    bool wide;  ///< a CJK ideograph is among the characters
};

/**
 * `label` with a new line after each character of `contet` with which the line passes `limit`. A
 * character that is neither printable ASCII nor CJK counts what the one before it did.
 *
 * Kept: places are counted within `contet`, so that with a first slot the breaks land as many
 * characters into the whole text, and breaks already made do not move the later ones.
 */
MeasuredText wrapped_by_measure(const QString &label, const QString &contet, int limit,
                                const TextMeasure &measure);

/** Height of a label turned by `angle` degrees (not a multiple of 360) that keeps its width. */
int turned_height(const QSize &label, int angle);

#endif
