#include "wnd_split.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "wnd_split_catalogue.h"

namespace {

class WndSplit : public testing::Test {
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

// ---- the catalogue against pictures of it

/**
 * A mode as a picture: one text per grid row, one letter per grid cell; window A is the first, B
 * the second, and so on; a blank cell belongs to no window.
 */
struct Picture {
    unsigned mode;
    const char *name;
    unsigned count;
    std::vector<std::string> rows;
};

const std::vector<Picture> &pictures() {
    static const std::vector<Picture> all = {
        {0, "", 1, {"A"}},
        {1, "Mode1", 1, {"A"}},
        {2, "Mode2_0", 2, {"AB"}},
        {3, "Mode3_0", 3, {"AA", "BC"}},
        {4, "Mode4", 4, {"AB", "CD"}},
        {5, "Mode5", 5, {"AAAB", "AAAC", "AAAD", "AAAE"}},
        {6, "Mode6_0", 6, {"AAB", "AAC", "DEF"}},
        {7, "Mode7", 7, {"AAAAAB", "AAAAAC", "AAAAAD", "AAAAAE", "AAAAAF", "AAAAAG"}},
        {8, "Mode8_0", 8, {"AAAB", "AAAC", "AAAD", "EFGH"}},
        {9, "Mode9", 9, {"ABC", "DEF", "GHI"}},
        {10, "Mode10", 10, {"AABB", "AABB", "CDEF", "GHIJ"}},
        // Windows 1 and 2 coincide: the picture shows C alone.
        {11, "Mode11", 11, {"AAAAA ", "AAAAAC", "AAAAAD", "AAAAAE", "FGHIJK"}},
        {12, "Mode12", 12, {"ABCD", "EFGH", "IJKL"}},
        {13, "Mode13", 13, {"AABC", "AADE", "FGHI", "JKLM"}},
        {14, "Mode14", 14, {"AABB", "CDEF", "GHIJ", "KLMN"}},
        {15, "Mode15", 15, {"ABCD", "EFGH", "IJKL", "MNO "}},
        {16, "Mode16", 16, {"ABCD", "EFGH", "IJKL", "MNOP"}},
        {17, "Mode2_1", 2, {"A", "B"}},
        {18, "Mode3_1", 3, {"AB", "AC"}},
        {19, "Mode6_1", 6, {"ABB", "CBB", "DEF"}},
        {20, "Mode6_2", 6, {"ABC", "DDE", "DDF"}},
        {21, "Mode6_3", 6, {"ABC", "DEE", "FEE"}},
        {22, "Mode8_1", 8, {"ABBB", "CBBB", "DBBB", "EFGH"}},
        {23, "Mode8_2", 8, {"ABCD", "EEEF", "EEEG", "EEEH"}},
        {24, "Mode8_3", 8, {"ABCD", "EFFF", "GFFF", "HFFF"}},
        {25, "Mode6_4", 6, {"ABC", "DEF"}},
        {26, "", 1, {"A"}},
        {27, "", 1, {"A"}},
        {28, "", 1, {"A"}},
        {29, "", 1, {"A"}},
        {30, "", 25, {"ABCDE", "FGHIJ", "KLMNO", "P    ", "     "}},
        {31, "", 30, {"ABCDEF", "GHIJKL", "MNOP  ", "      ", "      "}},
        {32, "", 32, {"AB  CD", "EF  GH", "IJKLMN", "OP    ", "      ", "      "}},
        {33, "", 36, {"ABCDEF", "GHIJKL", "MNOP  ", "      ", "      ", "      "}},
    };
    return all;
}

/** The quotient as the compiler reads a decimal of 40 digits: an oracle that divides no doubles. */
double nearest(int part, int whole) {
    std::string digits = std::to_string(part / whole) + ".";
    for (int i = 0, rest = part % whole; i < 40; ++i, rest = rest * 10 % whole) {
        digits += static_cast<char>('0' + rest * 10 / whole);
    }
    return std::stod(digits);
}

/** Where a picture shows the window, as fractions; nothing when it does not. */
std::vector<double> rect_in(const Picture &picture, unsigned window) {
    const int height = static_cast<int>(picture.rows.size());
    const int width = static_cast<int>(picture.rows[0].size());
    int left = width, top = height, right = -1, bottom = -1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (picture.rows[y][x] == static_cast<char>('A' + window)) {
                left = std::min(left, x);
                top = std::min(top, y);
                right = std::max(right, x);
                bottom = std::max(bottom, y);
            }
        }
    }
    if (right < 0) {
        return {};
    }
    return {nearest(left, width), nearest(top, height), nearest(right - left + 1, width),
            nearest(bottom - top + 1, height)};
}

