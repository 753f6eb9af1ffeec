#include "evdev_mouse.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>

namespace qws {
namespace {

const QRect kScreen(0, 0, 200, 100);

input_event record(uint16_t type, uint16_t code, int value) {
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    return event;
}

class EvdevMouseTest : public testing::Test {
protected:
    EvdevMouseTest()
        : path(folder.filePath(QStringLiteral("mouse"))),
          mouse([] { return kScreen; },
                [this](const PointerReport &report) { events += report.mouse; }) {
        EXPECT_EQ(0, ::mkfifo(QFile::encodeName(path).constData(), 0600));
    }

    int writer() const { return ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC); }

    void waitForEvents(int count) {
        QDeadlineTimer deadline(5000);
        while (events.size() < count && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        }
    }

    QTemporaryDir folder;
    QString path;
    QVector<MouseEvent> events;
    EvdevMouse mouse;
};

TEST_F(EvdevMouseTest, AFifoIsAMouseThatStartsAtTheCentre) {
    mouse.open({path});
    const int end = writer();
    const input_event records[] = {record(EV_REL, REL_X, 5), record(EV_SYN, SYN_REPORT, 0),
                                   record(EV_KEY, BTN_RIGHT, 1), record(EV_SYN, SYN_REPORT, 0)};
    ASSERT_EQ(static_cast<ssize_t>(sizeof records), ::write(end, records, sizeof records));
    waitForEvents(2);
    ASSERT_EQ(2, events.size());
    EXPECT_EQ(kScreen.center() + QPoint(5, 0), events[0].globalPosition);
    EXPECT_EQ(Qt::RightButton, events[1].button);
    ::close(end);
}

TEST_F(EvdevMouseTest, RecordsInPiecesAreWholeAgain) {
    mouse.open({path});
    const int end = writer();
    const input_event records[] = {record(EV_REL, REL_Y, 7), record(EV_SYN, SYN_REPORT, 0)};
    const char *bytes = reinterpret_cast<const char *>(records);
    for (size_t i = 0; i < sizeof records; ++i) {
        ASSERT_EQ(1, ::write(end, bytes + i, 1));
        QCoreApplication::processEvents();
    }
    waitForEvents(1);
    ASSERT_EQ(1, events.size());
    EXPECT_EQ(kScreen.center() + QPoint(0, 7), events[0].globalPosition);
    ::close(end);
}

TEST_F(EvdevMouseTest, TheEndOfTheFileIsQuietAndTheOthersGoOn) {
    const QString second = folder.filePath(QStringLiteral("second"));
    ASSERT_EQ(0, ::mkfifo(QFile::encodeName(second).constData(), 0600));
    testing::internal::CaptureStderr();
    mouse.open({path, second});
    ::close(writer());
    QCoreApplication::processEvents();
    const int end = ::open(QFile::encodeName(second).constData(), O_WRONLY | O_CLOEXEC);
    const input_event records[] = {record(EV_KEY, BTN_LEFT, 1), record(EV_SYN, SYN_REPORT, 0)};
    ASSERT_EQ(static_cast<ssize_t>(sizeof records), ::write(end, records, sizeof records));
    waitForEvents(1);
    EXPECT_EQ(1, events.size());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ::close(end);
}

TEST_F(EvdevMouseTest, WhatCannotBeOpenedIsSaid) {
    testing::internal::CaptureStderr();
    mouse.open({QStringLiteral("/nonexistent/mouse")});
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("/nonexistent/mouse open fail! errno:2"));
}

TEST_F(EvdevMouseTest, WhatIsNoMouseIsLeftQuietly) {
    testing::internal::CaptureStderr();
    mouse.openMice({QStringLiteral("/dev/null"), QStringLiteral("/nonexistent/mouse")});
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(MousePaths, EvdevSourcesAreNamedInAList) {
    EXPECT_EQ(QStringList({"/dev/input/event3", "/tmp/a:b"}),
              mousePaths(QStringLiteral("evdev:/dev/input/event3, EVDEV:/tmp/a:b")));
    EXPECT_TRUE(mousePaths(QStringLiteral("Auto,evdev:,IntelliMouse:/dev/psaux,,")).isEmpty());
    EXPECT_TRUE(mousePaths(QString()).isEmpty());
}

}  // namespace
}  // namespace qws

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
