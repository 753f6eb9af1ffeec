#include <QDateTime>
#include <QRegularExpression>
#include <QTime>
#include <climits>
#include <cmath>

#include "labels_watermark_fixture.h"
#include "network_comm.h"

extern "C" int __wrap_get_host_lan_para(const char *ifname, HostLanPara *out) {
    ++fakeHost.queries;
    fakeHost.lastInterface = ifname;
    fill(out->macaddr, fakeHost.macaddr.c_str());
    fill(out->ipaddr, fakeHost.ipaddr.c_str());
    return 0;
}

namespace {

const QDateTime kNoon(QDate(2024, 6, 11), QTime(12, 34, 56));

TEST_F(WatermarkLabel, FontSizesCountTheArrangement) {
    WatermarkOSDParameter record = watermarkRecord("text");
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.getActualFontSize(3, 0), 36);
    EXPECT_EQ(mLabel.getActualFontSize(-4, 0), 12);
    EXPECT_EQ(mLabel.getActualFontSize(7, 100), 72);
    EXPECT_EQ(mLabel.getActualFontSize(7, 2), 6);
    mLabel.setActualScreen({0, 0, 960, 540});
    EXPECT_EQ(mLabel.getActualFontSize(3, 0), 18);
    record.arrangement_mode = 2;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.getActualFontSize(3, 0), 36);
    for (const int none : {0, -3, INT_MIN}) {
        record.arrangement_mode = none;
        mLabel.setOSD(&record, 1);
        EXPECT_EQ(mLabel.getActualFontSize(6, 0), 6);
    }
    record.arrangement_mode = INT_MAX;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.getActualFontSize(0, 0), 72);
}

TEST_F(WatermarkLabel, ShowsTheContetInTheRecordsFont) {
    WatermarkOSDParameter record = watermarkRecord("watermark");
    EXPECT_TRUE(mLabel.setOSD(&record, 1));
    EXPECT_EQ(mLabel.text(), "watermark");
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:normal;font-size:36pt;}");
    EXPECT_EQ(mLabel.size(), mLabel.sizeHint());
    record.bold = 2;
    record.font = 7;
    record.size = 50;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:bold;font-size:50pt;}");
}

TEST_F(WatermarkLabel, SlotsStandAroundTheContet) {
    const struct {
        const char *first, *contet, *second, *text;
    } rows[] = {
        {"one", "two", "three", "one\ntwo\nthree"},
        {"", "two", "three", "two\nthree"},
        {"one", "", "three", "one\nthree"},
        {"one", "two", "", "one\ntwo"},
        {"", "", "three", "three"},
        {"", "", "", ""},
    };
    for (const auto &row : rows) {
        WatermarkOSDParameter record = watermarkRecord(row.contet);
        fill(record.text1, row.first);
        fill(record.text2, row.second);
        mLabel.setOSD(&record, 1);
        EXPECT_EQ(mLabel.text(), row.text);
    }
}

TEST_F(WatermarkLabel, TheKindOfASlotChoosesItsLine) {
    const struct {
        int kind;
        const char *slot, *line;
    } rows[] = {
        {0, "MAC IP", "MAC IP"},
        {1, "'at' 'noon'", "at noon"},
        {2, "MAC/IP", "00:1a:2b:3c:4d:5e/192.168.1.77"},
        {2, "mac IPIP", "mac 192.168.1.77192.168.1.77"},
        {3, "text", nullptr},
        {-1, "text", nullptr},
        {INT_MIN, "text", nullptr},
    };
    for (const auto &row : rows) {
        WatermarkOSDParameter record = watermarkRecord("X");
        record.type1 = row.kind;
        record.type2 = row.kind;
        fill(record.text1, row.slot);
        fill(record.text2, row.slot);
        mLabel.setOSD(&record, 1);
        const QString line = row.line == nullptr ? QString() : QString(row.line) + "\n";
        const QString tail = row.line == nullptr ? QString() : "\n" + QString(row.line);
        EXPECT_EQ(mLabel.text(), line + "X" + tail) << row.kind;
    }
}