std::vector<double> values_of(const SplitWndInfo &w) {
    return {w.x.ratio, w.y.ratio, w.w.ratio, w.h.ratio};
}

TEST_F(WndSplit, EveryModeLooksLikeItsPicture) {
    for (const Picture &picture : pictures()) {
        const SplitInfo info = info_of(picture.mode);
        ASSERT_EQ(info.wndCnt, std::min(picture.count, 16U)) << "mode " << picture.mode;
        for (unsigned i = 0; i < info.wndCnt; ++i) {
            if (picture.mode == 11 && i == 1) {
                continue;
            }
            EXPECT_EQ(values_of(info.wnd[i]), rect_in(picture, i))
                << "mode " << picture.mode << " window " << i;
        }
    }
}

TEST_F(WndSplit, WindowsOneAndTwoOfMode11Coincide) {
    const SplitInfo info = info_of(11);
    EXPECT_THAT(values_of(info.wnd[1]), testing::ElementsAre(5.0 / 6, 1.0 / 5, 1.0 / 6, 1.0 / 5));
    EXPECT_EQ(values_of(info.wnd[1]), values_of(info.wnd[2]));
}

TEST_F(WndSplit, TheAuthoredTableHoldsTheCountsAndNamesOfThePictures) {
    for (const Picture &picture : pictures()) {
        const InitSplit &authored = mInitSplitColl[picture.mode];
        EXPECT_EQ(authored.count, picture.count) << "mode " << picture.mode;
        EXPECT_EQ(authored.reserved, 0U);
        EXPECT_STREQ(authored.name, picture.name);
        for (unsigned i = picture.count; i < kSplitWindows; ++i) {
            const SplitRect &rect = authored.rect[i];
            EXPECT_TRUE(rect.x == 0 && rect.y == 0 && rect.w == 0 && rect.h == 0)
                << "mode " << picture.mode << " window " << i;
        }
    }
    EXPECT_EQ(mInitSplitColl[34].count, 2U);
}

TEST_F(WndSplit, FractionsAreTheNearestDoubles) {
    EXPECT_EQ(info_of(9).wnd[1].x.ratio, 0.3333333333333333);
    EXPECT_EQ(info_of(6).wnd[0].w.ratio, 0.6666666666666666);
    EXPECT_EQ(info_of(7).wnd[0].w.ratio, 0.8333333333333334);
    EXPECT_EQ(info_of(7).wnd[1].w.ratio, 0.16666666666666666);
    EXPECT_EQ(info_of(11).wnd[0].h.ratio, 0.8);
}

TEST_F(WndSplit, EveryWindowButThePictureInPictureIsPlainAndTopLeft) {
    for (unsigned mode = 0; mode < kSplitModes; ++mode) {
        const SplitInfo info = info_of(mode);
        EXPECT_EQ(info.inverted, 0) << "mode " << mode;
        const unsigned plain = mode == 34 ? 1 : info.wndCnt;
        for (unsigned i = 0; i < plain; ++i) {
            const SplitWndInfo &w = info.wnd[i];
            EXPECT_EQ(w.anchor, 0);
            EXPECT_EQ(w.topLayer, 0);
            EXPECT_EQ(w.reserved, 0);
            EXPECT_EQ(w.kind, 6);
            for (const SplitCoordinate *slot : {&w.x, &w.y, &w.w, &w.h}) {
                EXPECT_EQ(slot->isRatio, 1);
                EXPECT_EQ(slot->second, 0);
            }
        }
    }
}

TEST_F(WndSplit, ThePictureInPictureHasPixelMarginsFromTheBottomRightCorner) {
    const SplitInfo info = info_of(34);
    ASSERT_EQ(info.wndCnt, 2U);
    EXPECT_THAT(values_of(info.wnd[0]), testing::ElementsAre(0, 0, 1, 1));
    const SplitWndInfo &picture = info.wnd[1];
    EXPECT_EQ(picture.anchor, 3);
    EXPECT_EQ(picture.topLayer, 255);
    EXPECT_EQ(picture.kind, 6);
    EXPECT_EQ(picture.x.isRatio, 0);
    EXPECT_EQ(picture.x.pixels, 64U);
    EXPECT_EQ(picture.y.isRatio, 0);
    EXPECT_EQ(picture.y.pixels, 64U);
    EXPECT_EQ(picture.w.isRatio, 1);
    EXPECT_EQ(picture.w.ratio, 0.25);
    EXPECT_EQ(picture.h.isRatio, 1);
    EXPECT_EQ(picture.h.ratio, 0.25);
}

