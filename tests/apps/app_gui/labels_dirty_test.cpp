// What labels mark for painting when they change: never less than what then looks different, and no
// more than the part that does.

#include <QDateTime>
#include <QPaintEvent>
#include <QRegion>
#include <random>

#include "labels_fixture.h"
#include "moveosd.h"
#include "movewatermark.h"

namespace {

/** Joins the regions that a window paints anew. */
class PaintedRegion : public QObject {
public:
    explicit PaintedRegion(QWidget *window) { window->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Paint) mRegion += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    void put(const QRegion &region) { mRegion = region; }
    QRegion taken() { return std::exchange(mRegion, QRegion()); }

private:
    QRegion mRegion;
};

int area(const QRegion &region) {
    int pixels = 0;
    for (const QRect &rect : region)
        pixels += rect.width() * rect.height();
    return pixels;
}

class LabelsDirty : public testing::Test {
protected:
    /** Starts to follow the screen; everything on it is painted. */
    void follow() {
        mWindow.settle();
        mScreen = wholeWindow();
        mPainted.taken();
    }

    /** Paints on the screen what was marked, as the window's memory takes it. Returns that. */
    QRegion paintMarked() {
        mWindow.settle();
        const QRegion marked = mPainted.taken();
        QPainter painter(&mScreen);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.setClipRegion(marked);
        painter.drawImage(0, 0, wholeWindow());
        return marked;
    }

    void expectTheScreenWhole(const char *what, int step) {
        ASSERT_EQ(mScreen, wholeWindow()) << what << " " << step;
    }

    /** All of the window painted anew, elsewhere than on the screen. */
    QImage wholeWindow() {
        const QRegion painted = mPainted.taken();
        const QImage image = mWindow.pixels();
        mPainted.put(painted);
        return image;
    }

