#include <gmock/gmock.h>

#include <QPainter>
#include <climits>
#include <random>

#include "mainwindow_fixture.h"

namespace {

constexpr QRgb kVideo = 0xFF00FF00;
constexpr QRgb kAudio = 0xFFFF0000;

/// `image` with nothing outside `region`.
QImage cut(const QImage &image, const QRegion &region) {
    QImage part(image.size(), QImage::Format_ARGB32_Premultiplied);
    part.fill(0);
    QPainter painter(&part);
    painter.setClipRegion(region);
    painter.drawImage(0, 0, image);
    return part;
}

class MainWindowPaint : public MainWindowTest {};

TEST_F(MainWindowPaint, DrawsTheBordersOfEveryModeOnEveryCanvas) {
    const QSize canvases[] = {{640, 360}, {683, 385}, {240, 400}, {37, 23}};
    for (const QSize &canvas : canvases) {
        window.resize(canvas);
        for (int mode = 0; mode < 26; ++mode) {
            sendNumber(SWITCH_SPLIT_EVENT, mode);
            for (int width = 0; width <= 5; ++width) {
                const int audio = (mode + width) % (window.maxWndNum + 1) - 1;
                sendDisplay(width);
                sendNumber(SELECT_AO_WINDOW_EVENT, audio);
                ASSERT_TRUE(borders() == drawn_borders(canvas, mode, width, audio))
                    << "mode " << mode << " width " << width << " audio " << audio << " on "
                    << canvas.width() << " x " << canvas.height();
            }
        }
    }
}

TEST_F(MainWindowPaint, DrawsTheBordersOfTheScreenSizes) {
    for (const QSize &canvas : {QSize(1920, 1080), QSize(1366, 768)}) {
        window.resize(canvas);
        for (int mode : {1, 6, 16, 25}) {
            sendNumber(SWITCH_SPLIT_EVENT, mode);
            for (int width : {1, 4, 5}) {
                sendDisplay(width);
                sendNumber(SELECT_AO_WINDOW_EVENT, 0);
                ASSERT_TRUE(borders() == drawn_borders(canvas, mode, width, 0))
                    << "mode " << mode << " width " << width;
            }
        }
    }
}

// Away from the corners a border is a straight band inside the window; at an odd width the pixel
// that remains of the halves lies to the right and bottom of the outline.
TEST_F(MainWindowPaint, KeepsABorderInsideItsWindow) {
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    for (int width = 1; width <= 5; ++width) {
        sendDisplay(width);
        const QImage image = borders();
        for (int depth = 0; depth < 8; ++depth) {
            const QRgb expected = depth < width ? kVideo : 0;
            EXPECT_EQ(image.pixel(depth, 500), expected) << width << " left " << depth;
            EXPECT_EQ(image.pixel(1919 - depth, 500), expected) << width << " right " << depth;
            EXPECT_EQ(image.pixel(900, depth), expected) << width << " top " << depth;
            EXPECT_EQ(image.pixel(900, 1079 - depth), expected) << width << " bottom " << depth;
        }
        EXPECT_EQ(image.pixel(900, 500), 0u);
    }
}

TEST_F(MainWindowPaint, DrawsNothingAtWidthZeroAndBelow) {
    QImage nothing(window.size(), QImage::Format_ARGB32_Premultiplied);
    nothing.fill(0);
    sendLayout(0, 1, "0,0,4096,4096,0");
    for (int mode : {4, 26}) {
        sendDisplay(3);
        sendNumber(SWITCH_SPLIT_EVENT, mode);
        EXPECT_FALSE(borders() == nothing);
        for (int width : {0, -1, INT_MIN}) {
            testing::internal::CaptureStderr();
            sendDisplay(width);
            EXPECT_TRUE(borders() == nothing) << width;
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << width;
        }
    }
}

TEST_F(MainWindowPaint, DrawsABorderOfAnyWidth) {
    window.resize(320, 180);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int width : {200, 1000, 100000, 1 << 24, INT_MAX - 1, INT_MAX}) {
        sendDisplay(width);
        EXPECT_TRUE(borders() == drawn_borders(window.size(), 4, width, -1)) << width;
    }
    EXPECT_EQ(borders().pixel(160, 90), kVideo);
}