// ---- making working records

TEST_F(WndSplit, AStoredCountOfZeroBecomesOneAndMoreThanSixteenBecomeSixteen) {
    const struct {
        uint32_t stored, used;
    } cases[] = {{0, 1}, {1, 1}, {15, 15}, {16, 16}, {17, 16}, {4294967295U, 16}};
    for (const auto &c : cases) {
        InitSplit authored = {};
        authored.count = c.stored;
        EXPECT_EQ(split_info_of(5, authored).wndCnt, c.used) << c.stored;
    }
}

SplitInfo with_layers(unsigned onTop, unsigned below) {
    SplitInfo info = {};
    info.wndCnt = onTop + below;
    for (unsigned i = 0; i < onTop; ++i) {
        info.wnd[i].topLayer = 255;
    }
    return info;
}

TEST_F(WndSplit, LayerMarksAreInvertedFromFiveOnTopOfAtMostFour) {
    const struct {
        unsigned onTop, below;
        bool inverts;
    } cases[] = {{5, 4, true},  {5, 0, true},  {12, 4, true}, {4, 4, false},
                 {5, 5, false}, {0, 1, false}, {16, 0, true}};
    for (const auto &c : cases) {
        SplitInfo info = with_layers(c.onTop, c.below);
        invert_crowded_layers(0, &info);
        EXPECT_EQ(info.inverted, c.inverts) << c.onTop << " over " << c.below;
        for (unsigned i = 0; i < info.wndCnt; ++i) {
            EXPECT_EQ(info.wnd[i].topLayer, (i < c.onTop) != c.inverts ? 255 : 0);
        }
        for (unsigned i = info.wndCnt; i < kSplitWindows; ++i) {
            EXPECT_EQ(info.wnd[i].topLayer, 0) << "past the count";
        }
    }
}

TEST_F(WndSplit, LayerMarksOfModes0And26To28AreInvertedButNotOf29) {
    for (unsigned mode = 0; mode < kSplitModes; ++mode) {
        SplitInfo info = with_layers(6, 2);
        invert_crowded_layers(mode, &info);
        EXPECT_EQ(info.inverted, mode == 0 || mode == 26 || mode == 27 || mode == 28) << mode;
    }
}

TEST_F(WndSplit, AnOddLayerMarkCountsAsBelowAndIsFlippedToTheTop) {
    SplitInfo info = with_layers(5, 1);
    info.wnd[5].topLayer = 7;
    invert_crowded_layers(27, &info);
    EXPECT_EQ(info.inverted, 1);
    EXPECT_EQ(info.wnd[0].topLayer, 0);
    EXPECT_EQ(info.wnd[5].topLayer, 255);
}

// ---- lookups

TEST_F(WndSplit, AModeAbove34OrANullBufferCopiesNothing) {
    for (const unsigned mode : {35U, 36U, 0x80000000U, 4294967295U}) {
        SplitInfo info;
        std::memset(&info, 0x5a, sizeof(info));
        EXPECT_EQ(hal_get_split_info(mode, &info), -2);
        EXPECT_EQ(info.wndCnt, 0x5a5a5a5aU);
        EXPECT_EQ(getSplitWndNum(mode), 0);
    }
    EXPECT_EQ(hal_get_split_info(0, nullptr), -2);
    EXPECT_EQ(hal_get_split_info(35, nullptr), -2);
}

TEST_F(WndSplit, TheWholeRecordIsCopiedAndNotAByteMore) {
    unsigned char buffer[1160 + 8];
    std::memset(buffer, 0x5a, sizeof(buffer));
    ASSERT_EQ(hal_get_split_info(16, buffer), 0);
    EXPECT_EQ(buffer[0], 16);
    for (size_t i = 1160; i < sizeof(buffer); ++i) {
        EXPECT_EQ(buffer[i], 0x5a);
    }
}

TEST_F(WndSplit, TheFieldsOfARecordLieWhereOthersReadThem) {
    EXPECT_EQ(offsetof(SplitInfo, inverted), 4U);
    EXPECT_EQ(offsetof(SplitInfo, wnd), 8U);
    EXPECT_EQ(offsetof(SplitWndInfo, topLayer), 1U);
    EXPECT_EQ(offsetof(SplitWndInfo, kind), 3U);
    EXPECT_EQ(offsetof(SplitWndInfo, x), 8U);
    EXPECT_EQ(offsetof(SplitWndInfo, h), 56U);
    EXPECT_EQ(offsetof(SplitCoordinate, ratio), 8U);
    EXPECT_EQ(offsetof(SplitCoordinate, pixels), 8U);
}

