#include "wnd_split_catalogue.h"

#include <algorithm>

using split_catalogue::cells;
using split_catalogue::counted;
using split_catalogue::full;
using split_catalogue::grid;
using split_catalogue::picture_in_picture;

// A window is {column, row} for one cell of the grid, or {column, row, width, height} in cells.
// clang-format off
constexpr InitSplit mInitSplitColl[kSplitModes] = {
    /*  0 */ full(""),
    /*  1 */ full("Mode1"),
    /*  2 */ grid("Mode2_0", 2, 1, 2),
    /*  3 */ cells("Mode3_0", 2, 2, {{0, 0, 2, 1}, {0, 1}, {1, 1}}),
    /*  4 */ grid("Mode4", 2, 2, 4),
    /*  5 */ cells("Mode5", 4, 4, {{0, 0, 3, 4}, {3, 0}, {3, 1}, {3, 2}, {3, 3}}),
    /*  6 */ cells("Mode6_0", 3, 3, {{0, 0, 2, 2}, {2, 0}, {2, 1}, {0, 2}, {1, 2}, {2, 2}}),
    /*  7 */ cells("Mode7", 6, 6, {{0, 0, 5, 6}, {5, 0}, {5, 1}, {5, 2}, {5, 3}, {5, 4}, {5, 5}}),
    /*  8 */ cells("Mode8_0", 4, 4, {{0, 0, 3, 3}, {3, 0}, {3, 1}, {3, 2},
                                     {0, 3}, {1, 3}, {2, 3}, {3, 3}}),
    /*  9 */ grid("Mode9", 3, 3, 9),
    /* 10 */ cells("Mode10", 4, 4, {{0, 0, 2, 2}, {2, 0, 2, 2},
                                    {0, 2}, {1, 2}, {2, 2}, {3, 2},
                                    {0, 3}, {1, 3}, {2, 3}, {3, 3}}),
    // Kept: windows 1 and 2 of "Mode11" coincide and no window covers the cell (5, 0).
    /* 11 */ cells("Mode11", 6, 5, {{0, 0, 5, 4}, {5, 1}, {5, 1}, {5, 2}, {5, 3},
                                    {0, 4}, {1, 4}, {2, 4}, {3, 4}, {4, 4}, {5, 4}}),
    /* 12 */ grid("Mode12", 4, 3, 12),
    /* 13 */ cells("Mode13", 4, 4, {{0, 0, 2, 2}, {2, 0}, {3, 0}, {2, 1}, {3, 1},
                                    {0, 2}, {1, 2}, {2, 2}, {3, 2},
                                    {0, 3}, {1, 3}, {2, 3}, {3, 3}}),
    /* 14 */ cells("Mode14", 4, 4, {{0, 0, 2, 1}, {2, 0, 2, 1},
                                    {0, 1}, {1, 1}, {2, 1}, {3, 1},
                                    {0, 2}, {1, 2}, {2, 2}, {3, 2},
                                    {0, 3}, {1, 3}, {2, 3}, {3, 3}}),
    // Kept: "Mode15" leaves the bottom-right cell empty.
    /* 15 */ grid("Mode15", 4, 4, 15),
    /* 16 */ grid("Mode16", 4, 4, 16),
    /* 17 */ grid("Mode2_1", 1, 2, 2),
    /* 18 */ cells("Mode3_1", 2, 2, {{0, 0, 1, 2}, {1, 0}, {1, 1}}),
    /* 19 */ cells("Mode6_1", 3, 3, {{0, 0}, {1, 0, 2, 2}, {0, 1}, {0, 2}, {1, 2}, {2, 2}}),
    /* 20 */ cells("Mode6_2", 3, 3, {{0, 0}, {1, 0}, {2, 0}, {0, 1, 2, 2}, {2, 1}, {2, 2}}),
    /* 21 */ cells("Mode6_3", 3, 3, {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1, 2, 2}, {0, 2}}),
    /* 22 */ cells("Mode8_1", 4, 4, {{0, 0}, {1, 0, 3, 3}, {0, 1}, {0, 2},
                                     {0, 3}, {1, 3}, {2, 3}, {3, 3}}),
    /* 23 */ cells("Mode8_2", 4, 4, {{0, 0}, {1, 0}, {2, 0}, {3, 0},
                                     {0, 1, 3, 3}, {3, 1}, {3, 2}, {3, 3}}),
    /* 24 */ cells("Mode8_3", 4, 4, {{0, 0}, {1, 0}, {2, 0}, {3, 0},
                                     {0, 1}, {1, 1, 3, 3}, {0, 2}, {0, 3}}),
    /* 25 */ grid("Mode6_4", 3, 2, 6),
    /* 26 */ full(""),  // user layouts 0 to 3: the main window places their windows
    /* 27 */ full(""),
    /* 28 */ full(""),
    /* 29 */ full(""),
    // Modes from here on are described but never switched to.
    /* 30 */ grid("", 5, 5, 25),
    /* 31 */ grid("", 6, 5, 30),
    /* 32 */ counted(32, cells("", 6, 6, {{0, 0}, {1, 0}, {4, 0}, {5, 0},
                                          {0, 1}, {1, 1}, {4, 1}, {5, 1},
                                          {0, 2}, {1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 2},
                                          {0, 3}, {1, 3}})),
    /* 33 */ grid("", 6, 6, 36),
    /* 34 */ picture_in_picture(),
};
// clang-format on

