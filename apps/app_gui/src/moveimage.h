/**
 * @file moveimage.h
 * The overlay labels: `MoveImageLabel`, the watermark picture, and with it `MoveOSDLabel`, the text
 * of a window, and `MoveWatermarkLabel`, the watermark text. What they share is in movelabel.h.
 *
 * Thread: display.
 */
#ifndef APP_GUI_MOVEIMAGE_H
#define APP_GUI_MOVEIMAGE_H

#include "movelabel.h"
#include "moveosd.h"
#include "movewatermark.h"
#include "record_codec/records.h"

/** The watermark picture in one cell of its arrangement. */
class MoveImageLabel : public MoveLabel {
    Q_OBJECT

public:
    /** @param second  kept; nothing depends on it. */
    MoveImageLabel(QWidget *parent, bool movable, bool second);

    /**
     * Takes a record over, builds the picture and moves the label to the record's position.
     * @param index  not used.
     * @return true; false, with nothing done, for null.
     */
    bool setImage(const WatermarkPictureParameter *param, int index);

    /**
     * Builds the shown picture from the record's file for the cell and moves the label to the
     * record's position. Changes nothing when the record is not visible or names no file; likewise,
     * after an error line, when the file cannot be loaded. The file is read anew each time, as it
     * may have been replaced.
     */
    void creatRealImageResize();

    /** Shows the label when its record is visible, `show` is set and it has a picture. */
    bool checkIsVisible(bool show);

    /** Moves a visible, scrolling picture one step on the ticks that its speed chooses. */
    void checkAndMove(int tick);

protected:
    void actualScreenChanged(const QRect &previous) override;

private:
    void showPicture(const QPixmap &picture);

    [[maybe_unused]] const bool mSecond;
    WatermarkPictureParameter mRecord{};
};

#endif