TEST_F(WatermarkLabel, TheAddressesAreThoseOfEth0) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type1 = 2;
    fill(record.text1, "IP");
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(fakeHost.queries, 1);
    EXPECT_EQ(fakeHost.lastInterface, "eth0");
}

TEST_F(WatermarkLabel, AddressesThatAreNotThereLeaveNoLine) {
    fakeHost.ipaddr.clear();
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type1 = 2;
    fill(record.text1, "IP");
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.text(), "X");
}

TEST_F(WatermarkLabel, AChangedAddressIsSeenOnTheNextBuild) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type2 = 2;
    fill(record.text2, "IP");
    mLabel.setOSD(&record, 1);
    fakeHost.ipaddr = "10.0.0.1";
    mLabel.creatRealTxtResize();
    EXPECT_EQ(mLabel.text(), "X\n10.0.0.1");
}

TEST_F(WatermarkLabel, TheHostIsAskedForNoOtherKindAndForNoEmptyTemplate) {
    WatermarkOSDParameter record = watermarkRecord("MAC IP");
    record.type1 = 1;
    fill(record.text1, "'MAC' hh:mm:ss");
    record.type2 = 2;
    mLabel.setOSD(&record, 1);
    for (int tick = 0; tick < 5; ++tick)
        mLabel.checkAndMove(tick);
    record.visible = 0;
    fill(record.text2, "IP");
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(fakeHost.queries, 0);
}

TEST_F(WatermarkLabel, ATooWideSlotAndContetBreakOnceAndADateAtEachBlank) {
    const QString wide(60, 'm');
    WatermarkOSDParameter record = watermarkRecord("X");
    fill(record.text1, wide.toLatin1().constData());
    record.type2 = 1;
    fill(record.text2, "'a' 'word' 'for' 'each' 'line' 'of' 'a' 'long' 'text' 'which' 'breaks'");
    mLabel.setActualScreen({0, 0, 1000, 1080});
    mLabel.setOSD(&record, 1);
    const QFontMetrics metrics = measuring("X", 36);
    QString first = wide;
    first.insert(500 / metrics.horizontalAdvance('A'), '\n');
    QString expected = first + "\nX\na\nword\nfor\neach\nline\nof\na\nlong\ntext\nwhich\nbreaks";
    EXPECT_EQ(mLabel.width(), 500) << "the first slot stays too wide";
    EXPECT_EQ(mLabel.text(), expected) << "X alone asks for no break by measure";
}

TEST_F(WatermarkLabel, AContetThatFitsAfterItsBreakKeepsItsFittedSize) {
    const char *text = "iiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiii";
    const QFontMetrics metrics = measuring(text, 36);
    const int width = metrics.horizontalAdvance(text);
    const int limit = width;  // cA + width exceeds it
    mLabel.setActualScreen({0, 0, 2 * limit, 1080});
    WatermarkOSDParameter record = watermarkRecord(text);
    mLabel.setOSD(&record, 1);
    QString expected(text);
    expected.insert(limit / metrics.horizontalAdvance('A'), '\n');
    EXPECT_EQ(mLabel.text(), expected);
    EXPECT_EQ(mLabel.size(), mLabel.sizeHint());
}

/** Wraps by measure as the rules tell it, on a text already broken once. */
struct ToldWrap {
    QString text;
    int lines;
    bool wide = false;
    ToldWrap(const QString &contet, int limit, const QFontMetrics &metrics) {
        const int latin = metrics.horizontalAdvance('A');
        const int ideograph = metrics.horizontalAdvance(QChar(0x9B51));
        text = contet;
        text.insert(limit / latin, "\n");
        lines = 2;
        int sum = 0;
        for (int i = 0; i < contet.size(); ++i) {
            const bool cjk = contet[i] >= QChar(0x4E00) && contet[i] <= QChar(0x9FFF);
            wide = wide || cjk;
            sum += cjk ? ideograph : latin;
            if (sum > limit) {
                text.insert(i + 1, "\n");
                ++lines;
                sum = 0;
            }
        }
    }
};

