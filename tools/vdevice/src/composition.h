/**
 * @file composition.h
 * What a viewer would see: the layer over video in the windows' places.
 *
 * The video is a test card per window, drawn without fonts and the same every time. Pure functions;
 * no Qt application object is needed.
 */
#ifndef VDEVICE_COMPOSITION_H
#define VDEVICE_COMPOSITION_H

#include <QColor>
#include <QImage>
#include <QRect>
#include <QSize>
#include <string>
#include <vector>

namespace vdevice {

/** Where the video of one window lies, in pixels of the screen. */
struct VideoWindow {
    QRect rect;
    int layer;  ///< higher covers lower; of equal ones the later window covers the earlier
};

/** How the screen is divided: what decides the windows' places. */
struct Arrangement {
    unsigned mode = 1;     ///< split mode number, 0 to 29
    int userWindows = 0;   ///< windows of the user layout when `mode` is 26 to 29
    std::string userText;  ///< its split string
    QColor background = Qt::black;
};

/**
 * The windows in index order, placed as app_gui places its borders: catalogue modes on the actual
 * screen, user layouts on the 1920 x 1080 reference canvas. Windows without a size are left out of
 * the picture but keep their index.
 */
std::vector<VideoWindow> video_windows(const Arrangement &arrangement, const QSize &screen);

/** The test card of the window with that number (1 for the first). */
QImage test_card(const QSize &size, int number);

/** All windows' test cards on the background; opaque. */
QImage test_video(const Arrangement &arrangement, const QSize &screen);

/** `layer` (straight alpha) over `video` of the same size; opaque. */
QImage compose(const QImage &video, const QImage &layer);

}  // namespace vdevice

#endif
