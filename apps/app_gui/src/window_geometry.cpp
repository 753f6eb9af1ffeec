#include "window_geometry.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr struct {
    int width;
    int height;
} kResolutions[] = {
    {1920, 1080},  // 0
    {1920, 1080},  // 1
    {1280, 720},   // 2
    {1280, 720},   // 3
    {1280, 1024},  // 4
    {1024, 768},   // 5
    {1920, 1200},  // 6
    {1366, 768},   // 7
    {1920, 1080},  // 8
    {1920, 1080},  // 9
    {2560, 1600},  // 10
    {3840, 2160},  // 11
    {2560, 1440},  // 12
    {3840, 2160},  // 13
};
static_assert(std::size(kResolutions) == kResolutionCodes, "one row per code");

int wrapped_sum(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

int wrapped_difference(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

/// Pixels of `units` virtual units of `extent`.
int scaled(unsigned units, int extent) {
    return static_cast<int>((units * static_cast<unsigned>(extent)) >> 13);
}

/// One axis of osd_position(): `units` from the near edge, or from the far one.
int placed(bool fromFar, unsigned units, int start, int extent, int label) {
    if (!fromFar) {
        return wrapped_sum(start, scaled(units, extent));
    }
    return wrapped_difference(wrapped_sum(start, scaled(kVirtualExtent - units, extent)), label);
}

/// `step` back; below 0 the far end follows.
int moved_back(int position, int step, int extent) {
    const int moved = wrapped_difference(position, step);
    return moved < 0 ? wrapped_sum(extent, moved) : moved;
}

/// `step` on; past the far end 0 follows.
int moved_on(int position, int step, int extent) {
    const int moved = wrapped_sum(position, step);
    return extent > 0 && moved > extent - 1 ? moved % extent : moved;
}

}  // namespace

QSize resolution_size(unsigned code) {
    return code < kResolutionCodes ? QSize(kResolutions[code].width, kResolutions[code].height)
                                   : QSize();
}

int hit_window(const SplitInfo &split, const QVector<QRect> &windows, const QPoint &point) {
    unsigned keys[kSplitWindows];
    const unsigned count = std::min<unsigned>(split.wndCnt, kSplitWindows);
    for (unsigned i = 0; i < count; ++i) {
        keys[i] = split.wnd[i].topLayer * 65536u + i;
    }
    std::sort(keys, keys + count);
    for (unsigned k = count; k-- > 0;) {
        const int window = static_cast<int>(keys[k] & 0xFFFF);
        if (window < windows.size() && windows[window].contains(point)) {
            return window;
        }
    }
    return 0;
}

QPoint osd_position(const VideoOutputOSDParameter &osd, const QRect &window, const QSize &label) {
    const bool right = osd.corner == kAnchorTopRight || osd.corner == kAnchorBottomRight;
    const bool bottom = osd.corner == kAnchorBottomLeft || osd.corner == kAnchorBottomRight;
    return QPoint(placed(right, osd.x, window.x(), window.width(), label.width()),
                  placed(bottom, osd.y, window.y(), window.height(), label.height()));
}

QVector<WatermarkCell> watermark_cells(const QSize &screen, int arrangement) {
    QVector<WatermarkCell> cells;
    const int n = arrangement;
    if (n <= 0 || n > kVirtualExtent) {
        return cells;
    }
    const int cellUnits = kVirtualExtent / n;
    const QSize cellPixels(screen.width() / n, screen.height() / n);
    for (int row = 0; row < n && row * n < kWatermarkLabels; ++row) {
        for (int column = 0; column < n && column + row * n < kWatermarkLabels; ++column) {
            cells.append(
                {column + row * n,
                 QRect(column * kVirtualExtent / n, row * kVirtualExtent / n, cellUnits, cellUnits),
                 QRect(QPoint(screen.width() * column / n, screen.height() * row / n),
                       cellPixels)});
        }
    }
    return cells;
}

bool dot_moves_on(unsigned tick, int speed) {
    return speed == 0 || tick % static_cast<unsigned>(speed) == 0;
}

QPoint moved_dot(const QPoint &dot, const WatermarkDotmatrixParameter &record,
                 const QSize &screen) {
    switch (record.direction) {
        case 0:
            return QPoint(moved_back(dot.x(), record.step, screen.width()), dot.y());
        case 1:
            return QPoint(dot.x(), moved_back(dot.y(), record.step, screen.height()));
        case 2:
            return QPoint(moved_on(dot.x(), record.step, screen.width()), dot.y());
        case 3:
            return QPoint(dot.x(), moved_on(dot.y(), record.step, screen.height()));
        default:
            return dot;
    }
}
