#include <gmock/gmock.h>

#include <QDateTime>
#include <QResizeEvent>
#include <QTemporaryDir>
#include <climits>
#include <random>

#include "mainwindow_fixture.h"

namespace {

VideoOutSourceChange source(int window, int type, int index) {
    VideoOutSourceChange record = {};
    record.Channel = window;
    record.type = type;
    record.index = index;
    return record;
}

StreamingInputStatusChange stream(int index, const char *url, const char *name) {
    StreamingInputStatusChange record = {};
    record.index = index;
    set_text(record.url, url);
    set_text(record.name, name);
    return record;
}

WatermarkOSDParameter watermark(int arrangement) {
    WatermarkOSDParameter record = {};
    record.visible = 1;
    record.font = 2;
    set_text(record.forecolor, "#FF0000");
    set_text(record.backcolor, "#000000");
    record.forealpha = 255;
    set_text(record.contet, "mark");
    record.arrangement_mode = arrangement;
    record.step = 7;
    record.speed = 1;
    return record;
}

class MainWindowEvents : public MainWindowTest {
protected:
    int shownTexts() {
        int shown = 0;
        for (int i = 0; i < 16; ++i) {
            shown += textLabel(i).isHidden() ? 0 : 1;
        }
        return shown;
    }

    int shownPictures() {
        int shown = 0;
        for (int i = 0; i < 16; ++i) {
            shown += pictureLabel(i).isHidden() ? 0 : 1;
        }
        return shown;
    }

    std::string text(int i) { return osdLabel(i).text().toStdString(); }
};

// ---- 1001: borders ------------------------------------------------------------------------------

TEST_F(MainWindowEvents, AnEqualDisplayRecordRepaintsNothing) {
    show();
    PaintLog paints(&window);
    sendDisplay(4);
    settle();
    EXPECT_EQ(paints.count, 1);
    sendDisplay(4);
    settle();
    EXPECT_EQ(paints.count, 1);
    sendDisplay(5);
    settle();
    EXPECT_EQ(paints.count, 2);
}

TEST_F(MainWindowEvents, AColourTextThatIsNoneLeavesTheColourAsItWas) {
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    sendDisplay(1, "#102030");
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0x10, 0x20, 0x30));
    sendDisplay(1, "red");
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0x10, 0x20, 0x30));
    // What matches counts, the rest stays.
    sendDisplay(1, "#A0xyz");
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0xA0, 0x20, 0x30));
}

TEST_F(MainWindowEvents, AColourTextMayFillItsArrayWithoutANul) {
    VideoOutputDisplayParameter record = {};
    record.BorderWidth = 1;
    std::memset(record.VideoBorderColor, ' ', sizeof(record.VideoBorderColor));
    std::memset(record.AudioBorderColor, '#', sizeof(record.AudioBorderColor));
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    send(UPDATE_VIDEO_DISPLAY_EVENT, record);
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0, 0, 0));
}

// ---- 1002 and 1003: watermarks ------------------------------------------------------------------

TEST_F(MainWindowEvents, AWatermarkTextIsLaidOutInItsArrangement) {
    for (int n : {1, 2, 3, 4}) {
        send(UPDATE_WATERMARK_OSD_EVENT, watermark(n));
        EXPECT_EQ(shownTexts(), n * n);
        for (int i = 0; i < n * n; ++i) {
            const QPoint cell(1920 * (i % n) / n, 1080 * (i / n) / n);
            EXPECT_FALSE(textLabel(i).isHidden());
            EXPECT_EQ(textLabel(i).pos(), cell) << n << " label " << i;
        }
    }
}

TEST_F(MainWindowEvents, AnEqualWatermarkTextIsLeftWhereItIs) {
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(2));
    textLabel(1).move(5, 6);
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(2));
    EXPECT_EQ(textLabel(1).pos(), QPoint(5, 6));
    WatermarkOSDParameter other = watermark(2);
    other.reserved_220[0] = 1;
    send(UPDATE_WATERMARK_OSD_EVENT, other);
    EXPECT_EQ(textLabel(1).pos(), QPoint(960, 0));
}

TEST_F(MainWindowEvents, AWatermarkTextUsesTheLabelsThatExist) {
    struct {
        int arrangement, shown;
    } const cases[] = {{5, 16}, {16, 16},  {4000, 16},   {0, 0},
                       {-3, 0}, {9000, 0}, {INT_MAX, 0}, {INT_MIN, 0}};
    for (const auto &c : cases) {
        send(UPDATE_WATERMARK_OSD_EVENT, watermark(c.arrangement));
        EXPECT_EQ(shownTexts(), c.shown) << c.arrangement;
        tick();
    }
}

