// Texts as labels paint them, pixel by pixel what the toolkit's own drawing of a text gives.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <random>

#include "label_paint.h"

namespace {

const QColor kFore(255, 255, 255, 230);
const QColor kBack(160, 0, 32, 200);

template <class Paint>
QImage painted(const QFont &font, Paint paint) {
    QImage image(300, 120, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(10, 90, 40, 70));
    QPainter painter(&image);
    painter.setLayoutDirection(Qt::LeftToRight);  // as a widget's; an image's has none
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    paint(painter);
    return image;
}

/** The rules of an outlined text, without anything that is kept between texts. */
void drawOutlined(QPainter &painter, const QRect &rect, int alignment, const QString &text) {
    painter.setPen(QPen(kBack, 1));
    for (const QPoint offset : {QPoint(-1, -1), QPoint(1, -1), QPoint(1, 1), QPoint(-1, 1)})
        painter.drawText(rect.translated(offset), alignment, text);
    painter.setPen(QPen(kFore, 1));
    painter.drawText(rect, alignment, text);
}

QString randomText(std::mt19937 &random) {
    static const QString kCharacters = QStringLiteral("AVTo.,ijfl Wy&~ 0123456789:-\n\t\r§中ע");
    // Most texts are of the kind that is kept.
    const int from = random() % 4 == 0 ? kCharacters.size() : 29;
    QString text;
    for (int left = static_cast<int>(random() % 30); left > 0; --left)
        text += kCharacters[static_cast<int>(random() % static_cast<unsigned>(from))];
    return text;
}

TEST(LabelPainting, GivesThePixelsOfTheToolkitForAnyTextFontAndRoom) {
    std::mt19937 random(20260101);
    for (int i = 0; i < 400; ++i) {
        QFont font;
        font.setPointSize(6 + static_cast<int>(random() % 30));
        font.setBold(random() % 2 == 0);
        const QRect room(static_cast<int>(random() % 40), static_cast<int>(random() % 20),
                         1 + static_cast<int>(random() % 280),
                         1 + static_cast<int>(random() % 100));
        const int alignment = random() % 4 == 0 ? static_cast<int>(Qt::AlignCenter)
                                                : static_cast<int>(Qt::AlignLeft | Qt::AlignTop);
        const QString text = randomText(random);
        const QImage expected =
            painted(font, [&](QPainter &p) { drawOutlined(p, room, alignment, text); });
        // Twice: placed anew, and as kept.
        for (const char *when : {"first", "again"}) {
            const QImage seen = painted(font, [&](QPainter &p) {
                draw_text(p, room, alignment, text, {kFore, kBack, true}, QRect(0, 0, 300, 120));
            });
            ASSERT_EQ(seen, expected) << when << ", case " << i << ": " << text.toStdString();
        }
    }
}

QString manyLines(std::mt19937 &random) {
    static const QString kCharacters = QStringLiteral("AVTo.,ijfl Wy&~ 0123456789:-\t\r§中ע");
    QString text;
    for (int line = 30 + static_cast<int>(random() % 20); line > 0; --line) {
        for (int left = static_cast<int>(random() % 6); left > 0; --left) {
            text +=
                kCharacters[static_cast<int>(random() % static_cast<unsigned>(kCharacters.size()))];
        }
        text += QLatin1Char('\n');
    }
    return text;
}

TEST(LabelPainting, GivesThePixelsOfTheToolkitForATurnedTextOfManyLines) {
    std::mt19937 random(20261121);
    for (int i = 0; i < 300; ++i) {
        QFont font;
        font.setPointSize(6 + static_cast<int>(random() % (i % 10 == 0 ? 50 : 20)));
        const int angle = static_cast<int>(random() % 720) - 360;
        const QRect room(-static_cast<int>(random() % 60), -static_cast<int>(random() % 60),
                         1 + static_cast<int>(random() % 150),
                         1 + static_cast<int>(random() % 900));
        const QString text = manyLines(random);
        const auto turned = [&](QPainter &painter) {
            painter.translate(150, 60);
            painter.rotate(angle);
        };
        const QImage expected = painted(font, [&](QPainter &p) {
            turned(p);
            drawOutlined(p, room, Qt::AlignCenter, text);
        });
        const QImage seen = painted(font, [&](QPainter &p) {
            turned(p);
            draw_text(p, room, Qt::AlignCenter, text, {kFore, kBack, true}, QRect(0, 0, 300, 120));
        });
        ASSERT_EQ(seen, expected) << "case " << i << ", angle " << angle << ": "
                                  << text.toStdString();
    }
}

TEST(LabelPainting, LeavesThePaintersClipAsItWas) {
    painted(QFont(), [](QPainter &painter) {
        const QRect clip(0, 0, 100, 100);
        painter.setClipRect(clip);
        draw_text(painter, QRect(0, 0, 5, 5), Qt::AlignLeft | Qt::AlignTop,
                  QStringLiteral("too long"), {kFore, kBack, false}, clip);
        EXPECT_EQ(painter.clipBoundingRect().toRect(), clip);
    });
}

}  // namespace
