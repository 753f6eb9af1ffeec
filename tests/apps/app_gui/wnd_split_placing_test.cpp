// Where hal_get_split_wnd_info() places windows.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "wnd_split.h"

namespace {

using Canvas = std::array<unsigned, 4>;
using Rect = std::array<int, 4>;

constexpr Canvas kFullHd = {0, 0, 1920, 1080};
constexpr Rect kUntouched = {-7, -7, -7, -7};

class WndSplitPlacing : public testing::Test {
protected:
    static void SetUpTestSuite() {
        init_split();
        init_split_info();
    }
};

SplitInfo info_of(unsigned mode) {
    SplitInfo info = {};
    EXPECT_EQ(hal_get_split_info(mode, &info), 0) << "mode " << mode;
    return info;
}

Rect placed(const Canvas &canvas, const SplitWndInfo &window) {
    Rect rect = kUntouched;
    EXPECT_EQ(hal_get_split_wnd_info(canvas.data(), &window, rect.data()), 0);
    return rect;
}

Rect placed(const Canvas &canvas, unsigned mode, unsigned window) {
    return placed(canvas, info_of(mode).wnd[window]);
}

SplitCoordinate ratio(double value) {
    SplitCoordinate coordinate = {};
    coordinate.isRatio = 1;
    coordinate.ratio = value;
    return coordinate;
}

SplitCoordinate pixels(uint32_t value) {
    SplitCoordinate coordinate = {};
    coordinate.pixels = value;
    return coordinate;
}

SplitWndInfo window(uint8_t anchor, SplitCoordinate x, SplitCoordinate y, SplitCoordinate w,
                    SplitCoordinate h) {
    SplitWndInfo info = {};
    info.anchor = anchor;
    info.kind = 6;
    info.x = x;
    info.y = y;
    info.w = w;
    info.h = h;
    return info;
}

// ---- literal rows

struct PlaceCase {
    const char *what;
    Canvas canvas;
    unsigned mode, window;
    Rect rect;
};

TEST_F(WndSplitPlacing, WindowsOfModesLieAtTheirPixels) {
    const PlaceCase cases[] = {
        {"Mode9 first", kFullHd, 9, 0, {0, 0, 640, 360}},
        {"Mode9 middle", kFullHd, 9, 4, {640, 360, 1280, 720}},
        {"Mode9 last", kFullHd, 9, 8, {1280, 720, 1920, 1080}},
        {"Mode9 middle, laptop", {0, 0, 1366, 768}, 9, 4, {456, 256, 912, 512}},
        {"Mode9 right, laptop", {0, 0, 1366, 768}, 9, 5, {912, 256, 1366, 512}},
        {"picture below its overlay", kFullHd, 34, 0, {0, 0, 1920, 1080}},
        {"overlaid picture", kFullHd, 34, 1, {1376, 746, 1856, 1016}},
        {"odd width, left", {0, 0, 1365, 768}, 2, 0, {0, 0, 682, 768}},
        {"odd width, right", {0, 0, 1365, 768}, 2, 1, {684, 0, 1366, 768}},
        {"Mode4 on 2160p", {0, 0, 3840, 2160}, 4, 3, {1920, 1080, 3840, 2160}},
        {"Mode5 small", kFullHd, 5, 4, {1440, 810, 1920, 1080}},
        {"Mode7 large", kFullHd, 7, 0, {0, 0, 1600, 1080}},
        {"Mode11 coincident", kFullHd, 11, 1, {1600, 216, 1920, 432}},
        {"Mode16 inner", kFullHd, 16, 5, {480, 270, 960, 540}},
        {"shifted canvas", {100, 50, 100 + 1920, 50 + 1080}, 4, 3, {1060, 590, 2020, 1130}},
        {"odd canvas corner rounds up", {1, 1, 1921, 1081}, 1, 0, {2, 2, 1922, 1082}},
        {"canvas of nothing", {0, 0, 0, 0}, 1, 0, {0, 0, 0, 0}},
        {"canvas of a pixel", {0, 0, 1, 1}, 4, 0, {0, 0, 0, 0}},
    };
    for (const PlaceCase &c : cases) {
        EXPECT_EQ(placed(c.canvas, c.mode, c.window), c.rect) << c.what;
    }
}

TEST_F(WndSplitPlacing, DescriptionsFromOutsideArePlacedByAnchorAndUnit) {
    const struct {
        const char *what;
        Canvas canvas;
        SplitWndInfo window;
        Rect rect;
    } cases[] = {
        {"pixels from the top left",
         kFullHd,
         window(0, pixels(10), pixels(20), pixels(100), pixels(50)),
         {10, 20, 110, 70}},
        {"pixels from the top right",
         kFullHd,
         window(1, pixels(10), pixels(20), pixels(100), pixels(50)),
         {1810, 20, 1910, 70}},
        {"pixels from the bottom left",
         kFullHd,
         window(2, pixels(10), pixels(20), pixels(100), pixels(50)),
         {10, 1010, 110, 1060}},
        {"pixels from the bottom right",
         kFullHd,
         window(3, pixels(10), pixels(20), pixels(100), pixels(50)),
         {1810, 1010, 1910, 1060}},
        {"fractions from the bottom right",
         kFullHd,
         window(3, ratio(0.25), ratio(0.25), ratio(0.25), ratio(0.25)),
         {960, 540, 1440, 810}},
        {"an anchor past 3 is the top left",
         kFullHd,
         window(4, pixels(10), pixels(20), pixels(100), pixels(50)),
         {10, 20, 110, 70}},
        {"a size of 0 is 64 reference pixels",
         {0, 0, 960, 540},
         window(0, pixels(0), pixels(0), pixels(0), ratio(0)),
         {0, 0, 32, 32}},
        // 800 - 1000 - 80 lies off the canvas: 800 * (1 - 1000 / 1920) = 383.3, so 384 - 80.
        {"a margin off the canvas is a fraction of 1920 x 1080",
         {0, 0, 800, 600},
         window(3, pixels(1000), pixels(600), pixels(80), pixels(60)),
         {304, 208, 384, 268}},
        // 100 - 20 - 80 is 0, which counts as off the canvas: ceil(98.96) - 80 = 19.
        {"a position of 0 counts as off the canvas",
         {0, 0, 100, 540},
         window(1, pixels(20), pixels(0), pixels(80), pixels(64)),
         {20, 0, 100, 64}},
        {"a window that starts before the canvas is moved in",
         {100, 100, 500, 500},
         window(1, ratio(1.0), ratio(0.0), pixels(50), pixels(50)),
         {100, 100, 150, 150}},
        {"a window past the right edge is cut",
         kFullHd,
         window(0, pixels(1900), pixels(1070), pixels(100), pixels(100)),
         {1900, 1070, 1920, 1080}},
        {"the cut uses the odd position",
         kFullHd,
         window(0, pixels(1901), pixels(1071), pixels(100), pixels(100)),
         {1902, 1072, 1920, 1080}},
        {"odd sizes are rounded down",
         kFullHd,
         window(0, pixels(3), pixels(5), pixels(101), pixels(33)),
         {4, 6, 104, 38}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(placed(c.canvas, c.window), c.rect) << c.what;
    }
}

TEST_F(WndSplitPlacing, AUnitOtherThanOneMeansPixels) {
    SplitWndInfo odd = window(0, pixels(10), pixels(20), pixels(100), pixels(50));
    odd.x.isRatio = odd.y.isRatio = odd.w.isRatio = odd.h.isRatio = 255;
    EXPECT_EQ(placed(kFullHd, odd), (Rect{10, 20, 110, 70}));
}

TEST_F(WndSplitPlacing, NullPointersPlaceNothing) {
    const SplitWndInfo good = window(0, ratio(0), ratio(0), ratio(1), ratio(1));
    Rect rect = kUntouched;
    EXPECT_EQ(hal_get_split_wnd_info(nullptr, &good, rect.data()), -2);
    EXPECT_EQ(hal_get_split_wnd_info(kFullHd.data(), nullptr, rect.data()), -2);
    EXPECT_EQ(hal_get_split_wnd_info(kFullHd.data(), &good, nullptr), -2);
    EXPECT_EQ(rect, kUntouched);
}

// ---- properties over all modes and many canvases

bool overlap(const Rect &a, const Rect &b) {
    return a[0] < b[2] && b[0] < a[2] && a[1] < b[3] && b[1] < a[3];
}

unsigned below(std::mt19937 &random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

std::vector<Canvas> many_canvases() {
    std::vector<Canvas> canvases = {
        {0, 0, 720, 576},   {0, 0, 1280, 720},   {0, 0, 1024, 768},  {0, 0, 1366, 768},
        {0, 0, 1440, 900},  {0, 0, 1365, 767},   {0, 0, 3840, 2160}, {0, 0, 4096, 2160},
        {0, 0, 7680, 4320}, {16, 8, 1936, 1088}, {3, 5, 1003, 705},  kFullHd,
    };
    std::mt19937 random(41);
    for (int i = 0; i < 200; ++i) {
        const unsigned left = below(random, 500), top = below(random, 500);
        canvases.push_back(
            {left, top, left + 96 + below(random, 4000), top + 96 + below(random, 3000)});
    }
    return canvases;
}

TEST_F(WndSplitPlacing, EveryEdgeIsEvenAndInsideTheCanvasButForTheRounding) {
    for (const Canvas &canvas : many_canvases()) {
        for (unsigned mode = 0; mode < kSplitModes; ++mode) {
            for (int i = 0; i < getSplitWndNum(mode); ++i) {
                const Rect rect = placed(canvas, mode, i);
                for (const int edge : rect) {
                    ASSERT_EQ(edge % 2, 0) << "mode " << mode << " window " << i;
                }
                ASSERT_GE(rect[0], static_cast<int>(canvas[0]));
                ASSERT_GE(rect[1], static_cast<int>(canvas[1]));
                // An odd position moves up by one after the size was cut.
                ASSERT_LE(rect[2], static_cast<int>(canvas[2]) + 1);
                ASSERT_LE(rect[3], static_cast<int>(canvas[3]) + 1);
                ASSERT_LT(rect[0], rect[2]) << "mode " << mode << " window " << i;
                ASSERT_LT(rect[1], rect[3]) << "mode " << mode << " window " << i;
            }
        }
    }
}

TEST_F(WndSplitPlacing, WindowsOfAModeOverlapByNoMoreThanTheRounding) {
    for (const Canvas &canvas : many_canvases()) {
        for (unsigned mode = 0; mode < 34; ++mode) {
            const int count = getSplitWndNum(mode);
            for (int i = 0; i < count; ++i) {
                for (int k = i + 1; k < count; ++k) {
                    if (mode == 11 && i == 1 && k == 2) {
                        continue;
                    }
                    Rect a = placed(canvas, mode, i), b = placed(canvas, mode, k);
                    // Sizes are rounded up before they are made even, positions likewise.
                    a[2] -= 2, a[3] -= 2, b[2] -= 2, b[3] -= 2;
                    ASSERT_FALSE(overlap(a, b)) << "mode " << mode << " windows " << i << " " << k;
                }
            }
        }
    }
}

TEST_F(WndSplitPlacing, WindowsNeverOverlapOnCanvasesThatTheGridsDivideEvenly) {
    // 120 = 2 * 60 is divided by 2, 3, 4, 5 and 6 into even parts.
    for (const unsigned factor : {1U, 2U, 9U, 16U}) {
        const Canvas canvas = {0, 0, 120 * factor, 120 * factor};
        for (unsigned mode = 0; mode < 34; ++mode) {
            long covered = 0;
            const int count = getSplitWndNum(mode);
            for (int i = 0; i < count; ++i) {
                const Rect a = placed(canvas, mode, i);
                covered += static_cast<long>(a[2] - a[0]) * (a[3] - a[1]);
                for (int k = i + 1; k < count; ++k) {
                    ASSERT_EQ(overlap(a, placed(canvas, mode, k)), mode == 11 && i == 1 && k == 2);
                }
            }
            if (mode < 30 && mode != 11 && mode != 15) {
                EXPECT_EQ(covered, 120L * factor * 120 * factor) << "mode " << mode;
            }
        }
    }
}

// ---- an independent reference

using Wide = int64_t;

/** The next whole number; what is beyond +-2^62 stays there, far outside every limit. */
Wide rounded_up(double value) {
    const double near = std::max(-0x1p62, std::min(value, 0x1p62));
    const Wide whole = static_cast<Wide>(near);
    return whole + (static_cast<double>(whole) < near ? 1 : 0);
}

Wide limited(Wide value, Wide low, Wide high) {
    return value < low ? low : value > high ? high : value;
}

constexpr Wide kIntMin = std::numeric_limits<int>::min();
constexpr Wide kIntMax = std::numeric_limits<int>::max();
constexpr Wide kUnsignedMax = std::numeric_limits<uint32_t>::max();

Wide as_int(Wide value) {
    const Wide low = value & 0xffffffff;
    return low > kIntMax ? low - (Wide(1) << 32) : low;
}

/** The double product, exactly as a double has it, then in whole numbers wide enough for all. */
Wide part_of(uint32_t extent, double part) {
    const double product = part * extent;
    return rounded_up(product);
}

struct Reference {
    uint32_t low, high, screen;
    bool far;

    std::pair<int, int> place(const SplitCoordinate &at, const SplitCoordinate &size) const {
        const uint32_t extent = high - low;
        Wide w = size.isRatio == 1 ? limited(part_of(extent, size.ratio), 0, kUnsignedMax)
                                   : Wide(size.pixels);
        if (w == 0) {
            w = (Wide(extent) * 64 & 0xffffffff) / screen;
        }
        Wide x = 0;
        if (at.isRatio == 1) {
            x = low + part_of(extent, far ? 1.0 - at.ratio : at.ratio) - (far ? w : 0);
            x = limited(x, kIntMin, kIntMax);
        } else if (far) {
            x = as_int(Wide(high) - at.pixels - w);
            if (x < 1) {
                x = low + part_of(extent, 1.0 - at.pixels / double(screen)) - w;
                x = limited(x, kIntMin, kIntMax);
            }
        } else {
            x = as_int(Wide(low) + at.pixels);
        }
        x = std::max(as_int(low), x) & 0xffffffff;
        if (((x + w) & 0xffffffff) > high) {
            w = (Wide(high) - x) & 0xffffffff;
        }
        const Wide first = (x + x % 2) & 0xffffffff;
        return {static_cast<int>(as_int(first)), static_cast<int>(as_int(first + w - w % 2))};
    }
};

Rect reference(const Canvas &canvas, const SplitWndInfo &w) {
    const Reference across = {canvas[0], canvas[2], 1920, w.anchor == 1 || w.anchor == 3};
    const Reference down = {canvas[1], canvas[3], 1080, w.anchor == 2 || w.anchor == 3};
    const auto x = across.place(w.x, w.w);
    const auto y = down.place(w.y, w.h);
    return {x.first, y.first, x.second, y.second};
}

std::string text_of(const Canvas &canvas, const SplitWndInfo &w) {
    std::string text = "canvas";
    for (const unsigned edge : canvas) {
        text += " " + std::to_string(edge);
    }
    text += " anchor " + std::to_string(w.anchor);
    for (const SplitCoordinate *slot : {&w.x, &w.y, &w.w, &w.h}) {
        text += slot->isRatio == 1 ? " ratio " + std::to_string(slot->ratio)
                                   : " pixels " + std::to_string(slot->pixels);
    }
    return text;
}

TEST_F(WndSplitPlacing, EveryModeOnEveryCanvasAgreesWithTheReference) {
    for (const Canvas &canvas : many_canvases()) {
        for (unsigned mode = 0; mode < kSplitModes; ++mode) {
            const SplitInfo info = info_of(mode);
            for (unsigned i = 0; i < info.wndCnt; ++i) {
                ASSERT_EQ(placed(canvas, info.wnd[i]), reference(canvas, info.wnd[i]))
                    << "mode " << mode << " window " << i << " " << text_of(canvas, info.wnd[i]);
            }
        }
    }
}

TEST_F(WndSplitPlacing, RandomDescriptionsAgreeWithTheReference) {
    std::mt19937 random(20240);
    const auto any_coordinate = [&random]() {
        switch (random() % 5) {
            case 0:
                return ratio(static_cast<double>(random() % 13) / 12);
            case 1:
                return ratio(std::uniform_real_distribution<double>(-2, 3)(random));
            case 2:
                return pixels(random() % 4000);
            case 3:
                return pixels(random() % 3);
            default:
                return pixels(static_cast<uint32_t>(random()));
        }
    };
    const auto any_edge = [&random]() { return static_cast<unsigned>(random()); };
    for (int i = 0; i < 200000; ++i) {
        Canvas canvas = {below(random, 300), below(random, 300), 0, 0};
        canvas[2] = canvas[0] + below(random, 5000);
        canvas[3] = canvas[1] + below(random, 3000);
        if (i % 8 == 0) {
            std::generate(canvas.begin(), canvas.end(), any_edge);
        }
        SplitWndInfo w = {};
        w.anchor = static_cast<uint8_t>(below(random, 6));
        for (SplitCoordinate *slot : {&w.x, &w.y, &w.w, &w.h}) {
            *slot = any_coordinate();
        }
        ASSERT_EQ(placed(canvas, w), reference(canvas, w)) << text_of(canvas, w);
    }
}

// ---- numbers that are none

TEST_F(WndSplitPlacing, NumbersOutsideTheIntegersStickAtTheirEnds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        const char *what;
        SplitWndInfo window;
        Rect rect;
    } cases[] = {
        {"a size that is no number is the default size",
         window(0, ratio(0), ratio(0), ratio(nan), ratio(nan)),
         {0, 0, 64, 64}},
        {"a negative size is the default size",
         window(0, ratio(0), ratio(0), ratio(-1), ratio(-infinity)),
         {0, 0, 64, 64}},
        {"a position that is no number is 0",
         window(0, ratio(nan), ratio(nan), ratio(0.5), ratio(0.5)),
         {0, 0, 960, 540}},
        {"a position far before the canvas is its edge",
         window(0, ratio(-infinity), ratio(-1e300), ratio(0.5), ratio(0.5)),
         {0, 0, 960, 540}},
        // The largest size, 4294967295, ends past the canvas and is cut.
        {"an endless size is cut",
         window(0, ratio(0), ratio(0), ratio(infinity), ratio(1e300)),
         {0, 0, 1920, 1080}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(placed(kFullHd, c.window), c.rect) << c.what;
    }
}

TEST_F(WndSplitPlacing, ExtremeDescriptionsOnExtremeCanvasesStayDefined) {
    const double numbers[] = {std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::denorm_min(),
                              -1e18,
                              2147483648.0,
                              -0.0,
                              1.0};
    const unsigned edges[] = {0, 1, 0x7fffffff, 0x80000000, 0xffffffff};
    std::vector<SplitCoordinate> slots;
    for (const double number : numbers) {
        slots.push_back(ratio(number));
    }
    for (const unsigned edge : edges) {
        slots.push_back(pixels(edge));
    }
    for (const unsigned low : edges) {
        for (const unsigned high : edges) {
            for (const SplitCoordinate &at : slots) {
                for (const SplitCoordinate &size : slots) {
                    for (uint8_t anchor = 0; anchor < 5; ++anchor) {
                        const Rect rect =
                            placed({low, low, high, high}, window(anchor, at, at, size, size));
                        for (const int edge : rect) {
                            ASSERT_EQ(edge & 1, 0);
                        }
                    }
                }
            }
        }
    }
}

}  // namespace