TEST_F(MainWindowEvents, AHiddenWatermarkTextHidesAllLabels) {
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(3));
    WatermarkOSDParameter hidden = watermark(3);
    hidden.visible = 0;
    send(UPDATE_WATERMARK_OSD_EVENT, hidden);
    EXPECT_EQ(shownTexts(), 0);
}

TEST_F(MainWindowEvents, AResizeLaysTheWatermarksOutAnew) {
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(3));
    show();
    window.resize(1366, 768);
    settle();
    EXPECT_EQ(shownTexts(), 9);
    EXPECT_EQ(textLabel(1).pos(), QPoint(455, 0));
    EXPECT_EQ(textLabel(8).pos(), QPoint(910, 512));
}

TEST_F(MainWindowEvents, AResizeTakesTheSizeThatItsEventNames) {
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(3));
    QResizeEvent event(QSize(1366, 768), window.size());
    QCoreApplication::sendEvent(&window, &event);
    EXPECT_EQ(shownTexts(), 9);
    EXPECT_EQ(textLabel(1).pos(), QPoint(455, 0));
    EXPECT_EQ(textLabel(8).pos(), QPoint(910, 512));
}

TEST_F(MainWindowEvents, AnEqualWatermarkPictureIsReadAgain) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("mark.png");
    QImage image(30, 20, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(path));
    WatermarkPictureParameter record = {};
    record.visible = 1;
    record.alpha = 255;
    record.arramode = 2;
    set_text(record.file, path.toUtf8().constData());
    send(UPDATE_WATERMARK_PIC_EVENT, record);
    EXPECT_EQ(shownPictures(), 4);
    EXPECT_EQ(pictureLabel(3).pos(), QPoint(960, 540));
    EXPECT_EQ(pictureLabel(3).size(), QSize(30, 20));

    ASSERT_TRUE(image.scaled(44, 33).save(path));
    send(UPDATE_WATERMARK_PIC_EVENT, record);
    EXPECT_EQ(pictureLabel(3).size(), QSize(44, 33));

    for (int n : {0, -1, 9000}) {
        record.arramode = n;
        send(UPDATE_WATERMARK_PIC_EVENT, record);
        EXPECT_EQ(shownPictures(), 0) << n;
    }
    record.arramode = 7;
    send(UPDATE_WATERMARK_PIC_EVENT, record);
    EXPECT_EQ(shownPictures(), 16);
}

// ---- 1004: split mode ---------------------------------------------------------------------------

TEST_F(MainWindowEvents, ASwitchPlacesTheOsdLabelsOfTheWindows) {
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(3, 1, "camera"), 5);
    EXPECT_TRUE(osdLabel(5).isHidden());
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    EXPECT_EQ(window.splitFlag, 4);
    EXPECT_EQ(window.maxWndNum, 4);
    EXPECT_FALSE(osdLabel(5).isHidden());
    EXPECT_EQ(osdLabel(5).pos(), QPoint(960, 540));
    sendNumber(SWITCH_SPLIT_EVENT, 2);
    EXPECT_TRUE(osdLabel(5).isHidden());
}

TEST_F(MainWindowEvents, ASwitchHoldsALabelThatStaysInPlaceWithinItsNewWindow) {
    VideoOutputOSDParameter record = osd(0, 1, std::string(200, 'W').c_str());
    record.font = 7;
    record.size = 30;  // in windows of any height
    record.y = 2000;
    show();
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, record, 7);
    settle();
    for (const int mode : {2, 4, 1}) {
        sendNumber(SWITCH_SPLIT_EVENT, mode);
        settle();
        EXPECT_EQ(osdLabel(7).x(), 0);
        EXPECT_EQ(osdLabel(7).maximumWidth(), mode == 1 ? 1920 : 960) << mode;
    }
}

TEST_F(MainWindowEvents, ASwitchToAnInvalidModeIsRefused) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int mode : {30, 34, 35, -1, INT_MAX, INT_MIN}) {
        sendNumber(SWITCH_SPLIT_EVENT, mode);
        EXPECT_EQ(window.splitFlag, 4) << mode;
        EXPECT_EQ(window.maxWndNum, 4) << mode;
    }
}

TEST_F(MainWindowEvents, ARefusedSwitchStillUpdatesTheLabelsAndRepaints) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 1, "camera"), 63);
    show();
    PaintLog paints(&window);
    osdLabel(63).hide();
    osdLabel(63).move(5, 6);
    settle();
    paints.clear();
    sendNumber(SWITCH_SPLIT_EVENT, 30);
    EXPECT_FALSE(osdLabel(63).isHidden());
    EXPECT_EQ(osdLabel(63).pos(), QPoint(960, 0));
    settle();
    EXPECT_EQ(paints.count, 1);
}

