#include "composition.h"

#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <numeric>

#include "test_digits.h"
#include "user_split.h"
#include "wnd_split.h"

namespace vdevice {
namespace {

bool is_user_mode(unsigned mode) {
    return mode >= kFirstUserSplitMode && mode < kFirstUserSplitMode + kUserSplits;
}

std::vector<VideoWindow> user_windows(const Arrangement &arrangement) {
    tagWinRect rects[kSplitWindows] = {};
    const int count = std::clamp(arrangement.userWindows, 0, int(kSplitWindows));
    parse_win_splitstr(arrangement.userText.c_str(), unsigned(count), rects);
    std::vector<VideoWindow> windows;
    for (int i = 0; i < count; ++i) {
        const tagWinRect &r = rects[i];
        windows.push_back({QRect(r.x, r.y, r.w, r.h), r.layer});
    }
    return windows;
}

std::vector<VideoWindow> catalogue_windows(unsigned mode, const QSize &screen) {
    init_split();
    init_split_info();
    SplitInfo split;
    if (hal_get_split_info(mode, &split) != 0) return {};
    const unsigned canvas[4] = {0, 0, unsigned(screen.width()), unsigned(screen.height())};
    std::vector<VideoWindow> windows;
    for (unsigned i = 0; i < split.wndCnt; ++i) {
        int edges[4] = {};
        hal_get_split_wnd_info(canvas, &split.wnd[i], edges);
        windows.push_back({QRect(edges[0], edges[1], edges[2] - edges[0], edges[3] - edges[1]),
                           split.wnd[i].topLayer});
    }
    return windows;
}

/** Hues far apart for neighbours, so that windows can be told apart at a glance. */
QColor card_colour(int number, int value) {
    return QColor::fromHsv((number * 67 + 150) % 360, 150, value);
}

void paint_gradient(QPainter &painter, const QRect &area, int number) {
    QLinearGradient gradient(area.topLeft(), area.bottomRight());
    gradient.setColorAt(0, card_colour(number, 120));
    gradient.setColorAt(1, card_colour(number, 55));
    painter.fillRect(area, gradient);
}

void paint_grid(QPainter &painter, const QRect &area) {
    const int step = std::max(8, area.height() / 9);
    painter.setPen(QColor(255, 255, 255, 28));
    for (int x = area.center().x() % step; x < area.width(); x += step) {
        painter.drawLine(x, 0, x, area.height());
    }
    for (int y = area.center().y() % step; y < area.height(); y += step) {
        painter.drawLine(0, y, area.width(), y);
    }
}

void paint_circle(QPainter &painter, const QRect &area) {
    const int radius = std::min(area.width(), area.height()) * 2 / 5;
    painter.setPen(QPen(QColor(255, 255, 255, 70), std::max(1, radius / 40)));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawEllipse(area.center(), radius, radius);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

/** The eight bars of a test card, white to black. */
void paint_bars(QPainter &painter, const QRect &area) {
    const QColor bars[] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                           {191, 0, 191},   {191, 0, 0},   {0, 0, 191},   {16, 16, 16}};
    const int count = int(std::size(bars));
    const QRect strip(area.width() / 4, area.height() * 37 / 50, area.width() / 2,
                      std::max(2, area.height() / 14));
    for (int i = 0; i < count; ++i) {
        const int left = strip.left() + strip.width() * i / count;
        const int right = strip.left() + strip.width() * (i + 1) / count;
        painter.fillRect(left, strip.top(), right - left, strip.height(), bars[i]);
    }
}

}  // namespace

std::vector<VideoWindow> video_windows(const Arrangement &arrangement, const QSize &screen) {
    return is_user_mode(arrangement.mode) ? user_windows(arrangement)
                                          : catalogue_windows(arrangement.mode, screen);
}

QImage test_card(const QSize &size, int number) {
    QImage card(size, QImage::Format_RGB32);
    QPainter painter(&card);
    const QRect area(QPoint(0, 0), size);
    paint_gradient(painter, area, number);
    paint_grid(painter, area);
    paint_circle(painter, area);
    paint_bars(painter, area);
    const int height = size.height() / 3;
    paint_number(painter, QPoint(size.width() / 2, size.height() * 2 / 5 + height / 8), height,
                 number);
    return card;
}

QImage test_video(const Arrangement &arrangement, const QSize &screen) {
    QImage video(screen, QImage::Format_RGB32);
    video.fill(arrangement.background);
    const std::vector<VideoWindow> windows = video_windows(arrangement, screen);
    std::vector<int> order(windows.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return windows[size_t(a)].layer < windows[size_t(b)].layer;
    });
    QPainter painter(&video);
    for (const int i : order) {
        const QRect visible = windows[size_t(i)].rect & video.rect();
        if (visible.isEmpty()) continue;
        painter.drawImage(visible.topLeft(), test_card(visible.size(), i + 1));
    }
    return video;
}

QImage compose(const QImage &video, const QImage &layer) {
    QImage picture = video.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.drawImage(0, 0, layer);
    return picture;
}

}  // namespace vdevice
