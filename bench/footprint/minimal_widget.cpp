// The least that a display process made of Qt widgets takes: one translucent full-screen widget
// that paints a rectangle and a text, and once more after two seconds, so that it has written all of
// its painting memory, as a display that refreshes has. On this project's platform plugin, or on the
// one that QT_QPA_PLATFORM names.

#include <QApplication>
#include <QPainter>
#include <QTimer>
#include <QWidget>

#include <chrono>

#include "window_server/qws_platform.h"

namespace {

class Plain : public QWidget {
public:
    Plain() { setAttribute(Qt::WA_TranslucentBackground); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        const QRect box(width() / 4, height() / 4, width() / 2, height() / 2);
        painter.fillRect(box, QColor(0, 0, 255, 128));
        painter.setPen(Qt::white);
        painter.drawText(box, Qt::AlignCenter, QStringLiteral("minimal widget"));
    }
};

}  // namespace

int main(int argc, char **argv) {
    qputenv("QWS_DISPLAY", "linuxFB:/dev/fb1");
    qputenv("QT_QWS_FONTDIR", "/tmp/");
    qputenv("QT_PLUGIN_PATH", "/usr/lib/plugins/");
    qws::registerPlatform();
    qws::prepareEnvironment();
    QApplication application(argc, argv);
    Plain widget;
    widget.showFullScreen();
    QTimer::singleShot(std::chrono::seconds(2), &widget, qOverload<>(&QWidget::update));
    return QApplication::exec();
}
