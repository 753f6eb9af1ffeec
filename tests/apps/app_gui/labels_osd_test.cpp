#include <QDateTime>
#include <QTime>
#include <climits>

#include "labels_fixture.h"
#include "moveosd.h"

namespace {

const QDateTime kNoon(QDate(2024, 6, 11), QTime(12, 34, 56));

VideoOutputOSDParameter textRecord(const char *content) {
    VideoOutputOSDParameter record{};
    record.type = 1;
    record.visible = 1;
    record.font = 3;
    fill(record.forecolor, "#FF8000");
    record.forealpha = 255;
    fill(record.backcolor, "#0000FF");
    record.backalpha = 255;
    fill(record.content, content);
    return record;
}

class OsdLabel : public testing::Test {
protected:
    OsdLabel() { mLabel.setActualScreen({0, 0, 960, 540}); }

    LabelWindow mWindow;
    MoveOSDLabel mLabel{&mWindow, false, false};
};

TEST_F(OsdLabel, ComposesHeadContentAndTail) {
    struct Row {
        const char *head, *content, *tail, *text;
    };
    const Row rows[] = {
        {"head", "text", "tail", "head\ntext\ntail"},
        {"", "", "abc", "abc"},
        {"", "text", "tail", "text\ntail"},
        {"head", "", "tail", "head\ntail"},
        {"head", "text", "", "head\ntext"},
        {"head", "", "", "head"},
        {"", "text", "", "text"},
        {"<b>", "&amp;", "</b>", "<b>\n&amp;\n</b>"},
    };
    for (const Row &row : rows) {
        VideoOutputOSDParameter record = textRecord(row.content);
        fill(record.head, row.head);
        fill(record.tail, row.tail);
        EXPECT_TRUE(mLabel.setOSD(&record, "not used"));
        EXPECT_EQ(mLabel.text(), row.text);
    }
}

TEST_F(OsdLabel, TheTypeChoosesTheContent) {
    VideoOutputOSDParameter record = textRecord("yyyy");
    const struct {
        int type;
        const char *text;
    } rows[] = {{1, "yyyy"}, {2, "yyyy"}, {3, "rtsp://x"}, {4, ""}, {-1, ""}, {INT_MIN, ""}};
    for (const auto &row : rows) {
        record.type = row.type;
        mLabel.setOSD(&record, "rtsp://x");
        EXPECT_EQ(mLabel.text(), row.text) << row.type;
    }
    record.type = 0;
    const QString before = QDateTime::currentDateTime().toString("yyyy");
    mLabel.setOSD(&record, "rtsp://x");
    const QString after = QDateTime::currentDateTime().toString("yyyy");
    EXPECT_TRUE(mLabel.text() == before || mLabel.text() == after);
}

TEST_F(OsdLabel, ADateWithoutFormatShowsOnlyHeadAndTail) {
    VideoOutputOSDParameter record = textRecord("");
    record.type = 0;
    fill(record.head, "head");
    fill(record.tail, "tail");
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.text(), "head\ntail");
    mLabel.updateDateTime(kNoon);
    EXPECT_EQ(mLabel.text(), "head\ntail");
}

TEST_F(OsdLabel, TheTimeAndTheSourceReachOnlyTheirTypes) {
    VideoOutputOSDParameter record = textRecord("hh:mm:ss");
    fill(record.head, "at");
    const struct {
        int type;
        const char *afterTime, *afterSource;
    } rows[] = {{0, "at\n12:34:56", "at\n12:34:56"},
                {1, "at\nhh:mm:ss", "at\nhh:mm:ss"},
                {2, "at\nhh:mm:ss", "at\nhh:mm:ss"},
                {3, "at", "at\nudp://y"},
                {9, "at", "at"}};
    for (const auto &row : rows) {
        record.type = row.type;
        mLabel.setOSD(&record, "");
        mLabel.updateDateTime(kNoon);
        EXPECT_EQ(mLabel.text(), row.afterTime) << row.type;
        mLabel.updateURLInfo("udp://y");
        EXPECT_EQ(mLabel.text(), row.afterSource) << row.type;
    }
}

