// board_probe: app_gui with a line to the inside, for what no command and no pixel of app_gui
// shows: a change of the resolution, and where the pointer is.
//
// It is the whole process, started as app_gui starts; on top of it a thread reads the FIFO
// /tmp/board_probe, a command a line, carries it out on the display thread and says on standard
// output what came of it, in one line that begins with "board_probe:".
//
//     resolution CODE   changes the resolution; tells the result, the screen's and the window's
//     size arrow             shows the arrow cursor's picture at the pointer from now on arrow X Y
//     the same, as if the pointer were there state             tells the pointer's place, its
//     buttons and the idle seconds

#include <sys/stat.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "app_gui.h"
#include "encoderapp.h"
#include "mainwindow.h"

namespace {

constexpr const char *kFifo = "/tmp/board_probe";

__attribute__((format(printf, 1, 2))) void tell(const char *format, ...) {
    char text[200];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::printf("board_probe: %s\n", text);
    std::fflush(stdout);
}

/** Follows the pointer: a window of its own, above the main window, that the pointer looks through.
 */
class Arrow : public QLabel {
public:
    Arrow() : QLabel(nullptr, kFlags) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setPixmap(QPixmap::fromImage(EncoderApp::cursorImgList.value(0)));
        adjustSize();
    }

private:
    static constexpr Qt::WindowFlags kFlags = Qt::Window | Qt::FramelessWindowHint |
                                              Qt::WindowStaysOnTopHint |
                                              Qt::WindowTransparentForInput;
};

/** The last mouse event that Qt has dispatched. */
class PointerWatch : public QObject {
public:
    QPoint place;
    Qt::MouseButtons buttons = Qt::NoButton;
    Arrow *arrow = nullptr;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override {
        const bool mouse = event->type() == QEvent::MouseMove ||
                           event->type() == QEvent::MouseButtonPress ||
                           event->type() == QEvent::MouseButtonRelease;
        if (mouse && receiver->isWindowType()) {
            const auto *at = static_cast<QMouseEvent *>(event);
            place = at->globalPosition().toPoint();
            buttons = at->buttons();
            if (arrow) arrow->move(place);
        }
        return false;
    }
};

PointerWatch *watch = nullptr;

void change_resolution(std::istream &words) {
    unsigned code = 0;
    words >> code;
    const unsigned result = MainWindow::instance()->changeResolution(code);
    const QSize screen = QApplication::primaryScreen()->size();
    const QSize window = MainWindow::instance()->size();
    tell("resolution %u gives %u, screen %dx%d, window %dx%d", code, result, screen.width(),
         screen.height(), window.width(), window.height());
}

void show_arrow(std::istream &words) {
    if (!watch->arrow) watch->arrow = new Arrow;
    int x = watch->place.x();
    int y = watch->place.y();
    words >> x >> y;
    watch->arrow->move(x, y);
    watch->arrow->show();
    tell("arrow");
}

void tell_state(std::istream &) {
    const auto *application = static_cast<EncoderApp *>(QCoreApplication::instance());
    tell("pointer %d,%d buttons %d idle %d", watch->place.x(), watch->place.y(),
         static_cast<int>(watch->buttons), application->counter->idleSeconds);
}

struct Command {
    const char *name;
    void (*run)(std::istream &words);  ///< on the display thread
};

constexpr Command kCommands[] = {
    {"resolution", change_resolution},
    {"arrow", show_arrow},
    {"state", tell_state},
};

void carry_out(const std::string &line) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    for (const Command &command : kCommands) {
        if (name == command.name) return command.run(words);
    }
    tell("no command: %s", name.c_str());
}

/** Hands each line to the display thread; the FIFO is opened anew when its writer has gone. */
void read_commands() {
    for (;;) {
        std::ifstream fifo(kFifo);
        for (std::string line; std::getline(fifo, line);) {
            QMetaObject::invokeMethod(
                watch, [line] { carry_out(line); }, Qt::QueuedConnection);
        }
    }
}

/** Runs while the application object is made. */
void begin() {
    watch = new PointerWatch;
    QCoreApplication::instance()->installEventFilter(watch);
    std::thread(read_commands).detach();
}

}  // namespace

int main(int argc, char **argv) {
    if (mkfifo(kFifo, 0600) != 0) {
        std::perror(kFifo);
        return 1;
    }
    qAddPreRoutine(begin);
    return run_app_gui(argc, argv);
}