TEST_F(MainWindowEvents, ASwitchToAUserLayoutTakesItsCountEvenIfItsTextHoldsFewer) {
    sendLayout(1, 5, "0,0,4096,8192,0");
    sendNumber(SWITCH_SPLIT_EVENT, 27);
    EXPECT_EQ(window.splitFlag, 27);
    EXPECT_EQ(window.maxWndNum, 5);
    EXPECT_EQ(window.rects(27),
              (QVector<QRect>{QRect(0, 0, 960, 1080), QRect(0, 0, 0, 0), QRect(0, 0, 0, 0),
                              QRect(0, 0, 0, 0), QRect(0, 0, 0, 0)}));
}

TEST_F(MainWindowEvents, AUserLayoutHasAtMostSixteenWindows) {
    struct {
        int count, used;
    } const cases[] = {{17, 16}, {INT_MAX, 16}, {0, 0}, {-1, 0}, {INT_MIN, 0}};
    for (const auto &c : cases) {
        sendLayout(0, c.count, "0,0,8192,8192,0");
        sendNumber(SWITCH_SPLIT_EVENT, 26);
        EXPECT_EQ(window.maxWndNum, c.used) << c.count;
        EXPECT_EQ(window.rects(26).size(), c.used) << c.count;
        EXPECT_EQ(window.userLines(0).isEmpty(), c.used == 0) << c.count;
    }
}

TEST_F(MainWindowEvents, AUserLayoutIsInPixelsOfTheReferenceCanvas) {
    window.resize(1280, 720);
    sendLayout(3, 2, "0,0,4096,4096,0;4096,0,4096,4096,0");
    sendNumber(SWITCH_SPLIT_EVENT, 29);
    EXPECT_EQ(window.rects(29), (QVector<QRect>{QRect(0, 0, 960, 540), QRect(960, 0, 960, 540)}));
    EXPECT_EQ(window.userLines(3).size(), 7);
    EXPECT_EQ(window.getWndIdx(QPoint(1000, 10)), 0);
    window.updateUserRectVectorAndSplitLines(25);
    window.updateUserRectVectorAndSplitLines(30);
    EXPECT_TRUE(window.rects(25).isEmpty());
}

TEST_F(MainWindowEvents, ASplitTextMayFillItsArrayWithoutANul) {
    std::vector<VideoOutputScreenSplitParameter> records(1, layout(16, ""));
    std::memset(records[0].SplitString, '8', sizeof(records[0].SplitString));
    send(UPDATE_USER_SPLIT_EVENT, records, 1);
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    EXPECT_EQ(window.rects(26).size(), 16);
}

// ---- 1005: user layouts -------------------------------------------------------------------------

TEST_F(MainWindowEvents, OnlyTheFirstFourUserLayoutsCount) {
    std::vector<VideoOutputScreenSplitParameter> records;
    for (int k = 0; k < 6; ++k) {
        records.push_back(layout(k + 1, "0,0,8192,8192,0"));
    }
    send(UPDATE_USER_SPLIT_EVENT, records, 6);
    for (int k = 0; k < 4; ++k) {
        sendNumber(SWITCH_SPLIT_EVENT, 26 + k);
        EXPECT_EQ(window.maxWndNum, k + 1);
    }
}

TEST_F(MainWindowEvents, ARecordCountOfNoneOrLessChangesNothing) {
    for (qint64 count : {qint64{0}, qint64{-1}}) {
        send(UPDATE_USER_SPLIT_EVENT, std::vector{layout(3, "")}, count);
        send(UPDATE_URLINFO_EVENT, stream(0, "u", "n"), count);
        send(UPDATE_VIDEO_SOURCE_EVENT, source(0, 1, 0), count);
    }
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    EXPECT_EQ(window.maxWndNum, 0);
}

// Kept: the number of current windows stays as it was when the mode was switched.
TEST_F(MainWindowEvents, TheNumberOfCurrentWindowsStaysAsItWasWhenTheModeWasSwitched) {
    sendLayout(0, 2, "0,0,4096,8192,0;4096,0,4096,8192,0");
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    sendLayout(0, 1, "0,0,8192,8192,0");
    EXPECT_EQ(window.maxWndNum, 2);
    EXPECT_EQ(window.rects(26).size(), 1);
    EXPECT_EQ(window.userLines(0).size(), 4);
    // Window 1 has no rectangle any more: its label stays where it was.
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 1, "text"), 0);
    EXPECT_EQ(osdLabel(0).pos(), QPoint(0, 0));
    EXPECT_EQ(window.getWndIdx(QPoint(1900, 10)), 0);
    borders();
}

TEST_F(MainWindowEvents, ALayoutThatIsNotCurrentIsOnlyStored) {
    sendLayout(2, 1, "0,0,8192,8192,0");
    EXPECT_TRUE(window.rects(28).isEmpty());
    EXPECT_TRUE(window.userLines(2).isEmpty());
    sendNumber(SWITCH_SPLIT_EVENT, 28);
    EXPECT_EQ(window.userLines(2).size(), 4);
}