static_assert(mInitSplitColl[6].rect[0].w == 0.6666666666666666 &&
                  mInitSplitColl[7].rect[0].w == 0.8333333333333334 &&
                  mInitSplitColl[9].rect[1].x == 0.3333333333333333,
              "fractions are the nearest doubles");

namespace {

constexpr uint8_t kTopLayer = 255;
constexpr uint8_t kWindowKind = 6;

SplitCoordinate fraction(double ratio) {
    SplitCoordinate coordinate = {};
    coordinate.isRatio = 1;
    coordinate.ratio = ratio;
    return coordinate;
}

SplitCoordinate pixels(double count) {
    SplitCoordinate coordinate = {};
    coordinate.pixels = static_cast<uint32_t>(count);
    return coordinate;
}

SplitWndInfo window_of(const SplitRect &rect) {
    SplitWndInfo window = {};
    window.kind = kWindowKind;
    window.x = fraction(rect.x);
    window.y = fraction(rect.y);
    window.w = fraction(rect.w);
    window.h = fraction(rect.h);
    return window;
}

}  // namespace

SplitInfo split_info_of(unsigned mode, const InitSplit &authored) {
    SplitInfo info = {};
    info.wndCnt = std::clamp<uint32_t>(authored.count, 1, kSplitWindows);
    for (uint32_t i = 0; i < info.wndCnt; ++i) {
        info.wnd[i] = window_of(authored.rect[i]);
    }
    if (mode == split_catalogue::kPictureInPicture) {
        const SplitRect &margins = authored.rect[info.wndCnt - 1];
        SplitWndInfo &picture = info.wnd[info.wndCnt - 1];
        picture.anchor = kAnchorBottomRight;
        picture.topLayer = kTopLayer;
        picture.x = pixels(margins.x);
        picture.y = pixels(margins.y);
    }
    invert_crowded_layers(mode, &info);
    return info;
}

void invert_crowded_layers(unsigned mode, SplitInfo *info) {
    if (mode != 0 && (mode < kFirstUserSplitMode || mode > kFirstUserSplitMode + 2)) {
        return;
    }
    SplitWndInfo *const end = info->wnd + info->wndCnt;
    const auto onTop = std::count_if(
        info->wnd, end, [](const SplitWndInfo &window) { return window.topLayer == kTopLayer; });
    if (onTop < 5 || info->wndCnt - onTop > 4) {
        return;
    }
    info->inverted = 1;
    for (SplitWndInfo *window = info->wnd; window != end; ++window) {
        window->topLayer = window->topLayer == kTopLayer ? 0 : kTopLayer;
    }
}