TEST_F(WatermarkLabel, ATextThatStaysTooWideIsWrappedByMeasure) {
    const char *texts[] = {"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm",
                           "\u6c34\u5370\u6587\u672c\u6c34\u5370\u6587\u672c\u6c34\u5370\u6587"
                           "\u672c\u6c34\u5370\u6587\u672cmixed with latin letters"};
    for (const char *text : texts) {
        for (const int arrangement : {1, 3, 4}) {
            WatermarkOSDParameter record = watermarkRecord(text);
            record.arrangement_mode = arrangement;
            record.font = 7;
            record.size = 36;
            mLabel.setActualScreen({0, 0, 600, 1000});
            mLabel.setOSD(&record, 1);
            const int limit = arrangement == 3 ? 450 : arrangement == 4 ? 400 : 300;
            const QFontMetrics metrics = measuring(QString::fromUtf8(text), 36);
            const ToldWrap told(QString::fromUtf8(text), limit, metrics);
            EXPECT_EQ(mLabel.text(), told.text) << text << " in " << arrangement;
            const int ideograph = metrics.horizontalAdvance(QChar(0x9B51));
            const int height = metrics.height() * told.lines;
            EXPECT_EQ(mLabel.width(), limit + (told.wide ? ideograph / 2 : 0));
            EXPECT_EQ(mLabel.height(), height > 599 ? 1000 : height);
        }
    }
}

TEST_F(WatermarkLabel, ATextHigherThanTheCellIsWideTakesTheCellsHeight) {
    WatermarkOSDParameter record = watermarkRecord(std::string(255, 'm').c_str());
    record.font = 7;
    record.size = 72;
    mLabel.setActualScreen({0, 0, 400, 333});
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.size(), QSize(200, 333));
}

TEST_F(WatermarkLabel, ATurnedTextKeepsItsWidthAndGrowsToItsTurnedHeight) {
    WatermarkOSDParameter record = watermarkRecord("turned text");
    mLabel.setOSD(&record, 1);
    const QSize upright = mLabel.size();
    const double root = std::sqrt(3) / 2;
    const struct {
        int angle, height;
    } rows[] = {
        {0, upright.height()},    {360, upright.height()},
        {-720, upright.height()}, {90, upright.width()},
        {-90, upright.width()},   {450, upright.width()},
        {180, upright.height()},  {30, int(upright.width() / 2.0 + upright.height() * root)},
    };
    for (const auto &row : rows) {
        record.angle = row.angle;
        mLabel.setOSD(&record, 1);
        EXPECT_EQ(mLabel.width(), upright.width()) << row.angle;
        EXPECT_NEAR(mLabel.height(), row.height, row.angle == 30) << row.angle;
        mLabel.creatRealTxtResize();
        EXPECT_NEAR(mLabel.height(), row.height, row.angle == 30) << "again " << row.angle;
    }
}

TEST_F(WatermarkLabel, LiesAtTheRecordsPosition) {
    WatermarkOSDParameter record = watermarkRecord("text");
    record.x = 4096;
    record.y = 2048;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.pos(), QPoint(960, 270)) << "its own virtual screen is 8192 x 8192";
    mLabel.setVirtualScreen({4096, 4096, 4096, 4096});
    mLabel.setActualScreen({960, 540, 960, 540});
    EXPECT_EQ(mLabel.pos(), QPoint(960, 270)) << "a cell does not move it";
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.pos(), QPoint(960 + 960, 540 + 270));
    record.x = -1;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.x(), int(960 + (4294967296 - 960) / 4096));
}

