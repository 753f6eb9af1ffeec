/**
 * @file qws_event.h
 * Raw input events as the display sees them before Qt dispatches them: plain values, one struct per
 * kind, told apart by `Event::type`. Positions are in screen pixels, origin at the top left.
 *
 * Thread: values; the application's filter gets them on the display thread.
 */
#ifndef WINDOW_SERVER_QWS_EVENT_H
#define WINDOW_SERVER_QWS_EVENT_H

#include <QEvent>
#include <QPoint>
#include <Qt>

namespace qws {

/** What all raw events share. */
struct Event {
    enum Type {
        None,   ///< nothing a filter could act on
        Mouse,  ///< a MouseEvent
        Wheel,  ///< a WheelEvent
        Key     ///< a KeyEvent
    };

    explicit Event(Type eventType = None) : type(eventType) {}
    virtual ~Event() = default;

    Type type;
};

/** A button went down or up, or the pointer moved. */
struct MouseEvent : Event {
    MouseEvent() : Event(Mouse) {}

    /**
     * @param what     QEvent::MouseButtonPress, MouseButtonRelease or MouseMove.
     * @param which    the button that changed; Qt::NoButton for a move.
     * @param held     the buttons held after the event.
     */
    MouseEvent(QEvent::Type what, const QPoint &position, Qt::MouseButton which,
               Qt::MouseButtons held)
        : Event(Mouse), kind(what), globalPosition(position), button(which), buttons(held) {}

    QEvent::Type kind = QEvent::MouseMove;
    QPoint globalPosition;
    Qt::MouseButton button = Qt::NoButton;
    Qt::MouseButtons buttons = Qt::NoButton;
};

/** The wheel turned; 120 units are one notch, positive away from the user (or to the left). */
struct WheelEvent : Event {
    WheelEvent() : Event(Wheel) {}
    WheelEvent(const QPoint &position, const QPoint &angle)
        : Event(Wheel), globalPosition(position), angleDelta(angle) {}

    QPoint globalPosition;
    QPoint angleDelta;
};

/** A key went down or up. */
struct KeyEvent : Event {
    KeyEvent() : Event(Key) {}

    /**
     * @param what     QEvent::KeyPress or KeyRelease.
     * @param keyCode  a Qt::Key.
     */
    KeyEvent(QEvent::Type what, int keyCode, Qt::KeyboardModifiers held = Qt::NoModifier)
        : Event(Key), kind(what), key(keyCode), modifiers(held) {}

    QEvent::Type kind = QEvent::KeyPress;
    int key = 0;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};

}  // namespace qws

#endif