    LabelWindow mWindow;
    PaintedRegion mPainted{&mWindow};
    QImage mScreen;
};

WatermarkOSDParameter turnedRecord() {
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = 3;
    fill(record.forecolor, "#FF8000");
    record.forealpha = 160;
    fill(record.backcolor, "#0000FF");
    record.backalpha = 90;
    fill(record.contet, "leaves most of its box empty");
    record.arrangement_mode = 1;
    record.angle = 30;
    record.stroke = 1;
    record.en = 1;
    record.step = 13;
    return record;
}

TEST_F(LabelsDirty, ATurnedTextThatScrollsLooksAsIfAllWerePaintedAnew) {
    MoveWatermarkLabel label(&mWindow, false);
    MoveWatermarkLabel other(&mWindow, false);
    for (const int stroke : {0, 1}) {
        for (const int direction : {0, 1}) {
            WatermarkOSDParameter record = turnedRecord();
            record.stroke = stroke;
            record.direction = direction;
            label.setOSD(&record, 1);
            label.checkIsVisible(true);
            record.x = record.y = 2048;
            record.angle = -70;
            record.direction = 1 - direction;
            other.setOSD(&record, 1);
            other.checkIsVisible(true);
            follow();
            for (int tick = 0; tick < 12; ++tick) {
                const QPoint before = label.pos();
                label.checkAndMove(tick);
                other.checkAndMove(tick);
                paintMarked();
                EXPECT_NE(label.pos(), before);
                expectTheScreenWhole("step", tick);
            }
        }
    }
}

TEST_F(LabelsDirty, AScrollStepOfATurnedTextSparesTheEmptyPartsOfItsBox) {
    MoveWatermarkLabel label(&mWindow, false);
    const WatermarkOSDParameter record = turnedRecord();
    label.setOSD(&record, 1);
    label.checkIsVisible(true);
    follow();
    label.checkAndMove(0);
    const QRegion marked = paintMarked();
    EXPECT_FALSE(marked.isEmpty());
    EXPECT_LT(area(marked), label.width() * label.height() / 2);
    EXPECT_TRUE(label.updatesEnabled());
    EXPECT_TRUE(mWindow.updatesEnabled());
}

TEST_F(LabelsDirty, ATextThatChangesAndScrollsBeforeItIsPaintedLeavesNothingBehind) {
    MoveWatermarkLabel label(&mWindow, false);
    WatermarkOSDParameter record = turnedRecord();
    label.setOSD(&record, 1);
    label.checkIsVisible(true);
    for (const char *text : {"short", "a text that is longer by far than the one before", "x"}) {
        follow();
        fill(record.contet, text);
        label.setOSD(&record, 1);
        wholeWindow();  // paints elsewhere than on the screen
        label.checkAndMove(0);
        label.checkAndMove(0);
        paintMarked();
        expectTheScreenWhole(text, 0);
    }
}

TEST_F(LabelsDirty, ATextThatIsHiddenOrHeldScrollsAsWell) {
    MoveWatermarkLabel label(&mWindow, false);
    const WatermarkOSDParameter record = turnedRecord();
    label.setOSD(&record, 1);
    label.checkIsVisible(true);
    follow();
    label.checkIsVisible(false);
    label.checkAndMove(0);
    label.checkIsVisible(true);
    paintMarked();
    expectTheScreenWhole("hidden", 0);
    mWindow.setUpdatesEnabled(false);
    label.checkAndMove(0);
    EXPECT_FALSE(mWindow.updatesEnabled());
    mWindow.setUpdatesEnabled(true);
    paintMarked();
    expectTheScreenWhole("held", 0);
}

VideoOutputOSDParameter clockRecord(const char *format) {
    VideoOutputOSDParameter record{};
    record.visible = 1;
    record.font = 3;
    fill(record.forecolor, "#FFFFFF");
    record.forealpha = 200;
    fill(record.backcolor, "#000080");
    record.backalpha = 100;
    fill(record.content, format);
    return record;
}

TEST_F(LabelsDirty, AClockLooksAsIfAllWerePaintedAnew) {
    std::mt19937 random(7);
    for (const char *format : {"yyyy-MM-dd hh:mm:ss.zzz", "dddd d MMMM yyyy h:m:s AP",
                               "'AV'yy'Te' hh'WAf'mm'\nffi'ss", "'\xC3\xA9t\xC3\xA9' hh:mm:ss"}) {
        for (const int stroke : {0, 1}) {
            for (const int bold : {0, 1}) {
                MoveOSDLabel label(&mWindow, false, false);
                VideoOutputOSDParameter record = clockRecord(format);
                record.stroke = stroke;
                record.bold = bold;
                fill(record.head, "head");
                fill(record.tail, bold != 0 ? "tail" : "");
                label.setOSD(&record, {});
                label.move(40, 50);
                label.checkIsVisible(true);
                QDateTime now(QDate(2026, 1, 1), QTime(0, 0));
                label.updateDateTime(now);
                follow();
                for (int tick = 0; tick < 12; ++tick) {
                    now = now.addMSecs(random() % (tick < 6 ? 2000 : 1u << 31));
                    label.updateDateTime(now);
                    if (tick % 3 == 2) label.updateDateTime(now = now.addSecs(61));
                    paintMarked();
                    expectTheScreenWhole(format, tick);
                }
            }
        }
    }
}

TEST_F(LabelsDirty, AClockPaintsOnlyTheDigitsThatChange) {
    MoveOSDLabel label(&mWindow, false, false);
    const VideoOutputOSDParameter record = clockRecord("yyyy-MM-dd hh:mm:ss");
    label.setOSD(&record, {});
    label.checkIsVisible(true);
    const QDateTime now(QDate(2026, 1, 1), QTime(10, 0, 1));
    label.updateDateTime(now);
    follow();
    label.updateDateTime(now);
    EXPECT_EQ(area(paintMarked() & label.geometry()), 0);
    label.updateDateTime(now.addSecs(1));
    const int marked = area(paintMarked() & label.geometry());
    EXPECT_GT(marked, 0);
    EXPECT_LT(marked, label.width() * label.height() / 6);
}

}  // namespace
