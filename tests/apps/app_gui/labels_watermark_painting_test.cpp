#include <QFile>
#include <cstdlib>
#include <string>

#include "labels_watermark_fixture.h"

namespace {

/** The label once more, painted by hand where it lies. */
void paintTold(QImage &image, const MoveWatermarkLabel &label, const WatermarkOSDParameter &record,
               int points) {
    QPainter painter(&image);
    painter.translate(label.pos());
    painter.setClipRect(label.rect());
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont font = label.font();
    font.setPointSize(points);
    font.setWeight(record.bold != 0 ? QFont::Bold : QFont::Normal);
    painter.setFont(font);
    QColor back(record.backcolor), fore(record.forecolor);
    back.setAlpha(record.backalpha);
    fore.setAlpha(record.forealpha);
    const int w = label.width(), h = label.height();
    QRect text(0, 0, w, h);
    if (record.stroke == 0) painter.fillRect(0, 0, w, h, back);
    if (record.angle != 0) {
        text = QRect(-((w - 1) / 2), -((h - 1) / 2), w, h);
        painter.translate((w - 1) / 2, (h - 1) / 2);
        painter.rotate(record.angle);
    }
    if (record.stroke != 0) {
        painter.setPen(QPen(back, 1));
        painter.drawText(text.translated(-1, -1), Qt::AlignHCenter | Qt::AlignVCenter,
                         label.text());
        painter.drawText(text.translated(1, -1), Qt::AlignHCenter | Qt::AlignVCenter, label.text());
        painter.drawText(text.translated(1, 1), Qt::AlignHCenter | Qt::AlignVCenter, label.text());
        painter.drawText(text.translated(-1, 1), Qt::AlignHCenter | Qt::AlignVCenter, label.text());
    }
    painter.setPen(fore);
    painter.drawText(text, Qt::AlignHCenter | Qt::AlignVCenter, label.text());
}

TEST_F(WatermarkLabel, PaintsABoxOrAnOutlineAndTheTextTurned) {
    for (const int angle : {0, 30, 90, -45, 180, 360, 725}) {
        for (const int stroke : {0, 1}) {
            for (const int alpha : {255, 90, 0}) {
                WatermarkOSDParameter record = watermarkRecord("two lines,");
                record.type2 = 0;
                fill(record.text2, "& more");
                record.angle = angle;
                record.stroke = stroke;
                record.backalpha = alpha;
                record.forealpha = 255 - alpha / 2;
                record.bold = angle == 30;
                record.x = record.y = 2000;
                mLabel.setOSD(&record, 1);
                mLabel.checkIsVisible(true);
                mWindow.settle();
                QImage expected = emptyWindow();
                paintTold(expected, mLabel, record, 36);
                EXPECT_EQ(mWindow.pixels(), expected) << angle << " " << stroke << " " << alpha;
            }
        }
    }
}

/// Bytes of memory that the process ever had at once.
qint64 mostMemory() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ')[0].toLongLong() << 10;
    }
    return 0;
}

// The height of a turned text is that of its lines: of hundreds of them it is many screens, and
// each line that is cut at a turned edge as high costs milliseconds.
TEST_F(WatermarkLabel, ATurnedTextOfHundredsOfLinesIsPaintedAsFarAsItIsSeen) {
    const qint64 before = mostMemory();
    ASSERT_GT(before, 0);
    std::string signs;
    for (int i = 0; i < 127; ++i)
        signs += "W\n";
    const std::string wide = std::string(10, 'W') + std::string(245, '\n');
    for (const std::string &text : {signs, wide}) {
        for (const int turn : {1, 30, 90, 179, -2, -31, -91, -178}) {
            WatermarkOSDParameter record = watermarkRecord("");
            record.font = 6;
            record.angle = std::abs(turn);
            record.en = turn < 0 ? 1 : 0;
            record.step = 7;
            record.speed = 1;
            fill(record.contet, text.c_str());
            fill(record.text1, text.c_str());
            fill(record.text2, text.c_str());
            mLabel.setOSD(&record, 1);
            mLabel.move(300, 500 - mLabel.height() / 2);
            mLabel.checkIsVisible(true);
            mWindow.settle();
            for (int tick = 0; tick < 4; ++tick) {
                mLabel.checkAndMove(tick);
                mWindow.settle();
            }
            EXPECT_NE(mWindow.pixels(), emptyWindow()) << turn;
            mLabel.hide();
        }
    }
    constexpr qint64 kMore = qint64{60} << 20;
    EXPECT_LT(mostMemory() - before, kMore);
}

