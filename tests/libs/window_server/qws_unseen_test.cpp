// The process lives on where the framebuffer cannot be used, and shows itself once it can.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QApplication>
#include <QScreen>
#include <QWidget>

#include "fake_driver.h"
#include "window_server/qws_platform.h"
#include "window_server/qws_screen.h"

namespace qws {
namespace {

test::FakeDriver *driver = nullptr;

TEST(QwsUnseen, WithoutADeviceWindowsWorkAndALaterModeShowsThem) {
    EXPECT_EQ(QSize(1920, 1080), QGuiApplication::primaryScreen()->size());
    QWidget window;
    window.setStyleSheet(QStringLiteral("background: #102030"));
    window.showFullScreen();
    QCoreApplication::processEvents();
    EXPECT_EQ(QSize(1920, 1080), window.size());

    testing::internal::CaptureStderr();
    EXPECT_FALSE(Screen::setMode(80, 60, 32));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("open fail! errno:6"));
    EXPECT_EQ(QSize(1920, 1080), window.size());

    driver->openError = 0;
    ASSERT_TRUE(Screen::setMode(80, 60, 32));
    EXPECT_EQ(QSize(80, 60), window.size());
    QCoreApplication::processEvents();
    EXPECT_EQ(0xff102030u, driver->pixel(79, 59));
}

}  // namespace
}  // namespace qws

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    qws::test::FakeDriver driver;
    driver.openError = ENXIO;
    qws::driver = &driver;
    qws::FbCalls::setCurrent(&driver);
    qputenv("QT_QPA_PLATFORM", "linuxfb_qws");
    qputenv("QWS_MOUSE_PROTO", "none");
    qws::prepareEnvironment();
    qws::registerPlatform();
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