// ---- 1006: audio window -------------------------------------------------------------------------

TEST_F(MainWindowEvents, OnlyAChangeOfTheCurrentUserLayoutRepaints) {
    const char *const text = "0,0,4096,4096,0";
    sendLayout(1, 1, text);
    sendNumber(SWITCH_SPLIT_EVENT, 27);
    show();
    struct {
        int layout;
        const char *text;
        int paints;
    } const cases[] = {{1, text, 0}, {0, text, 0}, {1, "0,0,100,100,0", 1}};
    for (const auto &c : cases) {
        PaintLog paints(&window);
        sendLayout(c.layout, 1, c.text);
        settle();
        EXPECT_EQ(paints.count, c.paints) << c.layout << " " << c.text;
    }
}

TEST_F(MainWindowEvents, TheAudioWindowOfAUserLayoutTakesItsColourWhenLinesAreBuilt) {
    sendDisplay(1, "#00FF00", "#FF0000");
    sendLayout(0, 2, "0,0,4096,4096,0;4096,0,4096,4096,0");
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    EXPECT_EQ(window.userColours(0), QVector<QColor>(7, Qt::green));
    sendNumber(SELECT_AO_WINDOW_EVENT, 1);
    EXPECT_EQ(window.userColours(0).mid(0, 3), QVector<QColor>(3, Qt::green));
    EXPECT_EQ(window.userColours(0).mid(3), QVector<QColor>(4, Qt::red));
    // New colours count from the next time that the lines are built.
    sendDisplay(1, "#0000FF", "#FF0000");
    EXPECT_EQ(window.userColours(0).mid(0, 3), QVector<QColor>(3, Qt::green));
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0, 255, 0));
    sendNumber(SELECT_AO_WINDOW_EVENT, -1);
    EXPECT_EQ(window.userColours(0), QVector<QColor>(7, Qt::blue));
    EXPECT_EQ(borders().pixel(5, 0), qRgb(0, 0, 255));
}

// Kept: reads as many windows as are current, but draws as many as the layout has.
TEST_F(MainWindowEvents, RecolouringReadsAsManyWindowsAsAreCurrentAndDrawsAsManyAsTheLayoutHas) {
    sendLayout(0, 1, "0,0,4096,4096,0;4096,0,4096,4096,0");
    sendNumber(SWITCH_SPLIT_EVENT, 26);
    ASSERT_EQ(window.maxWndNum, 1);
    sendLayout(0, 2, "0,0,4096,4096,0;4096,0,4096,4096,0");
    EXPECT_EQ(window.userLines(0).size(), 7);
    sendNumber(SELECT_AO_WINDOW_EVENT, 0);
    // Window 1 was not read: its zero rectangle is a point at the corner of window 0.
    EXPECT_THAT(window.userLines(0), testing::Not(testing::Contains(QLineF(960, 0, 1920, 0))));
    EXPECT_EQ(window.rects(26).size(), 2);
    for (int layout : {-1, 4, INT_MAX, INT_MIN}) {
        window.updateUserSplitLines(layout);
    }
}

TEST_F(MainWindowEvents, AnAudioWindowOfAnyNumberIsTaken) {
    sendDisplay(1);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int audio : {16, 99, INT_MAX, INT_MIN, -1}) {
        sendNumber(SELECT_AO_WINDOW_EVENT, audio);
        EXPECT_EQ(borders().pixel(5, 0), qRgb(0, 255, 0)) << audio;
    }
    sendNumber(SELECT_AO_WINDOW_EVENT, 0);
    EXPECT_EQ(borders().pixel(5, 0), qRgb(255, 0, 0));
}

TEST_F(MainWindowEvents, TheSameAudioWindowAgainRepaints) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    sendNumber(SELECT_AO_WINDOW_EVENT, 2);
    show();
    PaintLog paints(&window);
    sendNumber(SELECT_AO_WINDOW_EVENT, 2);
    settle();
    EXPECT_EQ(paints.count, 1);
}

// ---- 1008 and the types that are nobody's -------------------------------------------------------

TEST_F(MainWindowEvents, ARefreshRepaintsEverything) {
    show();
    PaintLog paints(&window);
    sendNumber(REFRESH_SCREEN_EVENT, 2);
    settle();
    EXPECT_EQ(paints.count, 1);
    EXPECT_EQ(paints.region, QRegion(window.rect()));
}

TEST_F(MainWindowEvents, OtherTypesAreIgnored) {
    show();
    PaintLog paints(&window);
    for (int type : {1000, 1007, 1013, 2000}) {
        sendNumber(type, 4);
    }
    settle();
    EXPECT_EQ(paints.count, 0);
    EXPECT_EQ(window.splitFlag, -1);
}

