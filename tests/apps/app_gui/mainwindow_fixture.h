/**
 * @file mainwindow_fixture.h
 * A main window of 1920 x 1080 that was never shown, the events that the bridge would post to it,
 * and what it then paints.
 */
#ifndef TESTS_APP_GUI_MAINWINDOW_FIXTURE_H
#define TESTS_APP_GUI_MAINWINDOW_FIXTURE_H

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QTimerEvent>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "app_gui.h"
#include "basewidget.h"
#include "mainwindow.h"

/** Copies `text` into a record's field, with zeros behind it; a longer text is cut. */
template <size_t kSize>
void set_text(char (&field)[kSize], const char *text) {
    const size_t length = strnlen(text, kSize - 1);
    std::memset(field, 0, kSize);
    std::memcpy(field, text, length);
}

/// The borders of a catalogue mode, drawn from the catalogue and not by the main window: green,
/// that of the audio's window red.
inline QImage drawn_borders(const QSize &size, int mode, int width, int audioWindow) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    if (width <= 0) {
        return image;
    }
    SplitInfo split = {};
    hal_get_split_info(static_cast<unsigned>(mode), &split);
    const unsigned canvas[4] = {0, 0, static_cast<unsigned>(size.width()),
                                static_cast<unsigned>(size.height())};
    QPainter painter(&image);
    for (unsigned i = 0; i < split.wndCnt; ++i) {
        int edge[4] = {};
        hal_get_split_wnd_info(canvas, &split.wnd[i], edge);
        const bool audio = static_cast<int>(i) == audioWindow;
        painter.setPen(QPen(audio ? QColor(255, 0, 0) : QColor(0, 255, 0), width));
        painter.drawRect(edge[0] + width / 2, edge[1] + width / 2, edge[2] - edge[0] - width,
                         edge[3] - edge[1] - width);
    }
    return image;
}

/** Counts the paint events of a widget and joins their regions. */
class PaintLog : public QObject {
public:
    explicit PaintLog(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Paint) {
            ++count;
            region += static_cast<QPaintEvent *>(event)->region();
        }
        return false;
    }

    void clear() {
        count = 0;
        region = QRegion();
    }

    int count = 0;
    QRegion region;
};

class MainWindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        init_split();
        init_split_info();
    }

    MainWindowTest() { window.resize(1920, 1080); }

    /** Delivers an event that carries a number. */
    void sendNumber(int type, qint64 value) {
        UserEvent event(type, value);
        QCoreApplication::sendEvent(&window, &event);
    }

    /** Delivers an event that carries records. */
    template <class Record>
    void send(int type, const std::vector<Record> &records, qint64 param) {
        void *block = std::malloc(records.size() * sizeof(Record) + 1);
        std::memcpy(block, records.data(), records.size() * sizeof(Record));
        UserEvent event(type, static_cast<qint64>(reinterpret_cast<uintptr_t>(block)), param);
        QCoreApplication::sendEvent(&window, &event);
    }

    template <class Record>
    void send(int type, const Record &record, qint64 param = 0) {
        send(type, std::vector<Record>{record}, param);
    }

    void sendDisplay(int width, const char *video = "#00FF00", const char *audio = "#FF0000") {
        VideoOutputDisplayParameter record = {};
        record.BorderWidth = width;
        set_text(record.VideoBorderColor, video);
        set_text(record.AudioBorderColor, audio);
        send(UPDATE_VIDEO_DISPLAY_EVENT, record);
    }

    static VideoOutputScreenSplitParameter layout(int windows, const char *text) {
        VideoOutputScreenSplitParameter record = {};
        record.WindowNum = windows;
        set_text(record.SplitString, text);
        return record;
    }

    /** Makes user layout `k` that of the text. */
    void sendLayout(int k, int windows, const char *text) {
        std::vector<VideoOutputScreenSplitParameter> records(4);
        for (int i = 0; i < 4; ++i) {
            records[i] = layouts[i];
        }
        records[k] = layouts[k] = layout(windows, text);
        send(UPDATE_USER_SPLIT_EVENT, records, 4);
    }

    /** A visible OSD entry of window `channel`. */
    static VideoOutputOSDParameter osd(int channel, int type, const char *content) {
        VideoOutputOSDParameter record = {};
        record.Channel = channel;
        record.type = type;
        record.visible = 1;
        record.font = 3;
        set_text(record.forecolor, "#FFFFFF");
        set_text(record.backcolor, "#000000");
        record.forealpha = 255;
        record.scale = 100;
        set_text(record.content, content);
        return record;
    }

    void tick() {
        QTimerEvent event(window.timerId);
        QCoreApplication::sendEvent(&window, &event);
    }

    /** Shows the window and lets it paint until nothing is left to paint. */
    void show() {
        window.show();
        settle();
    }

    static void settle() {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        }
    }

    /** What the window itself paints, without its labels. */
    QImage borders() {
        QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(0);
        window.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        return image;
    }

    MoveOSDLabel &osdLabel(int i) { return *window.labels().osdLabels[i]; }
    MoveWatermarkLabel &textLabel(int i) { return *window.labels().watermarkTxtLabels[i]; }
    MoveImageLabel &pictureLabel(int i) { return *window.labels().watermarkImgLabels[i]; }

    MainWindow window;
    VideoOutputScreenSplitParameter layouts[4] = {};
};

#endif
