/**
 * Runs tests that need widgets: on Qt's offscreen platform at one pixel per point, unless the
 * environment says otherwise.
 */
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI")) qputenv("QT_FONT_DPI", "72");
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
