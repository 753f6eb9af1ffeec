// Borders that are filled are, pixel by pixel, those that are stroked.

#include "border_paint.h"

#include <QBackingStore>
#include <QPainter>
#include <random>

#include "mainwindow_fixture.h"

namespace {

constexpr QRgb kRed = 0xFFFF0000;

QImage nothing(const QSize &size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    return image;
}

QImage stroked(const QSize &size, const QRect &window, int width) {
    QImage image = nothing(size);
    QPainter painter(&image);
    painter.setPen(QPen(QColor(kRed), width));
    painter.drawRect(border_outline(window, width));
    return image;
}

/// Each pixel once: one that two parts cover shows.
QImage covered(const QSize &size, const QVector<QRect> &parts) {
    QImage image = nothing(size);
    for (const QRect &part : parts) {
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x)
                image.setPixel(x, y, image.pixel(x, y) == 0 ? kRed : 0xFF00FF00);
        }
    }
    return image;
}

TEST(BorderParts, AreThePixelsOfAStroke) {
    std::mt19937 random(20261121);
    for (int width = 1; width <= kWidestFilledBorder; ++width) {
        for (int spare : {1, 2, 3, 1 + static_cast<int>(random() % 100)}) {
            const QRect window(static_cast<int>(random() % 30), static_cast<int>(random() % 30),
                               4 * width + spare, 4 * width + 1 + static_cast<int>(random() % 50));
            const QSize canvas(window.right() + 10, window.bottom() + 10);
            const QVector<QRect> parts = outline_parts(window, width);
            ASSERT_FALSE(parts.isEmpty()) << width;
            ASSERT_EQ(covered(canvas, parts), stroked(canvas, window, width))
                << "width " << width << ", a window of " << window.width() << " x "
                << window.height();
        }
    }
}

TEST(BorderParts, AreNoneWhereAStrokeIsNotSimple) {
    const struct {
        QSize window;
        int width;
    } cases[] = {{{1920, 1080}, 0},
                 {{1920, 1080}, -1},
                 {{1920, 1080}, INT_MIN},
                 {{1920, 1080}, kWidestFilledBorder + 1},
                 {{1920, 1080}, INT_MAX},
                 {{20, 100}, 5},
                 {{100, 20}, 5},
                 {{0, 0}, 1},
                 {{-7, 50}, 1}};
    for (const auto &row : cases) {
        EXPECT_TRUE(outline_parts(QRect(QPoint(3, 4), row.window), row.width).isEmpty())
            << row.width << " of " << row.window.width() << " x " << row.window.height();
    }
}

/** The main window as the device has it, with memory of its own to paint on. */
class BordersOnScreen : public MainWindowTest {
protected:
    BordersOnScreen() {
        window.setWindowState(Qt::WindowFullScreen);
        window.show();
        QCoreApplication::processEvents();
    }

    /// What is painted, once all that is due is.
    QImage painted() {
        QCoreApplication::processEvents();
        return static_cast<QImage *>(window.backingStore()->paintDevice())->copy();
    }

    void scribble() {
        static_cast<QImage *>(window.backingStore()->paintDevice())->fill(0x80102030);
    }
};

TEST_F(BordersOnScreen, AreThoseOfEveryMode) {
    for (int mode = 0; mode < 26; ++mode) {
        sendNumber(SWITCH_SPLIT_EVENT, mode);
        for (int width : {1, 2, 3, 4, 5, 8, 17, 64, 65}) {
            const int audio = (mode + width) % (window.maxWndNum + 1) - 1;
            sendDisplay(width);
            sendNumber(SELECT_AO_WINDOW_EVENT, audio);
            ASSERT_TRUE(painted() == drawn_borders(window.size(), mode, width, audio))
                << "mode " << mode << " width " << width << " audio " << audio;
        }
    }
}

TEST_F(BordersOnScreen, ArePaintedOnlyWhereThatIsAskedFor) {
    std::mt19937 random(7);
    sendNumber(SWITCH_SPLIT_EVENT, 16);
    sendDisplay(6);
    painted();
    const QImage borders = drawn_borders(window.size(), 16, 6, -1);
    for (int round = 0; round < 40; ++round) {
        QRegion asked;
        for (int i = 0; i < 12; ++i) {
            asked +=
                QRect(static_cast<int>(random() % 1900), static_cast<int>(random() % 1060),
                      1 + static_cast<int>(random() % 300), 1 + static_cast<int>(random() % 300));
        }
        scribble();
        QImage expected = painted();
        {
            QPainter painter(&expected);
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.setClipRegion(asked);
            painter.drawImage(0, 0, borders);
        }
        window.update(asked & window.rect());
        ASSERT_TRUE(painted() == expected) << "round " << round;
    }
}

}  // namespace
