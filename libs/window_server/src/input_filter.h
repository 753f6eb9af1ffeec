/**
 * @file input_filter.h
 * Shows every queued input event to the application before Qt dispatches it. Works on every Qt
 * platform; events that Qt delivers synchronously (a test's own QTest clicks) pass by.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_INPUT_FILTER_H
#define WINDOW_SERVER_INPUT_FILTER_H

#include <qpa/qwindowsysteminterface_p.h>

#include "window_server/qws_server.h"

namespace qws {

/** Filters as long as it lives; one at a time. */
class InputFilter : public QWindowSystemEventHandler {
public:
    explicit InputFilter(Server::EventFilter filter);
    ~InputFilter() override;

    /** @return false when the event was consumed. */
    bool sendEvent(QWindowSystemInterfacePrivate::WindowSystemEvent *event) override;

private:
    Server::EventFilter m_filter;
};

}  // namespace qws

#endif
