#include "user_split.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "mainwindow_debug.h"

bool operator==(const tagWinRect &a, const tagWinRect &b) {
    return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h && a.layer == b.layer &&
           a.color == b.color;
}

void PrintTo(const tagWinRect &r, std::ostream *out) {
    *out << "(" << r.x << ", " << r.y << ", " << r.w << ", " << r.h << ", layer " << r.layer
         << ", color " << r.color << ")";
}

namespace {

using Rects = std::vector<tagWinRect>;

constexpr tagWinRect kUntouched = {-7, -7, -7, -7, -7, -7};

// ---- the parser ---------------------------------------------------------------------------------

struct ParseCase {
    const char *text;
    unsigned n;
    Rects expected;  // of three entries that were zero
};

const ParseCase kParseCases[] = {
    {"0,0,4096,4096,0;4096,0,4096,4096,0", 2, {{0, 0, 960, 540, 0, 0}, {960, 0, 960, 540, 0, 0}}},
    {"0,0,8192,8192,0", 1, {{0, 0, 1920, 1080, 0, 0}}},
    {"0,0,8196,8196,0", 1, {{0, 0, 1920, 1080, 0, 0}}},
    {"", 3, {}},
    {";;;", 3, {}},
    {"0,0,4096,4096,0", 0, {}},
    // Tokens past the count are ignored, empty tokens skipped, missing tokens leave zero.
    {"8192,0,0,0,1;0,8192,0,0,2;0,0,8192,0,3", 2, {{1920, 0, 0, 0, 1, 0}, {0, 1080, 0, 0, 2, 0}}},
    {";;8192,0,0,0,1;;;0,8192,0,0,2;", 3, {{1920, 0, 0, 0, 1, 0}, {0, 1080, 0, 0, 2, 0}}},
    {"8192,8192,8192,8192,5", 3, {{1920, 1080, 1920, 1080, 5, 0}}},
    // Fields that fail to read.
    {"8192,4096;x", 2, {{1920, 540, 0, 0, 0, 0}, {1920, 540, 0, 0, 0, 0}}},
    {"8192,8192,8192,8192,9;4096,x,1,1,1",
     2,
     {{1920, 1080, 1920, 1080, 9, 0}, {960, 1080, 1920, 1080, 9, 0}}},
    {"8192 ,8192,8192,8192,9", 1, {{1920, 0, 0, 0, 0, 0}}},
    {" 8192,\t8192,\n8192, 8192, 9", 1, {{1920, 1080, 1920, 1080, 9, 0}}},
    {"8192,8192,8192,8192,9trailing,1", 1, {{1920, 1080, 1920, 1080, 9, 0}}},
    {"+8192,-0,0x10,1,1", 1, {{1920, 0, 0, 0, 0, 0}}},
    {"8192,8192,8192,8192,9;,4096",
     2,
     {{1920, 1080, 1920, 1080, 9, 0}, {1920, 1080, 1920, 1080, 9, 0}}},
    // The product wraps at 32 bits: -1 x 1920 and -1 x 1080.
    {"-1,-1,0,0,-1", 1, {{524287, 524287, 0, 0, -1, 0}}},
    // 2147483647 x 1920 = 0xFFFFF880 and x 1080 = 0xFFFFFBC8, both modulo 2^32.
    {"2147483647,2147483647,0,0,2147483647", 1, {{524287, 524287, 0, 0, INT_MAX, 0}}},
    // 2^32 + 8192 has the low 32 bits of 8192.
    {"4294975488,0,0,0,-4294967297", 1, {{1920, 0, 0, 0, -1, 0}}},
};

TEST(ParseWinSplitstr, ReadsWindowsAsPixelsOfTheReferenceCanvas) {
    for (const ParseCase &c : kParseCases) {
        tagWinRect rects[3] = {};
        Rects expected = c.expected;
        expected.resize(3);
        EXPECT_EQ(parse_win_splitstr(c.text, c.n, rects), -1) << c.text;
        EXPECT_THAT(rects, testing::ElementsAreArray(expected)) << c.text;
    }
}

TEST(ParseWinSplitstr, ReadsOnlyTheLowBitsOfAProduct) {
    for (int64_t units : {int64_t{INT_MIN}, int64_t{-8193}, int64_t{8191}, int64_t{123456789}}) {
        tagWinRect rect = {};
        const std::string number = std::to_string(units);
        parse_win_splitstr((number + "," + number + ",0,0,0").c_str(), 1, &rect);
        // The mathematical product, reduced modulo 2^32.
        const int64_t wrap = int64_t{1} << 32;
        EXPECT_EQ(rect.x, ((units * 1920 % wrap + wrap) % wrap) / 8192) << number;
        EXPECT_EQ(rect.y, ((units * 1080 % wrap + wrap) % wrap) / 8192) << number;
    }
}

TEST(ParseWinSplitstr, WritesNothingWithoutAToken) {
    for (const char *text : {"", ";", ";;;;"}) {
        tagWinRect rect = kUntouched;
        EXPECT_EQ(parse_win_splitstr(text, 1, &rect), -1);
        EXPECT_EQ(rect, kUntouched);
    }
    tagWinRect rect = kUntouched;
    EXPECT_EQ(parse_win_splitstr(nullptr, 1, &rect), -1);
    EXPECT_EQ(parse_win_splitstr("1,1,1,1,1", 0, &rect), -1);
    EXPECT_EQ(parse_win_splitstr("1,1,1,1,1", 1, nullptr), -1);
    EXPECT_EQ(rect, kUntouched);
}

TEST(ParseWinSplitstr, LeavesTheColourAndTheWindowsAfterTheTextAlone) {
    tagWinRect rects[3] = {kUntouched, kUntouched, kUntouched};
    parse_win_splitstr("0,0,8192,8192,0;0,0,0,0,0", 3, rects);
    EXPECT_THAT(rects, testing::ElementsAre(tagWinRect{0, 0, 1920, 1080, 0, -7},
                                            tagWinRect{0, 0, 0, 0, 0, -7}, kUntouched));
}

TEST(ParseWinSplitstr, TakesTextsOfAnyLength) {
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "8192,0,0,0,1;";
    }
    text += std::string(100000, '9');
    tagWinRect rects[16] = {};
    parse_win_splitstr(text.c_str(), 16, rects);
    EXPECT_EQ(rects[15], (tagWinRect{1920, 0, 0, 0, 1, 0}));
}

