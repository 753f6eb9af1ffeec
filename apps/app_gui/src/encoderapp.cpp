#include "encoderapp.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTimerEvent>
#include <QTranslator>
#include <QWidget>

#include "app_gui.h"
#include "window_server/qws_event.h"
#include "window_server/qws_server.h"

namespace {

constexpr int kIdlePeriodMs = 1000;
constexpr int kRefreshPeriodMs = 2000;
constexpr int kPeriodicRefresh = 2;  // reason of gui_refresh_screen()

constexpr const char *kTranslationFile = ":/resources/tr/encoder_zh";
/// In the order of `cursorImgList`.
constexpr const char *kCursorFiles[] = {
    ":/resources/picture/cursor_arrow.png",
    ":/resources/picture/cursor_wait.png",
    ":/resources/picture/cursor_ibeam.png",
};

QMouseEvent *right_press_inside(const QWidget *widget) {
    const QPoint inside(1, 1);
    return new QMouseEvent(QEvent::MouseButtonPress, inside, widget->mapToGlobal(inside),
                           Qt::RightButton, Qt::RightButton, Qt::NoModifier);
}

/**
 * Before its own readers Qt asks every plugin for picture formats, and loads them all to do so.
 * While this lives it finds none: PNG needs none. The first picture of a watermark finds and loads
 * them.
 */
class WithoutPlugins {
public:
    WithoutPlugins() { QCoreApplication::setLibraryPaths({}); }
    WithoutPlugins(const WithoutPlugins &) = delete;
    WithoutPlugins &operator=(const WithoutPlugins &) = delete;
    ~WithoutPlugins() { QCoreApplication::setLibraryPaths(m_paths); }

private:
    const QStringList m_paths = QCoreApplication::libraryPaths();
};

QList<QImage> load_cursors() {
    const WithoutPlugins without;
    QList<QImage> images;
    for (const char *file : kCursorFiles) {
        images.append(
            QImage(QString::fromLatin1(file)).convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    return images;
}

}  // namespace

int EncoderApp::curLangIndex = -1;
int EncoderApp::oldCursor = -1;
QList<QImage> EncoderApp::cursorImgList;

EncoderApp::EncoderApp(int &argc, char **argv, language_type lang)
    : QApplication(argc, argv), translator(new QTranslator(this)) {
    switchLanguage(lang);
    counter = new KeyMouseCounter;
    idleTimerId = startTimer(kIdlePeriodMs);
    refreshTimerId = startTimer(kRefreshPeriodMs);
    cursorImgList.append(load_cursors());
    qws::Server::setEventFilter([this](qws::Event *event) { return qwsEventFilter(event); });
}

EncoderApp::~EncoderApp() {
    qws::Server::setEventFilter({});
    killTimer(idleTimerId);
    delete counter;
}

int EncoderApp::language() {
    return curLangIndex == LANGUAGE_CHINESE ? 0 : 1;
}

void EncoderApp::switchLanguage(int lang) {
    if (lang < 0 || lang == curLangIndex) {
        return;
    }
    if (lang == LANGUAGE_CHINESE) {
        if (translator->isEmpty()) {
            // Without the file the source texts show.
            static_cast<void>(translator->load(QString::fromLatin1(kTranslationFile)));
        }
        installTranslator(translator);
    } else if (!translator->isEmpty()) {
        removeTranslator(translator);  // keeps its contents for a later switch back
    }
    curLangIndex = lang;
}

bool EncoderApp::qwsEventFilter(qws::Event *event) {
    if (event->type != qws::Event::Mouse && event->type != qws::Event::Wheel) {
        return false;
    }
    if (counter->skipNext) {
        counter->skipNext = false;
    } else {
        counter->idleSeconds = 0;
    }
    if (event->type != qws::Event::Mouse) {
        return false;
    }
    const auto &mouse = static_cast<const qws::MouseEvent &>(*event);
    QWidget *modal = activeModalWidget();
    if (!mouse.buttons.testFlag(Qt::RightButton) || modal == nullptr ||
        modal->frameGeometry().contains(mouse.globalPosition)) {
        return false;
    }
    postEvent(modal, right_press_inside(modal));
    return true;
}

void EncoderApp::timerEvent(QTimerEvent *event) {
    if (event->timerId() == idleTimerId && !counter->paused) {
        const bool full = counter->idleSeconds >= counter->limit;
        counter->idleSeconds = full ? 0 : counter->idleSeconds + 1;
    }
    if (event->timerId() == refreshTimerId) {
        gui_refresh_screen(kPeriodicRefresh);
    }
}

void EncoderApp::customEvent(QEvent *) {}