TEST_F(OsdLabel, TextsWithoutNulAndNoUtf8AreShown) {
    VideoOutputOSDParameter record = textRecord("");
    fillWhole(record.content, 'c');
    fillWhole(record.head, '\xff');
    fillWhole(record.tail, 't');
    fillWhole(record.forecolor, '#');
    fillWhole(record.backcolor, '\x80');
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.text(),
              QString(64, QChar(0xfffd)) + "\n" + QString(256, 'c') + "\n" + QString(64, 't'));
    mLabel.checkIsVisible(true);
    mWindow.settle();
}

TEST_F(OsdLabel, TheSameRecordAgainIsRefused) {
    VideoOutputOSDParameter record{};
    EXPECT_FALSE(mLabel.setOSD(&record, "")) << "a new label has an empty record";
    record = textRecord("one");
    EXPECT_TRUE(mLabel.setOSD(&record, ""));
    mLabel.updateText("other");
    EXPECT_FALSE(mLabel.setOSD(&record, ""));
    EXPECT_EQ(mLabel.text(), "other");
    record.scale = 1;
    EXPECT_TRUE(mLabel.setOSD(&record, ""));
    EXPECT_EQ(mLabel.text(), "one");
}

TEST_F(OsdLabel, TheStyleSheetHoldsWeightAndPoints) {
    VideoOutputOSDParameter record = textRecord("one");
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:normal;font-size:18pt;}");
    record.bold = 5;
    record.font = 7;
    record.size = 40;
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:bold;font-size:40pt;}");
}

TEST_F(OsdLabel, FontSizesFollowTheCell) {
    EXPECT_EQ(mLabel.getActualFontSize(3, 0), 18);
    mLabel.setActualScreen({0, 0, 1920, 1080});
    EXPECT_EQ(mLabel.getActualFontSize(3, 0), 36);
    EXPECT_EQ(mLabel.getActualFontSize(-1, 0), 12);
    EXPECT_EQ(mLabel.getActualFontSize(7, 100), 72);
    EXPECT_EQ(mLabel.getActualFontSize(7, 2), 6);
    EXPECT_EQ(mLabel.getActualFontSize(INT_MAX, INT_MIN), 6);
}

TEST_F(OsdLabel, AnotherCellRescalesPresetFontsOnly) {
    VideoOutputOSDParameter record = textRecord("some text");
    mLabel.setOSD(&record, "");
    const int narrow = mLabel.width();
    mLabel.setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    mLabel.move(11, 12);
    mLabel.setActualScreen({0, 0, 1920, 1080});
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:normal;font-size:36pt;}");
    EXPECT_GT(mLabel.width(), narrow);
    EXPECT_EQ(mLabel.pos(), QPoint(11, 12));
    record.font = 7;
    record.size = 20;
    mLabel.setOSD(&record, "");
    const QSize fixed = mLabel.size();
    mLabel.setActualScreen({0, 0, 960, 540});
    EXPECT_EQ(mLabel.styleSheet(), "QLabel{border:none;font-weight:normal;font-size:20pt;}");
    EXPECT_EQ(mLabel.size(), fixed);
}

TEST_F(OsdLabel, ShowsItselfByItsRecordWhateverIsAsked) {
    const struct {
        int visible, type;
        const char *content;
        bool shown;
    } rows[] = {
        {0, 1, "text", false}, {1, 1, "text", true},  {1, 2, "text", true}, {1, 1, "", false},
        {1, 2, "", false},     {1, 0, "", true},      {1, 3, "", true},     {-1, 1, "text", true},
        {0, 0, "", false},     {1, 4, "text", false},
    };
    for (const auto &row : rows) {
        for (const bool asked : {false, true}) {
            VideoOutputOSDParameter record = textRecord(row.content);
            record.visible = row.visible;
            record.type = row.type;
            record.scale = asked;
            mLabel.setOSD(&record, "");
            EXPECT_EQ(mLabel.checkIsVisible(asked), row.shown) << row.type << row.content;
            EXPECT_EQ(!mLabel.isHidden(), row.shown);
        }
    }
}

TEST_F(OsdLabel, ARightAnchoredTextKeepsItsRightEdge) {
    for (const int corner : {0, 1, 2, 3, 4}) {
        VideoOutputOSDParameter record = textRecord("short");
        record.corner = corner;
        record.x = 1024;
        mLabel.setActualScreen({100, 50, 960, 540});
        mLabel.setOSD(&record, "");
        const int rightEdge = 100 + (8192 - 1024) * 960 / 8192;
        mLabel.move(rightEdge - mLabel.width(), 77);
        const QPoint before = mLabel.pos();
        mLabel.updateText("a much longer text");
        const bool anchored = corner == 1 || corner == 3;
        EXPECT_EQ(mLabel.x(), anchored ? rightEdge - mLabel.width() : before.x()) << corner;
        EXPECT_EQ(mLabel.y(), 77);
    }
}