TEST(ParseWinSplitstr, SurvivesRandomBytes) {
    std::mt19937 random(1);
    const std::string alphabet = "0123456789,;- +x\n\xff";
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (int i = random() % 60; i > 0; --i) {
            text += alphabet[random() % alphabet.size()];
        }
        tagWinRect rects[16] = {};
        ASSERT_EQ(parse_win_splitstr(text.c_str(), random() % 17, rects), -1);
        for (const tagWinRect &r : rects) {
            ASSERT_GE(r.x, 0) << text;
            ASSERT_LT(r.h, 1 << 19) << text;
        }
    }
}

TEST(ParseWinSplitstr, PrintsItsStepsOnlyWhileTheSwitchIsOn) {
    tagWinRect rects[2] = {};
    testing::internal::CaptureStdout();
    parse_win_splitstr("0,0,8192,8192,3", 2, rects);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    debug_mainwindow = 1;
    testing::internal::CaptureStdout();
    parse_win_splitstr("0,0,8192,8192,3;", 2, rects);
    debug_mainwindow = 0;
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, testing::HasSubstr("parse_win_splitstr 0,0,8192,8192,3 0\n"));
    EXPECT_THAT(printed, testing::HasSubstr("parse_win_splitstr 0,0,1920,1080,3\n"));
}

// ---- the visible border segments ----------------------------------------------------------------

struct Lines {
    QVector<QLineF> lines{QLineF(1, 2, 3, 4)};
    QVector<QColor> colours{Qt::yellow};

    explicit Lines(const Rects &rects) {
        trans_win_rects_to_QLine(rects.data(), static_cast<int>(rects.size()), lines, colours);
    }
};

TEST(BorderLines, AreNoneWithoutWindows) {
    for (int n : {0, -1, INT_MIN}) {
        QVector<QLineF> lines{QLineF(1, 2, 3, 4)};
        QVector<QColor> colours{Qt::yellow};
        trans_win_rects_to_QLine(nullptr, n, lines, colours);
        EXPECT_TRUE(lines.isEmpty());
        EXPECT_TRUE(colours.isEmpty());
    }
}

TEST(BorderLines, AreTheFourEdgesOfALoneWindowWithItsFarEdgesPastTheLastPixel) {
    const Lines l({{10, 20, 30, 40, 0, 0x12AB34}});
    EXPECT_EQ(
        l.lines,
        (QVector<QLineF>{{10, 20, 40, 20}, {40, 20, 40, 60}, {10, 20, 10, 60}, {10, 60, 40, 60}}));
    EXPECT_EQ(l.colours, QVector<QColor>(4, QColor(0x12, 0xAB, 0x34)));
}

TEST(BorderLines, AreSevenForTwoWindowsSideBySide) {
    const Lines l({{0, 0, 960, 540, 0, 0xFF0000}, {960, 0, 960, 540, 0, 0x00FF00}});
    EXPECT_EQ(l.lines, (QVector<QLineF>{{0, 0, 959, 0},
                                        {0, 0, 0, 540},
                                        {0, 540, 959, 540},
                                        {960, 0, 1920, 0},
                                        {1920, 0, 1920, 540},
                                        {960, 0, 960, 540},
                                        {960, 540, 1920, 540}}));
    EXPECT_EQ(l.colours, (QVector<QColor>{Qt::red, Qt::red, Qt::red, Qt::green, Qt::green,
                                          Qt::green, Qt::green}));
}

