/**
 * @file wnd_split_catalogue.h
 * The catalogue of split modes as it is authored, and what makes a mode's working record of it.
 *
 * Private to wnd_split.cpp and its test. Coordinates are fractions of the canvas (0 to 1). A row is
 * drawn on a grid of columns x rows: a window at column 5 of 6 lies at x = 5/6, the double nearest
 * to that fraction, because the quotient of two whole numbers is rounded once.
 */
#ifndef APP_GUI_WND_SPLIT_CATALOGUE_H
#define APP_GUI_WND_SPLIT_CATALOGUE_H

#include <cstddef>
#include <initializer_list>

#include "wnd_split.h"

/** One window: fractions of the canvas. */
struct SplitRect {
    double x, y, w, h;
};

/** One authored mode. */
struct InitSplit {
    const char *name;               ///< as parameters name the mode, "" for a mode without a name
    uint32_t count;                 ///< windows as authored, may exceed what a description carries
    uint32_t reserved;              ///< 0
    SplitRect rect[kSplitWindows];  ///< in window order, all zero past `count`
};

namespace split_catalogue {

constexpr unsigned kFirstNamedMode = 1;     ///< "Mode1"
constexpr unsigned kLastNamedMode = 25;     ///< "Mode6_4"
constexpr unsigned kPictureInPicture = 34;  ///< its last window is the overlaid picture

/** A window in cells of its row's grid; most take one cell. */
struct Cell {
    int column, row;
    int w = 1, h = 1;
};

/** Windows of any size on a grid of `columns` x `rows`. */
constexpr InitSplit cells(const char *name, int columns, int rows,
                          std::initializer_list<Cell> windows) {
    InitSplit split = {name, static_cast<uint32_t>(windows.size()), 0, {}};
    size_t i = 0;
    for (const Cell &cell : windows) {
        split.rect[i++] = {
            static_cast<double>(cell.column) / columns, static_cast<double>(cell.row) / rows,
            static_cast<double>(cell.w) / columns, static_cast<double>(cell.h) / rows};
    }
    return split;
}

/** The first `count` single cells of a grid, row by row; cells past the 16th are only counted. */
constexpr InitSplit grid(const char *name, int columns, int rows, int count) {
    InitSplit split = {name, static_cast<uint32_t>(count), 0, {}};
    for (int i = 0; i < count && i < kSplitWindows; ++i) {
        const int column = i % columns;
        const int row = i / columns;
        split.rect[i] = {static_cast<double>(column) / columns, static_cast<double>(row) / rows,
                         1.0 / columns, 1.0 / rows};
    }
    return split;
}

/** One window over the whole canvas. */
constexpr InitSplit full(const char *name) {
    return grid(name, 1, 1, 1);
}

/** The same row with more windows counted than its rectangles show. */
constexpr InitSplit counted(uint32_t count, InitSplit split) {
    split.count = count;
    return split;
}

/** The full canvas and a quarter-size picture 64 reference pixels from the bottom-right corner. */
constexpr InitSplit picture_in_picture() {
    return {"", 2, 0, {{0.0, 0.0, 1.0, 1.0}, {64.0, 64.0, 1.0 / 4, 1.0 / 4}}};
}

}  // namespace split_catalogue

/** The catalogue; the index is the mode's number. */
extern const InitSplit mInitSplitColl[kSplitModes];

/** The working record of an authored mode. Pure. */
SplitInfo split_info_of(unsigned mode, const InitSplit &authored);

/**
 * Inverts the layer marks of the first `wndCnt` windows when at least 5 of them are laid over at
 * most 4 others. Kept: runs for modes 0, 26, 27 and 28 but not 29; no row of the catalogue meets
 * it.
 */
void invert_crowded_layers(unsigned mode, SplitInfo *info);

#endif
