// The main window's rectangles: catalogue modes, user layouts, hit testing.

#include <algorithm>
#include <cstring>

#include "mainwindow.h"
#include "window_geometry.h"

namespace {

bool is_mode(int mode) {
    return mode >= 0 && mode < kSplitModes;
}
bool is_user_mode(int mode) {
    return mode >= kFirstUserSplitMode && mode < kFirstUserSplitMode + kUserSplits;
}
bool is_layout(int layout) {
    return layout >= 0 && layout < kUserSplits;
}

void print_coordinate(char name, const SplitCoordinate &c) {
    MAINWINDOW_DEBUG("%c=%d:%d:%f\n", name, c.isRatio, c.second, c.ratio);
}

void print_split(const SplitInfo &split) {
    if (debug_mainwindow == 0) {
        return;
    }
    MAINWINDOW_DEBUG("wndCnt=%d\n", static_cast<int>(split.wndCnt));
    for (unsigned i = 0; i < split.wndCnt; ++i) {
        print_coordinate('x', split.wnd[i].x);
        print_coordinate('y', split.wnd[i].y);
        print_coordinate('w', split.wnd[i].w);
        print_coordinate('h', split.wnd[i].h);
    }
}

}  // namespace

void MainWindow::initRectVector(QVector<QRect> &rects, int mode) {
    SplitInfo split;
    if (hal_get_split_info(static_cast<unsigned>(mode), &split) != 0) {
        return;
    }
    print_split(split);
    const unsigned canvas[4] = {0, 0, static_cast<unsigned>(width()),
                                static_cast<unsigned>(height())};
    MAINWINDOW_DEBUG("canvas:%dx%d, wndCnt=%d\n", width(), height(),
                     static_cast<int>(split.wndCnt));
    for (unsigned i = 0; i < split.wndCnt; ++i) {
        if (i >= static_cast<size_t>(rects.size())) {
            qt_assert_x(__func__, "index out of range", __FILE__, __LINE__);
        }
        int edges[4] = {};
        hal_get_split_wnd_info(canvas, &split.wnd[i], edges);
        rects[i] = QRect(edges[0], edges[1], edges[2] - edges[0], edges[3] - edges[1]);
        MAINWINDOW_DEBUG("rc:%d:%d:%d:%d\n", edges[0], edges[1], edges[2], edges[3]);
    }
}

void MainWindow::initRectVectors() {
    for (int mode = 0; mode < kSplitModes; ++mode) {
        updateRectVector(mode);
    }
}

void MainWindow::updateRectVector(int mode) {
    if (checkSplitValid(static_cast<unsigned>(mode)) == 0) {
        return;
    }
    mRects[mode].fill(QRect(), getSplitWndNum(static_cast<unsigned>(mode)));
    initRectVector(mRects[mode], mode);
}

unsigned MainWindow::switchSplit(int mode) {
    if (checkSplitValid(static_cast<unsigned>(mode)) == 0) {
        return 0;
    }
    if (mode == splitFlag) {
        return 1;
    }
    const BorderPicture before = borders();
    updateRectVector(mode);
    splitFlag = mode;
    maxWndNum = static_cast<int>(mRects[mode].size());
    fullScreenWnd = -1;
    fullScreenFlag = false;
    MAINWINDOW_DEBUG("%s:%d splitFlag=%d maxWndNum=%d\n", __func__, __LINE__, splitFlag, maxWndNum);
    repaintChanged(before);
    return 1;
}

bool MainWindow::isUserSplit() const {
    return is_user_mode(splitFlag);
}

int MainWindow::userWindowCount(int layout) const {
    return std::clamp<int>(mUserSplits[layout].WindowNum, 0, kSplitWindows);
}

void MainWindow::parseUserSplit(int layout, int limit, tagWinRect (&windows)[kSplitWindows]) const {
    const char(&record)[sizeof(VideoOutputScreenSplitParameter::SplitString)] =
        mUserSplits[layout].SplitString;
    char text[sizeof(record) + 1] = {};  // the record's may lack its NUL
    std::memcpy(text, record, sizeof(record));
    std::memset(windows, 0, sizeof(windows));
    parse_win_splitstr(text, static_cast<unsigned>(std::clamp<int>(limit, 0, kSplitWindows)),
                       windows);
}

void MainWindow::buildUserLines(int layout, tagWinRect (&windows)[kSplitWindows]) {
    const int count = userWindowCount(layout);
    for (int i = 0; i < count; ++i) {
        const QRgb colour = i == mAudioWnd ? mAudioColour : mVideoColour;
        windows[i].color = static_cast<int32_t>(colour & 0xFFFFFF);
    }
    trans_win_rects_to_QLine(windows, count, mUserLines[layout], mUserColours[layout]);
}

void MainWindow::updateUserRectVectorAndSplitLines(int mode) {
    if (!is_user_mode(mode)) {
        return;
    }
    const int layout = mode - kFirstUserSplitMode;
    const int count = userWindowCount(layout);
    tagWinRect windows[kSplitWindows];
    parseUserSplit(layout, count, windows);
    mRects[mode].clear();
    for (int i = 0; i < count; ++i) {
        mRects[mode].append(QRect(windows[i].x, windows[i].y, windows[i].w, windows[i].h));
    }
    buildUserLines(layout, windows);
}

// Kept: reads as many windows as are current, but draws as many as the layout has; the two are
// equal when the layout is current.
void MainWindow::updateUserSplitLines(int layout) {
    if (!is_layout(layout)) {
        return;
    }
    tagWinRect windows[kSplitWindows];
    parseUserSplit(layout, maxWndNum, windows);
    buildUserLines(layout, windows);
}

int MainWindow::getWndIdx(const QPoint &point) const {
    SplitInfo split;
    if (hal_get_split_info(static_cast<unsigned>(splitFlag), &split) != 0) {
        return 0;
    }
    return hit_window(split, mRects[splitFlag], point);
}

const QRect *MainWindow::currentRect(int window) const {
    const bool known = is_mode(splitFlag) && window >= 0 && window < maxWndNum &&
                       window < mRects[splitFlag].size();
    return known ? &mRects[splitFlag][window] : nullptr;
}

QVector<QRect> MainWindow::rects(int mode) const {
    return is_mode(mode) ? mRects[mode] : QVector<QRect>();
}

QVector<QLineF> MainWindow::userLines(int layout) const {
    return is_layout(layout) ? mUserLines[layout] : QVector<QLineF>();
}

QVector<QColor> MainWindow::userColours(int layout) const {
    return is_layout(layout) ? mUserColours[layout] : QVector<QColor>();
}
