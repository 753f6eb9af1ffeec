/**
 * @file offscreen.h
 * The application object of the fuzz targets that need widgets: on Qt's offscreen platform at one
 * pixel per point, as on the device.
 */
#ifndef TESTS_FUZZ_OFFSCREEN_H
#define TESTS_FUZZ_OFFSCREEN_H

#include <QApplication>
#include <QImage>
#include <QWidget>

namespace fuzz {

/** Creates the application on the first call; it lives as long as the process. */
inline void start_application() {
    static int argc = 1;
    static char name[] = "fuzz_target";
    static char *argv[] = {name, nullptr};
    static const auto *const application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_FONT_DPI", "72");
        return new QApplication(argc, argv);
    }();
    (void)application;
}

/** Paints a widget and what it holds, as a repaint of the whole screen would. */
inline void paint(QWidget &widget, const QSize &size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image);
}

}  // namespace fuzz

#endif
