// Labels that are shown as pictures are, pixel by pixel, those that are drawn.

#include "label_picture.h"

#include <gtest/gtest.h>

#include <QBackingStore>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>
#include <functional>
#include <random>

#include "backing_pixels.h"

namespace {

/** A transparent window that paints what it is told. */
class Canvas : public QWidget {
public:
    Canvas() {
        setAttribute(Qt::WA_TranslucentBackground);
        setGeometry(0, 0, 400, 300);
        show();
        QCoreApplication::processEvents();
    }

    using Paint = std::function<void(QPainter &, const QRegion &)>;

    QImage painted(const Paint &paint, const QRegion &part = QRect(0, 0, 400, 300)) {
        mPaint = paint;
        repaint(part);
        mPaint = {};
        return image()->copy();
    }

    QImage *image() { return static_cast<QImage *>(backingStore()->paintDevice()); }

protected:
    void paintEvent(QPaintEvent *event) override {
        QPainter painter(this);
        if (mPaint) mPaint(painter, event->region());
    }

private:
    Paint mPaint;
};

struct Label {
    QRect rect;
    QString text;
    QFont font;
    TextColors colors;
};

QColor randomColor(std::mt19937 &random) {
    static const int kAlphas[] = {0, 1, 90, 254, 255, 255};
    return QColor::fromRgb(static_cast<int>(random() % 256), static_cast<int>(random() % 256),
                           static_cast<int>(random() % 256), kAlphas[random() % 6]);
}

Label randomLabel(std::mt19937 &random) {
    static const QString kTexts[] = {QStringLiteral("2026-01-01 00:00:00"),
                                     QStringLiteral("Camera 7\nnorth\ngate"),
                                     QStringLiteral("频道 αβγ"),
                                     QStringLiteral("W"),
                                     QStringLiteral("  "),
                                     QStringLiteral("fjord, AVATAR")};
    Label label;
    label.rect = QRect(static_cast<int>(random() % 300), static_cast<int>(random() % 200),
                       1 + static_cast<int>(random() % 300), 1 + static_cast<int>(random() % 100));
    label.text = kTexts[random() % 6];
    label.font.setPointSize(5 + static_cast<int>(random() % 40));
    label.font.setBold(random() % 2 == 0);
    label.colors = {randomColor(random), randomColor(random), random() % 2 == 0};
    return label;
}

/// What a paint event finds: borders, other labels, nothing.
void paintGround(QPainter &painter, int kind) {
    if (kind == 1) painter.fillRect(100, 0, 9, 300, QColor(0, 200, 90));
    if (kind == 2) painter.fillRect(0, 110, 400, 3, QColor(10, 0, 90, 77));
    if (kind == 3) painter.fillRect(0, 0, 400, 300, QColor(40, 50, 60, 128));
}

/// A label paints within itself.
void prepare(QPainter &painter, const Label &label) {
    painter.setClipRect(label.rect);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(label.font);
}

class LabelPictures : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(QFontDatabase::families().isEmpty()) << "no fonts: nothing would be painted";
        forget_label_pictures();
    }

    QImage painted(const Label &label, int ground, const QRegion &part) {
        return mCanvas.painted(
            [&](QPainter &painter, const QRegion &dirty) {
                paintGround(painter, ground);
                prepare(painter, label);
                paint_label(painter, BackingPixels(painter, mCanvas), label.rect,
                            dirty & label.rect, label.text, label.colors);
            },
            part);
    }

    /// By the painter alone.
    QImage drawn(const Label &label, int ground, const QRegion &part) {
        return mCanvas.painted(
            [&](QPainter &painter, const QRegion &) {
                paintGround(painter, ground);
                prepare(painter, label);
                const TextColors &colors = label.colors;
                const int alignment = Qt::AlignLeft | Qt::AlignTop;
                if (!colors.outlined) painter.fillRect(label.rect, colors.back);
                if (colors.outlined && colors.back.alpha() != 0) {
                    painter.setPen(QPen(colors.back, 1));
                    for (const QPoint by :
                         {QPoint(-1, -1), QPoint(1, -1), QPoint(1, 1), QPoint(-1, 1)})
                        painter.drawText(label.rect.translated(by), alignment, label.text);
                }
                painter.setPen(QPen(colors.fore, 1));
                painter.drawText(label.rect, alignment, label.text);
            },
            part);
    }

    Canvas mCanvas;
};

TEST_F(LabelPictures, AreWhatDrawingTheTextGivesOnAnyGround) {
    std::mt19937 random(20261121);
    int shown = 0;
    for (int i = 0; i < 400; ++i) {
        const Label label = randomLabel(random);
        for (int ground = 0; ground < 4; ++ground) {
            const QImage expected = drawn(label, ground, mCanvas.rect());
            for (int painting = 0; painting < 4; ++painting) {
                ASSERT_TRUE(painted(label, ground, mCanvas.rect()) == expected)
                    << "case " << i << ", ground " << ground << ", painting " << painting << ": "
                    << label.text.toStdString();
            }
            if (ground == 0 && expected != drawn(Label(), 0, mCanvas.rect())) ++shown;
        }
    }
    EXPECT_GT(shown, 200) << "most labels are to be seen";
}

TEST_F(LabelPictures, ArePaintedOnlyWhereThatIsAskedFor) {
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        const Label label = randomLabel(random);
        const int ground = static_cast<int>(random() % 4);
        for (int painting = 0; painting < 4; ++painting)
            painted(label, ground, mCanvas.rect());
        QRegion part;
        for (int j = 0; j < 3; ++j) {
            part +=
                QRect(static_cast<int>(random() % 390), static_cast<int>(random() % 290),
                      1 + static_cast<int>(random() % 200), 1 + static_cast<int>(random() % 90));
        }
        part &= mCanvas.rect();
        mCanvas.image()->fill(0x80402010);
        const QImage expected = drawn(label, ground, part);
        mCanvas.image()->fill(0x80402010);
        ASSERT_TRUE(painted(label, ground, part) == expected) << "case " << i;
    }
}

