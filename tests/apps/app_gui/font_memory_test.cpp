// What the toolkit keeps of fonts and glyphs stays within a budget, whatever texts come.

#include "font_memory.h"

#include <private/qfont_p.h>

#include <QFont>
#include <QFontMetrics>
#include <algorithm>

#include "labels_fixture.h"
#include "moveosd.h"
#include "movewatermark.h"
#include "window_server/qws_fonts.h"

namespace {

QFont fontOf(int points, int weight = QFont::Normal) {
    return QFont(QStringLiteral("DejaVu Sans"), points, weight);
}

TEST(FontMemory, CountsEachSignOfAFontOnce) {
    FontMemory memory;
    memory.noteDrawn(QStringLiteral("12:00"), fontOf(20));
    const qint64 once = memory.bytes();
    EXPECT_GT(once, 4 * 20 * 20);
    memory.noteDrawn(QStringLiteral("21:00"), fontOf(20));
    EXPECT_EQ(once, memory.bytes());
    memory.noteDrawn(QStringLiteral("3"), fontOf(20));
    EXPECT_GT(memory.bytes(), once);
    EXPECT_LT(memory.bytes(), once + 1024);
}

TEST(FontMemory, CountsSizesWeightsAnglesAndFamiliesApart) {
    FontMemory memory;
    const auto adds = [&memory](auto note) {
        const qint64 before = memory.bytes();
        note();
        return memory.bytes() > before;
    };
    const QString text = QStringLiteral("A");
    EXPECT_TRUE(adds([&] { memory.noteDrawn(text, fontOf(20)); }));
    EXPECT_TRUE(adds([&] { memory.noteDrawn(text, fontOf(21)); }));
    EXPECT_TRUE(adds([&] { memory.noteDrawn(text, fontOf(20, QFont::Bold)); }));
    EXPECT_TRUE(adds([&] { memory.noteDrawn(text, fontOf(20), 45); }));
    EXPECT_TRUE(adds([&] { memory.noteMeasured(QFont(QStringLiteral("no such family"), 20)); }));
    EXPECT_FALSE(adds([&] { memory.noteMeasured(QFont(QStringLiteral("no such family"), 20)); }));
}

TEST(FontMemory, IsExhaustedBeyondItsBudgetAndEmptyWhenCleared) {
    FontMemory memory;
    for (int points = 6; memory.bytes() <= FontMemory::kBudget; ++points) {
        EXPECT_FALSE(memory.isExhausted());
        memory.noteDrawn(QStringLiteral("abc"), fontOf(points));
    }
    EXPECT_TRUE(memory.isExhausted());
    memory.clear();
    EXPECT_EQ(0, memory.bytes());
    memory.noteDrawn(QStringLiteral("abc"), fontOf(6));
    EXPECT_GT(memory.bytes(), 0);
}

TEST(FontMemory, ClocksInEveryWindowStayWithinTheBudget) {
    FontMemory memory;
    for (int points = 6; points <= 21; ++points)
        memory.noteDrawn(QStringLiteral("0123456789-: "), fontOf(points));
    EXPECT_FALSE(memory.isExhausted());
}

QImage painted(MoveWatermarkLabel &label) {
    QImage image(label.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    label.render(&image);
    return image;
}

TEST(FontMemory, TextLooksTheSameWithFontsThatWereDropped) {
    LabelWindow window;
    MoveWatermarkLabel label(&window, false);
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = 3;
    record.arrangement_mode = 1;
    fill(record.forecolor, "#FF8000");
    record.forealpha = 255;
    fill(record.contet, "Camera 7 \xE9\xAD\x91");
    label.setOSD(&record, 1);
    label.show();
    const QImage before = painted(label);
    EXPECT_GT(QFontCache::instance()->engineCache.size(), 0);
    qws::dropFontCaches();
    EXPECT_EQ(0, QFontCache::instance()->engineCache.size());
    EXPECT_EQ(before, painted(label));
    label.setOSD(&record, 1);
    EXPECT_EQ(before, painted(label));
}

constexpr int kPixels = 33;

QFont fontOfPixels() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(kPixels);
    return font;
}

/** Whether a font of that size is loaded; no label here shows one. */
bool isLoaded() {
    const QFontCache::EngineCache &loaded = QFontCache::instance()->engineCache;
    return std::any_of(loaded.keyBegin(), loaded.keyEnd(),
                       [](const QFontCache::Key &key) { return key.def.pixelSize == kPixels; });
}

/** Shows up to so many texts in a label, each with new signs; false when all left the font loaded,
 * which is in use and which the toolkit by itself keeps, with every glyph drawn in it. */
bool texts_drop(const QFont &used, int texts, MoveWatermarkLabel &label) {
    const QFontMetrics metrics(used);
    EXPECT_GT(metrics.horizontalAdvance(QLatin1Char('A')), 0);
    EXPECT_TRUE(isLoaded());
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = 100;
    record.arrangement_mode = 1;
    for (int i = 0; i < texts && isLoaded(); ++i) {
        record.size = 40 + i % 20;
        const QString sign(QChar(0x4E00 + i));
        fill(record.contet, sign.toUtf8().constData());
        label.setOSD(&record, 1);
    }
    return !isLoaded();
}

TEST(FontMemory, FontsInUseAreDroppedAfterManyTextsAndNotAfterFew) {
    LabelWindow window;
    MoveWatermarkLabel label(&window, false);
    label.show();
    const QFont used = fontOfPixels();
    EXPECT_TRUE(texts_drop(used, 2000, label));
    EXPECT_FALSE(texts_drop(used, 10, label));
    EXPECT_TRUE(texts_drop(used, 2000, label));
}

TEST(FontMemory, AnOsdLabelsTextsCountAsWell) {
    LabelWindow window;
    MoveOSDLabel label(&window, false, false);
    label.show();
    const QFont used = fontOfPixels();
    const QFontMetrics metrics(used);
    EXPECT_GT(metrics.horizontalAdvance(QLatin1Char('A')), 0);
    ASSERT_TRUE(isLoaded());
    VideoOutputOSDParameter record{};
    record.visible = 1;
    record.type = 1;
    record.font = 100;
    for (int i = 0; i < 2000 && isLoaded(); ++i) {
        record.size = 40 + i % 20;
        fill(record.content, QString(QChar(0x4E00 + i)).toUtf8().constData());
        label.setOSD(&record, QString());
    }
    EXPECT_FALSE(isLoaded());
}

}  // namespace
