#include "label_geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace {

const QRect kFullScreen(0, 0, 1920, 1080);
const QRect kUnits(0, 0, 8192, 8192);

QRect edges(int left, int top, int right, int bottom) {
    QRect rect;
    rect.setCoords(left, top, right, bottom);
    return rect;
}

TEST(LabelGeometry, SizesAreExactAtTheEndsOfTheIntegers) {
    EXPECT_EQ(screen_width(edges(INT_MIN, 0, INT_MAX, 0)), int64_t{1} << 32);
    EXPECT_EQ(screen_height(edges(0, INT_MAX, 0, INT_MIN)), 2 - (int64_t{1} << 32));
    EXPECT_EQ(widget_size(edges(INT_MIN, 10, INT_MAX, 5)), QSize(16777215, 0));
    EXPECT_EQ(widget_size(kFullScreen), QSize(1920, 1080));
}

TEST(LabelGeometry, RecordPositionsBecomePixelsOfTheScreen) {
    struct Row {
        int x, y;
        QRect actual, units;
        QPoint expected;
    };
    const Row rows[] = {
        {0, 0, kFullScreen, kUnits, {0, 0}},
        {1, 1, kFullScreen, kUnits, {0, 0}},
        {4096, 4096, kFullScreen, kUnits, {960, 540}},
        {8191, 8191, kFullScreen, kUnits, {1919, 1079}},
        {8192, 8192, kFullScreen, kUnits, {1920, 1080}},
        {100, 200, QRect(960, 540, 960, 540), QRect(4096, 4096, 4096, 4096), {983, 566}},
        {100, 100, QRect(455, 256, 455, 256), QRect(2730, 2730, 2730, 2730), {471, 265}},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(placed_signed(row.x, row.y, row.actual, row.units), row.expected) << row.x;
        EXPECT_EQ(placed_unsigned(row.x, row.y, row.actual, row.units), row.expected) << row.x;
    }
}

TEST(LabelGeometry, NegativePositionsAreCutTowardZeroWhereTheDivisionIsSigned) {
    EXPECT_EQ(placed_signed(-1, -8192, kFullScreen, kUnits), QPoint(0, -1080));
    EXPECT_EQ(placed_signed(-9, 0, kFullScreen, kUnits), QPoint(-2, 0));
}

TEST(LabelGeometry, NegativePositionsWrapWhereTheDivisionIsUnsigned) {
    // 2^32 - 1920 and 2^32 - 1080, over 8192
    EXPECT_EQ(placed_unsigned(-1, -1, kFullScreen, kUnits), QPoint(524287, 524287));
    // 0x7fffffff * 1920 mod 2^32 = 2^32 - 1920
    EXPECT_EQ(placed_unsigned(INT_MAX, 0, kFullScreen, kUnits), QPoint(524287, 0));
}

TEST(LabelGeometry, NoPositionLeavesTheRangeOfCorners) {
    const int values[] = {INT_MIN, INT_MIN + 1, -8192, -1, 0, 1, 8192, INT_MAX - 1, INT_MAX};
    const QRect screens[] = {kFullScreen, edges(INT_MIN, INT_MIN, INT_MAX, INT_MAX),
                             edges(INT_MAX, INT_MAX, INT_MIN, INT_MIN), edges(5, 5, 3, 3),
                             edges(0, 0, 0, 0)};
    for (const QRect &actual : screens) {
        for (const QRect &units : screens) {
            for (const int value : values) {
                for (const QPoint &corner : {placed_signed(value, value, actual, units),
                                             placed_unsigned(value, value, actual, units)}) {
                    EXPECT_THAT(corner.x(),
                                testing::AllOf(testing::Ge(-kFarthest), testing::Le(kFarthest)));
                    EXPECT_THAT(corner.y(),
                                testing::AllOf(testing::Ge(-kFarthest), testing::Le(kFarthest)));
                }
            }
        }
    }
}

TEST(LabelGeometry, AScreenWithoutUnitsHasNoPositions) {
    EXPECT_FALSE(has_units(edges(0, 0, -1, 100)));
    EXPECT_FALSE(has_units(edges(0, 0, 100, -1)));
    EXPECT_TRUE(has_units(edges(0, 0, 0, 0)));
    EXPECT_TRUE(has_units(edges(10, 10, 0, 0)));
}

TEST(LabelGeometry, TheTopAndLeftEdgeHoldADraggedLabel) {
    const QRect screen(100, 50, 200, 100);
    EXPECT_EQ(held_top_left({0, 0}, screen), QPoint(100, 50));
    EXPECT_EQ(held_top_left({150, 60}, screen), QPoint(150, 60));
    EXPECT_EQ(held_top_left({5000, 5000}, screen), QPoint(5000, 5000));
    EXPECT_EQ(held_top_left({INT_MAX, INT_MIN}, screen), QPoint(kFarthest, 50));
}

