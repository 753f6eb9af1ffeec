// Widgets on the real platform plugin, over a driver that is ours: what arrives in the device, byte
// for byte.

#include "window_server/qws_platform.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QApplication>
#include <QBackingStore>
#include <QDeadlineTimer>
#include <QDialog>
#include <QFontDatabase>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QTemporaryDir>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <vector>

#include "fake_driver.h"
#include "window_server/qws_screen.h"
#include "window_server/qws_server.h"

namespace qws {
namespace {

using test::FakeDriver;

constexpr unsigned kWidth = 320;
constexpr unsigned kHeight = 240;

/** A colour with straight alpha as this build gives it to the device. */
uint32_t onDevice(uint32_t straight) {
#ifdef APP_GUI_PREMULTIPLIED_ALPHA
    return qPremultiply(straight);
#else
    return straight;
#endif
}

FakeDriver *driver = nullptr;
int mouse = -1;

class Canvas : public QWidget {
public:
    explicit Canvas(std::function<void(QPainter *)> paint, QWidget *parent = nullptr)
        : QWidget(parent), m_paint(std::move(paint)) {
        setAttribute(Qt::WA_TranslucentBackground);
    }
    int presses = 0;

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        m_paint(&painter);
    }
    void mousePressEvent(QMouseEvent *) override { ++presses; }

private:
    std::function<void(QPainter *)> m_paint;
};

class QwsPlatformTest : public testing::Test {
protected:
    ~QwsPlatformTest() override {
        Server::setEventFilter({});
        Server::setBackground(Qt::transparent);
        driver->pretends = false;
        driver->failing.clear();
    }

    static void settle() {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }

