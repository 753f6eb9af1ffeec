/**
 * @file moveosd.h
 * `MoveOSDLabel`: one OSD text of a video window.
 *
 * Thread: display.
 */
#ifndef APP_GUI_MOVEOSD_H
#define APP_GUI_MOVEOSD_H

#include <QString>

#include "movelabel.h"
#include "record_codec/records.h"

class QDateTime;

/**
 * Up to three lines, head, content and tail, in the fore colour over a box or an outline of the
 * back colour. The content is the date and time (type 0), a fixed text (1 and 2) or what the source
 * is called (3). The main window places the label.
 */
class MoveOSDLabel : public MoveLabel {
    Q_OBJECT

public:
    /** @param second  kept; nothing depends on it. */
    MoveOSDLabel(QWidget *parent, bool movable, bool second);

    /**
     * Takes a record over and sets text, font and size from it.
     * @param param  null changes nothing.
     * @param url    the content of type 3.
     * @return false, with nothing done, when the record equals the label's byte for byte.
     */
    bool setOSD(const VideoOutputOSDParameter *param, const QString &url);

    /** Type 0: shows this time. */
    void updateDateTime(const QDateTime &now);
    /** Type 3: shows this name or address. */
    void updateURLInfo(const QString &url);
    /** Sets the whole text; a label of corner 1 or 3 keeps its right edge where its record says. */
    void updateText(const QString &text);

    /** Points of a font class on the cell's height; `size` counts for classes of 7 and more. */
    int getActualFontSize(int font, int size) const;

    /** Shows the label when its record is visible and it has a text, or its text comes from
     * outside. */
    bool checkIsVisible(bool show);

    /** Paints, then limits the label's largest size to the room between its position and the far
     * edges. */
    void paintEvent(QPaintEvent *event) override;

    /** Size of the text, measured once for all labels that show it in the same font. */
    QSize sizeHint() const override;

protected:
    void actualScreenChanged(const QRect &previous) override;
    void wasDragged() override { mMoved = true; }

private:
    int pointSize() const { return getActualFontSize(mRecord.font, mRecord.size); }
    void applyFontStyle();
    /** Sets the text and marks the characters that change for painting. */
    void showText(const QString &text);
    void limitToRoom();

    bool mMoved = false;  ///< a drag has moved the label at least once
    [[maybe_unused]] const bool mSecond;
    VideoOutputOSDParameter mRecord{};
};

#endif
