#include "window_geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace {

// ---- resolutions --------------------------------------------------------------------------------

TEST(ResolutionSize, IsThatOfItsCode) {
    const QSize sizes[] = {{1920, 1080}, {1920, 1080}, {1280, 720},  {1280, 720},  {1280, 1024},
                           {1024, 768},  {1920, 1200}, {1366, 768},  {1920, 1080}, {1920, 1080},
                           {2560, 1600}, {3840, 2160}, {2560, 1440}, {3840, 2160}};
    for (unsigned code = 0; code < 14; ++code) {
        EXPECT_EQ(resolution_size(code), sizes[code]) << code;
    }
    for (unsigned code : {14u, 15u, UINT_MAX}) {
        EXPECT_TRUE(resolution_size(code).isEmpty()) << code;
    }
}

// ---- hit testing --------------------------------------------------------------------------------

SplitInfo layers(const std::vector<uint8_t> &topLayers) {
    SplitInfo split = {};
    split.wndCnt = static_cast<uint32_t>(topLayers.size());
    for (size_t i = 0; i < topLayers.size() && i < kSplitWindows; ++i) {
        split.wnd[i].topLayer = topLayers[i];
    }
    return split;
}

TEST(HitWindow, IsTheHighestIndexOfTheTopLayer) {
    const QVector<QRect> windows(4, QRect(0, 0, 10, 10));
    const QPoint p(5, 5);
    EXPECT_EQ(hit_window(layers({0, 0, 0, 0}), windows, p), 3);
    EXPECT_EQ(hit_window(layers({0, 255, 0, 0}), windows, p), 1);
    EXPECT_EQ(hit_window(layers({255, 0, 255, 0}), windows, p), 2);
    EXPECT_EQ(hit_window(layers({255, 0, 0, 0}), windows, p), 0);
}

TEST(HitWindow, CountsTheEdges) {
    const QVector<QRect> windows{QRect(0, 0, 10, 10), QRect(10, 10, 10, 10)};
    const SplitInfo split = layers({0, 0});
    EXPECT_EQ(hit_window(split, windows, QPoint(10, 10)), 1);
    EXPECT_EQ(hit_window(split, windows, QPoint(19, 19)), 1);
    EXPECT_EQ(hit_window(split, windows, QPoint(9, 9)), 0);
}

TEST(HitWindow, IsTheFirstWhereThereIsNone) {
    const QVector<QRect> windows{QRect(0, 0, 10, 10), QRect(10, 10, 10, 10)};
    EXPECT_EQ(hit_window(layers({0, 0}), windows, QPoint(20, 20)), 0);
    EXPECT_EQ(hit_window(layers({0, 0}), {}, QPoint(5, 5)), 0);
    EXPECT_EQ(hit_window(layers({}), windows, QPoint(15, 15)), 0);
}

TEST(HitWindow, NeverHitsAWindowWithoutARectangle) {
    SplitInfo split = layers(std::vector<uint8_t>(16, 0));
    EXPECT_EQ(hit_window(split, {QRect(0, 0, 9, 9), QRect(0, 0, 9, 9)}, QPoint(1, 1)), 1);
    split.wndCnt = UINT_MAX;
    EXPECT_EQ(hit_window(split, {QRect(0, 0, 9, 9), QRect(0, 0, 9, 9)}, QPoint(1, 1)), 1);
}

TEST(HitWindow, FindsThePictureInPictureOverTheFullScreenOne) {
    init_split();
    init_split_info();
    SplitInfo split = {};
    ASSERT_EQ(hal_get_split_info(34, &split), 0);
    const QVector<QRect> windows{QRect(0, 0, 1920, 1080), QRect(1376, 746, 480, 270)};
    EXPECT_EQ(hit_window(split, windows, QPoint(1376, 746)), 1);
    EXPECT_EQ(hit_window(split, windows, QPoint(1855, 1015)), 1);
    EXPECT_EQ(hit_window(split, windows, QPoint(1375, 746)), 0);
}

// ---- OSD labels ---------------------------------------------------------------------------------

TEST(OsdPosition, IsMeasuredFromTheRecordsCorner) {
    const QRect window(100, 200, 800, 400);
    const QSize label(30, 10);
    struct {
        int corner;
        uint32_t x, y;
        QPoint expected;
    } const cases[] = {
        {0, 0, 0, {100, 200}},        {0, 4096, 2048, {500, 300}}, {1, 0, 0, {870, 200}},
        {1, 4096, 2048, {470, 300}},  {2, 0, 0, {100, 590}},       {2, 4096, 2048, {500, 490}},
        {3, 0, 0, {870, 590}},        {3, 4096, 2048, {470, 490}}, {4, 4096, 2048, {500, 300}},
        {-1, 4096, 2048, {500, 300}}, {0, 8191, 8191, {899, 599}}, {0, 8192, 8192, {900, 600}},
        {1, 8192, 0, {70, 200}},      {INT_MIN, 0, 0, {100, 200}},
    };
    for (const auto &c : cases) {
        VideoOutputOSDParameter osd = {};
        osd.corner = c.corner;
        osd.x = c.x;
        osd.y = c.y;
        EXPECT_EQ(osd_position(osd, window, label), c.expected)
            << c.corner << " " << c.x << ", " << c.y;
    }
}