TEST_F(MainWindowEvents, AnEventWithoutItsPayloadDoesNothing) {
    for (int type = 1001; type <= 1012; ++type) {
        if (type != SWITCH_SPLIT_EVENT && type != SELECT_AO_WINDOW_EVENT) {
            UserEvent event(type, 0, 3);
            QCoreApplication::sendEvent(&window, &event);
        }
    }
    EXPECT_EQ(window.splitFlag, -1);
}

// ---- 1009: the dot watermark --------------------------------------------------------------------

TEST_F(MainWindowEvents, ANewDotRecordPutsTheDotBackToItsOrigin) {
    WatermarkDotmatrixParameter record = {};
    record.visible = 1;
    record.en = 1;
    record.step = 10;
    record.direction = 2;
    send(UPDATE_WATERMARK_DOT_EVENT, record);
    tick();
    tick();
    EXPECT_EQ(window.dotPosition(), QPoint(52, 32));
    send(UPDATE_WATERMARK_DOT_EVENT, record);
    EXPECT_EQ(window.dotPosition(), QPoint(52, 32));
    record.step = 3;
    send(UPDATE_WATERMARK_DOT_EVENT, record);
    EXPECT_EQ(window.dotPosition(), QPoint(32, 32));
}

// ---- 1010: OSD entries --------------------------------------------------------------------------

TEST_F(MainWindowEvents, AnOsdRecordGoesToTheLabelOfItsIndex) {
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    VideoOutputOSDParameter record = osd(0, 1, "front door");
    record.x = 4096;
    record.y = 2048;
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, record, 63);
    EXPECT_EQ(text(63), "front door");
    EXPECT_FALSE(osdLabel(63).isHidden());
    EXPECT_EQ(osdLabel(63).pos(), QPoint(960, 270));
    EXPECT_TRUE(osdLabel(62).isHidden());
}

TEST_F(MainWindowEvents, AnOsdRecordOfCorner3EndsInTheWindowsCorner) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    VideoOutputOSDParameter record = osd(1, 1, "corner");
    record.corner = 3;
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, record, 0);
    const QRect label = osdLabel(0).geometry();
    EXPECT_EQ(label.bottomRight(), QPoint(1919, 539));
    EXPECT_GT(label.width(), 0);
}

TEST_F(MainWindowEvents, AnOsdIndexWithoutALabelIsIgnored) {
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    for (qint64 index : {qint64{64}, qint64{-1}, qint64{INT_MAX}, qint64{INT_MIN}}) {
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(0, 1, "text"), index);
    }
    for (int i = 0; i < 64; ++i) {
        EXPECT_TRUE(osdLabel(i).isHidden());
    }
    for (unsigned index : {64u, UINT_MAX}) {
        window.updateDisplay(index);
        window.initDisplay(index);
        window.setContorlsGeometry(index, QRect(0, 0, 10, 10));
    }
}

TEST_F(MainWindowEvents, ShowOrHideOsdDecidesByTheLabelsWindow) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(2, 1, "text"), 7);
    EXPECT_EQ(window.showOrHideOsd(7, 3), 1);
    EXPECT_FALSE(osdLabel(7).isHidden());
    for (int windows : {2, 0, -1, INT_MIN}) {
        EXPECT_EQ(window.showOrHideOsd(7, windows), 0);
        EXPECT_TRUE(osdLabel(7).isHidden());
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(window.showOrHideOsd(64, 4), 0);
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_THAT(printed, testing::StartsWith("\033[1;31m<ERROR! apps/app_gui/src/mainwindow"));
    EXPECT_THAT(printed, testing::EndsWith(", showOrHideOsd>: Invalid Window index[64]!\n\033[0m"));
}

// Kept: an entry of a negative window is shown, where its label happens to be.
TEST_F(MainWindowEvents, AnEntryOfANegativeWindowIsShownWhereItsLabelHappensToBe) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    osdLabel(0).move(11, 12);
    for (int channel : {-1, INT_MIN}) {
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(channel, 1, "text"), 0);
        EXPECT_FALSE(osdLabel(0).isHidden());
        EXPECT_EQ(osdLabel(0).pos(), QPoint(11, 12));
    }
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(INT_MAX, 1, "text"), 0);
    EXPECT_TRUE(osdLabel(0).isHidden());
}

// ---- 1011 and 1012: names of sources ------------------------------------------------------------