TEST(LabelGeometry, AllEdgesHoldADraggedLabelAndTheRightAndBottomOnesWin) {
    const QRect screen(100, 50, 200, 100);  // to 299 and 149
    const QSize label(30, 20);
    EXPECT_EQ(held_on_all_sides({0, 0}, label, screen), QPoint(100, 50));
    EXPECT_EQ(held_on_all_sides({270, 130}, label, screen), QPoint(270, 130));
    EXPECT_EQ(held_on_all_sides({271, 131}, label, screen), QPoint(270, 130));
    EXPECT_EQ(held_on_all_sides({150, 60}, {201, 101}, screen), QPoint(99, 49));
    EXPECT_EQ(held_on_all_sides({INT_MAX, INT_MIN}, label, screen), QPoint(270, 50));
}

TEST(LabelGeometry, TheRoomAfterAPositionIsThatToTheFarEdge) {
    EXPECT_EQ(room_after(0, 1920), 1920u);
    EXPECT_EQ(room_after(6144, 1920), 480u);
    EXPECT_EQ(room_after(8191, 1920), 0u);
    EXPECT_EQ(room_after(8192, 1920), 0u);
    EXPECT_EQ(room_after(8193, 1920), 524287u);  // (2^32 - 1920) >> 13
    EXPECT_EQ(room_after(UINT32_MAX, 0), 0u);
}

TEST(LabelGeometry, ALabelMovesOnEverySpeedthTick) {
    struct Row {
        int tick, speed;
        bool moves;
    };
    const Row rows[] = {
        {10, 0, true},
        {11, 0, true},
        {11, 1, true},
        {10, 2, true},
        {11, 2, false},
        {12, 3, true},
        {13, 3, false},
        {10, -2, true},
        {11, -2, false},
        {INT_MIN, -1, true},
        {INT_MAX, -1, true},
        {0, INT_MIN, true},
        {INT_MIN, INT_MIN, true},
        {INT_MAX, INT_MIN, false},
        {INT_MAX, INT_MAX, true},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(moves_on(row.tick, row.speed), row.moves) << row.tick << " " << row.speed;
    }
}

TEST(LabelGeometry, AScrollStepGoesOneStepAlongItsAxisInItsSense) {
    struct Row {
        int direction;
        bool forward;
        QPoint expected;
    };
    const Row rows[] = {
        {0, true, {507, 400}},  {0, false, {493, 400}},      {2, true, {507, 400}},
        {2, false, {493, 400}}, {1, true, {500, 407}},       {1, false, {500, 393}},
        {3, true, {500, 407}},  {3, false, {500, 393}},      {4, true, {500, 400}},
        {-1, true, {500, 400}}, {INT_MIN, true, {500, 400}},
    };
    for (const Row &row : rows) {
        const ScrollStep next =
            scrolled({{500, 400}, row.forward}, {50, 20}, kFullScreen, row.direction, 7);
        EXPECT_EQ(next.corner, row.expected) << row.direction;
        EXPECT_EQ(next.forward, row.forward) << row.direction;
    }
}

TEST(LabelGeometry, ALabelTurnsOnePixelShortOfTheRightAndBottomEdges) {
    const QSize label(100, 50);
    ScrollStep next = scrolled({{1818, 0}, true}, label, kFullScreen, 0, 1);
    EXPECT_EQ(next.corner, QPoint(1819, 0));  // its right edge is pixel 1918
    EXPECT_TRUE(next.forward);
    next = scrolled(next, label, kFullScreen, 0, 1);
    EXPECT_EQ(next.corner, QPoint(1819, 0));
    EXPECT_FALSE(next.forward);
    next = scrolled({{0, 1020}, true}, label, kFullScreen, 1, 30);
    EXPECT_EQ(next.corner, QPoint(0, 1029));
    EXPECT_FALSE(next.forward);
}

TEST(LabelGeometry, ALabelTurnsAtTheLeftAndTopEdges) {
    const QRect screen(100, 200, 400, 300);
    EXPECT_EQ(scrolled({{103, 210}, false}, {10, 10}, screen, 0, 3).corner, QPoint(100, 210));
    EXPECT_FALSE(scrolled({{103, 210}, false}, {10, 10}, screen, 0, 3).forward);
    EXPECT_TRUE(scrolled({{103, 210}, false}, {10, 10}, screen, 0, 4).forward);
    EXPECT_EQ(scrolled({{110, 202}, false}, {10, 10}, screen, 1, 5).corner, QPoint(110, 200));
    EXPECT_TRUE(scrolled({{110, 202}, false}, {10, 10}, screen, 1, 5).forward);
}

TEST(LabelGeometry, ALabelLargerThanTheScreenLiesAtThatEdgeAfterEveryStepAndNeverTurnsForward) {
    const QRect cell(600, 0, 300, 300);
    ScrollStep now{{600, 0}, true};
    for (int tick = 0; tick < 5; ++tick) {
        now = scrolled(now, {400, 20}, cell, 0, 9);
        EXPECT_EQ(now.corner, QPoint(499, 0));
        EXPECT_FALSE(now.forward);
    }
}

