// The display process, which tells on standard output when its window is about to be painted and to
// take a request for a refresh.

#include <QCoreApplication>
#include <QEvent>

#include <cstdio>

#include "app_gui.h"
#include "mainwindow.h"

namespace {

class Teller : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *receiver, QEvent *event) override {
        const bool painted = event->type() == QEvent::Paint;
        const bool refreshed = event->type() == QEvent::Type(REFRESH_SCREEN_EVENT);
        if ((painted || refreshed) && qobject_cast<MainWindow *>(receiver) != nullptr) {
            std::puts(painted ? "painted" : "refreshed");
            std::fflush(stdout);
        }
        return false;
    }
};

void installTeller() {
    qApp->installEventFilter(new Teller(qApp));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(installTeller)

int main(int argc, char **argv) {
    return run_app_gui(argc, argv);
}
