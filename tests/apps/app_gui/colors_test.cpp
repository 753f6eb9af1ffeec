// The colour texts and the window query that app_gui.h exports for outside callers.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "app_gui.h"
#include "wnd_split.h"

namespace {

std::string standard_name(const char *text, const int *alpha, int r, int g, int b) {
    char name[64] = "";
    EXPECT_EQ(get_color_standard_name(name, sizeof(name), text, alpha, r, g, b), name);
    return name;
}

TEST(ColourText, ItIsAHashAndSixHexadecimalDigits) {
    const struct {
        const char *text;
        int valid;
    } cases[] = {
        {"#00ff7F", 1},  {"#000000", 1},   {"#FFFFFF", 1},     {"#abcdef", 1},
        {"#ABCDEF", 1},  {"#012345", 1},   {"#678909", 1},     {"", 0},
        {"#", 0},        {"#00ff7", 0},    {"00ff7f0", 0},     {"#00ff7g", 0},
        {"#fff", 0},     {"#80ff0000", 0}, {"red", 0},         {"#00ff7f ", 0},
        {" #00ff7f", 0}, {"#00 f7f", 0},   {"##00ff7", 0},     {"#-1+2-3", 0},
        {"#0x0x0x", 0},  {"#00ff7\n", 0},  {"transparent", 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(check_color_is_valid(c.text), c.valid) << c.text;
    }
    EXPECT_EQ(check_color_is_valid(nullptr), 0);
}

TEST(ColourText, EveryByteInPlaceOfADigitIsJudged) {
    for (int place = 0; place < 7; ++place) {
        for (int byte = 1; byte < 256; ++byte) {
            std::string text = "#a1B2c3";
            text[place] = static_cast<char>(byte);
            const bool digit = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') ||
                               (byte >= 'A' && byte <= 'F');
            EXPECT_EQ(check_color_is_valid(text.c_str()), place == 0 ? byte == '#' : digit)
                << "byte " << byte << " at " << place;
        }
    }
}

TEST(ColourText, TwoTextsOfOneColourAreTheSame) {
    const struct {
        const char *a, *b;
        int same;
    } cases[] = {
        {"#ff8000", "#FF8000", 1},  {"#ff8000", "#ff8000", 1}, {"#ff8000", "#ff8001", 0},
        {"#ff8000", "#ff8100", 0},  {"#ff8000", "#fe8000", 0}, {"red", "red", 0},
        {"#ff8000", "", 0},         {"", "#ff8000", 0},        {"", "", 0},
        {"#ff80000", "#ff8000", 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(check_color_is_same(c.a, c.b), c.same) << c.a << " " << c.b;
    }
    EXPECT_EQ(check_color_is_same(nullptr, "#ff8000"), 0);
    EXPECT_EQ(check_color_is_same("#ff8000", nullptr), 0);
    EXPECT_EQ(check_color_is_same(nullptr, nullptr), 0);
}

TEST(ColourText, TheStandardNameIsInUpperCaseWithTheAlphaInFront) {
    const int alpha = 128;
    EXPECT_EQ(standard_name("#a0b1c2", nullptr, 1, 2, 3), "#A0B1C2");
    EXPECT_EQ(standard_name("#a0b1c2", &alpha, 1, 2, 3), "#80A0B1C2");
    EXPECT_EQ(standard_name("#000000", nullptr, 1, 2, 3), "#000000");
}

TEST(ColourText, AnInvalidTextSilentlyMeansTheFallback) {
    const int alpha = 7;
    for (const char *text : {static_cast<const char *>(nullptr), "", "red", "#fff", "#80ff0000"}) {
        EXPECT_EQ(standard_name(text, nullptr, 255, 0, 0), "#FF0000");
        EXPECT_EQ(standard_name(text, &alpha, 10, 11, 12), "#070A0B0C");
    }
}

TEST(ColourText, ComponentsOfAnySizeArePrintedInFull) {
    const int large = 256, lowest = INT_MIN;
    EXPECT_EQ(standard_name("#a0b1c2", &large, 0, 0, 0), "#100A0B1C2");
    EXPECT_EQ(standard_name("#a0b1c2", &lowest, 0, 0, 0), "#80000000A0B1C2");
    EXPECT_EQ(standard_name("", nullptr, 4096, -1, 0), "#1000FFFFFFFF00");
}

TEST(ColourText, NoMoreThanTheSizeIsWritten) {
    const std::string whole = "#A0B1C2";
    for (size_t size = 0; size <= 9; ++size) {
        // On the heap, so that a sanitizer sees a byte too many.
        std::vector<char> name(size + 1, 'x');
        EXPECT_EQ(get_color_standard_name(name.data(), size, "#a0b1c2", nullptr, 0, 0, 0),
                  name.data());
        EXPECT_EQ(name[size], 'x') << size;
        if (size > 0) {
            EXPECT_EQ(std::string(name.data()), whole.substr(0, size - 1)) << size;
        }
    }
    EXPECT_EQ(get_color_standard_name(nullptr, 0, "#a0b1c2", nullptr, 0, 0, 0), nullptr);
}

// ---- the window query

class SplitWindowQuery : public testing::Test {
protected:
    static void SetUpTestSuite() {
        init_split();
        init_split_info();
    }

    /** "untouched" or "zeroed", after the result. */
    static std::string ask(int mode, int index) {
        int rect[4] = {-7, -7, -7, -7};
        const int untouched[4] = {-7, -7, -7, -7};
        const int zero[4] = {};
        const int result = gui_get_split_window(mode, index, rect);
        const char *const what = std::memcmp(rect, untouched, sizeof(rect)) == 0 ? " untouched"
                                 : std::memcmp(rect, zero, sizeof(rect)) == 0    ? " zeroed"
                                                                                 : " written";
        return std::to_string(result) + what;
    }
};

TEST_F(SplitWindowQuery, NoRectangleIsEverCopiedOut) {
    for (int mode = 0; mode <= 29; ++mode) {
        for (int index = 0; index <= 4; ++index) {
            EXPECT_EQ(ask(mode, index), index < getSplitWndNum(mode) ? "0 untouched" : "0 zeroed")
                << "mode " << mode << " index " << index;
        }
    }
    EXPECT_EQ(ask(4, 3), "0 untouched");
    EXPECT_EQ(ask(4, 4), "0 zeroed");
}

TEST_F(SplitWindowQuery, IndicesOutside0To4AreRefused) {
    for (const int index : {5, 16, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(ask(16, index), "-2 untouched") << index;
    }
}

TEST_F(SplitWindowQuery, ModesThatCannotBeSwitchedToAreRefused) {
    for (const int mode : {30, 34, 35, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(ask(mode, 0), "-2 untouched") << mode;
    }
}

TEST_F(SplitWindowQuery, ANullRectangleIsRefused) {
    EXPECT_EQ(gui_get_split_window(4, 0, nullptr), -2);
}

}  // namespace
