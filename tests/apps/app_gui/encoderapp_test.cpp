#include "encoderapp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QMouseEvent>
#include <QTimerEvent>
#include <QTranslator>
#include <algorithm>
#include <vector>

#include "app_gui.h"
#include "basewidget.h"
#include "mainwindow.h"
#include "window_server/qws_event.h"

namespace {

EncoderApp &app() {
    return *static_cast<EncoderApp *>(qApp);
}

void send_timer(int id) {
    QTimerEvent event(id);
    QCoreApplication::sendEvent(&app(), &event);
}

/// Records what reaches an object, with the posted events of other objects left alone.
class EventLog : public QObject {
public:
    explicit EventLog(QObject *object) { object->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override {
        types.push_back(event->type());
        if (event->type() == QEvent::MouseButtonPress) {
            const auto &mouse = static_cast<const QMouseEvent &>(*event);
            position = mouse.position().toPoint();
            button = mouse.button();
            buttons = mouse.buttons();
            modifiers = mouse.modifiers();
        }
        if (event->type() == QEvent::Type(REFRESH_SCREEN_EVENT)) {
            reasons.push_back(static_cast<UserEvent *>(event)->data);
        }
        return false;
    }

    int count(int type) const {
        return static_cast<int>(std::count(types.begin(), types.end(), type));
    }

    std::vector<int> types;
    std::vector<qint64> reasons;
    QPoint position;
    Qt::MouseButton button = Qt::NoButton;
    Qt::MouseButtons buttons;
    Qt::KeyboardModifiers modifiers;
};

qws::MouseEvent press(const QPoint &position, Qt::MouseButton button) {
    return qws::MouseEvent(QEvent::MouseButtonPress, position, button, button);
}

class EncoderAppTest : public testing::Test {
protected:
    void SetUp() override { *app().counter = KeyMouseCounter(); }
    void TearDown() override { app().switchLanguage(LANGUAGE_CHINESE); }
};

// ---- resources and language ---------------------------------------------------------------------

TEST_F(EncoderAppTest, HoldsThreeCursorImagesInPremultipliedColours) {
    ASSERT_EQ(EncoderApp::cursorImgList.size(), 3);
    for (const QImage &image : EncoderApp::cursorImgList) {
        EXPECT_FALSE(image.isNull());
        EXPECT_EQ(image.format(), QImage::Format_ARGB32_Premultiplied);
        EXPECT_GE(image.width(), 16);
        EXPECT_LE(image.height(), 24);
    }
    EXPECT_NE(EncoderApp::cursorImgList[0], EncoderApp::cursorImgList[1]);
    EXPECT_NE(EncoderApp::cursorImgList[1], EncoderApp::cursorImgList[2]);
    EXPECT_EQ(EncoderApp::oldCursor, -1);
}

int loaded_format_plugins() {
    QFile maps("/proc/self/maps");
    EXPECT_TRUE(maps.open(QIODevice::ReadOnly));
    return static_cast<int>(maps.readAll().count("/imageformats/"));
}

TEST_F(EncoderAppTest, LoadsPluginsForPictureFormatsWithTheFirstPictureAndNotWithTheCursors) {
    const QStringList folders = QCoreApplication::libraryPaths();
    const bool installed = std::any_of(folders.begin(), folders.end(), [](const QString &folder) {
        return !QDir(folder + "/imageformats").isEmpty();
    });
    if (!installed) GTEST_SKIP() << "no plugins for picture formats are installed";
    EXPECT_EQ(loaded_format_plugins(), 0);
    QBuffer picture;
    picture.setData("neither of them");
    EXPECT_TRUE(picture.open(QIODevice::ReadOnly));
    EXPECT_FALSE(QImageReader(&picture).canRead());
    EXPECT_GT(loaded_format_plugins(), 0);
}

TEST_F(EncoderAppTest, HasItsStyleSheetAndTranslationCompiledIn) {
    EXPECT_TRUE(QFile::exists(":/resources/qss/normalStyle.qss"));
    EXPECT_TRUE(QFile::exists(":/resources/tr/encoder_zh"));
    QTranslator translator;
    EXPECT_TRUE(translator.load(":/resources/tr/encoder_zh"));
    EXPECT_FALSE(translator.isEmpty());
}

TEST_F(EncoderAppTest, ShowsTheTranslationInLanguageZeroOnly) {
    const auto cancel = [] { return QCoreApplication::translate("QPlatformTheme", "Cancel"); };
    EXPECT_EQ(EncoderApp::curLangIndex, 0);
    EXPECT_EQ(EncoderApp::language(), 0);
    EXPECT_EQ(cancel(), QString::fromUtf8("取消"));
    app().switchLanguage(1);
    EXPECT_EQ(EncoderApp::curLangIndex, 1);
    EXPECT_EQ(EncoderApp::language(), 1);
    EXPECT_EQ(cancel(), "Cancel");
    app().switchLanguage(7);
    EXPECT_EQ(EncoderApp::curLangIndex, 7);
    EXPECT_EQ(EncoderApp::language(), 1);
    EXPECT_EQ(cancel(), "Cancel");
    app().switchLanguage(0);
    EXPECT_EQ(EncoderApp::language(), 0);
    EXPECT_EQ(cancel(), QString::fromUtf8("取消"));
}

TEST_F(EncoderAppTest, ChangesNothingForANegativeOrTheCurrentLanguage) {
    QCoreApplication::sendPostedEvents();
    EventLog log(&app());
    for (int lang : {-1, -100, 0}) {
        app().switchLanguage(lang);
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(EncoderApp::curLangIndex, 0);
        EXPECT_EQ(log.count(QEvent::LanguageChange), 0);
    }
    app().switchLanguage(1);
    QCoreApplication::sendPostedEvents();
    EXPECT_GT(log.count(QEvent::LanguageChange), 0);
}

TEST_F(EncoderAppTest, HasOneSlotForTheLanguage) {
    EXPECT_GE(app().metaObject()->indexOfSlot("switchLanguage(int)"), 0);
    EXPECT_EQ(app().metaObject()->methodCount() - QApplication::staticMetaObject.methodCount(), 1);
}

// ---- inactivity ---------------------------------------------------------------------------------

TEST_F(EncoderAppTest, CountsIdleSecondsToThirtyAndStartsOver) {
    for (int second = 1; second <= 30; ++second) {
        send_timer(app().idleTimerId);
        EXPECT_EQ(app().counter->idleSeconds, second);
    }
    send_timer(app().idleTimerId);
    EXPECT_EQ(app().counter->idleSeconds, 0);
    send_timer(app().idleTimerId + 1000);
    EXPECT_EQ(app().counter->idleSeconds, 0);
}

TEST_F(EncoderAppTest, StandsStillWhilePausedAndRefreshesOn) {
    EventLog log(MainWindow::instance());
    app().counter->paused = true;
    app().counter->idleSeconds = 5;
    send_timer(app().idleTimerId);
    send_timer(app().refreshTimerId);
    QCoreApplication::sendPostedEvents(MainWindow::instance(), REFRESH_SCREEN_EVENT);
    EXPECT_EQ(app().counter->idleSeconds, 5);
    EXPECT_THAT(log.reasons, testing::ElementsAre(2));
}

TEST_F(EncoderAppTest, ResetsTheCountAtEveryMouseEventButTheFirst) {
    qws::MouseEvent move(QEvent::MouseMove, QPoint(5, 5), Qt::NoButton, Qt::NoButton);
    qws::WheelEvent wheel(QPoint(5, 5), QPoint(0, 120));
    qws::KeyEvent key(QEvent::KeyPress, Qt::Key_A);
    app().counter->idleSeconds = 9;
    EXPECT_FALSE(app().qwsEventFilter(&key));
    EXPECT_TRUE(app().counter->skipNext);
    EXPECT_FALSE(app().qwsEventFilter(&move));
    EXPECT_FALSE(app().counter->skipNext);
    EXPECT_EQ(app().counter->idleSeconds, 9);
    EXPECT_FALSE(app().qwsEventFilter(&key));
    EXPECT_EQ(app().counter->idleSeconds, 9);
    EXPECT_FALSE(app().qwsEventFilter(&move));
    EXPECT_EQ(app().counter->idleSeconds, 0);
    app().counter->idleSeconds = 9;
    EXPECT_FALSE(app().qwsEventFilter(&wheel));
    EXPECT_EQ(app().counter->idleSeconds, 0);
}

// ---- right press outside a dialog ---------------------------------------------------------------

TEST_F(EncoderAppTest, TurnsARightPressOutsideAModalDialogIntoOneInside) {
    BaseDialog dialog(nullptr, Qt::WindowFlags(), nullptr);
    dialog.setModal(true);
    dialog.setGeometry(100, 100, 200, 150);
    dialog.show();
    EventLog log(&dialog);
    qws::MouseEvent outside =
        press(QPoint(dialog.frameGeometry().right() + 1, 120), Qt::RightButton);
    EXPECT_TRUE(app().qwsEventFilter(&outside));
    QCoreApplication::sendPostedEvents(&dialog);
    ASSERT_EQ(log.count(QEvent::MouseButtonPress), 1);
    EXPECT_EQ(log.position, QPoint(1, 1));
    EXPECT_EQ(log.button, Qt::RightButton);
    EXPECT_EQ(log.buttons, Qt::RightButton);
    EXPECT_EQ(log.modifiers, Qt::NoModifier);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

TEST_F(EncoderAppTest, LeavesEveryOtherEventOfADialogAlone) {
    BaseDialog dialog(nullptr, Qt::WindowFlags(), nullptr);
    dialog.setModal(true);
    dialog.setGeometry(100, 100, 200, 150);
    dialog.show();
    EventLog log(&dialog);
    const QRect frame = dialog.frameGeometry();
    qws::MouseEvent events[] = {
        press(frame.topLeft(), Qt::RightButton),
        press(frame.bottomRight(), Qt::RightButton),
        press(QPoint(5, 5), Qt::LeftButton),
        qws::MouseEvent(QEvent::MouseButtonRelease, QPoint(5, 5), Qt::RightButton, Qt::NoButton),
    };
    for (qws::MouseEvent &event : events) {
        EXPECT_FALSE(app().qwsEventFilter(&event));
    }
    QCoreApplication::sendPostedEvents(&dialog);
    EXPECT_EQ(log.count(QEvent::MouseButtonPress), 0);
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(EncoderAppTest, LeavesARightPressAloneWithoutAModalDialog) {
    QDialog modeless;
    modeless.setGeometry(100, 100, 200, 150);
    modeless.show();
    qws::MouseEvent outside = press(QPoint(5, 5), Qt::RightButton);
    EXPECT_FALSE(app().qwsEventFilter(&outside));
}

TEST_F(EncoderAppTest, HandlesNoCustomEvents) {
    UserEvent event(SWITCH_SPLIT_EVENT, 4);
    QCoreApplication::sendEvent(&app(), &event);
    EXPECT_EQ(MainWindow::instance()->splitFlag, -1);
}

}  // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (EncoderApp::curLangIndex != -1 || EncoderApp::language() != 1) {
        return 1;  // a language before there is an application
    }
    EncoderApp application(argc, argv, LANGUAGE_CHINESE);
    return RUN_ALL_TESTS();
}
