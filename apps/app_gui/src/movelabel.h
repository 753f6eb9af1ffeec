/**
 * @file movelabel.h
 * What the overlay labels share: a screen that they live in, the space that their records'
 * positions are given in, dragging, showing and hiding, scrolling between two edges.
 *
 * The *actual screen* is a rectangle in pixels of the parent, the *virtual screen* one in units of
 * the records. Setting the virtual screen moves nothing: it counts from the next record or actual
 * screen.
 *
 * Thread: display.
 */
#ifndef APP_GUI_MOVELABEL_H
#define APP_GUI_MOVELABEL_H

#include <QLabel>
#include <QPoint>
#include <QRect>

/** What differs between the kinds of label in what they share. */
struct MoveLabelKind {
    bool takesInvertedScreens;  ///< a screen whose right is left of its left is stored, not refused
    bool heldOnAllSides;        ///< a drag stops at all four edges, not only at the left and top
    bool startsWithVirtualSpace;  ///< the virtual screen starts as 8192 x 8192, not as the actual
                                  ///< one
};

constexpr MoveLabelKind kPictureKind = {true, false, false};
constexpr MoveLabelKind kOsdKind = {false, true, false};
constexpr MoveLabelKind kWatermarkTextKind = {false, false, true};

/**
 * While it lives, what is done to the widget marks none of its pixels for painting. Whoever holds
 * the updates marks those that differ.
 */
class HeldUpdates {
public:
    explicit HeldUpdates(QWidget &widget) : mWidget(widget), mEnabled(widget.updatesEnabled()) {
        hold(true);
    }
    ~HeldUpdates() { hold(false); }
    HeldUpdates(const HeldUpdates &) = delete;
    HeldUpdates &operator=(const HeldUpdates &) = delete;

private:
    // Not setUpdatesEnabled(), which marks the whole widget when it enables them again.
    void hold(bool held) {
        if (mEnabled) mWidget.setAttribute(Qt::WA_UpdatesDisabled, held);
    }

    QWidget &mWidget;
    const bool mEnabled;
};

/** A label that stays in its actual screen. Its text is plain, never markup. */
class MoveLabel : public QLabel {
public:
    /** Stores the space of the record's position. False, with nothing done, for a refused one. */
    bool setVirtualScreen(const QRect &screen);
    /** Stores the label's screen and, when it is another one, lays the label out for it. */
    bool setActualScreen(const QRect &screen);
    /** Moves the label to `wanted` as far as the edges allow. */
    void moveInValidRegion(const QPoint &wanted);

    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

protected:
    bool event(QEvent *event) override;

    /** The actual screen starts as the parent's, or as 1920 x 1080 without a parent. */
    MoveLabel(QWidget *parent, bool movable, const MoveLabelKind &kind);

    /** The actual screen is no longer `previous`. */
    virtual void actualScreenChanged(const QRect &previous) = 0;
    /** A drag has moved the label. */
    virtual void wasDragged() {}

    const QRect &actualScreen() const { return mActualScreen; }
    const QRect &virtualScreen() const { return mVirtualScreen; }

    /** Shows or hides the label; returns `shown`. */
    bool setShown(bool shown);
    /** From now on the label scrolls right or down. */
    void scrollForward() { mForward = true; }
    /** Moves the label one step; it turns at the edges of the actual screen. */
    void scroll(int direction, int step);
    /** The style sheet of a text of `points`, bold or normal. The same one again costs nothing. */
    void setFontStyle(bool bold, int points);
    /** The font that the text is painted with. */
    QFont paintFont(bool bold, int points) const;

private:
    const MoveLabelKind mKind;
    bool mForward = true;  ///< sense of the next scroll step; used by the watermark labels
    const bool mMovable;
    bool mDragging = false;
    QPoint mPressPosition;  ///< of the last left press, in pixels of the label
    QRect mActualScreen;
    QRect mVirtualScreen;
};

#endif
