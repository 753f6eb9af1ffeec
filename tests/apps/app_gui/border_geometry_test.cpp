#include "border_geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <climits>
#include <random>

namespace {

constexpr QRgb kVideo = 0xFF00FF00;
constexpr QRgb kAudio = 0xFFFF0000;
const QSize kCanvas(90, 70);

QImage painted(const BorderPicture &picture) {
    QImage image(kCanvas, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    QPainter painter(&image);
    for (const BorderStroke &stroke : picture.strokes) {
        painter.setPen(QPen(QColor(stroke.colour), picture.width));
        if (stroke.shape == BorderStroke::kLine) {
            painter.drawLine(stroke.line);
        } else {
            painter.drawRect(stroke.outline);
        }
    }
    return image;
}

QRect random_rect(std::mt19937 &random) {
    return QRect(static_cast<int>(random() % 80) - 5, static_cast<int>(random() % 60) - 5,
                 static_cast<int>(random() % 50), static_cast<int>(random() % 50));
}

BorderPicture random_picture(std::mt19937 &random) {
    const int width = static_cast<int>(random() % 9);
    const int count = static_cast<int>(random() % 5);
    if (random() % 2 == 0) {
        QVector<QRect> windows;
        for (int i = 0; i < count; ++i) {
            windows.append(random_rect(random));
        }
        return window_borders(windows, count,
                              {width, kVideo, kAudio, static_cast<int>(random() % 4)});
    }
    QVector<QLineF> lines;
    for (int i = 0; i < count; ++i) {
        const QRect r = random_rect(random);
        lines.append(random() % 2 == 0 ? QLineF(r.left(), r.top(), r.right(), r.top())
                                       : QLineF(r.left(), r.top(), r.left(), r.bottom()));
    }
    return line_borders(lines, QVector<QColor>(count, Qt::blue), width);
}

TEST(BorderOutline, LiesHalfTheWidthInsideTheWindow) {
    const QRect screen(0, 0, 1920, 1080);
    EXPECT_EQ(border_outline(screen, 1), QRect(0, 0, 1919, 1079));
    EXPECT_EQ(border_outline(screen, 4), QRect(2, 2, 1916, 1076));
    EXPECT_EQ(border_outline(screen, 5), QRect(2, 2, 1915, 1075));
    EXPECT_EQ(border_outline(QRect(10, 20, 4, 6), 8), QRect(14, 24, -4, -2));
}

TEST(WindowBorders, TakeTheAudioColourForTheAudioWindowOnly) {
    const QVector<QRect> windows{QRect(0, 0, 10, 10), QRect(10, 0, 10, 10), QRect(20, 0, 10, 10)};
    for (int audio : {-1, 0, 2, 3, INT_MIN, INT_MAX}) {
        const BorderPicture picture = window_borders(windows, 3, {2, kVideo, kAudio, audio});
        ASSERT_EQ(picture.strokes.size(), 3);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(picture.strokes[i].colour, i == audio ? kAudio : kVideo);
            EXPECT_EQ(picture.strokes[i].outline, border_outline(windows[i], 2));
        }
    }
}

TEST(WindowBorders, AreThoseOfTheWindowsThatHaveARectangle) {
    const QVector<QRect> windows{QRect(0, 0, 10, 10), QRect(10, 0, 10, 10)};
    struct {
        int count;
        int strokes;
    } const cases[] = {{0, 0}, {1, 1}, {2, 2}, {3, 2}, {INT_MAX, 2}, {-1, 0}, {INT_MIN, 0}};
    for (const auto &c : cases) {
        EXPECT_EQ(window_borders(windows, c.count, {2, kVideo, kAudio, 0}).strokes.size(),
                  c.strokes);
    }
}

TEST(Borders, AreNoneAtWidthZeroAndBelow) {
    for (int width : {0, -1, INT_MIN}) {
        EXPECT_TRUE(
            window_borders({QRect(0, 0, 9, 9)}, 1, {width, kVideo, kAudio, 0}).strokes.isEmpty());
        EXPECT_TRUE(line_borders({QLineF(0, 0, 9, 0)}, {Qt::red}, width).strokes.isEmpty());
    }
}

TEST(LineBorders, KeepTheColoursOfTheirLines) {
    const BorderPicture picture =
        line_borders({QLineF(0, 0, 9, 0), QLineF(0, 0, 0, 9)}, {Qt::red, Qt::green}, 3);
    ASSERT_EQ(picture.strokes.size(), 2);
    EXPECT_EQ(picture.strokes[0].colour, QColor(Qt::red).rgb());
    EXPECT_EQ(picture.strokes[1].colour, QColor(Qt::green).rgb());
    EXPECT_EQ(picture.strokes[1].line, QLineF(0, 0, 0, 9));
}

TEST(StrokeRegion, HoldsEveryPixelOfTheStroke) {
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        const BorderPicture picture = random_picture(random);
        for (const BorderStroke &stroke : picture.strokes) {
            const QImage image = painted({picture.width, {stroke}});
            const QRegion region = stroke_region(stroke, picture.width);
            for (int y = 0; y < kCanvas.height(); ++y) {
                for (int x = 0; x < kCanvas.width(); ++x) {
                    ASSERT_TRUE(image.pixel(x, y) == 0 || region.contains(QPoint(x, y)))
                        << "round " << round << " at " << x << ", " << y;
                }
            }
        }
    }
}