    /** Waits for `done`, turning the event loop. */
    static bool waitFor(const std::function<bool()> &done) {
        QDeadlineTimer deadline(5000);
        while (!done() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        return done();
    }

    static void moveAndPress(const QPoint &from, const QPoint &to, uint16_t button) {
        const input_event records[] = {record(EV_REL, REL_X, to.x() - from.x()),
                                       record(EV_REL, REL_Y, to.y() - from.y()),
                                       record(EV_SYN, SYN_REPORT, 0),
                                       record(EV_KEY, button, 1),
                                       record(EV_SYN, SYN_REPORT, 0),
                                       record(EV_KEY, button, 0),
                                       record(EV_SYN, SYN_REPORT, 0)};
        ASSERT_EQ(static_cast<ssize_t>(sizeof records), ::write(mouse, records, sizeof records));
    }

    static input_event record(uint16_t type, uint16_t code, int value) {
        input_event event{};
        event.type = type;
        event.code = code;
        event.value = value;
        return event;
    }
};

TEST_F(QwsPlatformTest, OnePointIsOnePixel) {
    const QScreen *screen = QGuiApplication::primaryScreen();
    EXPECT_EQ("linuxfb_qws", QGuiApplication::platformName());
    EXPECT_EQ(QRect(0, 0, kWidth, kHeight), screen->geometry());
    EXPECT_EQ(72, screen->logicalDotsPerInch());
    EXPECT_EQ(1, screen->devicePixelRatio());
    QFont font;
    font.setPointSize(36);
    QWidget widget;
    widget.setStyleSheet(QStringLiteral("font-size: 18pt"));
    widget.ensurePolished();
    EXPECT_EQ(36, QFontInfo(font).pixelSize());
    EXPECT_EQ(18, QFontInfo(widget.font()).pixelSize());
}

TEST_F(QwsPlatformTest, TextShowsThoughTheFontFolderHoldsNone) {
    EXPECT_FALSE(QFontDatabase::families().isEmpty());
    EXPECT_GT(
        QFontMetrics(QFont(QStringLiteral("fzlth"), 16)).horizontalAdvance(QStringLiteral("Text")),
        16);
}

TEST_F(QwsPlatformTest, AFullScreenWindowArrivesWithTheDevicesAlpha) {
    Canvas window([](QPainter *painter) {
        painter->fillRect(0, 0, 10, 10, QColor(255, 0, 0));
        painter->fillRect(10, 0, 10, 10, QColor(0, 255, 0, 128));
    });
    window.showFullScreen();
    settle();
    EXPECT_EQ(QRect(0, 0, kWidth, kHeight), window.geometry());
    EXPECT_EQ(0xffff0000u, driver->pixel(0, 0));
    EXPECT_EQ(0xffff0000u, driver->pixel(9, 9));
    EXPECT_EQ(onDevice(0x8000ff00u), driver->pixel(10, 0));
    EXPECT_EQ(0x00000000u, driver->pixel(20, 0));
    EXPECT_EQ(0x00000000u, driver->pixel(kWidth - 1, kHeight - 1));
}

TEST_F(QwsPlatformTest, TranslucentContentsDoNotPileUp) {
    Canvas window(
        [](QPainter *painter) { painter->fillRect(painter->window(), QColor(0, 0, 255, 64)); });
    window.showFullScreen();
    settle();
    for (int i = 0; i < 5; ++i) {
        window.update();
        settle();
    }
    EXPECT_EQ(onDevice(0x400000ffu), driver->pixel(5, 5));
}

/** How many pages of an image's memory the system has given so far. */
int pagesOf(const QImage &image) {
    const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    const uintptr_t first = reinterpret_cast<uintptr_t>(image.constBits()) / page * page;
    const uintptr_t end = reinterpret_cast<uintptr_t>(image.constBits()) + image.sizeInBytes();
    std::vector<unsigned char> resident((end - first + page - 1) / page);
    EXPECT_EQ(0, ::mincore(reinterpret_cast<void *>(first), end - first, resident.data()));
    return static_cast<int>(std::count(resident.begin(), resident.end(), 1));
}

TEST_F(QwsPlatformTest, NewMemoryIsNotClearedForItsFirstPainting) {
    QWindow window;
    window.create();
    QBackingStore store(&window);
    const QRect all(0, 0, 700, 500);
    store.resize(all.size());
    const QImage &image = *static_cast<QImage *>(store.paintDevice());
    store.beginPaint(all);
    EXPECT_EQ(0, pagesOf(image));
    store.endPaint();
    static_cast<QImage *>(store.paintDevice())->fill(Qt::red);
    store.beginPaint(all);
    EXPECT_EQ(QColor(Qt::transparent), image.pixelColor(699, 499));
    store.endPaint();
}

TEST_F(QwsPlatformTest, OnlyTheChangedRegionIsWritten) {
    Canvas window([](QPainter *painter) { painter->fillRect(painter->window(), Qt::white); });
    window.showFullScreen();
    settle();
    driver->fillMemory(0x77);
    Screen::resetCounters();
    window.update(QRegion(10, 10, 5, 5) + QRect(100, 50, 20, 3));
    settle();
    EXPECT_EQ(1u, Screen::counters().updates);
    EXPECT_EQ(25u + 60u, Screen::counters().pixels);
    for (unsigned y = 0; y < kHeight; ++y) {
        for (unsigned x = 0; x < kWidth; ++x) {
            const bool changed = (x >= 10 && x < 15 && y >= 10 && y < 15) ||
                                 (x >= 100 && x < 120 && y >= 50 && y < 53);
            ASSERT_EQ(changed ? 0xffffffffu : 0x77777777u, driver->pixel(x, y)) << x << "," << y;
        }
    }
}

TEST_F(QwsPlatformTest, ATranslucentDialogLiesOverTheWindowAndGoesAwayWithoutATrace) {
    Canvas window([](QPainter *painter) { painter->fillRect(painter->window(), Qt::white); });
    window.showFullScreen();
    Canvas dialog(
        [](QPainter *painter) { painter->fillRect(QRect(0, 0, 20, 40), QColor(0, 0, 0, 128)); });
    dialog.setWindowFlag(Qt::FramelessWindowHint);
    dialog.setGeometry(50, 60, 40, 40);
    dialog.show();
    settle();
    EXPECT_EQ(QRect(50, 60, 40, 40), dialog.geometry());
    EXPECT_EQ(0xff7f7f7fu, driver->pixel(50, 60)) << "over white, not through it";
    EXPECT_EQ(0xffffffffu, driver->pixel(70, 60)) << "nothing painted there";
    EXPECT_EQ(0xffffffffu, driver->pixel(49, 60));
    dialog.move(100, 100);
    settle();
    EXPECT_EQ(0xffffffffu, driver->pixel(50, 60));
    EXPECT_EQ(0xff7f7f7fu, driver->pixel(100, 100));
    dialog.hide();
    settle();
    EXPECT_EQ(0xffffffffu, driver->pixel(100, 100));
}

TEST_F(QwsPlatformTest, WithoutWindowsTheBackgroundShows) {
    Server::setBackground(QColor(0, 0, 255, 128));
    settle();
    EXPECT_EQ(onDevice(0x800000ffu), driver->pixel(7, 7));
    EXPECT_EQ(onDevice(0x800000ffu), driver->pixel(kWidth - 1, kHeight - 1));
    Server::setBackground(Qt::transparent);
    settle();
    EXPECT_EQ(0u, driver->pixel(7, 7));
}

TEST_F(QwsPlatformTest, OnlyAnotherBackgroundIsDrawn) {
    const struct {
        QColor background;
        uint64_t updates;
    } cases[] = {{Qt::transparent, 0}, {Qt::red, 1}, {Qt::red, 0}, {Qt::transparent, 1}};
    settle();
    for (const auto &step : cases) {
        Screen::resetCounters();
        Server::setBackground(step.background);
        settle();
        EXPECT_EQ(step.updates, Screen::counters().updates) << step.background.name().toStdString();
    }
}

TEST_F(QwsPlatformTest, AModeChangeResizesAFullScreenWindowBeforeItReturns) {
    Canvas window([](QPainter *painter) { painter->fillRect(painter->window(), QColor(1, 2, 3)); });
    window.showFullScreen();
    settle();
    const QSize sizes[] = {{400, 300}, {200, 100}, {int(kWidth), int(kHeight)}};
    for (const QSize &size : sizes) {
        ASSERT_TRUE(Screen::setMode(size.width(), size.height(), 32));
        EXPECT_EQ(QRect(QPoint(), size), window.geometry());
        EXPECT_EQ(size, QGuiApplication::primaryScreen()->size());
        settle();
        EXPECT_EQ(0xff010203u, driver->pixel(size.width() - 1, size.height() - 1));
    }
}

TEST_F(QwsPlatformTest, AModeChangeIgnoresTheLargestRectangleForAFullScreenWindow) {
    Canvas window([](QPainter *) {});
    window.showFullScreen();
    Server::setMaxWindowRect(QRect(0, 0, 100, 100));
    ASSERT_TRUE(Screen::setMode(400, 300, 32));
    EXPECT_EQ(QRect(0, 0, 400, 300), window.geometry());
    EXPECT_EQ(QRect(0, 0, 100, 100), QGuiApplication::primaryScreen()->availableGeometry());
    Canvas maximised([](QPainter *) {});
    maximised.showMaximized();
    settle();
    EXPECT_EQ(QRect(0, 0, 100, 100), maximised.geometry());
    Server::setMaxWindowRect(QRect());
    ASSERT_TRUE(Screen::setMode(kWidth, kHeight, 32));
    EXPECT_EQ(QRect(0, 0, kWidth, kHeight), maximised.geometry());
}

TEST_F(QwsPlatformTest, ARefusedModeChangesNothing) {
    Canvas window([](QPainter *painter) { painter->fillRect(painter->window(), Qt::white); });
    window.showFullScreen();
    settle();
    driver->pretends = true;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Screen::setMode(400, 300, 32));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("refused: driver stays"));
    EXPECT_EQ(QRect(0, 0, kWidth, kHeight), window.geometry());
    driver->fillMemory(0);
    window.update();
    settle();
    EXPECT_EQ(0xffffffffu, driver->pixel(kWidth - 1, kHeight - 1));
}

