/**
 * @file movewatermark.h
 * `MoveWatermarkLabel`: the watermark text in one cell of its arrangement.
 *
 * Thread: display.
 */
#ifndef APP_GUI_MOVEWATERMARK_H
#define APP_GUI_MOVEWATERMARK_H

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QRegion>
#include <QSharedPointer>
#include <QString>

#include "movelabel.h"
#include "record_codec/records.h"
#include "watermark_text.h"

class QDateTime;
class QPainter;

/**
 * The fixed text between two slots that hold a text, the date and time or the host's addresses,
 * wrapped to a part of the cell, centred in the fore colour over a box or an outline of the back
 * colour, perhaps turned.
 */
class MoveWatermarkLabel : public MoveLabel {
    Q_OBJECT

public:
    MoveWatermarkLabel(QWidget *parent, bool movable);

    /**
     * Takes a record over, builds the text and moves the label to the record's position.
     * @param index  not used.
     * @return true; false, with nothing done, for null.
     */
    bool setOSD(const WatermarkOSDParameter *param, int index);

    /** Replaces the whole text by this time in the format of the first slot that is of type 1, if
     * there is one, and fits the label to its text. */
    void updateDateTime(const QDateTime &now);
    /** Replaces the whole text (UTF-8; null counts as empty). */
    void updateText(const char *text);

    /** Points of a font class on the screen's height; `size` counts for classes of 7 and more. */
    int getActualFontSize(int font, int size) const;

    /** Builds text and size from the record, the clock and the host's addresses. */
    void creatRealTxtResize();

    /** Shows the label when its record is visible and `show` is set. */
    bool checkIsVisible(bool show);

    /** On the ticks that the record's speed chooses: shows the clock anew and moves a scrolling
     * text. */
    void checkAndMove(int tick);

    void paintEvent(QPaintEvent *event) override;
    void hideEvent(QHideEvent *event) override;

protected:
    void actualScreenChanged(const QRect &previous) override;

private:
    /** What a layout was made from, and what it gave. */
    struct Layout {
        WatermarkOSDParameter record{};
        QRect screen;
        QString first;  ///< the slots' texts before wrapping
        QString second;
        QString text;
        QSize size;
        QFont font;
    };
    /** The font that texts are measured in. */
    struct MeasuringFont {
        QString family;
        int points = 0;
    };
    /** What a turned text was painted from, and the label's pixels with it. */
    struct Rendition {
        QString text;
        QFont font;
        WatermarkOSDParameter record{};
        QImage image;
        QRegion painted;  ///< holds all pixels of the image that are not transparent
    };

    int pointSize() const { return getActualFontSize(mRecord.font, mRecord.size); }
    void showText(const QString &text);
    /** Marks the label's place for painting, which stays where it is when the label moves on. */
    void updatePlace();
    bool isLaidOut(const QString &first, const QString &second) const;
    void layOut(const QString &first, const QString &second);
    void measureIn(const QString &family, int points);
    QString wrappedSlot(const QString &text, int type, int limit) const;
    void wrapByMeasure(const QString &contet, int limit);
    /** Moves the label one step. Of a rendered text only what is not transparent is painted anew:
     * turned, it leaves most of the label's box empty. */
    void scrollText();
    /** Whether the text is turned and scrolls where an image of it gives the pixels that painting
     * it gives. */
    bool isRendered() const;
    bool isRenditionCurrent() const;
    bool isRenditionOfThis(const Rendition &rendition) const;
    /**
     * Paints a turned text once into an image, which a scroll step then only copies; the cells of
     * an arrangement show the same one. For texts that
     * scroll: where a turned glyph's edge falls between pixels, a few may be rounded otherwise than
     * in place.
     */
    void renderTurned();
    void paintText(QPainter &painter, const QRect &visible) const;

    WatermarkOSDParameter mRecord{};
    MeasuringFont mMeasuredIn;
    QFontMetrics mMetrics;
    TextMeasure mMeasure;
    Layout mLayout;
    QSharedPointer<const Rendition> mRendition;  ///< null while hidden or not needed
};

#endif