TEST(StrokeRegion, IsAFrameAndNotTheWholeWindow) {
    const BorderPicture picture =
        window_borders({QRect(0, 0, 1920, 1080)}, 1, {4, kVideo, kAudio, -1});
    const QRegion region = stroke_region(picture.strokes[0], 4);
    EXPECT_FALSE(region.intersects(QRect(8, 8, 1900, 1060)));
    EXPECT_TRUE(region.contains(QPoint(0, 500)));
    EXPECT_TRUE(region.contains(QPoint(1919, 1079)));
}

TEST(StrokeRegion, TakesAnyWidthAndPosition) {
    const QVector<QRect> windows{QRect(524287, 524287, 524287, 524287), QRect(0, 0, 0, 0)};
    for (int width : {1, 1000, 1 << 24, INT_MAX - 1, INT_MAX}) {
        const BorderPicture picture = window_borders(windows, 2, {width, kVideo, kAudio, -1});
        EXPECT_TRUE(stroke_region(picture.strokes[0], width).boundingRect().isValid()) << width;
        EXPECT_TRUE(stroke_region(picture.strokes[1], width).contains(QPoint(0, 0))) << width;
    }
}

TEST(ChangedRegion, IsEmptyForEqualPictures) {
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        const BorderPicture picture = random_picture(random);
        EXPECT_TRUE(changed_region(picture, picture).isEmpty());
    }
}

TEST(ChangedRegion, HoldsEveryPixelThatDiffers) {
    std::mt19937 random(5);
    for (int round = 0; round < 1500; ++round) {
        const BorderPicture before = random_picture(random);
        const BorderPicture after = random_picture(random);
        const QImage a = painted(before);
        const QImage b = painted(after);
        const QRegion region = changed_region(before, after);
        for (int y = 0; y < kCanvas.height(); ++y) {
            for (int x = 0; x < kCanvas.width(); ++x) {
                ASSERT_TRUE(a.pixel(x, y) == b.pixel(x, y) || region.contains(QPoint(x, y)))
                    << "round " << round << " at " << x << ", " << y;
            }
        }
    }
}

TEST(ChangedRegion, LeavesTheBordersAloneThatStayAsTheyAre) {
    const QVector<QRect> windows{QRect(0, 0, 20, 20), QRect(40, 0, 20, 20), QRect(60, 40, 20, 20)};
    const BorderPicture before = window_borders(windows, 3, {2, kVideo, kAudio, 0});
    const BorderPicture after = window_borders(windows, 3, {2, kVideo, kAudio, 2});
    EXPECT_EQ(changed_region(before, after),
              stroke_region(before.strokes[0], 2) + stroke_region(before.strokes[2], 2));
}

}  // namespace