TEST_F(QwsPlatformTest, TheScreenIsThereAgainAfterARefusedSmallerMode) {
    Canvas window([](QPainter *painter) { painter->fillRect(painter->window(), Qt::white); });
    window.showFullScreen();
    settle();
    driver->pretends = true;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Screen::setMode(kWidth - 1, kHeight, 32));
    testing::internal::GetCapturedStderr();
    settle();
    EXPECT_EQ(0xffffffffu, driver->pixel(0, 0));
    EXPECT_EQ(0xffffffffu, driver->pixel(kWidth - 1, kHeight - 1));
}

TEST_F(QwsPlatformTest, TheFilterSeesRawEventsFirstAndCanConsumeThem) {
    Canvas window([](QPainter *) {});
    window.showFullScreen();
    settle();
    QVector<MouseEvent> seen;
    bool consume = false;
    Server::setEventFilter([&](Event *event) {
        if (event->type == Event::Mouse) seen << *static_cast<MouseEvent *>(event);
        return consume;
    });
    const QPoint first = QCursor::pos();
    moveAndPress({0, 0}, {-5000, -5000}, BTN_LEFT);
    ASSERT_TRUE(waitFor([&] { return seen.size() == 3; })) << first.x();
    EXPECT_EQ(1, window.presses);
    EXPECT_EQ(QPoint(0, 0), seen[1].globalPosition);
    EXPECT_EQ(QEvent::MouseButtonPress, seen[1].kind);
    EXPECT_EQ(Qt::LeftButton, seen[1].button);
    consume = true;
    moveAndPress({0, 0}, {10, 10}, BTN_LEFT);
    ASSERT_TRUE(waitFor([&] { return seen.size() == 6; }));
    EXPECT_EQ(1, window.presses) << "consumed";
}