TEST_F(MainWindowPaint, DrawsLaterWindowsOverEarlierOnes) {
    sendDisplay(3);
    sendNumber(SELECT_AO_WINDOW_EVENT, 1);
    sendNumber(SWITCH_SPLIT_EVENT, 11);  // windows 1 and 2 lie on one another
    EXPECT_EQ(borders().pixel(1700, 216), kVideo);
    sendNumber(SELECT_AO_WINDOW_EVENT, 2);
    EXPECT_EQ(borders().pixel(1700, 216), kAudio);
}

TEST_F(MainWindowPaint, DrawsTheLinesOfAUserLayoutInTheirColours) {
    sendDisplay(4);
    sendNumber(SELECT_AO_WINDOW_EVENT, 1);
    sendLayout(2, 3, "0,0,4096,4096,0;4096,0,4096,4096,0;2048,2048,4096,4096,1");
    sendNumber(SWITCH_SPLIT_EVENT, 28);
    QImage expected(window.size(), QImage::Format_ARGB32_Premultiplied);
    expected.fill(0);
    QPainter painter(&expected);
    const auto lines = window.userLines(2);
    const auto colours = window.userColours(2);
    ASSERT_EQ(lines.size(), colours.size());
    ASSERT_GT(lines.size(), 8);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        painter.setPen(QPen(colours[i], 4));
        painter.drawLine(lines[i]);
    }
    painter.end();
    const QImage image = borders();
    EXPECT_TRUE(image == expected);
    EXPECT_EQ(image.pixel(100, 0), kVideo);
    EXPECT_EQ(image.pixel(1800, 0), kAudio);
    EXPECT_EQ(image.pixel(480, 500), kVideo);
    EXPECT_EQ(image.pixel(700, 540), 0u);  // the lower border of window 0, covered by window 2
}

TEST_F(MainWindowPaint, DrawsOnlyTheWindowsThatAreCurrent) {
    sendDisplay(2);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    window.maxWndNum = 1;
    EXPECT_EQ(borders().pixel(5, 0), kVideo);
    EXPECT_EQ(borders().pixel(965, 0), 0u);
    window.maxWndNum = 16;  // more than there are rectangles
    EXPECT_EQ(borders().pixel(965, 0), kVideo);
    for (int mode : {-1, 35, INT_MAX, INT_MIN}) {
        window.splitFlag = mode;
        EXPECT_EQ(borders().pixel(5, 0), 0u);
    }
}

TEST_F(MainWindowPaint, PaintsAPartAsItPaintsTheWhole) {
    window.resize(200, 120);
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round) {
        sendNumber(SWITCH_SPLIT_EVENT, static_cast<int>(random() % 26));
        sendDisplay(1 + static_cast<int>(random() % 7));
        const QRect part(static_cast<int>(random() % 190), static_cast<int>(random() % 110),
                         1 + static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 60));
        const QRect inside = part & window.rect();
        QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(0);
        window.render(&image, inside.topLeft(), QRegion(inside), QWidget::RenderFlags());
        ASSERT_TRUE(image == cut(borders(), inside)) << "round " << round;
    }
}

// ---- what is repainted --------------------------------------------------------------------------

TEST_F(MainWindowPaint, RepaintsOnlyTheBordersWhenTheirLookChanges) {
    sendDisplay(2);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    show();
    const QRegion inside = QRegion(QRect(20, 20, 920, 500)) + QRect(980, 560, 920, 500);
    struct {
        int width;
        const char *video;
    } const changes[] = {{3, "#00FF00"}, {3, "#0000FF"}, {0, "#0000FF"}, {5, "#0000FF"}};
    for (const auto &c : changes) {
        PaintLog paints(&window);
        sendDisplay(c.width, c.video);
        settle();
        EXPECT_EQ(paints.count, 1);
        EXPECT_FALSE(paints.region.intersects(inside));
        EXPECT_TRUE(paints.region.contains(QPoint(0, 500)));
        EXPECT_TRUE(paints.region.contains(QPoint(1919, 500)));
    }
}