TEST(BorderLines, AreNotThoseOfAWindowInsideAHigherOne) {
    const Lines l({{10, 10, 5, 5, 0, 1}, {0, 0, 100, 100, 1, 2}});
    EXPECT_EQ(l.lines.size(), 4);
    EXPECT_EQ(l.colours, QVector<QColor>(4, QColor(0, 0, 2)));
    // Whatever the order of the two.
    const Lines reversed({{0, 0, 100, 100, 1, 2}, {10, 10, 5, 5, 0, 1}});
    EXPECT_EQ(reversed.lines, l.lines);
}

TEST(BorderLines, OfAFullScreenWindowAreNotSplitByAWindowInItsMiddle) {
    const Lines l({{0, 0, 1920, 1080, 0, 1}, {640, 360, 640, 360, 1, 2}});
    EXPECT_EQ(l.lines.size(), 8);
    EXPECT_EQ(l.lines.mid(0, 4),
              (QVector<QLineF>{
                  {0, 0, 1920, 0}, {1920, 0, 1920, 1080}, {0, 0, 0, 1080}, {0, 1080, 1920, 1080}}));
}

TEST(BorderLines, OfAWindowThatIsCrossedAreSplitOnBothSides) {
    const Lines l({{0, 100, 300, 100, 0, 1}, {100, 0, 100, 300, 0, 2}});
    EXPECT_EQ(l.lines.mid(0, 6), (QVector<QLineF>{{0, 100, 99, 100},
                                                  {201, 100, 300, 100},
                                                  {300, 100, 300, 200},
                                                  {0, 100, 0, 200},
                                                  {0, 200, 99, 200},
                                                  {201, 200, 300, 200}}));
}

TEST(BorderLines, TakeRectanglesOfAnyNumbers) {
    const Rects rects = {{INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, -1},
                         {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN},
                         {INT_MIN, INT_MIN, INT_MAX, INT_MAX, 0, INT_MAX},
                         {524287, 524287, 524287, 524287, INT_MAX, 0},
                         {-5, -5, -5, -5, 7, 0}};
    const Lines l(rects);
    EXPECT_EQ(l.lines.size(), l.colours.size());
    EXPECT_THAT(l.colours, testing::Each(testing::Property(&QColor::alpha, 255)));
}

TEST(BorderLines, ArePrintedWhileTheSwitchIsOn) {
    debug_mainwindow = 1;
    testing::internal::CaptureStdout();
    const Lines l({{1, 2, 3, 4, 0, 0xABCDEF}});
    debug_mainwindow = 0;
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::HasSubstr("line:0 1,2, ==4,2 00abcdef\n"));
}

// The independent model: every grid point of every edge, and how many edges of the window it lies
// on, unless the closed box of a covering window holds it.
using Points = std::map<std::pair<int, int>, int>;

void add_points(int x1, int y1, int x2, int y2, Points &points) {
    for (int x = x1; x <= x2; ++x) {
        for (int y = y1; y <= y2; ++y) {
            ++points[{x, y}];
        }
    }
}

bool is_hidden(const Rects &rects, size_t i, int x, int y) {
    for (size_t j = 0; j < rects.size(); ++j) {
        const tagWinRect &r = rects[j];
        const bool over = r.layer > rects[i].layer || (r.layer == rects[i].layer && j > i);
        if (over && x >= r.x && x <= r.x + r.w && y >= r.y && y <= r.y + r.h) {
            return true;
        }
    }
    return false;
}

Points expected_points(const Rects &rects, size_t i) {
    const tagWinRect &r = rects[i];
    Points edges;
    add_points(r.x, r.y, r.x + r.w, r.y, edges);
    add_points(r.x, r.y + r.h, r.x + r.w, r.y + r.h, edges);
    add_points(r.x, r.y, r.x, r.y + r.h, edges);
    add_points(r.x + r.w, r.y, r.x + r.w, r.y + r.h, edges);
    Points visible;
    for (const auto &[point, count] : edges) {
        if (!is_hidden(rects, i, point.first, point.second)) {
            visible[point] = count;
        }
    }
    return visible;
}

TEST(BorderLines, AreTheVisiblePointsOfEveryEdgeForRandomLayouts) {
    std::mt19937 random(20240711);
    for (int round = 0; round < 6000; ++round) {
        Rects rects(1 + random() % 16);
        for (size_t i = 0; i < rects.size(); ++i) {
            rects[i] = {static_cast<int>(random() % 30), static_cast<int>(random() % 30),
                        static_cast<int>(random() % 16), static_cast<int>(random() % 16),
                        static_cast<int>(random() % 3),  static_cast<int>(i)};
        }
        const Lines l(rects);
        ASSERT_EQ(l.lines.size(), l.colours.size());
        std::vector<Points> points(rects.size());
        for (qsizetype k = 0; k < l.lines.size(); ++k) {
            const QLine line = l.lines[k].toLine();
            add_points(line.x1(), line.y1(), line.x2(), line.y2(), points[l.colours[k].blue()]);
        }
        for (size_t i = 0; i < rects.size(); ++i) {
            ASSERT_EQ(points[i], expected_points(rects, i)) << "round " << round << " window " << i;
        }
    }
}

}  // namespace
