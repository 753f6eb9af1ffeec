// User layouts from any text, and single windows of any description on any canvas. An input is the
// number of windows ('0' is none), the layout's text up to a NUL, then a canvas and windows.

#include <algorithm>
#include <vector>

#include "user_split.h"
#include "wnd_split.h"

#include "fuzz_target.h"

namespace {

constexpr int kMostWindows = 16;

struct Extent {
    double low, high;
    bool holds(double at) const { return low <= at && at <= high; }
};

Extent extent(int32_t position, int32_t size) {
    const double other = double{1} * position + size;
    return {std::min<double>(position, other), std::max<double>(position, other)};
}

/** True when both ends lie within the window, its right and bottom edge included. */
bool lies_within(const QLineF &line, const tagWinRect &window) {
    const Extent x = extent(window.x, window.w);
    const Extent y = extent(window.y, window.h);
    return x.holds(line.x1()) && x.holds(line.x2()) && y.holds(line.y1()) && y.holds(line.y2());
}

/** The colour tells whose line it is. */
void check_lines(const std::vector<tagWinRect> &windows) {
    const int n = static_cast<int>(windows.size());
    QVector<QLineF> lines;
    QVector<QColor> colours;
    trans_win_rects_to_QLine(windows.data(), n, lines, colours);
    fuzz::require(lines.size() == colours.size(), "each line has a colour");
    fuzz::require(lines.size() <= qsizetype{4} * n * n,
                  "each of a window's edges is cut at most once by each other window");
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QLineF &line = lines[i];
        const int owner = colours[i].rgb() & 0xFF;
        fuzz::require(line.x1() == line.x2() || line.y1() == line.y2(),
                      "every line is parallel to an axis");
        fuzz::require(owner < n && lies_within(line, windows[owner]),
                      "a window's line lies on its outline");
    }
}

void check_layout(unsigned n, const std::string &text) {
    std::vector<tagWinRect> windows(n);
    fuzz::require(parse_win_splitstr(text.c_str(), n, windows.data()) == -1,
                  "a split text is read with the result -1");
    for (unsigned i = 0; i < n; ++i) {
        windows[i].color = static_cast<int32_t>(i);
    }
    check_lines(windows);
}

void place_window(fuzz::Input &input) {
    struct Canvas {
        unsigned edges[4];
    };
    const auto canvas = input.value<Canvas>();
    const auto window = input.value<SplitWndInfo>();
    int rect[4] = {};
    fuzz::require(hal_get_split_wnd_info(canvas.edges, &window, rect) == 0,
                  "a window has a place on every canvas");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const unsigned n = static_cast<uint8_t>(input.byte() - '0') % (kMostWindows + 1);
    const std::string text = input.until(std::string(1, '\0'));
    check_layout(n, text);
    const unsigned mode = getSplitMode(text.c_str());
    fuzz::require(mode >= 1 && checkSplitValid(mode) == 1, "every name gives a valid mode");
    while (!input.empty()) {
        place_window(input);
    }
    return 0;
}
