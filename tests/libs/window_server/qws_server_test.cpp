// The public faces while another Qt platform runs: settings are kept, nothing happens.

#include "window_server/qws_server.h"

#include <gtest/gtest.h>
#include <qpa/qwindowsysteminterface.h>
#include <QApplication>
#include <QWidget>

#include "window_server/qws_platform.h"
#include "window_server/qws_screen.h"

namespace qws {
namespace {

TEST(Server, SettingsAreKeptOnOtherPlatforms) {
    EXPECT_EQ(0, Server::background().color().alpha());
    EXPECT_TRUE(Server::maxWindowRect().isNull());
    Server::setBackground(Qt::red);
    Server::setCursorVisible(false);
    Server::setMaxWindowRect(QRect(0, 0, 1280, 720));
    EXPECT_EQ(QBrush(Qt::red), Server::background());
    EXPECT_FALSE(Server::isCursorVisible());
    EXPECT_EQ(QRect(0, 0, 1280, 720), Server::maxWindowRect());
}

TEST(Server, AModeChangeOnOtherPlatformsIsFalseAndSilent) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Screen::setMode(1280, 720, 32));
    EXPECT_FALSE(Screen::setMode(-1, 0, 7));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(0u, Screen::counters().updates);
}

TEST(Server, AnEventCanBeMadeAndHandedToAFilter) {
    MouseEvent press(QEvent::MouseButtonPress, QPoint(10, 20), Qt::RightButton, Qt::RightButton);
    Event *event = &press;
    EXPECT_EQ(Event::Mouse, event->type);
    EXPECT_EQ(QPoint(10, 20), static_cast<MouseEvent *>(event)->globalPosition);
    EXPECT_EQ(Event::Key, KeyEvent(QEvent::KeyPress, Qt::Key_F1).type);
    EXPECT_EQ(Event::Wheel, WheelEvent(QPoint(), QPoint(0, 120)).type);
    EXPECT_EQ(Event::None, Event().type);
}

TEST(Server, TheFilterSeesEachKindOfEventUntilItIsTakenAway) {
    QVector<Event::Type> seen;
    Server::setEventFilter([&seen](Event *event) {
        seen << event->type;
        return true;
    });
    const auto send = [] {
        QWindowSystemInterface::handleMouseEvent(nullptr, QPointF(1, 1), QPointF(1, 1),
                                                 Qt::LeftButton, Qt::LeftButton,
                                                 QEvent::MouseButtonPress);
        QWindowSystemInterface::handleWheelEvent(nullptr, QPointF(1, 1), QPointF(1, 1), QPoint(),
                                                 QPoint(0, 120));
        QWindowSystemInterface::handleKeyEvent(nullptr, QEvent::KeyPress, Qt::Key_A,
                                               Qt::NoModifier);
        QCoreApplication::processEvents();
    };
    send();
    EXPECT_EQ(QVector<Event::Type>({Event::Mouse, Event::Wheel, Event::Key}), seen);
    Server::setEventFilter({});
    send();
    EXPECT_EQ(3, seen.size());
}

TEST(Server, AFilterMayEndItself) {
    int calls = 0;
    for (int i = 0; i < 4; ++i) {
        const bool consume = i == 0;
        if (i % 2 == 0) {
            Server::setEventFilter([&calls, consume](Event *) {
                Server::setEventFilter({});
                ++calls;
                return consume;
            });
        }
        QWindowSystemInterface::handleMouseEvent(nullptr, QPointF(), QPointF(), Qt::NoButton,
                                                 Qt::NoButton, QEvent::MouseMove);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(2, calls);
}

TEST(Platform, AnotherChoiceAndItsScalingAreLeftAlone) {
    qputenv("QT_FONT_DPI", "96");
    prepareEnvironment();
    EXPECT_EQ("offscreen", qgetenv("QT_QPA_PLATFORM"));
    EXPECT_EQ("96", qgetenv("QT_FONT_DPI"));
}

}  // namespace
}  // namespace qws

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
