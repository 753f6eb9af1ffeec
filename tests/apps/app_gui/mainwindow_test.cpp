#include "mainwindow.h"

#include <gmock/gmock.h>

#include <QDialog>
#include <QTemporaryDir>
#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "mainwindow_fixture.h"
#include "window_server/qws_server.h"

namespace {

// ---- construction -------------------------------------------------------------------------------

TEST_F(MainWindowTest, StartsFramelessTranslucentAndTrackingTheMouse) {
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(window.testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(window.hasMouseTracking());
    EXPECT_EQ(window.contextMenuPolicy(), Qt::CustomContextMenu);
}

TEST_F(MainWindowTest, StartsWithoutAModeAWindowOrABorder) {
    EXPECT_EQ(window.splitFlag, -1);
    EXPECT_EQ(window.maxWndNum, 0);
    EXPECT_EQ(window.fullScreenWnd, -1);
    EXPECT_FALSE(window.fullScreenFlag);
    EXPECT_EQ(window.dotPosition(), QPoint(32, 32));
    EXPECT_NE(window.timerId, 0);
    EXPECT_EQ(debug_mainwindow, 0);
    for (int mode = -1; mode <= kSplitModes; ++mode) {
        EXPECT_TRUE(window.rects(mode).isEmpty());
    }
    for (int k = -1; k <= kUserSplits; ++k) {
        EXPECT_TRUE(window.userLines(k).isEmpty());
        EXPECT_TRUE(window.userColours(k).isEmpty());
    }
    QImage nothing(window.size(), QImage::Format_ARGB32_Premultiplied);
    nothing.fill(0);
    EXPECT_TRUE(borders() == nothing);
}

TEST_F(MainWindowTest, StartsWithEveryLabelHidden) {
    for (int i = 0; i < 16; ++i) {
        EXPECT_TRUE(textLabel(i).isHidden());
        EXPECT_TRUE(pictureLabel(i).isHidden());
    }
    for (int i = 0; i < 64; ++i) {
        EXPECT_TRUE(osdLabel(i).isHidden());
        EXPECT_EQ(osdLabel(i).text(), "");
    }
}

TEST_F(MainWindowTest, GivesItsPictureLabelsTheWholeVirtualSpace) {
    const QTemporaryDir folder;
    const QByteArray path = folder.filePath("mark.png").toLocal8Bit();
    QImage image(30, 20, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(QString::fromLocal8Bit(path)));
    WatermarkPictureParameter record = {};
    record.visible = 1;
    record.x = 4096;
    record.y = 2048;
    set_text(record.file, path.constData());
    for (int i = 0; i < 16; ++i) {
        pictureLabel(i).setActualScreen(QRect(0, 0, 1000, 600));
        pictureLabel(i).setImage(&record, 1);
        EXPECT_EQ(pictureLabel(i).pos(), QPoint(500, 150)) << i;
    }
}

TEST(MainWindowInstance, IsOneWindow) {
    EXPECT_NE(MainWindow::instance(), nullptr);
    EXPECT_EQ(MainWindow::instance(), MainWindow::instance());
    EXPECT_EQ(MainWindow::instance()->parent(), nullptr);
}

// ---- resolution ---------------------------------------------------------------------------------

TEST_F(MainWindowTest, TakesTheSizeOfEveryResolutionCode) {
    const QSize sizes[] = {{1920, 1080}, {1920, 1080}, {1280, 720},  {1280, 720},  {1280, 1024},
                           {1024, 768},  {1920, 1200}, {1366, 768},  {1920, 1080}, {1920, 1080},
                           {2560, 1600}, {3840, 2160}, {2560, 1440}, {3840, 2160}};
    for (unsigned code = 0; code < 14; ++code) {
        EXPECT_EQ(window.changeResolution(code), 1u) << code;
        EXPECT_EQ(window.size(), sizes[code]) << code;
        EXPECT_EQ(qws::Server::maxWindowRect(), QRect(QPoint(0, 0), sizes[code])) << code;
    }
}

TEST_F(MainWindowTest, ChangesNothingForTheCurrentResolutionOrACodeAboveThirteen) {
    EXPECT_EQ(window.changeResolution(7), 1u);
    window.resize(100, 90);
    qws::Server::setMaxWindowRect(QRect(1, 2, 3, 4));
    for (unsigned code : {7u, 14u, UINT_MAX}) {
        EXPECT_EQ(window.changeResolution(code), code == 7 ? 1u : 0u);
        EXPECT_EQ(window.size(), QSize(100, 90));
        EXPECT_EQ(qws::Server::maxWindowRect(), QRect(1, 2, 3, 4));
    }
    EXPECT_EQ(window.changeResolution(2), 1u);
    EXPECT_EQ(window.changeResolution(7), 1u);
    EXPECT_EQ(window.size(), QSize(1366, 768));
}

TEST_F(MainWindowTest, TakesAFullScreenModalDialogAlong) {
    for (const bool fullScreen : {false, true}) {
        QDialog dialog;
        dialog.setModal(true);
        dialog.resize(200, 100);
        fullScreen ? dialog.showFullScreen() : dialog.show();
        const QSize before = dialog.size();
        window.changeResolution(fullScreen ? 5 : 4);
        EXPECT_EQ(dialog.size(), fullScreen ? QSize(1024, 768) : before);
    }
}

TEST_F(MainWindowTest, KeepsTheWindowRectanglesOnAResize) {
    ASSERT_EQ(window.switchSplit(4), 1u);
    const QVector<QRect> rects = window.rects(4);
    show();
    window.changeResolution(11);
    settle();
    EXPECT_EQ(window.rects(4), rects);
    EXPECT_EQ(window.switchSplit(4), 1u);
    EXPECT_EQ(window.rects(4), rects);
    window.switchSplit(1);
    window.switchSplit(4);
    EXPECT_EQ(window.rects(4).last(), QRect(1920, 1080, 1920, 1080));
}

// ---- menu, mouse tracking, full screen, language ------------------------------------------------

TEST_F(MainWindowTest, TurnsMouseTrackingOffAndBackOn) {
    EXPECT_EQ(window.disableMouseTracking(), 1);
    EXPECT_FALSE(window.hasMouseTracking());
    EXPECT_EQ(window.disableMouseTracking(), 0);
    window.recoverMouseTracking(false);
    EXPECT_FALSE(window.hasMouseTracking());
    window.recoverMouseTracking(true);
    EXPECT_TRUE(window.hasMouseTracking());
}

TEST_F(MainWindowTest, PopsItsMenuUpWithoutWaitingAndKeepsMouseTracking) {
    for (const bool tracking : {true, false}) {
        window.setMouseTracking(tracking);
        QMenu &menu = *window.labels().menu;
        menu.addAction("entry");
        window.showMenu(QPoint(20, 30));
        EXPECT_TRUE(menu.isVisible());
        EXPECT_EQ(window.hasMouseTracking(), tracking);
        menu.hide();
    }
}

TEST_F(MainWindowTest, MarksAFullScreenWindowOnlyWhereThereAreSeveral) {
    struct {
        int windows, index;
        int marked;
    } const cases[] = {{0, 0, -1}, {1, 0, -1},  {-5, 0, -1},      {4, 0, 0},       {4, 3, 3},
                       {4, 4, -1}, {4, -1, -1}, {4, INT_MAX, -1}, {4, INT_MIN, -1}};
    for (const auto &c : cases) {
        window.maxWndNum = 4;
        window.exitFullScreen();
        window.maxWndNum = c.windows;
        window.enterFullScreen(c.index);
        EXPECT_EQ(window.fullScreenWnd, c.marked) << c.windows << " " << c.index;
        EXPECT_EQ(window.fullScreenFlag, c.marked >= 0) << c.windows << " " << c.index;
    }
}

TEST_F(MainWindowTest, LeavesFullScreenOnlyWhereThereAreSeveralWindows) {
    window.maxWndNum = 4;
    window.enterFullScreen(2);
    for (int windows : {1, 0}) {
        window.maxWndNum = windows;
        window.exitFullScreen();
        EXPECT_EQ(window.fullScreenWnd, 2);
        EXPECT_TRUE(window.fullScreenFlag);
    }
    window.maxWndNum = 2;
    window.exitFullScreen();
    EXPECT_EQ(window.fullScreenWnd, -1);
    EXPECT_FALSE(window.fullScreenFlag);
}

TEST_F(MainWindowTest, AcceptsALanguageChange) {
    QEvent change(QEvent::LanguageChange);
    change.ignore();
    window.changeEvent(&change);
    EXPECT_TRUE(change.isAccepted());
}

// ---- rectangles of the catalogue modes ----------------------------------------------------------

TEST_F(MainWindowTest, RefusesAnInvalidMode) {
    ASSERT_EQ(window.switchSplit(9), 1u);
    for (int mode : {30, 34, 35, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(window.switchSplit(mode), 0u) << mode;
        window.updateRectVector(mode);
        EXPECT_TRUE(window.rects(mode).isEmpty()) << mode;
        EXPECT_EQ(window.splitFlag, 9);
        EXPECT_EQ(window.maxWndNum, 9);
    }
}

TEST_F(MainWindowTest, TakesTheFirstSwitchToModeZero) {
    EXPECT_EQ(window.switchSplit(0), 1u);
    EXPECT_EQ(window.splitFlag, 0);
    EXPECT_EQ(window.maxWndNum, 1);
    EXPECT_EQ(window.rects(0), QVector<QRect>{QRect(0, 0, 1920, 1080)});
}

TEST_F(MainWindowTest, KeepsTheFullScreenWindowWhenTheModeIsCurrent) {
    window.switchSplit(4);
    window.enterFullScreen(2);
    EXPECT_EQ(window.switchSplit(4), 1u);
    EXPECT_EQ(window.fullScreenWnd, 2);
    EXPECT_TRUE(window.fullScreenFlag);
    EXPECT_EQ(window.switchSplit(9), 1u);
    EXPECT_EQ(window.fullScreenWnd, -1);
    EXPECT_FALSE(window.fullScreenFlag);
}

TEST_F(MainWindowTest, PlacesTheFourWindowsOfMode4) {
    window.switchSplit(4);
    EXPECT_EQ(window.rects(4),
              (QVector<QRect>{
                  {0, 0, 960, 540}, {960, 0, 960, 540}, {0, 540, 960, 540}, {960, 540, 960, 540}}));
    EXPECT_EQ(window.getWndIdx(QPoint(960, 540)), 3);
    EXPECT_EQ(window.getWndIdx(QPoint(959, 539)), 0);
    EXPECT_EQ(window.getWndIdx(QPoint(959, 540)), 2);
    EXPECT_EQ(window.getWndIdx(QPoint(5000, 5000)), 0);
}

TEST_F(MainWindowTest, HitsTheFirstWindowInTheUncoveredCellOfMode11) {
    window.switchSplit(11);
    EXPECT_EQ(window.getWndIdx(QPoint(1800, 100)), 0);
    // Windows 1 and 2 lie on one another: the higher index wins.
    EXPECT_EQ(window.getWndIdx(QPoint(1800, 300)), 2);
}

TEST_F(MainWindowTest, HitsNothingBeforeTheFirstMode) {
    EXPECT_EQ(window.getWndIdx(QPoint(1, 1)), 0);
    window.splitFlag = INT_MAX;
    EXPECT_EQ(window.getWndIdx(QPoint(1, 1)), 0);
}

TEST_F(MainWindowTest, BuildsTheRectanglesOfEveryValidMode) {
    window.initRectVectors();
    for (int mode = 0; mode < kSplitModes; ++mode) {
        const QVector<QRect> rects = window.rects(mode);
        ASSERT_EQ(rects.size(), mode < 30 ? getSplitWndNum(mode) : 0) << mode;
        for (const QRect &r : rects) {
            EXPECT_TRUE(QRect(0, 0, 1920, 1080).contains(r)) << mode;
            EXPECT_EQ((r.x() | r.y() | r.width() | r.height()) & 1, 0) << mode;
        }
    }
    EXPECT_EQ(window.splitFlag, -1);
}

TEST_F(MainWindowTest, PlacesWindowsOnTheSizeThatItHasAtTheMoment) {
    window.resize(1366, 768);
    window.updateRectVector(9);
    EXPECT_EQ(window.rects(9)[4], QRect(456, 256, 456, 256));
    window.resize(1365, 768);
    window.updateRectVector(2);
    EXPECT_EQ(window.rects(2), (QVector<QRect>{{0, 0, 682, 768}, {684, 0, 682, 768}}));
}

TEST_F(MainWindowTest, FillsAListThatHoldsAnEntryForEveryWindow) {
    QVector<QRect> rects(2);
    window.initRectVector(rects, 34);
    EXPECT_EQ(rects, (QVector<QRect>{{0, 0, 1920, 1080}, {1376, 746, 480, 270}}));
    window.initRectVector(rects, 35);
    window.initRectVector(rects, -1);
    EXPECT_EQ(rects.size(), 2);
}

TEST_F(MainWindowTest, StopsTheProcessWhenAListIsTooShort) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    QVector<QRect> rects(3);
    EXPECT_DEATH(window.initRectVector(rects, 4), "index out of range");
}

// ---- diagnostics --------------------------------------------------------------------------------

/// The messages of the debug lines that `action` prints, in order, without what leads them in.
template <class Action>
std::vector<std::string> messages_of(const Action &action) {
    testing::internal::CaptureStdout();
    debug_mainwindow = 1;
    action();
    debug_mainwindow = 0;
    std::istringstream printed(testing::internal::GetCapturedStdout());
    std::vector<std::string> messages;
    for (std::string line; std::getline(printed, line);) {
        const size_t start = line.find(">: ");
        messages.push_back(start == std::string::npos ? line : line.substr(start + 3));
    }
    return messages;
}

TEST_F(MainWindowTest, PrintsDebugLinesOnlyWhileTheSwitchIsOn) {
    testing::internal::CaptureStdout();
    window.switchSplit(2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    debug_mainwindow = 1;
    testing::internal::CaptureStdout();
    window.switchSplit(1);
    debug_mainwindow = 0;
    const std::string printed = testing::internal::GetCapturedStdout();
    for (const char *line :
         {": wndCnt=1\n", ": x=1:0:0.000000\n", ": w=1:0:1.000000\n",
          ": canvas:1920x1080, wndCnt=1\n", ": rc:0:0:1920:1080\n", "splitFlag=1 maxWndNum=1\n"}) {
        EXPECT_THAT(printed, testing::HasSubstr(line));
    }
    EXPECT_THAT(printed, testing::ContainsRegex("switchSplit:[0-9]+ splitFlag="));
    EXPECT_THAT(printed, testing::HasSubstr("<DEBUG file apps/app_gui/src/mainwindow_split.cpp, "));
}

TEST_F(MainWindowTest, PrintsItsRecordsAsItIsMade) {
    EXPECT_THAT(
        messages_of([] { MainWindow other; }),
        testing::ElementsAre(
            "===dispWatermarkImage===",
            "visible=0 x=0 y=0 w=0 h=0 alpha=0 sizemode=0 angle=0 arramode=0",
            "\ten=0 speed=0 direction=0 file=", "===dispWatermarkTxt===",
            "visible=0 font=0 bold=0 stroke=0 forecolor= backcolor= forealpha=0 backalpha=0",
            "\t x=0 y=0 contet= angle=0 arrangement_mode=0", "\t en=0 speed=0 direction=0",
            "visible=0 color= alpha=0 en=0 speed=0 direction=0 text="));
}

TEST_F(MainWindowTest, PrintsWhatAnEventBrings) {
    using testing::ElementsAre;
    EXPECT_THAT(messages_of([this] { sendDisplay(3, "#0A141E", "#FF8000"); }),
                ElementsAre("SET_AUDIO_COLOR_EVENT: ff:80:00", "SET_VIDEO_COLOR_EVENT: 0a:14:1e",
                            "SET_BORDER_WIDTH_EVENT: 3"));
    EXPECT_THAT(messages_of([this] { sendNumber(SWITCH_SPLIT_EVENT, 30); }),
                ElementsAre("e->type() == SWITCH_SPLIT_EVENT", "split = 30"));
    EXPECT_THAT(messages_of([this] { sendNumber(SWITCH_SPLIT_EVENT, 27); }),
                ElementsAre("e->type() == SWITCH_SPLIT_EVENT", "split = 27", "splitFlag = 27, 26"));
    EXPECT_THAT(messages_of([this] { sendNumber(SELECT_AO_WINDOW_EVENT, -1); }),
                ElementsAre("SELECT_AO_WINDOW_EVENT: -1"));
    WatermarkDotmatrixParameter dots = {};
    dots.visible = 1;
    dots.alpha = 9;
    dots.speed = -2;
    set_text(dots.color, "#123456");
    set_text(dots.text, "dots");
    EXPECT_THAT(messages_of([&] { send(UPDATE_WATERMARK_DOT_EVENT, dots); }),
                ElementsAre("visible=1 color=#123456 alpha=9 en=0 speed=-2 direction=0 text=dots"));
}

TEST_F(MainWindowTest, PrintsWhereAnOsdLabelGoesAndWhenItsClockIsChecked) {
    using testing::ElementsAre;
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    VideoOutputOSDParameter clock = osd(1, 0, "yyyy");
    clock.x = 4096;
    // First the window's place, then the label's, each with the window's size.
    EXPECT_THAT(messages_of([&] { send(UPDATE_VIDEOOUTPUT_OSD_EVENT, clock, 7); }),
                ElementsAre("set vosd7", "rect1 4 4 x=960,y=0, w=960, h=540",
                            "rect1 4 4 x=1440,y=0, w=960, h=540"));
    EXPECT_THAT(messages_of([&] { send(UPDATE_VIDEOOUTPUT_OSD_EVENT, clock, 64); }),
                ElementsAre("set vosd64"));
    EXPECT_THAT(messages_of([this] { tick(); }), ElementsAre("check vosd7"));
}

TEST_F(MainWindowTest, PrintsItsNewSize) {
    show();
    const auto messages = messages_of([this] { window.resize(1366, 768); });
    EXPECT_THAT(messages, testing::ElementsAre("=== resizeEvent start", "resizeEvent 1366x768"));
}

}  // namespace
