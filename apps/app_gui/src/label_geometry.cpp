#include "label_geometry.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int kVirtualBits = 13;
constexpr uint32_t kVirtualUnits = 1u << kVirtualBits;
constexpr int kReferenceLines = 1080;
constexpr int kLargestWidget = (1 << 24) - 1;
constexpr int kSmallestPoints = 6;
constexpr int kLargestPoints = 72;

/** Points of the preset font classes on a screen of 1080 lines. */
constexpr int defFontSizePt[] = {12, 18, 24, 36, 48, 60, 72};

/** A label's place along one axis. */
struct AxisStep {
    int64_t position;
    bool forward;
};

AxisStep turned_at_edges(AxisStep now, int length, int first, int last) {
    const int64_t lastStart = int64_t{last} - length;
    // One that is as long as the screen turns at both edges, a longer one lies at the last.
    const bool longer = first > lastStart + 1;
    if (now.position > lastStart || longer) return {lastStart, false};
    if (now.position < first) return {first, true};
    return now;
}

int64_t exact_quotient(int position, int64_t pixels, int64_t units) {
    return position * std::min<int64_t>(pixels, UINT32_MAX) / units;
}

int64_t wrapped_quotient(int position, int64_t pixels, int64_t units) {
    const uint32_t product = static_cast<uint32_t>(position) * static_cast<uint32_t>(pixels);
    const uint32_t divisor = static_cast<uint32_t>(units);
    return divisor == 0 ? 0 : product / divisor;
}

}  // namespace

int64_t screen_width(const QRect &screen) {
    return int64_t{screen.right()} - screen.left() + 1;
}

int64_t screen_height(const QRect &screen) {
    return int64_t{screen.bottom()} - screen.top() + 1;
}

QSize widget_size(const QRect &screen) {
    const auto bounded = [](int64_t length) {
        return static_cast<int>(std::clamp<int64_t>(length, 0, kLargestWidget));
    };
    return {bounded(screen_width(screen)), bounded(screen_height(screen))};
}

QPoint corner_at(int64_t x, int64_t y) {
    const auto bounded = [](int64_t value) {
        return static_cast<int>(std::clamp<int64_t>(value, -kFarthest, kFarthest));
    };
    return {bounded(x), bounded(y)};
}

bool has_units(const QRect &virtualScreen) {
    return screen_width(virtualScreen) != 0 && screen_height(virtualScreen) != 0;
}

QPoint placed_signed(int x, int y, const QRect &actual, const QRect &virtualScreen) {
    return corner_at(
        actual.left() + exact_quotient(x, screen_width(actual), screen_width(virtualScreen)),
        actual.top() + exact_quotient(y, screen_height(actual), screen_height(virtualScreen)));
}

QPoint placed_unsigned(int x, int y, const QRect &actual, const QRect &virtualScreen) {
    return corner_at(
        actual.left() + wrapped_quotient(x, screen_width(actual), screen_width(virtualScreen)),
        actual.top() + wrapped_quotient(y, screen_height(actual), screen_height(virtualScreen)));
}

QPoint held_top_left(const QPoint &wanted, const QRect &screen) {
    return corner_at(std::max(wanted.x(), screen.left()), std::max(wanted.y(), screen.top()));
}

QPoint held_on_all_sides(const QPoint &wanted, const QSize &label, const QRect &screen) {
    const auto held = [](int wantedStart, int length, int first, int last) {
        return std::min<int64_t>(std::max(wantedStart, first), int64_t{last} + 1 - length);
    };
    return corner_at(held(wanted.x(), label.width(), screen.left(), screen.right()),
                     held(wanted.y(), label.height(), screen.top(), screen.bottom()));
}

uint32_t room_after(uint32_t position, int64_t extent) {
    return (kVirtualUnits - position) * static_cast<uint32_t>(extent) >> kVirtualBits;
}

bool moves_on(int tick, int speed) {
    const int64_t divisor = speed == 0 ? 1 : speed;
    return tick % divisor == 0;
}

ScrollStep scrolled(const ScrollStep &now, const QSize &label, const QRect &screen, int direction,
                    int step) {
    const int64_t offset = now.forward ? int64_t{step} : -int64_t{step};
    const int axis = direction & ~2;
    AxisStep x{now.corner.x() + (axis == 0 ? offset : 0), now.forward};
    x = turned_at_edges(x, label.width(), screen.left(), screen.right());
    AxisStep y{now.corner.y() + (axis == 1 ? offset : 0), x.forward};
    y = turned_at_edges(y, label.height(), screen.top(), screen.bottom());
    return {corner_at(x.position, y.position), y.forward};
}

int point_size(int font, int size, double lines) {
    const int presets = static_cast<int>(std::size(defFontSizePt));
    if (font >= presets) return std::clamp(size, kSmallestPoints, kLargestPoints);
    const double points = lines * defFontSizePt[std::max(font, 0)] / kReferenceLines + 0.5;
    return static_cast<int>(std::clamp(points, double{kSmallestPoints}, double{kLargestPoints}));
}