TEST_F(MainWindowEvents, ALocalInputIsNamedByItsNumberPlus49) {
    struct {
        int input;
        const char *name;
    } const cases[] = {{0, "Video_in:49"},
                       {7, "Video_in:56"},
                       {-1, "Video_in:"},
                       {INT_MIN, "Video_in:"},
                       {INT_MAX, "Video_in:-2147483600"}};
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (const auto &c : cases) {
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "URL"), 6);
        send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 5, 0), 1);
        send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 0, c.input), 1);
        EXPECT_EQ(text(6), c.name);
    }
}

TEST_F(MainWindowEvents, AStreamIsNamedByItsAddressOrItsName) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_URLINFO_EVENT, stream(9, "rtsp://a/9", "gate"), 1);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 1, 9), 1);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "URL"), 4);
    EXPECT_EQ(text(4), "rtsp://a/9");
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "Name"), 4);
    EXPECT_EQ(text(4), "gate");
    send(UPDATE_URLINFO_EVENT, stream(9, "rtsp://b/9", "yard"), 1);
    EXPECT_EQ(text(4), "yard");
    // A text that is neither leaves the label as it is.
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "Names"), 4);
    EXPECT_EQ(text(4), "yard");
    send(UPDATE_URLINFO_EVENT, stream(9, "rtsp://c/9", "door"), 1);
    EXPECT_EQ(text(4), "yard");
}

TEST_F(MainWindowEvents, AStreamThatIsNoneIsNamedByNothing) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_URLINFO_EVENT, stream(0, "rtsp://a/0", "gate"), 1);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 1, 0), 1);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "URL"), 4);
    for (int index : {-1, 64, INT_MAX, INT_MIN}) {
        send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 1, 0), 1);
        EXPECT_EQ(text(4), "rtsp://a/0");
        send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 1, index), 1);
        EXPECT_EQ(text(4), "") << index;
    }
}

TEST_F(MainWindowEvents, AWindowWithoutASourceIsNamedByNothing) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int channel : {16, 99, INT_MAX, -1, INT_MIN}) {
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(channel, 3, "URL"), 4);
        EXPECT_EQ(text(4), "") << channel;
    }
}

TEST_F(MainWindowEvents, OnlyTheFirstEntryOfAWindowThatNamesItsSourceFollows) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 1, "fixed"), 4);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "URL"), 6);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(1, 3, "URL"), 7);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 0, 2), 1);
    EXPECT_EQ(text(4), "fixed");
    EXPECT_EQ(text(6), "Video_in:51");
    EXPECT_EQ(text(7), "Video_in:49");
    // A first entry that is not enabled keeps the others from following.
    VideoOutputOSDParameter hidden = osd(1, 3, "URL");
    hidden.visible = 0;
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, hidden, 6);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(1, 0, 3), 1);
    EXPECT_EQ(text(6), "");
    EXPECT_EQ(text(7), "Video_in:49");
}

TEST_F(MainWindowEvents, ASourceOfAWindowThatIsNotCurrentIsOnlyStored) {
    sendNumber(SWITCH_SPLIT_EVENT, 2);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(2, 3, "URL"), 8);
    const std::string before = text(8);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(2, 0, 5), 1);
    EXPECT_EQ(text(8), before);
    VideoOutputOSDParameter again = osd(2, 3, "URL");
    again.bold = 1;
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, again, 8);
    EXPECT_EQ(text(8), "Video_in:54");
}

TEST_F(MainWindowEvents, ARunOfRecordsCountsFromZero) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int w = 0; w < 4; ++w) {
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(w, 3, "URL"), w);
    }
    // The fault at position 2 ends the run; what was before it stays applied.
    debug_mainwindow = 1;
    testing::internal::CaptureStdout();
    send(UPDATE_VIDEO_SOURCE_EVENT,
         std::vector{source(0, 0, 1), source(1, 0, 1), source(3, 0, 1), source(3, 0, 1)}, 4);
    send(UPDATE_URLINFO_EVENT, std::vector{stream(1, "u", "n"), stream(1, "u", "n")}, 2);
    debug_mainwindow = 0;
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, testing::HasSubstr("invalid win_id 3,2\n"));
    EXPECT_THAT(printed, testing::HasSubstr("invalid stream_index 1,0\n"));
    EXPECT_EQ(text(0), "Video_in:50");
    EXPECT_EQ(text(1), "Video_in:50");
    EXPECT_EQ(text(2), "Video_in:49");
    EXPECT_EQ(text(3), "Video_in:49");
}

TEST_F(MainWindowEvents, ARunOfStreamsReachesEveryWindowThatShowsOne) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int w = 0; w < 4; ++w) {
        send(UPDATE_VIDEO_SOURCE_EVENT, source(w, 1, w / 2), 1);
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(w, 3, w % 2 == 0 ? "URL" : "Name"), w);
    }
    send(UPDATE_URLINFO_EVENT, std::vector{stream(0, "url0", "name0"), stream(1, "url1", "name1")},
         2);
    EXPECT_EQ(text(0), "url0");
    EXPECT_EQ(text(1), "name0");
    EXPECT_EQ(text(2), "url1");
    EXPECT_EQ(text(3), "name1");
}