TEST_F(WatermarkLabel, AnInvisibleRecordLeavesTextAndSizeAndIsHidden) {
    WatermarkOSDParameter record = watermarkRecord("text");
    mLabel.setOSD(&record, 1);
    const QSize size = mLabel.size();
    EXPECT_TRUE(mLabel.checkIsVisible(true));
    EXPECT_FALSE(mLabel.checkIsVisible(false));
    EXPECT_TRUE(mLabel.isHidden());
    record.visible = 0;
    fill(record.contet, "other");
    EXPECT_TRUE(mLabel.setOSD(&record, 1));
    EXPECT_EQ(mLabel.text(), "text");
    EXPECT_EQ(mLabel.size(), size);
    EXPECT_FALSE(mLabel.checkIsVisible(true));
    record.visible = -1;
    mLabel.setOSD(&record, 1);
    EXPECT_TRUE(mLabel.checkIsVisible(true));
    EXPECT_FALSE(mLabel.isHidden());
}

TEST_F(WatermarkLabel, ATimeReplacesTheWholeText) {
    const struct {
        int type1, type2;
        const char *text;
    } rows[] = {{1, 1, "2024"}, {1, 0, "2024"}, {0, 1, "12:34"}, {0, 0, nullptr}, {2, 3, nullptr}};
    for (const auto &row : rows) {
        WatermarkOSDParameter record = watermarkRecord("contet");
        record.type1 = row.type1;
        fill(record.text1, "yyyy");
        record.type2 = row.type2;
        fill(record.text2, "hh:mm");
        mLabel.setOSD(&record, 1);
        const QString built = mLabel.text();
        mLabel.updateDateTime(kNoon);
        EXPECT_EQ(mLabel.text(), row.text == nullptr ? built : QString(row.text));
        EXPECT_EQ(mLabel.size(), mLabel.sizeHint());
        mLabel.creatRealTxtResize();
        EXPECT_TRUE(mLabel.text().contains("contet")) << "a build brings the other lines back";
    }
}

TEST_F(WatermarkLabel, ATimeFitsTheLabelToItsTextAlsoWhereItShowsNone) {
    for (const int type1 : {0, 1}) {
        WatermarkOSDParameter record = watermarkRecord("contet");
        record.type1 = type1;
        record.angle = 90;
        mLabel.setOSD(&record, 1);
        ASSERT_NE(mLabel.size(), mLabel.sizeHint()) << "a turned text's label is higher";
        mLabel.updateDateTime(kNoon);
        EXPECT_EQ(mLabel.size(), mLabel.sizeHint()) << type1;
    }
}

TEST_F(WatermarkLabel, ATextFromOutsideReplacesTheWholeText) {
    WatermarkOSDParameter record = watermarkRecord("contet");
    mLabel.setOSD(&record, 1);
    mLabel.updateText("\xe4\xb8\xad\xff<b>");
    EXPECT_EQ(mLabel.text(), QString::fromUtf8("\xe4\xb8\xad") + QChar(0xfffd) + "<b>");
    EXPECT_EQ(mLabel.size(), mLabel.sizeHint());
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.text(), "contet");
}

TEST_F(WatermarkLabel, AMovingClockShowsTheTimeOnItsTicks) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type1 = 1;
    fill(record.text1, "hh:mm:ss.zzz");
    record.speed = 2;
    mLabel.setOSD(&record, 1);
    mLabel.updateText("stale");
    mLabel.checkAndMove(3);
    EXPECT_EQ(mLabel.text(), "stale");
    mLabel.checkAndMove(4);
    EXPECT_TRUE(
        QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\nX$").match(mLabel.text()).hasMatch())
        << mLabel.text().toStdString();
}

TEST_F(WatermarkLabel, ATextWithoutClockIsNotBuiltOnTicks) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.type1 = 2;
    fill(record.text1, "IP");
    record.en = 1;
    record.step = 3;
    mLabel.setOSD(&record, 1);
    mLabel.updateText("stale");
    mLabel.checkAndMove(4);
    EXPECT_EQ(mLabel.text(), "stale");
    EXPECT_EQ(fakeHost.queries, 1);
}