TEST_F(OsdLabel, TheSameWidthDoesNotMoveIt) {
    VideoOutputOSDParameter record = textRecord("11");
    record.corner = 1;
    mLabel.setOSD(&record, "");
    mLabel.move(5, 6);
    mLabel.updateText("22");
    EXPECT_EQ(mLabel.pos(), QPoint(5, 6));
}

TEST_F(OsdLabel, PositionsBeyondTheCellDoNoHarm) {
    for (const unsigned x : {8192u, 8193u, UINT_MAX, 1u << 31}) {
        VideoOutputOSDParameter record = textRecord("text");
        record.corner = 1;
        record.x = record.y = x;
        mLabel.setOSD(&record, "");
        mLabel.updateText("longer text");
        mLabel.updateText("text");
        mLabel.checkIsVisible(true);
        mWindow.settle();
        EXPECT_GE(mLabel.maximumWidth(), 1);
    }
}

TEST_F(OsdLabel, PaintingLimitsItToTheRoomThatItsPositionLeaves) {
    VideoOutputOSDParameter record = textRecord("a text far too long for the rest of the window");
    record.x = 7168;
    record.y = 8192;
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.maximumSize(), QSize(960, 540));
    mLabel.checkIsVisible(true);
    mWindow.settle();
    EXPECT_EQ(mLabel.maximumSize(), QSize(960 / 8, 1));
    EXPECT_EQ(mLabel.size(), QSize(960 / 8, 1));
    record.x = 8192;
    mLabel.setOSD(&record, "");
    mWindow.settle();
    EXPECT_EQ(mLabel.maximumWidth(), 1);
}

TEST_F(OsdLabel, LimitingItDoesNotRepaintForEver) {
    VideoOutputOSDParameter record = textRecord("a text far too long for the rest of the window");
    record.x = 7168;
    mLabel.setOSD(&record, "");
    mLabel.checkIsVisible(true);
    mWindow.settle();
    PaintCounter paints(&mLabel);
    mWindow.settle();
    mWindow.settle();
    EXPECT_EQ(paints.count, 0);
}

TEST_F(OsdLabel, ATimeThatReadsTheSameRepaintsNothing) {
    VideoOutputOSDParameter record = textRecord("yyyy-MM-dd hh:mm:ss");
    record.type = 0;
    mLabel.setOSD(&record, "");
    mLabel.checkIsVisible(true);
    mLabel.updateDateTime(kNoon);
    mWindow.settle();
    PaintCounter paints(&mLabel);
    mLabel.updateDateTime(kNoon);
    mLabel.updateDateTime(kNoon.addMSecs(500 - kNoon.time().msec()));
    mWindow.settle();
    EXPECT_EQ(paints.count, 0);
    mLabel.updateDateTime(kNoon.addSecs(1));
    mWindow.settle();
    EXPECT_GT(paints.count, 0);
}