TEST_F(MainWindowEvents, AnIndexOutsideTheCopiesChangesNothing) {
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    for (int index : {16, 64, -1, INT_MAX, INT_MIN}) {
        send(UPDATE_VIDEO_SOURCE_EVENT, source(index, 0, 5), 1);
        if (index != 16) {
            send(UPDATE_URLINFO_EVENT, stream(index, "u", "n"), 1);
        }
    }
    std::vector<VideoOutSourceChange> run;
    std::vector<StreamingInputStatusChange> streams;
    for (int i = 0; i < 200; ++i) {
        run.push_back(source(i, 0, 1));
        streams.push_back(stream(i, "u", "n"));
    }
    send(UPDATE_VIDEO_SOURCE_EVENT, run, 200);
    send(UPDATE_URLINFO_EVENT, streams, 200);
    EXPECT_EQ(window.maxWndNum, 4);
}

TEST_F(MainWindowEvents, ATextMayFillItsArrayWithoutANul) {
    StreamingInputStatusChange record = {};
    std::memset(record.url, 'u', sizeof(record.url));
    std::memset(record.name, 'n', sizeof(record.name));
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    send(UPDATE_URLINFO_EVENT, record, 1);
    send(UPDATE_VIDEO_SOURCE_EVENT, source(0, 1, 0), 1);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(0, 3, "Name"), 0);
    EXPECT_EQ(text(0), std::string(64, 'n'));
    VideoOutputOSDParameter full = osd(0, 3, "");
    std::memset(full.content, 'U', sizeof(full.content));
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, full, 0);
    EXPECT_EQ(text(0), std::string(64, 'n'));
}

// ---- the tick -----------------------------------------------------------------------------------

TEST_F(MainWindowEvents, ATickWithoutAChangePaintsNothing) {
    sendDisplay(4);
    sendNumber(SWITCH_SPLIT_EVENT, 4);
    send(UPDATE_WATERMARK_OSD_EVENT, watermark(2));
    VideoOutputOSDParameter year = osd(0, 0, "yyyy");
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, year, 0);
    show();
    tick();
    settle();
    PaintLog paints(&window);
    PaintLog labelPaints(&osdLabel(0));
    PaintLog textPaints(&textLabel(0));
    for (int i = 0; i < 20; ++i) {
        tick();
        settle();
    }
    EXPECT_EQ(paints.count, 0);
    EXPECT_EQ(labelPaints.count, 0);
    EXPECT_EQ(textPaints.count, 0);
}

TEST_F(MainWindowEvents, ATickSetsTheClockOfTheOsdLabels) {
    sendNumber(SWITCH_SPLIT_EVENT, 1);
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, osd(0, 0, "yyyy"), 0);
    VideoOutputOSDParameter hidden = osd(0, 0, "yyyy");
    hidden.visible = 0;
    send(UPDATE_VIDEOOUTPUT_OSD_EVENT, hidden, 1);
    osdLabel(0).setText("old");
    osdLabel(1).setText("old");
    const int before = QDate::currentDate().year();
    tick();
    const int after = QDate::currentDate().year();
    EXPECT_THAT(text(0), testing::AnyOf(std::to_string(before), std::to_string(after)));
    EXPECT_EQ(text(1), "old");
}

TEST_F(MainWindowEvents, ATickScrollsTheWatermarkText) {
    WatermarkOSDParameter record = watermark(2);
    record.en = 1;
    record.speed = 2;
    send(UPDATE_WATERMARK_OSD_EVENT, record);
    // The tick counter starts at 10.
    tick();
    EXPECT_EQ(textLabel(0).pos(), QPoint(7, 0));
    EXPECT_EQ(textLabel(3).pos(), QPoint(967, 540));
    tick();
    EXPECT_EQ(textLabel(0).pos(), QPoint(7, 0));
    tick();
    EXPECT_EQ(textLabel(0).pos(), QPoint(14, 0));
}

TEST_F(MainWindowEvents, ATickMovesTheDotAtItsSpeed) {
    WatermarkDotmatrixParameter record = {};
    record.visible = 1;
    record.en = 1;
    record.step = 1;
    record.speed = 4;
    record.direction = 3;
    send(UPDATE_WATERMARK_DOT_EVENT, record);
    std::vector<int> path;
    for (int i = 0; i < 7; ++i) {
        tick();
        path.push_back(window.dotPosition().y());
    }
    EXPECT_THAT(path, testing::ElementsAre(32, 32, 33, 33, 33, 33, 34));
    for (int visible : {0, 1}) {
        record.visible = visible;
        record.en = 1 - visible;
        record.speed = 0;
        send(UPDATE_WATERMARK_DOT_EVENT, record);
        tick();
        EXPECT_EQ(window.dotPosition(), QPoint(32, 32));
    }
}

