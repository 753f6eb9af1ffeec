#include "input_filter.h"

#include <QtGui/private/qguiapplication_p.h>

#include <utility>

namespace qws {
namespace {

using Interface = QWindowSystemInterfacePrivate;

bool consumesMouse(const Server::EventFilter &filter, const Interface::MouseEvent &from) {
    MouseEvent event(from.buttonType, from.globalPos.toPoint(), from.button, from.buttons);
    return filter(&event);
}

bool consumesWheel(const Server::EventFilter &filter, const Interface::WheelEvent &from) {
    WheelEvent event(from.globalPos.toPoint(), from.angleDelta);
    return filter(&event);
}

bool consumesKey(const Server::EventFilter &filter, const Interface::KeyEvent &from) {
    KeyEvent event(from.keyType, from.key, from.modifiers);
    return filter(&event);
}

bool consumes(const Server::EventFilter &filter, const Interface::WindowSystemEvent &event) {
    switch (event.type) {
        case Interface::Mouse:
            return consumesMouse(filter, static_cast<const Interface::MouseEvent &>(event));
        case Interface::Wheel:
            return consumesWheel(filter, static_cast<const Interface::WheelEvent &>(event));
        case Interface::Key:
            return consumesKey(filter, static_cast<const Interface::KeyEvent &>(event));
        default:
            return false;
    }
}

}  // namespace

InputFilter::InputFilter(Server::EventFilter filter) : m_filter(std::move(filter)) {
    Interface::installWindowSystemEventHandler(this);
}

InputFilter::~InputFilter() {
    Interface::removeWindowSystemEventhandler(this);
}

bool InputFilter::sendEvent(Interface::WindowSystemEvent *event) {
    // The application may set another filter from within, which ends this object.
    const Server::EventFilter filter = m_filter;
    if (consumes(filter, *event)) return false;
    QGuiApplicationPrivate::processWindowSystemEvent(event);
    return true;
}

}  // namespace qws