TEST(OsdPosition, WrapsItsProductAtThirtyTwoBits) {
    VideoOutputOSDParameter osd = {};
    osd.x = 0xFFFFFFFF;  // x 1920 is 0xFFFFF880
    osd.y = 0x00400000;  // x 1080 is 0x10E000000
    EXPECT_EQ(osd_position(osd, QRect(0, 0, 1920, 1080), QSize(10, 10)),
              QPoint(0xFFFFF880 >> 13, 0x0E000000 >> 13));
    // From the right, 8192 - 8193 wraps as well.
    osd.corner = 1;
    osd.x = 8193;
    EXPECT_EQ(osd_position(osd, QRect(0, 0, 1920, 1080), QSize(10, 10)).x(),
              static_cast<int>(0xFFFFF880 >> 13) - 10);
}

// ---- watermark cells ----------------------------------------------------------------------------

TEST(WatermarkCells, OfThreeLeaveTheRightmostPixelToNobody) {
    const QVector<WatermarkCell> cells = watermark_cells(QSize(1366, 768), 3);
    ASSERT_EQ(cells.size(), 9);
    for (int i = 0; i < 9; ++i) {
        const int column = i % 3;
        const int row = i / 3;
        EXPECT_EQ(cells[i].label, i);
        EXPECT_EQ(cells[i].actualScreen,
                  QRect(QList{0, 455, 910}[column], QList{0, 256, 512}[row], 455, 256));
        EXPECT_EQ(cells[i].virtualScreen,
                  QRect(QList{0, 2730, 5461}[column], QList{0, 2730, 5461}[row], 2730, 2730));
    }
    EXPECT_EQ(cells.last().actualScreen.right(), 910 + 455 - 1);
}

TEST(WatermarkCells, AreAsManyAsThereAreLabels) {
    struct {
        int arrangement;
        int cells;
    } const cases[] = {{0, 0},       {1, 1},   {2, 4},   {3, 9},      {4, 16},
                       {5, 16},      {16, 16}, {17, 16}, {8192, 16},  {8193, 0},
                       {INT_MAX, 0}, {-1, 0},  {-4, 0},  {INT_MIN, 0}};
    for (const auto &c : cases) {
        const QVector<WatermarkCell> cells = watermark_cells(QSize(1920, 1080), c.arrangement);
        EXPECT_EQ(cells.size(), c.cells) << c.arrangement;
        for (int i = 0; i < cells.size(); ++i) {
            EXPECT_EQ(cells[i].label, i) << c.arrangement;
            EXPECT_TRUE(cells[i].virtualScreen.isValid()) << c.arrangement;
        }
    }
    EXPECT_TRUE(watermark_cells(QSize(0, 0), 2).first().actualScreen.isEmpty());
}

// ---- the dot watermark --------------------------------------------------------------------------

TEST(DotMovesOn, EveryMultipleOfItsSpeed) {
    EXPECT_TRUE(dot_moves_on(10, 1));
    EXPECT_TRUE(dot_moves_on(10, 5));
    EXPECT_FALSE(dot_moves_on(10, 4));
    EXPECT_FALSE(dot_moves_on(10, INT_MAX));
    EXPECT_FALSE(dot_moves_on(10, -1));
    EXPECT_FALSE(dot_moves_on(10, INT_MIN));
}

TEST(DotMovesOn, EveryTickAtSpeedZero) {
    for (unsigned tick : {0u, 1u, 10u, UINT_MAX}) {
        EXPECT_TRUE(dot_moves_on(tick, 0));
    }
}

TEST(MovedDot, EntersAgainAtTheOppositeEdge) {
    const QSize screen(100, 50);
    struct {
        QPoint from;
        int direction, step;
        QPoint to;
    } const cases[] = {
        {{32, 32}, 0, 5, {27, 32}},    {{3, 32}, 0, 5, {98, 32}},     {{5, 32}, 0, 5, {0, 32}},
        {{32, 32}, 2, 5, {37, 32}},    {{97, 32}, 2, 5, {2, 32}},     {{94, 32}, 2, 5, {99, 32}},
        {{95, 32}, 2, 5, {0, 32}},     {{32, 32}, 1, 5, {32, 27}},    {{32, 3}, 1, 5, {32, 48}},
        {{32, 32}, 3, 5, {32, 37}},    {{32, 47}, 3, 5, {32, 2}},     {{32, 32}, 4, 5, {32, 32}},
        {{32, 32}, -1, 5, {32, 32}},   {{0, 0}, 0, 250, {-150, 0}},   {{0, 0}, 2, 250, {50, 0}},
        {{32, 32}, 0, -90, {122, 32}}, {{32, 32}, 2, -90, {-58, 32}},
    };
    for (const auto &c : cases) {
        WatermarkDotmatrixParameter record = {};
        record.direction = c.direction;
        record.step = c.step;
        EXPECT_EQ(moved_dot(c.from, record, screen), c.to)
            << c.from.x() << ", " << c.from.y() << " " << c.direction << " by " << c.step;
    }
}

TEST(MovedDot, TakesAnyStepPositionAndScreen) {
    for (int step : {INT_MIN, INT_MIN + 1, -1, 0, INT_MAX}) {
        for (int position : {INT_MIN, -1, 0, INT_MAX}) {
            for (int direction = -1; direction < 5; ++direction) {
                WatermarkDotmatrixParameter record = {};
                record.direction = direction;
                record.step = step;
                const QPoint from(position, position);
                for (const QSize &screen : {QSize(0, 0), QSize(1, 1), QSize(1920, 1080)}) {
                    const QPoint to = moved_dot(from, record, screen);
                    EXPECT_TRUE(to.x() == from.x() || to.y() == from.y());
                }
            }
        }
    }
}

}  // namespace