TEST_F(QwsPlatformTest, TheFilterSeesAPressOnAWindowThatAModalDialogBlocks) {
    Canvas window([](QPainter *) {});
    window.showFullScreen();
    QDialog dialog(&window);
    dialog.setModal(true);
    dialog.setGeometry(200, 150, 50, 50);
    dialog.show();
    settle();
    ASSERT_EQ(&dialog, QApplication::activeModalWidget());
    QVector<MouseEvent> seen;
    Server::setEventFilter([&seen](Event *event) {
        if (event->type == Event::Mouse) seen << *static_cast<MouseEvent *>(event);
        return false;
    });
    moveAndPress({0, 0}, {-5000, -5000}, BTN_RIGHT);
    ASSERT_TRUE(
        waitFor([&] { return !seen.isEmpty() && seen.last().kind == QEvent::MouseButtonRelease; }));
    const MouseEvent press = seen[seen.size() - 2];
    EXPECT_EQ(QEvent::MouseButtonPress, press.kind);
    EXPECT_EQ(Qt::MouseButtons(Qt::RightButton), press.buttons);
    EXPECT_FALSE(dialog.frameGeometry().contains(press.globalPosition));
    EXPECT_EQ(0, window.presses);
}

}  // namespace
}  // namespace qws

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    qws::test::FakeDriver driver(qws::kWidth, qws::kHeight, 20);
    qws::driver = &driver;
    qws::FbCalls::setCurrent(&driver);

    const QTemporaryDir folder;
    const QByteArray fifo = folder.filePath(QStringLiteral("mouse")).toLocal8Bit();
    if (::mkfifo(fifo.constData(), 0600) != 0) return 1;
    qputenv("QWS_DISPLAY", "linuxFB:/dev/fb1");
    qputenv("QWS_MOUSE_PROTO", "evdev:" + fifo);
    qputenv("QT_QWS_FONTDIR", folder.path().toLocal8Bit());
    qputenv("QT_PLUGIN_PATH", "/nonexistent/plugins/");
    qputenv("QT_FONT_DPI", "96");
    qunsetenv("QT_QPA_PLATFORM");
    qws::prepareEnvironment();
    qws::registerPlatform();

    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    qws::mouse = ::open(fifo.constData(), O_WRONLY | O_CLOEXEC);
    const int result = RUN_ALL_TESTS();
    ::close(qws::mouse);
    return result;
}
