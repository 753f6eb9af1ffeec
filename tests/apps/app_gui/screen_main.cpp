/**
 * Runs tests that need what the device paints on: the device's own platform, without a framebuffer.
 * Windows have their memory and paint; nobody sees them.
 */
#include <gtest/gtest.h>

#include <QApplication>

#include "window_server/qws_platform.h"

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "linuxfb_qws");
    qputenv("QWS_DISPLAY", "linuxFB:/dev/null");
    qputenv("QWS_MOUSE_PROTO", "none");
    qputenv("QT_QWS_FONTDIR", "/usr/share/fonts/truetype/dejavu");
    qws::prepareEnvironment();
    qws::registerPlatform();
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