TEST_F(MainWindowPaint, RepaintsTheBordersOfTheTwoWindowsWhenTheAudioMoves) {
    sendDisplay(2);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    sendNumber(SELECT_AO_WINDOW_EVENT, 0);
    show();
    PaintLog paints(&window);
    sendNumber(SELECT_AO_WINDOW_EVENT, 3);
    settle();
    EXPECT_EQ(paints.count, 1);
    EXPECT_TRUE(paints.region.contains(QPoint(0, 10)));
    EXPECT_TRUE(paints.region.contains(QPoint(1919, 1070)));
    EXPECT_FALSE(paints.region.contains(QPoint(1919, 10)));
    EXPECT_FALSE(paints.region.contains(QPoint(0, 1070)));
}

TEST_F(MainWindowPaint, RepaintsTheOldAndTheNewBordersOnASwitch) {
    sendDisplay(2);
    sendLayout(0, 1, "2048,2048,2048,2048,0");
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    show();
    PaintLog paints(&window);
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    settle();
    EXPECT_EQ(paints.count, 1);
    EXPECT_TRUE(paints.region.contains(QPoint(960, 10)));
    EXPECT_TRUE(paints.region.contains(QPoint(480, 300)));
    EXPECT_FALSE(paints.region.contains(QPoint(700, 400)));
    EXPECT_FALSE(paints.region.contains(QPoint(300, 100)));
}

TEST_F(MainWindowPaint, ShowsAfterEveryChangeWhatAFullRepaintWould) {
    window.resize(400, 240);
    for (int k = 0; k < 4; ++k) {
        sendLayout(k, 3, "0,0,1000,1000,0;200,300,900,800,1;50,50,600,1500,0");
    }
    show();
    PaintLog paints(&window);
    QImage shown = borders();
    paints.clear();
    std::mt19937 random(13);
    const char *const colours[] = {"#FF0000", "#00FF00", "#0000FF"};
    for (int round = 0; round < 200; ++round) {
        switch (random() % 3) {
            case 0:
                sendNumber(SWITCH_SPLIT_EVENT, static_cast<int>(random() % 30));
                break;
            case 1:
                sendDisplay(static_cast<int>(random() % 7), colours[random() % 3],
                            colours[random() % 3]);
                break;
            default:
                sendNumber(SELECT_AO_WINDOW_EVENT, static_cast<int>(random() % 6) - 1);
        }
        settle();
        // What was on the screen stays there but for the region that was painted.
        const QRegion repainted = paints.region;
        const QImage whole = borders();
        QPainter painter(&shown);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.setClipRegion(repainted);
        painter.drawImage(0, 0, whole);
        painter.end();
        ASSERT_TRUE(shown == whole) << "round " << round;
        paints.clear();
    }
}

TEST_F(MainWindowPaint, PrintsItsStrokesWhileTheSwitchIsOn) {
    sendDisplay(5);
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    debug_mainwindow = 1;
    testing::internal::CaptureStdout();
    borders();
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, testing::ContainsRegex(">: paintEvent:[0-9]+\n"));
    EXPECT_THAT(printed, testing::HasSubstr(">: 00:ff:00  ff:00:00 5 1\n"));
    EXPECT_THAT(printed, testing::HasSubstr(">: rect0 x=2,y=2, w=1915, h=1075 lw=3\n"));
    sendLayout(0, 1, "0,0,4096,4096,0");
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    testing::internal::CaptureStdout();
    borders();
    printed = testing::internal::GetCapturedStdout();
    debug_mainwindow = 0;
    EXPECT_THAT(printed, testing::HasSubstr(">: line4 \n"));
}

}  // namespace
