#include "user_split.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "mainwindow_debug.h"

namespace {

/// The five fields of a window, in the order of the text.
enum Field { kX, kY, kW, kH, kLayer, kFields };

/**
 * Reads up to five integers joined by "," into `raw`, whose elements past the first that is no
 * number stay as they were. A number may have blanks before it but none behind it. The ";" that
 * ends a window ends its last number too.
 */
void read_fields(const char *token, int32_t (&raw)[kFields]) {
    for (int field = 0; field < kFields; ++field) {
        char *end = nullptr;
        const long long number = std::strtoll(token, &end, 10);
        if (end == token) {
            return;
        }
        raw[field] = static_cast<int32_t>(static_cast<uint32_t>(number));
        if (*end != ',') {
            return;
        }
        token = end + 1;
    }
}

/// 1/8192 of `extent`; the product wraps at 32 bits.
int32_t to_pixels(int32_t units, uint32_t extent) {
    return static_cast<int32_t>((static_cast<uint32_t>(units) * extent) >> 13);
}

/// A piece of a window's outline, parallel to an axis. Wider than the rectangles' fields, so that
/// no sum of them overflows.
struct Segment {
    int64_t x1, y1, x2, y2;
};

/// What a covering window hides, its own outline included.
struct Box {
    int64_t left, top, right, bottom;

    bool empty() const { return right < left || bottom < top; }
};

int64_t far_edge(int32_t position, int32_t size) {
    return int64_t{position} + size;
}

Box box_of(const tagWinRect &r) {
    return {r.x, r.y, far_edge(r.x, r.w), far_edge(r.y, r.h)};
}

std::vector<Segment> outline_of(const tagWinRect &r) {
    const Box b = box_of(r);
    return {{b.left, b.top, b.right, b.top},
            {b.right, b.top, b.right, b.bottom},
            {b.left, b.top, b.left, b.bottom},
            {b.left, b.bottom, b.right, b.bottom}};
}

bool covers(const tagWinRect *rects, int upper, int lower) {
    return rects[upper].layer > rects[lower].layer ||
           (rects[upper].layer == rects[lower].layer && upper > lower);
}

/// A run along one axis.
struct Run {
    int64_t start, end;
};

/**
 * What is left of `run` outside [low, high]: each piece stops one pixel before it. Returns the
 * number of pieces, 0 to 2.
 */
int cut_run(Run run, int64_t low, int64_t high, Run (&pieces)[2]) {
    if (run.end < low || run.start > high) {
        pieces[0] = run;
        return 1;
    }
    int count = 0;
    if (run.start < low) {
        pieces[count++] = {run.start, low - 1};
    }
    if (run.end > high) {
        pieces[count++] = {high + 1, run.end};
    }
    return count;
}

/// Appends to `kept` what `box` leaves of `segment`.
void cut_segment(const Segment &segment, const Box &box, std::vector<Segment> &kept) {
    const bool horizontal = segment.y1 == segment.y2;
    const int64_t across = horizontal ? segment.y1 : segment.x1;
    const bool beside = horizontal ? across < box.top || across > box.bottom
                                   : across < box.left || across > box.right;
    if (box.empty() || beside) {
        kept.push_back(segment);
        return;
    }
    const Run run = horizontal ? Run{segment.x1, segment.x2} : Run{segment.y1, segment.y2};
    Run pieces[2];
    const int count = horizontal ? cut_run(run, box.left, box.right, pieces)
                                 : cut_run(run, box.top, box.bottom, pieces);
    for (int i = 0; i < count; ++i) {
        kept.push_back(horizontal ? Segment{pieces[i].start, across, pieces[i].end, across}
                                  : Segment{across, pieces[i].start, across, pieces[i].end});
    }
}

/// The outline of window `i` without what the windows over it hide.
std::vector<Segment> visible_outline(const tagWinRect *rects, int n, int i) {
    std::vector<Segment> segments = outline_of(rects[i]);
    std::vector<Segment> kept;
    for (int j = 0; j < n && !segments.empty(); ++j) {
        if (j == i || !covers(rects, j, i)) {
            continue;
        }
        kept.clear();
        for (const Segment &segment : segments) {
            cut_segment(segment, box_of(rects[j]), kept);
        }
        segments.swap(kept);
    }
    return segments;
}

}  // namespace

extern "C" int parse_win_splitstr(const char *text, unsigned n, tagWinRect *rects) {
    if (text == nullptr || rects == nullptr) {
        return -1;
    }
    int32_t raw[kFields] = {};
    unsigned window = 0;
    const char *token = text + std::strspn(text, ";");
    while (*token != '\0' && window != n) {
        const size_t length = std::strcspn(token, ";");
        MAINWINDOW_DEBUG("%s %.*s %u\n", __func__, static_cast<int>(length), token, window);
        read_fields(token, raw);
        tagWinRect &r = rects[window++];
        r.x = to_pixels(raw[kX], 1920);
        r.y = to_pixels(raw[kY], 1080);
        r.w = to_pixels(raw[kW], 1920);
        r.h = to_pixels(raw[kH], 1080);
        r.layer = raw[kLayer];
        MAINWINDOW_DEBUG("%s %d,%d,%d,%d,%d\n", __func__, r.x, r.y, r.w, r.h, r.layer);
        token += length;
        token += std::strspn(token, ";");
    }
    return -1;
}

void trans_win_rects_to_QLine(const tagWinRect *rects, int n, QVector<QLineF> &lines,
                              QVector<QColor> &colours) {
    lines.clear();
    colours.clear();
    for (int i = 0; i < n; ++i) {
        const QRgb colour = static_cast<QRgb>(rects[i].color);
        for (const Segment &s : visible_outline(rects, n, i)) {
            lines.append(QLineF(s.x1, s.y1, s.x2, s.y2));
            colours.append(QColor(qRed(colour), qGreen(colour), qBlue(colour)));
            MAINWINDOW_DEBUG("line:%d %d,%d, ==%d,%d %08x\n", i, static_cast<int>(s.x1),
                             static_cast<int>(s.y1), static_cast<int>(s.x2), static_cast<int>(s.y2),
                             colour);
        }
    }
}