/** The label once more, painted by hand. */
QImage painted(const MoveOSDLabel &label, const VideoOutputOSDParameter &record, int points) {
    QImage image = emptyWindow();
    QPainter painter(&image);
    painter.translate(label.pos());
    painter.setClipRect(label.rect());
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont font = label.font();
    font.setPointSize(points);
    font.setWeight(record.bold != 0 ? QFont::Bold : QFont::Normal);
    painter.setFont(font);
    const QRect rect(0, 0, label.width(), label.height());
    QColor back(record.backcolor), fore(record.forecolor);
    back.setAlpha(record.backalpha);
    fore.setAlpha(record.forealpha);
    if (record.stroke == 0) {
        painter.fillRect(rect, back);
    } else {
        painter.setPen(QPen(back, 1, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
        painter.drawText(rect.translated(-1, -1), Qt::AlignLeft | Qt::AlignTop, label.text());
        painter.drawText(rect.translated(1, -1), Qt::AlignLeft | Qt::AlignTop, label.text());
        painter.drawText(rect.translated(1, 1), Qt::AlignLeft | Qt::AlignTop, label.text());
        painter.drawText(rect.translated(-1, 1), Qt::AlignLeft | Qt::AlignTop, label.text());
    }
    painter.setPen(fore);
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignTop, label.text());
    return image;
}

TEST_F(OsdLabel, PaintsABoxOrAnOutlineAndTheText) {
    for (const int stroke : {0, 1, -1}) {
        for (const int bold : {0, 1}) {
            for (const int alpha : {255, 90, 0}) {
                VideoOutputOSDParameter record = textRecord("one line, & another");
                fill(record.tail, "tail");
                record.stroke = stroke;
                record.bold = bold;
                record.backalpha = alpha;
                record.forealpha = 255 - alpha / 2;
                mLabel.setOSD(&record, "");
                mLabel.move(101, 53);
                mLabel.checkIsVisible(true);
                mWindow.settle();
                EXPECT_EQ(mWindow.pixels(), painted(mLabel, record, 18))
                    << stroke << " " << bold << " " << alpha;
            }
        }
    }
}

TEST_F(OsdLabel, TheBoxHasTheBackColourAndTheCharactersTheForeColour) {
    VideoOutputOSDParameter record = textRecord("\xe2\x96\x88");  // a full block
    mLabel.setOSD(&record, "");
    mLabel.checkIsVisible(true);
    mWindow.settle();
    const QImage image = mWindow.pixels();
    EXPECT_EQ(image.pixel(mLabel.width() / 2, mLabel.height() / 2), qRgb(255, 128, 0));
    EXPECT_EQ(image.pixel(mLabel.width(), 0), 0u) << "nothing beside the label";
    record.content[0] = '\0';
    fill(record.head, " ");
    mLabel.setOSD(&record, "");
    mLabel.checkIsVisible(true);
    mLabel.show();
    mWindow.settle();
    EXPECT_EQ(mWindow.pixels().pixel(0, 0), qRgb(0, 0, 255));
}

TEST_F(OsdLabel, AnEmptyTextIsMeasuredForItsLabelAlone) {
    VideoOutputOSDParameter record = textRecord("text");
    mLabel.setOSD(&record, "");
    mLabel.updateText("");
    fill(record.content, "");
    MoveOSDLabel fresh(&mWindow, false, false);
    fresh.setActualScreen({0, 0, 960, 540});
    fresh.setOSD(&record, "");
    QLabel plain(&mWindow);
    plain.setStyleSheet(fresh.styleSheet());
    EXPECT_EQ(fresh.sizeHint(), plain.sizeHint()) << "never had a text";
    plain.setText("text");
    plain.setText("");
    EXPECT_EQ(mLabel.sizeHint(), plain.sizeHint()) << "had one";
}

TEST_F(OsdLabel, ColoursThatAreNoneKeepTheirAlphas) {
    for (const int stroke : {0, 1}) {
        VideoOutputOSDParameter record = textRecord("text");
        record.stroke = stroke;
        fill(record.forecolor, "no colour");
        fill(record.backcolor, "#12");
        record.forealpha = record.backalpha = 0;
        mLabel.setOSD(&record, "");
        mLabel.checkIsVisible(true);
        mWindow.settle();
        EXPECT_EQ(mWindow.pixels(), emptyWindow()) << stroke << " transparent";
        record.forealpha = record.backalpha = 100;
        mLabel.setOSD(&record, "");
        mWindow.settle();
        EXPECT_NE(mWindow.pixels(), emptyWindow()) << stroke << " translucent black";
    }
}

TEST_F(OsdLabel, MarkupIsShownAsItsCharacters) {
    VideoOutputOSDParameter record = textRecord("<img src='/etc/passwd'>");
    mLabel.setOSD(&record, "");
    EXPECT_EQ(mLabel.text(), "<img src='/etc/passwd'>");
    EXPECT_GT(mLabel.width(), 18 * 8) << "as wide as its characters";
}

// The style sheet has none, and painting it would take as long as the text.
TEST_F(OsdLabel, HasNoBackgroundOfItsStyleSheetPainted) {
    VideoOutputOSDParameter record = textRecord("text");
    for (const int points : {20, 30}) {
        record.font = 7;
        record.size = points;
        mLabel.setOSD(&record, "");
        mLabel.checkIsVisible(true);
        EXPECT_FALSE(mLabel.testAttribute(Qt::WA_StyledBackground)) << points;
        EXPECT_NE(mLabel.styleSheet(), "") << points;
    }
}

}  // namespace