TEST_F(WatermarkLabel, PaintsTheSameOverAnOpaqueWindow) {
    QWidget window;
    window.resize(800, 600);
    MoveWatermarkLabel label(&window, false);
    for (const int angle : {0, 30, 90}) {
        for (const int stroke : {0, 1}) {
            WatermarkOSDParameter record = watermarkRecord("over white");
            record.font = 7;
            record.size = 36;
            record.angle = angle;
            record.stroke = stroke;
            record.backalpha = 120;
            label.setOSD(&record, 1);
            label.checkIsVisible(true);
            QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::white);
            QImage expected = image;
            window.render(&image, {}, {}, QWidget::DrawChildren);
            paintTold(expected, label, record, 36);
            EXPECT_EQ(image, expected) << angle << " " << stroke;
        }
    }
}

TEST_F(WatermarkLabel, ATurnedTextFollowsEveryChangeOfItsRecord) {
    WatermarkOSDParameter record = watermarkRecord("turned");
    record.angle = 40;
    const auto check = [&](const char *what) {
        mLabel.setOSD(&record, 1);
        mLabel.checkIsVisible(true);
        QImage expected = emptyWindow();
        paintTold(expected, mLabel, record, mLabel.getActualFontSize(record.font, record.size));
        EXPECT_EQ(mWindow.pixels(), expected) << what;
    };
    check("at first");
    fill(record.contet, "turner");
    check("text");
    fill(record.forecolor, "#12FF34");
    check("fore colour");
    fill(record.backcolor, "#FFFFFF");
    check("back colour");
    record.forealpha = 80;
    check("fore alpha");
    record.stroke = 1;
    check("stroke");
    record.bold = 1;
    check("weight");
    record.font = 1;
    check("size");
    record.angle = 41;
    check("angle");
    mLabel.resize(mLabel.size() + QSize(7, 9));
    QImage expected = emptyWindow();
    paintTold(expected, mLabel, record, 18);
    EXPECT_EQ(mWindow.pixels(), expected) << "label's size";
}

TEST_F(WatermarkLabel, AScrollStepMovesThePixelsAndLeavesNothingBehind) {
    for (const int angle : {0, 25}) {
        WatermarkOSDParameter record = watermarkRecord("moving");
        record.angle = angle;
        record.en = 1;
        record.step = 17;
        mLabel.setOSD(&record, 1);
        mLabel.checkIsVisible(true);
        mWindow.settle();
        for (int tick = 0; tick < 3; ++tick) {
            mLabel.checkAndMove(tick);
            mWindow.settle();
            QImage expected = emptyWindow();
            paintTold(expected, mLabel, record, 36);
            EXPECT_EQ(mWindow.pixels(), expected);
        }
    }
}

TEST_F(WatermarkLabel, WhatDoesNotChangeIsNotRepainted) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type1 = 1;
    fill(record.text1, "'the same'");
    mLabel.setOSD(&record, 1);
    mLabel.checkIsVisible(true);
    mWindow.settle();
    PaintCounter paints(&mLabel);
    for (int tick = 0; tick < 4; ++tick)
        mLabel.checkAndMove(tick);
    mLabel.setOSD(&record, 1);
    mLabel.checkIsVisible(true);
    mLabel.setActualScreen({0, 0, 1920, 1080});
    mWindow.settle();
    EXPECT_EQ(paints.count, 0);
    record.forealpha = 100;
    mLabel.setOSD(&record, 1);
    mWindow.settle();
    EXPECT_EQ(paints.count, 1);
}

TEST_F(WatermarkLabel, OnlyTheOldAndTheNewPlaceAreRepainted) {
    MoveWatermarkLabel other(&mWindow, false);
    WatermarkOSDParameter record = watermarkRecord("X");
    record.en = 1;
    record.step = 4;
    mLabel.setOSD(&record, 1);
    mLabel.checkIsVisible(true);
    record.x = record.y = 4096;
    other.setOSD(&record, 1);
    other.checkIsVisible(true);
    mWindow.settle();
    PaintCounter paints(&other);
    mLabel.checkAndMove(0);
    mWindow.settle();
    EXPECT_EQ(paints.count, 0);
}

}  // namespace
