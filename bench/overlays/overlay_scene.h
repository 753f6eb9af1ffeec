/**
 * @file overlay_scene.h
 * What the overlay benchmarks put on the main window: 16 windows of 480 x 270 pixels with borders,
 * OSD texts in them, a turned watermark text over all of them.
 *
 * The records go the way of every change, as events of the bridge to the main window, and are
 * delivered at once.
 *
 * Thread: display.
 */
#ifndef BENCH_OVERLAYS_OVERLAY_SCENE_H
#define BENCH_OVERLAYS_OVERLAY_SCENE_H

#include "mainwindow.h"

namespace bench {

constexpr int kWindows = 16;
constexpr int kTextsPerWindow = 4;
/// Point size of the OSD texts, which is also their size in pixels.
constexpr int kTextSize = 24;

/** How the OSD texts stand out from the video. */
enum class TextStyle { kPlain, kBox, kOutline };

class OverlayScene {
public:
    explicit OverlayScene(MainWindow &window);

    /** Borders 4 pixels wide, those of the first window in the audio's colour. */
    void showBorders();
    /** Clocks down to the millisecond, so that each of them differs from tick to tick. */
    void showClocks(int perWindow, TextStyle style);
    /** Texts as long as the clocks that never change. */
    void showFixedTexts(int perWindow, TextStyle style);
    /** A turned text in 4 x 4 cells that scrolls on every tick. */
    void showWatermark();

    /** One tick of the main window's timer. */
    void tick();
    /** Where something is shown: four strips of border in each window, the texts, and a mark in
     * the window whose audio plays. With one text in each window that is 81 rectangles. */
    QRegion content() const;

private:
    void showTexts(int type, const char *content, int perWindow, TextStyle style);
    template <class Record>
    void send(int type, const Record &record, int param = 0);

    MainWindow &mWindow;
};

}  // namespace bench

#endif