TEST_F(LabelPictures, AreOfAllThatTheirLookDependsOn) {
    // A name of a colour has up to 16 bits a channel, and alpha makes a step of them a step of one.
    Label label;
    label.rect = QRect(0, 0, 90, 30);
    label.text = QStringLiteral("look");
    label.font.setPointSize(20);
    label.colors = {record_color("#109110911091", 255), record_color("#038303830383", 39), false};
    const auto expectOwn = [&](const char *what) {
        const QImage expected = drawn(label, 0, mCanvas.rect());
        for (int painting = 0; painting < 4; ++painting)
            EXPECT_TRUE(painted(label, 0, mCanvas.rect()) == expected) << what;
    };
    expectOwn("first");
    label.colors.back = record_color("#028302830283", 39);
    expectOwn("back");
    label.colors.fore = record_color("#F11011101110", 255);
    expectOwn("fore");
    label.colors.outlined = true;
    expectOwn("outline");
    label.font.setItalic(true);
    expectOwn("font");
    label.rect.setWidth(40);
    expectOwn("room");
    label.text = QStringLiteral("kool");
    expectOwn("text");
}

TEST_F(LabelPictures, OfTextsBeyondAllBoundsAreNotKept) {
    Label label;
    label.rect = QRect(0, 0, 400, 300);
    label.colors = {Qt::white, Qt::black, true};
    label.font.setPointSize(12);
    for (int i = 0; i < 100; ++i) {  // 48 MB, were all of them kept
        label.text = QString::number(i);
        const QImage expected = drawn(label, 0, mCanvas.rect());
        for (int painting = 0; painting < 4; ++painting)
            ASSERT_TRUE(painted(label, 0, mCanvas.rect()) == expected) << i;
    }
    for (const QRect &rect : {QRect(0, 0, 100000, 100000), QRect(5, 5, 0, 0), QRect(5, 5, -3, 9),
                              QRect(-900, -900, 5000, 5000)}) {
        label.rect = rect;
        const QImage expected = drawn(label, 0, mCanvas.rect());
        for (int painting = 0; painting < 4; ++painting)
            ASSERT_TRUE(painted(label, 0, mCanvas.rect()) == expected) << rect.width();
    }
}

TEST_F(LabelPictures, AddsPixelsBesideOthersUpToTheFirstRowWhereTheyMeet) {
    QImage picture(4, 4, QImage::Format_ARGB32_Premultiplied);
    picture.fill(0);
    for (int i = 0; i < 4; ++i)
        picture.setPixel(i, i, 0xFFFFFFFF);
    QRect rest;
    QRect stopped;
    const QImage seen = mCanvas.painted([&](QPainter &painter, const QRegion &) {
        painter.fillRect(12, 11, 1, 3, Qt::red);  // beside the diagonal in row 1, on it in row 2
        const BackingPixels pixels(painter, mCanvas);
        ASSERT_TRUE(bool(pixels));
        rest = pixels.add(picture, {30, 10}, {30, 10, 4, 4});
        stopped = pixels.add(picture, {10, 10}, {10, 10, 4, 4});
    });
    EXPECT_TRUE(rest.isEmpty());
    EXPECT_EQ(stopped, QRect(10, 12, 4, 2));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(seen.pixel(30 + i, 10 + i), 0xFFFFFFFF) << i;
        EXPECT_EQ(seen.pixel(10 + i, 10 + i), i < 2 ? 0xFFFFFFFF : i == 2 ? 0xFFFF0000 : 0) << i;
    }
    EXPECT_EQ(seen.pixel(12, 11), 0xFFFF0000);
}

TEST_F(LabelPictures, KnowThePixelsOnlyOfThePaintersOwnWindow) {
    mCanvas.painted([&](QPainter &painter, const QRegion &) {
        EXPECT_TRUE(bool(BackingPixels(painter, mCanvas)));
        EXPECT_EQ(BackingPixels(painter, mCanvas).bounds(), mCanvas.rect());
        painter.rotate(30);
        EXPECT_FALSE(bool(BackingPixels(painter, mCanvas)));
        painter.resetTransform();
        painter.scale(2, 1);
        EXPECT_FALSE(bool(BackingPixels(painter, mCanvas)));
    });
    QImage elsewhere(400, 300, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&elsewhere);
    EXPECT_FALSE(bool(BackingPixels(painter, mCanvas)));
    QPainter idle;
    EXPECT_FALSE(bool(BackingPixels(idle, mCanvas)));
}

TEST_F(LabelPictures, OfAChildBeginAtItsCorner) {
    class Child : public QWidget {
    public:
        using QWidget::QWidget;
        QRect bounds;

    protected:
        void paintEvent(QPaintEvent *) override {
            QPainter painter(this);
            const BackingPixels pixels(painter, *this);
            bounds = pixels.bounds();
            pixels.fill({1, 2, 3, 4}, 0x123456);
        }
    } child(&mCanvas);
    child.setGeometry(50, 60, 40, 30);
    child.show();
    mCanvas.repaint();
    EXPECT_EQ(child.bounds, mCanvas.rect().translated(-50, -60));
    for (int y = 61; y < 68; ++y) {
        for (int x = 50; x < 56; ++x) {
            const bool inside = QRect(51, 62, 3, 4).contains(x, y);
            EXPECT_EQ(mCanvas.image()->pixel(x, y), inside ? 0xFF123456 : 0) << x << ", " << y;
        }
    }
}

}  // namespace