TEST(LabelGeometry, ALabelAsLargeAsTheScreenGoesToAndFroByAPixel) {
    const QRect cell(0, 0, 960, 540);
    ScrollStep now{{0, 0}, false};
    constexpr struct {
        QPoint corner;
        bool forward;
    } kSteps[] = {
        {{0, -1}, false}, {{0, 0}, true}, {{-1, -1}, false}, {{0, 0}, true}, {{-1, -1}, false}};
    for (const auto &step : kSteps) {
        now = scrolled(now, cell.size(), cell, 0, 5);
        EXPECT_EQ(now.corner, step.corner);
        EXPECT_EQ(now.forward, step.forward);
    }
}

TEST(LabelGeometry, TheEdgesCountAlsoAcrossTheDirection) {
    const ScrollStep next = scrolled({{10, -30}, false}, {10, 10}, kFullScreen, 0, 1);
    EXPECT_EQ(next.corner, QPoint(9, 0));
    EXPECT_TRUE(next.forward) << "the top edge turned it";
}

/** The rules of a scroll step once more, in floating point, as they are told. */
ScrollStep toldStep(const ScrollStep &now, const QSize &label, const QRect &screen, int direction,
                    int step) {
    double x = now.corner.x(), y = now.corner.y();
    bool forward = now.forward;
    const double by = forward ? double(step) : -double(step);
    if (direction == 0 || direction == 2) x += by;
    if (direction == 1 || direction == 3) y += by;
    if (x < screen.left()) {
        x = screen.left();
        forward = true;
    }
    if (x + label.width() > screen.right()) {
        x = double(screen.right()) - label.width();
        forward = false;
    }
    if (y < screen.top()) {
        y = screen.top();
        forward = true;
    }
    if (y + label.height() > screen.bottom()) {
        y = double(screen.bottom()) - label.height();
        forward = false;
    }
    return {QPoint(int(x), int(y)), forward};
}

TEST(LabelGeometry, LongWalksFollowTheToldRules) {
    std::mt19937 random(20240611);
    const auto among = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int walk = 0; walk < 300; ++walk) {
        const QRect screen(among(0, 2000), among(0, 2000), among(1, 2000), among(1, 1200));
        const QSize label(among(0, 600), among(0, 300));
        const int direction = among(0, 9) == 0 ? among(-5, 8) : among(0, 3);
        const int step = among(0, 19) == 0 ? among(INT_MIN, INT_MAX) : among(-3, 90);
        ScrollStep now{{among(0, 4000), among(0, 3000)}, among(0, 1) == 1};
        ScrollStep told = now;
        for (int tick = 0; tick < 200; ++tick) {
            now = scrolled(now, label, screen, direction, step);
            told = toldStep(told, label, screen, direction, step);
            ASSERT_EQ(now.corner, told.corner) << "walk " << walk << " tick " << tick;
            ASSERT_EQ(now.forward, told.forward) << "walk " << walk << " tick " << tick;
        }
    }
}

TEST(LabelGeometry, NoStepOverflows) {
    for (const int step : {INT_MIN, INT_MAX, -1, 0}) {
        for (const bool forward : {false, true}) {
            for (int direction = -1; direction < 5; ++direction) {
                const ScrollStep next = scrolled({{kFarthest, -kFarthest}, forward}, {10, 10},
                                                 kFullScreen, direction, step);
                EXPECT_TRUE(kFullScreen.contains(next.corner));
            }
        }
    }
}

TEST(LabelGeometry, PresetFontsFollowTheLinesOfTheScreen) {
    struct Row {
        int font, size;
        double lines;
        int points;
    };
    const Row rows[] = {
        {0, 0, 1080, 12}, {1, 0, 1080, 18},   {2, 0, 1080, 24},       {3, 0, 1080, 36},
        {4, 0, 1080, 48}, {5, 0, 1080, 60},   {6, 0, 1080, 72},       {3, 0, 540, 18},
        {0, 0, 540, 6},   {0, 0, 10, 6},      {6, 0, 2160, 72},       {1, 0, 1050, 18},
        {1, 0, 1049, 17}, {-1, 99, 1080, 12}, {INT_MIN, 0, 1080, 12}, {3, 0, 0, 6},
        {3, 0, -1e18, 6}, {3, 0, 1e18, 72},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(point_size(row.font, row.size, row.lines), row.points)
            << row.font << " on " << row.lines;
    }
}

TEST(LabelGeometry, FontsOfAClassFromSevenOnAreAsLargeAsTheRecordSays) {
    for (const int font : {7, 8, INT_MAX}) {
        EXPECT_EQ(point_size(font, 100, 1080), 72);
        EXPECT_EQ(point_size(font, 2, 1080), 6);
        EXPECT_EQ(point_size(font, 40, 10), 40);
        EXPECT_EQ(point_size(font, INT_MIN, 1080), 6);
        EXPECT_EQ(point_size(font, INT_MAX, 1080), 72);
    }
}

}  // namespace
