#include "wnd_split.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>

#include "diagnostics.h"
#include "wnd_split_catalogue.h"

namespace {

// The canvas that pixel values of the catalogue refer to.
constexpr uint32_t kReferenceWidth = 1920;
constexpr uint32_t kReferenceHeight = 1080;
// Reference pixels of a window whose description gives no size.
constexpr uint32_t kDefaultSize = 64;
constexpr size_t kNameLimit = 64;

/** What the video process may show in its preview. */
struct PreviewSplit {
    uint32_t x, y;
    uint32_t width, height;
    uint8_t enabled[2];
    uint32_t referenceWidth, referenceHeight;
};

/** The modes that may be switched to. */
constexpr uint32_t SPLIT_MODE_ARRAY[] = {
    1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
    16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 0,
};

PreviewSplit mPreviewSplit;
SplitInfo mSplitColl[kSplitModes];

/** `value` without its fraction, or the nearest end of the type's range; 0 for no number. */
template <typename Integer>
Integer to_integer(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value)) {
        return 0;
    }
    if (value <= Limits::min()) {
        return Limits::min();
    }
    return value >= Limits::max() ? Limits::max() : static_cast<Integer>(value);
}

/** One axis of a placement; edges are unsigned and wrap, as a window beyond an edge is expressed.
 */
struct Axis {
    uint32_t low;        ///< left or top edge of the canvas
    uint32_t high;       ///< right or bottom edge
    uint32_t reference;  ///< extent of the reference canvas
    bool fromHigh;       ///< positions count from the right or bottom edge

    uint32_t extent() const { return high - low; }
};

struct Span {
    int low;
    int high;
};

uint32_t window_size(const Axis &axis, const SplitCoordinate &size) {
    const uint32_t pixels = size.isRatio == 1
                                ? to_integer<uint32_t>(std::ceil(axis.extent() * size.ratio))
                                : size.pixels;
    return pixels != 0 ? pixels : axis.extent() * kDefaultSize / axis.reference;
}

/** Position of a window whose margin to the far edge is a fraction of the canvas. */
int position_from_high(const Axis &axis, double margin, uint32_t size) {
    return to_integer<int>(axis.low + std::ceil((1 - margin) * axis.extent()) - size);
}

int window_position(const Axis &axis, const SplitCoordinate &at, uint32_t size) {
    if (at.isRatio == 1) {
        return axis.fromHigh ? position_from_high(axis, at.ratio, size)
                             : to_integer<int>(axis.low + std::ceil(axis.extent() * at.ratio));
    }
    if (!axis.fromHigh) {
        return static_cast<int>(axis.low + at.pixels);
    }
    const int position = static_cast<int>(axis.high - at.pixels - size);
    // A margin too large for this canvas is read as a fraction of the reference canvas.
    return position < 1
               ? position_from_high(axis, at.pixels / static_cast<double>(axis.reference), size)
               : position;
}

/** Places a window on one axis: inside the canvas, its edge rounded up and its size down to even.
 */
Span place(const Axis &axis, const SplitCoordinate &at, const SplitCoordinate &extent) {
    uint32_t size = window_size(axis, extent);
    const int signedPosition = window_position(axis, at, size);
    const uint32_t position =
        static_cast<uint32_t>(std::max(static_cast<int>(axis.low), signedPosition));
    if (position + size > axis.high) {
        size = axis.high - position;
    }
    const uint32_t low = (position + 1) & ~1U;
    return {static_cast<int>(low), static_cast<int>(low + (size & ~1U))};
}

}  // namespace

void init_split() {
    mPreviewSplit = {};
    mPreviewSplit.width = kReferenceWidth;
    mPreviewSplit.height = kReferenceHeight;
    mPreviewSplit.enabled[0] = 1;
    mPreviewSplit.enabled[1] = 1;
    mPreviewSplit.referenceWidth = kReferenceWidth;
    mPreviewSplit.referenceHeight = kReferenceHeight;
}

void init_split_info() {
    for (unsigned mode = 0; mode < kSplitModes; ++mode) {
        mSplitColl[mode] = split_info_of(mode, mInitSplitColl[mode]);
    }
}

int hal_get_split_info(unsigned mode, void *out) {
    if (mode >= kSplitModes || out == nullptr) {
        return -2;
    }
    std::memcpy(out, &mSplitColl[mode], sizeof(SplitInfo));
    return 0;
}

int getSplitWndNum(unsigned mode) {
    return mode < kSplitModes ? static_cast<int>(mSplitColl[mode].wndCnt) : 0;
}

unsigned checkSplitValid(unsigned mode) {
    return std::find(std::begin(SPLIT_MODE_ARRAY), std::end(SPLIT_MODE_ARRAY), mode) !=
           std::end(SPLIT_MODE_ARRAY);
}

unsigned getSplitMode(const char *name) {
    const char *const wanted = name != nullptr ? name : "";
    for (unsigned mode = split_catalogue::kFirstNamedMode; mode <= split_catalogue::kLastNamedMode;
         ++mode) {
        if (std::strncmp(wanted, mInitSplitColl[mode].name, kNameLimit) == 0) {
            return mode;
        }
    }
    // A record's name field may be full to its last byte.
    ERROR_LINE("mode=%.64s\n", wanted);
    return split_catalogue::kFirstNamedMode;
}

int hal_get_split_wnd_info(const unsigned canvas[4], const SplitWndInfo *window, int rect[4]) {
    if (canvas == nullptr || window == nullptr || rect == nullptr) {
        return -2;
    }
    const bool fromRight =
        window->anchor == kAnchorTopRight || window->anchor == kAnchorBottomRight;
    const bool fromBottom =
        window->anchor == kAnchorBottomLeft || window->anchor == kAnchorBottomRight;
    const Span x = place({canvas[0], canvas[2], kReferenceWidth, fromRight}, window->x, window->w);
    const Span y =
        place({canvas[1], canvas[3], kReferenceHeight, fromBottom}, window->y, window->h);
    rect[0] = x.low;
    rect[1] = y.low;
    rect[2] = x.high;
    rect[3] = y.high;
    return 0;
}

int hal_get_preview_rect(unsigned rect[4]) {
    if (rect == nullptr) {
        return -2;
    }
    rect[0] = mPreviewSplit.x;
    rect[1] = mPreviewSplit.y;
    rect[2] = mPreviewSplit.x + mPreviewSplit.width;
    rect[3] = mPreviewSplit.y + mPreviewSplit.height;
    return 0;
}

unsigned hal_get_max_channel() {
    return 1;
}

unsigned getBorderCorlor(const char *color, int *r, int *g, int *b) {
    unsigned components[3] = {};
    const int matched = color != nullptr ? std::sscanf(color, "#%02x%02x%02x", &components[0],
                                                       &components[1], &components[2])
                                         : 0;
    int *const outputs[3] = {r, g, b};
    for (int i = 0; i < 3 && i < matched; ++i) {
        if (outputs[i] != nullptr) {
            *outputs[i] = static_cast<int>(components[i]);
        }
    }
    return 0;
}
