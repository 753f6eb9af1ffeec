/**
 * @file labels_fixture.h
 * What the tests of overlay labels share: filling records, pressing and dragging, counting
 * repaints.
 */
#ifndef TESTS_APP_GUI_LABELS_FIXTURE_H
#define TESTS_APP_GUI_LABELS_FIXTURE_H

#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QWidget>
#include <cstring>

/** Puts a text into a record's field, cut to what fits before the NUL. */
template <size_t size>
void fill(char (&field)[size], const char *text) {
    std::memset(field, 0, size);
    std::memcpy(field, text, std::min(std::strlen(text), size - 1));
}

/** Fills a record's field to its last byte: no NUL is left. */
template <size_t size>
void fillWhole(char (&field)[size], char byte) {
    std::memset(field, byte, size);
}

/** Sends a mouse event at a point of the widget; true when it was accepted. */
inline bool sendMouse(QWidget &widget, QEvent::Type type, const QPoint &at,
                      Qt::MouseButton button = Qt::LeftButton) {
    const Qt::MouseButton changed = type == QEvent::MouseMove ? Qt::NoButton : button;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : button;
    QMouseEvent event(type, QPointF(at), QPointF(widget.mapToGlobal(at)), changed, held,
                      Qt::NoModifier);
    event.accept();
    static_cast<QObject &>(widget).event(&event);
    return event.isAccepted();
}

/** Presses in the label's corner, moves by `delta` and holds. */
inline void drag(QWidget &label, const QPoint &delta) {
    sendMouse(label, QEvent::MouseButtonPress, {3, 3});
    sendMouse(label, QEvent::MouseMove, QPoint(3, 3) + delta);
}

/** Counts the paint events of a widget. */
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget *widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() == QEvent::Paint) ++count;
        return false;
    }
    int count = 0;
};

/** A shown, transparent window of 1920 x 1080 as the device's main window is. */
class LabelWindow : public QWidget {
public:
    LabelWindow() {
        setAttribute(Qt::WA_TranslucentBackground);
        resize(1920, 1080);
        mMarker.setGeometry(1918, 1078, 2, 2);
        show();
        settle();
    }

    /** Returns when everything that was to be painted is: a corner of the window, asked last, is.
     */
    void settle() {
        for (int round = 0; round < 2; ++round) {
            const int before = mPaints.count;
            mMarker.update();
            const QDeadlineTimer limit(5000);
            while (mPaints.count == before && !limit.hasExpired())
                QApplication::processEvents();
            ASSERT_GT(mPaints.count, before) << "the window does not paint";
        }
    }

    /** The window's pixels. */
    QImage pixels() {
        QImage image(size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }

private:
    QWidget mMarker{this};
    PaintCounter mPaints{&mMarker};
};

/** An image of the window's size without a painted pixel. */
inline QImage emptyWindow(const QSize &size = {1920, 1080}) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

#endif