TEST_F(WatermarkLabel, ScrollsOnlyWhenVisibleAndEnabled) {
    const struct {
        int visible, en, speed, tick;
        bool moves;
    } rows[] = {{1, 1, 0, 7, true}, {1, 1, 1, 7, true},  {1, 1, 2, 7, false}, {1, 1, 2, 8, true},
                {1, 2, 1, 8, true}, {1, 0, 1, 8, false}, {2, 1, 1, 8, false}, {0, 1, 1, 8, false}};
    for (const auto &row : rows) {
        WatermarkOSDParameter record = watermarkRecord("X");
        record.visible = row.visible;
        record.en = row.en;
        record.speed = row.speed;
        record.step = 5;
        mLabel.setOSD(&record, 1);
        mLabel.move(50, 60);
        mLabel.checkAndMove(row.tick);
        EXPECT_EQ(mLabel.pos() != QPoint(50, 60), row.moves) << row.visible << row.en << row.speed;
    }
}

TEST_F(WatermarkLabel, ARecordTurnsItForwardAgain) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.en = 1;
    record.step = 10;
    mLabel.setOSD(&record, 1);
    mLabel.move(1915, 0);
    mLabel.checkAndMove(0);
    EXPECT_EQ(mLabel.x(), 1919 - mLabel.width());
    mLabel.checkAndMove(1);
    EXPECT_EQ(mLabel.x(), 1909 - mLabel.width());
    mLabel.setOSD(&record, 1);
    mLabel.move(100, 0);
    mLabel.checkAndMove(2);
    EXPECT_EQ(mLabel.x(), 110);
}

TEST_F(WatermarkLabel, OneWiderThanItsCellLiesAtTheRightEdgeOnEveryTick) {
    WatermarkOSDParameter record = watermarkRecord("X");
    record.en = 1;
    record.step = 10;
    mLabel.setActualScreen({600, 0, 300, 1080});
    mLabel.setOSD(&record, 1);
    mLabel.resize(400, 20);
    for (int tick = 0; tick < 5; ++tick) {
        mLabel.checkAndMove(tick);
        EXPECT_EQ(mLabel.x(), 899 - 400);
    }
}

TEST_F(WatermarkLabel, AnyNumberInTheRecordDoesNoHarm) {
    for (const int number : {INT_MIN, -1, 0, 1, 2, INT_MAX}) {
        WatermarkOSDParameter record = watermarkRecord("some text");
        record.font = record.size = record.bold = record.stroke = number;
        record.forealpha = record.backalpha = record.x = record.y = number;
        record.type1 = record.type2 = record.angle = record.arrangement_mode = number;
        record.step = record.speed = record.direction = record.en = number;
        fill(record.text1, "yyyy");
        mLabel.setOSD(&record, number);
        mLabel.checkIsVisible(true);
        for (const int tick : {INT_MIN, -1, 0, 1, INT_MAX})
            mLabel.checkAndMove(tick);
        mLabel.move(0, 0);
        mWindow.settle();
    }
}

TEST_F(WatermarkLabel, TextsWithoutNulAndNoUtf8AreShown) {
    WatermarkOSDParameter record = watermarkRecord("");
    for (const char byte : {'c', '\xff', '\n', '\t', '\x01', '%', ' '}) {
        fillWhole(record.contet, byte);
        fillWhole(record.text1, byte);
        fillWhole(record.text2, byte);
        fillWhole(record.forecolor, byte);
        fillWhole(record.backcolor, byte);
        for (int kind = 0; kind < 3; ++kind) {
            record.type1 = record.type2 = kind;
            mLabel.setOSD(&record, 1);
            mLabel.checkIsVisible(true);
            mWindow.settle();
        }
    }
    fillWhole(record.contet, '\xff');
    record.type1 = record.type2 = 9;
    mLabel.setOSD(&record, 1);
    EXPECT_EQ(mLabel.text().count(QChar(0xfffd)), 256);
}

TEST_F(WatermarkLabel, ACellOfAParentWithoutSizeDoesNoHarm) {
    QWidget parent;
    parent.resize(0, 0);
    MoveWatermarkLabel label(&parent, false);
    WatermarkOSDParameter record = watermarkRecord("text");
    label.setOSD(&record, 1);
    label.checkAndMove(0);
    EXPECT_EQ(label.pos(), QPoint(0, 0));
}

}  // namespace
