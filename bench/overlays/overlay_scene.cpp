#include "overlay_scene.h"

#include <QCoreApplication>
#include <QTimerEvent>
#include <cstdlib>
#include <cstring>

#include "app_gui.h"
#include "moveosd.h"
#include "wnd_split.h"

namespace bench {
namespace {

constexpr int kVirtualExtent = 8192;
constexpr int kMargin = 64;
constexpr int kBorderWidth = 4;
constexpr int kWindowsAcross = 4;
constexpr QSize kWindowSize(480, 270);
constexpr QRect kAudioMark(224, 190, 32, 32);
constexpr int kClockType = 0;
constexpr int kTextType = 1;
/// A font class that takes the record's own size.
constexpr int kOwnSize = 7;

template <size_t kSize>
void put(char (&field)[kSize], const char *text) {
    std::strncpy(field, text, kSize - 1);
}

}  // namespace

OverlayScene::OverlayScene(MainWindow &window) : mWindow(window) {
    UserEvent split(SWITCH_SPLIT_EVENT, getSplitMode("Mode16"));
    QCoreApplication::sendEvent(&mWindow, &split);
}

void OverlayScene::showBorders() {
    VideoOutputDisplayParameter record{};
    record.BorderWidth = kBorderWidth;
    put(record.VideoBorderColor, "#20C0FF");
    put(record.AudioBorderColor, "#FF8000");
    send(UPDATE_VIDEO_DISPLAY_EVENT, record);
    UserEvent audio(SELECT_AO_WINDOW_EVENT, 0);
    QCoreApplication::sendEvent(&mWindow, &audio);
}

void OverlayScene::showClocks(int perWindow, TextStyle style) {
    showTexts(kClockType, "yyyy-MM-dd hh:mm:ss.zzz", perWindow, style);
}

void OverlayScene::showFixedTexts(int perWindow, TextStyle style) {
    showTexts(kTextType, "2026-01-01 00:00:00.000", perWindow, style);
}

void OverlayScene::showTexts(int type, const char *content, int perWindow, TextStyle style) {
    for (int i = 0; i < kWindows * kTextsPerWindow; ++i) {
        VideoOutputOSDParameter record{};
        record.Channel = i / kTextsPerWindow;
        record.Index = i % kTextsPerWindow;
        record.type = type;
        record.visible = record.Index < perWindow ? 1 : 0;
        record.font = kOwnSize;
        record.size = kTextSize;
        record.stroke = style == TextStyle::kOutline ? 1 : 0;
        put(record.forecolor, "#FFFFFF");
        record.forealpha = 255;
        put(record.backcolor, "#000000");
        record.backalpha = style == TextStyle::kPlain ? 0 : 128;
        record.x = kMargin;
        record.y = static_cast<uint32_t>(kMargin + record.Index * kVirtualExtent / kTextsPerWindow);
        record.scale = 100;
        put(record.content, content);
        send(UPDATE_VIDEOOUTPUT_OSD_EVENT, record, i);
    }
}

void OverlayScene::showWatermark() {
    WatermarkOSDParameter record{};
    record.visible = 1;
    record.font = kOwnSize;
    record.size = kTextSize;
    record.stroke = 1;
    put(record.forecolor, "#FFFFFF");
    record.forealpha = 160;
    put(record.backcolor, "#000000");
    record.backalpha = 96;
    put(record.contet, "Recording in progress");
    record.angle = 30;
    record.arrangement_mode = 4;
    record.en = 1;
    record.step = 2;
    record.speed = 1;
    send(UPDATE_WATERMARK_OSD_EVENT, record);
}

void OverlayScene::tick() {
    QTimerEvent event(mWindow.timerId);
    QCoreApplication::sendEvent(&mWindow, &event);
}

QRegion OverlayScene::content() const {
    QRegion region = kAudioMark;
    for (int i = 0; i < kWindows; ++i) {
        const QPoint corner(i % kWindowsAcross * kWindowSize.width(),
                            i / kWindowsAcross * kWindowSize.height());
        const QRect window(corner, kWindowSize);
        region += QRegion(window) -
                  window.adjusted(kBorderWidth, kBorderWidth, -kBorderWidth, -kBorderWidth);
    }
    for (const MoveOSDLabel *label : mWindow.findChildren<MoveOSDLabel *>()) {
        if (label->isVisible()) region += label->geometry();
    }
    return region;
}

template <class Record>
void OverlayScene::send(int type, const Record &record, int param) {
    void *block = std::malloc(sizeof record);
    std::memcpy(block, &record, sizeof record);
    UserEvent event(type, static_cast<qint64>(reinterpret_cast<uintptr_t>(block)), param);
    QCoreApplication::sendEvent(&mWindow, &event);
}

}  // namespace bench
