/**
 * @file mainwindow.h
 * The one full-screen, transparent window of the process. It owns the overlay labels, keeps a copy
 * of every parameter record that is on show, takes the bridge's events and paints the borders of
 * the video windows.
 *
 * Rectangles and points are in pixels of the window unless a name says otherwise. Content of
 * records is never trusted: an index without an entry, a window without a rectangle or an
 * arrangement without a label does nothing.
 *
 * Thread: the display thread.
 */
#ifndef APP_GUI_MAINWINDOW_H
#define APP_GUI_MAINWINDOW_H

#include <QColor>
#include <QLineF>
#include <QRect>
#include <QVector>
#include <QWidget>
#include <memory>

#include "border_geometry.h"
#include "mainwindow_debug.h"
#include "record_codec/records.h"
#include "user_split.h"
#include "wnd_split.h"

class MainWindowUI;
class UserEvent;

class MainWindow : public QWidget {
    Q_OBJECT

public:
    /** The process's window, created on the first call and never destroyed. */
    static MainWindow *instance();

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // ---- screen and window management

    /**
     * Switches the screen to the size of a resolution code (0 to 13) at 32 bits per pixel, e.g. 7
     * for 1366 x 768.
     * @return 1, also when the code is the current one; 0 for a code above 13.
     */
    unsigned changeResolution(unsigned code);
    /** Pops the context menu up at a global position; does not wait for it. */
    void showMenu(const QPoint &position);
    /** Returns 1 when mouse tracking was on, else 0. */
    int disableMouseTracking();
    void recoverMouseTracking(bool wasOn);
    /** Marks a window as the full-screen one; only where there are two windows or more. */
    void enterFullScreen(int window);
    void exitFullScreen();

    // ---- window rectangles

    /** Fills `rects`, which must hold an entry for every window of the mode. */
    void initRectVector(QVector<QRect> &rects, int mode);
    /** Rebuilds the rectangles of every valid mode. */
    void initRectVectors();
    /** Rebuilds the rectangles of one mode; nothing for an invalid one. */
    void updateRectVector(int mode);
    /** Returns 1 when `mode` is current now, 0 when it is refused. Not for the user layouts. */
    unsigned switchSplit(int mode);
    /** Rebuilds rectangles and lines of a user layout from its record; modes 26 to 29. */
    void updateUserRectVectorAndSplitLines(int mode);
    /** Rebuilds the lines of user layout 0 to 3 with the present colours. */
    void updateUserSplitLines(int layout);
    /** Moves OSD label `osd` to its record's place in the window `rect`. */
    void setContorlsGeometry(unsigned osd, const QRect &rect);
    /** Topmost window of the current mode at `point`; 0 when there is none. */
    int getWndIdx(const QPoint &point) const;

    // ---- overlay labels

    /** Text, place and visibility of OSD label `osd`. */
    void updateDisplay(unsigned osd);
    /** Text of OSD label `osd`. */
    void initDisplay(unsigned osd);
    /**
     * Lets the label decide whether it shows when its window is one of the first `windows`, else
     * hides it.
     * @return 1, or 0 for a label that was hidden or an index of none (after an error line).
     */
    int showOrHideOsd(unsigned osd, int windows);
    void dispWatermarkTxt();
    void dispWatermarkImage();
    /** Prints the dot watermark's record. */
    void dispWatermarkDot();

    // ---- events

    /** The 500 ms tick: clock texts, scrolling watermarks, the dot watermark. */
    void timerEvent(QTimerEvent *event) override;
    /** The bridge's events, see app_gui.h; a payload is freed whatever it holds. */
    void customEvent(QEvent *event) override;
    /** Borders of the windows, as far as the event's region touches them. */
    void paintEvent(QPaintEvent *event) override;
    /** Lays the watermarks out anew; the window rectangles stay as they are. */
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

    // ---- state

    /** Rectangles of a mode (0 to 34); empty for others. */
    QVector<QRect> rects(int mode) const;
    /** Border lines of user layout 0 to 3 and their colours; empty for others. */
    QVector<QLineF> userLines(int layout) const;
    QVector<QColor> userColours(int layout) const;
    /** Where the dot watermark is. */
    QPoint dotPosition() const { return mDot; }
    /** The overlay labels. */
    const MainWindowUI &labels() const { return *mUi; }

    int splitFlag = -1;           ///< current split mode
    int maxWndNum = 0;            ///< windows of the current mode
    int fullScreenWnd = -1;       ///< full-screen window, -1 for none
    bool fullScreenFlag = false;  ///< a window is full-screen
    int timerId = 0;              ///< the 500 ms timer
    int refreshTimerId = -1;      ///< a second timer for refreshes, which nothing starts

private:
    enum {
        kOsdLabels = 64,
        kVideoSources = 16,
        kStreams = 64,
    };
    /// `type` of a window's source.
    enum SourceType { kLocalInput = 0, kStreamInput = 1 };

    // The bridge's events, one handler each. A payload is freed by its handler.
    void onVideoDisplay(const UserEvent &event);
    void onWatermarkPicture(const UserEvent &event);
    void onWatermarkText(const UserEvent &event);
    void onSwitchSplit(const UserEvent &event);
    void onUserSplit(const UserEvent &event);
    void onAudioWindow(const UserEvent &event);
    void onRefresh(const UserEvent &event);
    void onWatermarkDot(const UserEvent &event);
    void onOsd(const UserEvent &event);
    void onStreams(const UserEvent &event);
    void onVideoSources(const UserEvent &event);

    void tickOsd();
    void tickWatermarks();
    void tickDot();
    void moveDot(const QPoint &position);

    // Window rectangles and borders.
    bool isUserSplit() const;
    int userWindowCount(int layout) const;
    void parseUserSplit(int layout, int limit, tagWinRect (&windows)[kSplitWindows]) const;
    void buildUserLines(int layout, tagWinRect (&windows)[kSplitWindows]);
    const QRect *currentRect(int window) const;
    BorderPicture borders() const;
    void repaintChanged(const BorderPicture &before);
    void repaintRegion(const QRegion &changed);

    // Overlay labels.
    void updateAllDisplays();
    bool sourceText(const VideoOutputOSDParameter &osd, QString *text) const;
    void showSourceOfWindow(int window);
    void layOutTexts(const QSize &screen);
    void layOutPictures(const QSize &screen);

    std::unique_ptr<MainWindowUI> mUi;
    unsigned mResolution;  // code of changeResolution()
    QVector<QRect> mRects[kSplitModes];
    QVector<QLineF> mUserLines[kUserSplits];
    QVector<QColor> mUserColours[kUserSplits];

    int mAudioWnd = -1;
    int mBorderWidth = 0;
    QRgb mVideoColour = qRgb(0, 0, 0);
    QRgb mAudioColour = qRgb(0, 0, 0);

    // What is on show, compared byte by byte with what the events bring.
    VideoOutputDisplayParameter mDisplay{};
    VideoOutputScreenSplitParameter mUserSplits[kUserSplits]{};
    VideoOutputOSDParameter mOsd[kOsdLabels]{};
    VideoOutSourceChange mSources[kVideoSources]{};
    StreamingInputStatusChange mStreams[kStreams]{};
    WatermarkOSDParameter mText{};
    WatermarkPictureParameter mPicture{};
    WatermarkDotmatrixParameter mDots{};

    unsigned mTick;  // ticks of 500 ms
    QPoint mDotOrigin;
    QPoint mDot;
};

#endif
