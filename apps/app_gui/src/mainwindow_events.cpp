// What the main window does with the bridge's events and with its 500 ms tick.

#include <QDateTime>
#include <QTimerEvent>
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "app_gui.h"
#include "basewidget.h"
#include "mainwindow.h"
#include "window_geometry.h"

namespace {

constexpr int kPeriodicRefresh = 2;  // reason of gui_refresh_screen()
constexpr int kDateTimeKind = 0;     // content kind of an OSD entry

struct FreeBlock {
    void operator()(void *block) const { std::free(block); }
};

/// The records that an event carries; freed with this object.
template <class Record>
class Payload {
public:
    explicit Payload(const UserEvent &event)
        : records(reinterpret_cast<Record *>(static_cast<uintptr_t>(event.data))) {}

    bool empty() const { return records == nullptr; }
    const Record &operator[](qint64 i) const { return records.get()[i]; }

private:
    std::unique_ptr<Record, FreeBlock> records;
};

template <class Record>
bool same_bytes(const Record &a, const Record &b) {
    return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

/// Makes `copy` the new record; false when it is that already.
template <class Record>
bool take(Record &copy, const Record &record) {
    if (same_bytes(copy, record)) {
        return false;
    }
    std::memcpy(&copy, &record, sizeof(Record));
    return true;
}

/// The colour that a text names; a part that it does not name is that of `present`.
template <size_t kSize>
QRgb border_colour(const char (&field)[kSize], QRgb present) {
    char text[kSize + 1] = {};  // the record's may lack its NUL
    std::memcpy(text, field, kSize);
    int r = qRed(present);
    int g = qGreen(present);
    int b = qBlue(present);
    getBorderCorlor(text, &r, &g, &b);
    return qRgb(r, g, b);
}

/**
 * Calls `apply(index, record)` for the records of a run. A single record may carry any index, those
 * of two or more count from 0; the run ends, with a debug line, at the first that does not.
 */
template <class Record, class Index, class Apply>
void for_each_in_run(const Payload<Record> &records, qint64 count, const char *fault, Index indexOf,
                     Apply apply) {
    for (qint64 i = 0; i < count; ++i) {
        const int index = indexOf(records[i]);
        if (count > 1 && index != i) {
            MAINWINDOW_DEBUG("%s %d,%d\n", fault, index, static_cast<int>(i));
            return;
        }
        apply(index, records[i]);
    }
}

}  // namespace

void MainWindow::customEvent(QEvent *event) {
    static constexpr struct {
        int type;
        void (MainWindow::*handle)(const UserEvent &);
    } kHandlers[] = {
        {UPDATE_VIDEO_DISPLAY_EVENT, &MainWindow::onVideoDisplay},
        {UPDATE_WATERMARK_PIC_EVENT, &MainWindow::onWatermarkPicture},
        {UPDATE_WATERMARK_OSD_EVENT, &MainWindow::onWatermarkText},
        {SWITCH_SPLIT_EVENT, &MainWindow::onSwitchSplit},
        {UPDATE_USER_SPLIT_EVENT, &MainWindow::onUserSplit},
        {SELECT_AO_WINDOW_EVENT, &MainWindow::onAudioWindow},
        {REFRESH_SCREEN_EVENT, &MainWindow::onRefresh},
        {UPDATE_WATERMARK_DOT_EVENT, &MainWindow::onWatermarkDot},
        {UPDATE_VIDEOOUTPUT_OSD_EVENT, &MainWindow::onOsd},
        {UPDATE_URLINFO_EVENT, &MainWindow::onStreams},
        {UPDATE_VIDEO_SOURCE_EVENT, &MainWindow::onVideoSources},
    };
    for (const auto &row : kHandlers) {
        if (row.type == event->type()) {
            (this->*row.handle)(static_cast<const UserEvent &>(*event));
            return;
        }
    }
}

void MainWindow::onVideoDisplay(const UserEvent &event) {
    const Payload<VideoOutputDisplayParameter> record(event);
    if (record.empty() || same_bytes(mDisplay, record[0])) {
        return;
    }
    const BorderPicture before = borders();
    take(mDisplay, record[0]);
    mBorderWidth = mDisplay.BorderWidth;
    mVideoColour = border_colour(mDisplay.VideoBorderColor, mVideoColour);
    mAudioColour = border_colour(mDisplay.AudioBorderColor, mAudioColour);
    MAINWINDOW_DEBUG("SET_AUDIO_COLOR_EVENT: %02x:%02x:%02x\n", qRed(mAudioColour),
                     qGreen(mAudioColour), qBlue(mAudioColour));
    MAINWINDOW_DEBUG("SET_VIDEO_COLOR_EVENT: %02x:%02x:%02x\n", qRed(mVideoColour),
                     qGreen(mVideoColour), qBlue(mVideoColour));
    MAINWINDOW_DEBUG("SET_BORDER_WIDTH_EVENT: %d\n", mBorderWidth);
    repaintChanged(before);
}

// Kept: no comparison with the copy, for an equal record may name a file that was replaced.
void MainWindow::onWatermarkPicture(const UserEvent &event) {
    const Payload<WatermarkPictureParameter> record(event);
    if (!record.empty()) {
        take(mPicture, record[0]);
        dispWatermarkImage();
    }
}

void MainWindow::onWatermarkText(const UserEvent &event) {
    const Payload<WatermarkOSDParameter> record(event);
    if (!record.empty() && take(mText, record[0])) {
        dispWatermarkTxt();
    }
}

void MainWindow::onSwitchSplit(const UserEvent &event) {
    const int mode = static_cast<int>(event.data);
    MAINWINDOW_DEBUG("e->type() == SWITCH_SPLIT_EVENT\n");
    MAINWINDOW_DEBUG("split = %d\n", mode);
    const BorderPicture before = borders();
    if (mode < kFirstUserSplitMode || mode >= kFirstUserSplitMode + kUserSplits) {
        switchSplit(mode);
    } else {
        splitFlag = mode;
        maxWndNum = userWindowCount(mode - kFirstUserSplitMode);
        updateUserRectVectorAndSplitLines(mode);
        MAINWINDOW_DEBUG("splitFlag = %d, %d\n", splitFlag, kFirstUserSplitMode);
    }
    updateAllDisplays();
    repaintChanged(before);
}

// Kept: the number of current windows stays as it was when the mode was switched.
void MainWindow::onUserSplit(const UserEvent &event) {
    const Payload<VideoOutputScreenSplitParameter> records(event);
    if (records.empty()) {
        return;
    }
    for (int k = 0; k < std::min<qint64>(event.param, kUserSplits); ++k) {
        const int mode = kFirstUserSplitMode + k;
        if (take(mUserSplits[k], records[k]) && splitFlag == mode) {
            const BorderPicture before = borders();
            updateUserRectVectorAndSplitLines(mode);
            repaintChanged(before);
        }
    }
    updateAllDisplays();
}

void MainWindow::onAudioWindow(const UserEvent &event) {
    const BorderPicture before = borders();
    mAudioWnd = static_cast<int>(event.data);
    MAINWINDOW_DEBUG("SELECT_AO_WINDOW_EVENT: %d\n", mAudioWnd);
    if (isUserSplit()) {
        updateUserSplitLines(splitFlag - kFirstUserSplitMode);
    }
    repaintChanged(before);
}

void MainWindow::onRefresh(const UserEvent &) {
    update();
}

void MainWindow::onWatermarkDot(const UserEvent &event) {
    const Payload<WatermarkDotmatrixParameter> record(event);
    if (record.empty() || !take(mDots, record[0])) {
        return;
    }
    dispWatermarkDot();
    moveDot(mDotOrigin);
}

void MainWindow::onOsd(const UserEvent &event) {
    const Payload<VideoOutputOSDParameter> record(event);
    const qint64 osd = event.param;
    MAINWINDOW_DEBUG("set vosd%d\n", static_cast<int>(osd));
    if (!record.empty() && osd >= 0 && osd < kOsdLabels && take(mOsd[osd], record[0])) {
        updateDisplay(static_cast<unsigned>(osd));
    }
}

void MainWindow::onStreams(const UserEvent &event) {
    using Stream = StreamingInputStatusChange;
    const Payload<Stream> records(event);
    for_each_in_run(
        records, records.empty() ? 0 : event.param, "invalid stream_index",
        [](const Stream &stream) { return stream.index; },
        [this](int stream, const Stream &record) {
            if (stream < 0 || stream >= kStreams || !take(mStreams[stream], record)) {
                return;
            }
            for (int w = 0; w < std::min<int>(maxWndNum, kVideoSources); ++w) {
                if (mSources[w].type == kStreamInput && mSources[w].index == stream) {
                    showSourceOfWindow(w);
                }
            }
        });
}

void MainWindow::onVideoSources(const UserEvent &event) {
    using Source = VideoOutSourceChange;
    const Payload<Source> records(event);
    for_each_in_run(
        records, records.empty() ? 0 : event.param, "invalid win_id",
        [](const Source &source) { return source.Channel; },
        [this](int window, const Source &record) {
            if (window >= 0 && window < kVideoSources && take(mSources[window], record) &&
                window < maxWndNum) {
                showSourceOfWindow(window);
            }
        });
}

void MainWindow::timerEvent(QTimerEvent *event) {
    if (event->timerId() == refreshTimerId) {
        gui_refresh_screen(kPeriodicRefresh);
        return;
    }
    if (event->timerId() != timerId) {
        return;
    }
    tickOsd();
    tickWatermarks();
    tickDot();
    ++mTick;
}

void MainWindow::tickOsd() {
    const QDateTime now = QDateTime::currentDateTime();
    for (int i = 0; i < kOsdLabels; ++i) {
        if (mOsd[i].visible != 0 && mOsd[i].type == kDateTimeKind) {
            MAINWINDOW_DEBUG("check vosd%d\n", i);
            mUi->osdLabels[i]->updateDateTime(now);
        }
    }
}

void MainWindow::tickWatermarks() {
    const int tick = static_cast<int>(mTick);
    if (mText.visible != 0) {
        for (const WatermarkCell &cell : watermark_cells(size(), mText.arrangement_mode)) {
            mUi->watermarkTxtLabels[cell.label]->checkAndMove(tick);
        }
    }
    if (mPicture.visible != 0 && mPicture.en != 0) {
        for (const WatermarkCell &cell : watermark_cells(size(), mPicture.arramode)) {
            mUi->watermarkImgLabels[cell.label]->checkAndMove(tick);
        }
    }
}

void MainWindow::tickDot() {
    if (mDots.visible != 0 && mDots.en != 0 && dot_moves_on(mTick, mDots.speed)) {
        moveDot(moved_dot(mDot, mDots, size()));
    }
}

/// Repaints where the dot was and where it is.
void MainWindow::moveDot(const QPoint &position) {
    QRegion changed;
    for (const QPoint &dot : {mDot, position}) {
        changed += QRect(dot, dot);  // one pixel, also at the far end of the integers
    }
    mDot = position;
    repaintRegion(changed);
}