TEST_F(WndSplit, WindowNumbersAreThoseOfTheCatalogueUpToSixteen) {
    for (const Picture &picture : pictures()) {
        EXPECT_EQ(getSplitWndNum(picture.mode), std::min<int>(picture.count, 16));
    }
    EXPECT_EQ(getSplitWndNum(34), 2);
}

TEST_F(WndSplit, OnlyModes0To29MayBeSwitchedTo) {
    for (unsigned mode = 0; mode < 64; ++mode) {
        EXPECT_EQ(checkSplitValid(mode), mode <= 29 ? 1U : 0U) << mode;
    }
    EXPECT_EQ(checkSplitValid(4294967295U), 0U);
    EXPECT_EQ(checkSplitValid(0x80000000U), 0U);
}

TEST_F(WndSplit, ModeNamesAreNumberedFrom1To25InTheirOrder) {
    testing::internal::CaptureStderr();
    for (const Picture &picture : pictures()) {
        if (picture.name[0] != '\0') {
            EXPECT_EQ(getSplitMode(picture.name), picture.mode) << picture.name;
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(WndSplit, AnUnknownNameIsReportedAndMeansMode1) {
    for (const char *name : {"mode1", "", "Mode", "Mode17", "Mode1 ", " Mode1", "Mode2", "Mode6_5",
                             "MODE6_4", "Mode6_4x", "%s%n"}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(getSplitMode(name), 1U) << name;
        const std::string output = testing::internal::GetCapturedStderr();
        const std::string prefix = "\033[1;31m<ERROR! ";
        EXPECT_EQ(output.substr(0, prefix.size()), prefix);
        EXPECT_THAT(output, testing::HasSubstr("apps/app_gui/src/wnd_split.cpp:"));
        const std::string message = ", getSplitMode>: mode=" + std::string(name) + "\n\033[0m";
        ASSERT_GE(output.size(), message.size());
        EXPECT_EQ(output.substr(output.size() - message.size()), message);
    }
}

TEST_F(WndSplit, ANullNameIsAnEmptyOne) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(getSplitMode(nullptr), 1U);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr(">: mode=\n\033[0m"));
}

TEST_F(WndSplit, ANameFieldFullToItsLastByteIsReadNoFurther) {
    // On the heap, so that a sanitizer sees a byte read past the end.
    const std::vector<char> full(64, 'M');
    testing::internal::CaptureStderr();
    EXPECT_EQ(getSplitMode(full.data()), 1U);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("mode=" + std::string(64, 'M') + "\n"));
}

TEST_F(WndSplit, ThePreviewIsTheReferenceCanvas) {
    unsigned rect[4] = {9, 9, 9, 9};
    EXPECT_EQ(hal_get_preview_rect(rect), 0);
    EXPECT_THAT(rect, testing::ElementsAre(0, 0, 1920, 1080));
    EXPECT_EQ(hal_get_preview_rect(nullptr), -2);
    EXPECT_EQ(hal_get_max_channel(), 1U);
}

// ---- border colours

TEST_F(WndSplit, BorderColoursAreReadAsFarAsTheyMatch) {
    const struct {
        const char *text;
        int r, g, b;
    } cases[] = {
        {"#FF8000", 255, 128, 0}, {"#ff8000", 255, 128, 0}, {"#000000", 0, 0, 0},
        {"red", -1, -1, -1},      {"", -1, -1, -1},         {"FF8000", -1, -1, -1},
        {"#", -1, -1, -1},        {"#gg8000", -1, -1, -1},  {"#FF", 255, -1, -1},
        {"#FF8", 255, 8, -1},     {"#FFxx00", 255, -1, -1}, {"#0102zz", 1, 2, -1},
        {"#01020304", 1, 2, 3},
    };
    for (const auto &c : cases) {
        int r = -1, g = -1, b = -1;
        EXPECT_EQ(getBorderCorlor(c.text, &r, &g, &b), 0U) << c.text;
        EXPECT_EQ(r, c.r) << c.text;
        EXPECT_EQ(g, c.g) << c.text;
        EXPECT_EQ(b, c.b) << c.text;
    }
}

TEST_F(WndSplit, BorderColoursBearNullPointers) {
    int r = -1, g = -1, b = -1;
    EXPECT_EQ(getBorderCorlor(nullptr, &r, &g, &b), 0U);
    EXPECT_EQ(r, -1);
    EXPECT_EQ(getBorderCorlor("#010203", nullptr, &g, nullptr), 0U);
    EXPECT_EQ(g, 2);
    EXPECT_EQ(getBorderCorlor(nullptr, nullptr, nullptr, nullptr), 0U);
}

}  // namespace