TEST_F(MainWindowEvents, TheDotRepaintsEvenWhereItsDirectionDoesNotMoveIt) {
    WatermarkDotmatrixParameter record = {};
    record.visible = 1;
    record.en = 1;
    record.direction = 9;
    send(UPDATE_WATERMARK_DOT_EVENT, record);
    show();
    PaintLog paints(&window);
    tick();
    settle();
    EXPECT_EQ(paints.count, 1);
    EXPECT_EQ(paints.region, QRegion(32, 32, 1, 1));
}

TEST_F(MainWindowEvents, TheDotRepaintsEvenWhereItIsOffTheScreen) {
    WatermarkDotmatrixParameter record = {};
    record.visible = 1;
    record.en = 1;
    show();
    for (int x : {5032, INT_MAX}) {
        record.step = 32 - x;  // direction 0 turns round at the left edge only
        send(UPDATE_WATERMARK_DOT_EVENT, record);
        settle();
        PaintLog paints(&window);
        tick();
        settle();
        EXPECT_EQ(window.dotPosition(), QPoint(x, 32));
        EXPECT_EQ(paints.count, 1) << x;
        tick();
        settle();
        EXPECT_EQ(paints.count, 2) << x;
    }
}

TEST_F(MainWindowEvents, TheSecondRefreshTimerAsksTheProcesssWindowForARefresh) {
    class RefreshLog : public QObject {
    public:
        bool eventFilter(QObject *, QEvent *event) override {
            if (event->type() == QEvent::Type(REFRESH_SCREEN_EVENT)) {
                reasons.push_back(static_cast<UserEvent *>(event)->data);
            }
            return false;
        }
        std::vector<qint64> reasons;
    } log;
    MainWindow::instance()->installEventFilter(&log);
    QTimerEvent nobodys(987654);
    QCoreApplication::sendEvent(&window, &nobodys);
    window.refreshTimerId = 987654;
    QCoreApplication::sendEvent(&window, &nobodys);
    QCoreApplication::sendPostedEvents(MainWindow::instance());
    EXPECT_THAT(log.reasons, testing::ElementsAre(2));
}

// ---- records of any content ---------------------------------------------------------------------

template <class Record>
std::vector<Record> random_records(std::mt19937 &random, size_t count) {
    std::vector<Record> records(count);
    const int32_t extremes[] = {INT_MIN, INT_MAX, -1, 0, 1, 3, 16, 64, 8192, 0x41414141};
    auto *words = reinterpret_cast<unsigned char *>(records.data());
    for (size_t i = 0; i + 4 <= count * sizeof(Record); i += 4) {
        const int32_t word = random() % 3 == 0 ? static_cast<int32_t>(random())
                                               : extremes[random() % std::size(extremes)];
        std::memcpy(words + i, &word, sizeof(word));
    }
    return records;
}

TEST_F(MainWindowEvents, RecordsOfAnyContentAreTaken) {
    window.resize(320, 180);
    std::mt19937 random(7);
    testing::internal::CaptureStderr();  // pictures that are no files
    for (int round = 0; round < 300; ++round) {
        const size_t count = 1 + random() % 6;
        const auto n = static_cast<qint64>(count);
        const auto index = static_cast<qint64>(random() % 70);
        send(UPDATE_VIDEO_DISPLAY_EVENT, random_records<VideoOutputDisplayParameter>(random, 1), 0);
        send(UPDATE_WATERMARK_PIC_EVENT, random_records<WatermarkPictureParameter>(random, 1), 0);
        send(UPDATE_WATERMARK_DOT_EVENT, random_records<WatermarkDotmatrixParameter>(random, 1), 0);
        send(UPDATE_USER_SPLIT_EVENT,
             random_records<VideoOutputScreenSplitParameter>(random, count), n);
        sendNumber(SWITCH_SPLIT_EVENT, static_cast<int>(random() % 36) - 1);
        sendNumber(SELECT_AO_WINDOW_EVENT, static_cast<int>(random()));
        send(UPDATE_VIDEO_SOURCE_EVENT, random_records<VideoOutSourceChange>(random, count), n);
        send(UPDATE_URLINFO_EVENT, random_records<StreamingInputStatusChange>(random, count), n);
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, random_records<VideoOutputOSDParameter>(random, 1),
             index);
        window.getWndIdx(QPoint(random() % 400, random() % 200));
        tick();
        borders();
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GE(window.maxWndNum, 0);
    EXPECT_LE(window.maxWndNum, 16);
}

}  // namespace
