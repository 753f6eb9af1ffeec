/**
 * @file qws_server.h
 * The window server's settings: what lies behind the windows, how large a maximised window may be,
 * and who sees raw input first.
 *
 * Settings may be made before the application object exists and while another Qt platform runs (the
 * offscreen one of a test, say): they are then kept and change nothing on the screen.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_QWS_SERVER_H
#define WINDOW_SERVER_QWS_SERVER_H

#include <QBrush>
#include <QRect>
#include <functional>

#include "window_server/qws_event.h"

namespace qws {

class Server {
public:
    /** @return true to consume the event: Qt then never hears of it. */
    using EventFilter = std::function<bool(Event *)>;

    /**
     * What shows where no window is; at first transparent, so that the video shows through. Setting
     * what is set draws nothing.
     */
    static void setBackground(const QBrush &brush);
    static QBrush background();

    /** Kept only: this server draws no cursor, whichever way it is set. */
    static void setCursorVisible(bool visible);
    static bool isCursorVisible();

    /**
     * The part of the screen that a maximised window covers; cut to the screen, and the whole
     * screen when nothing is left. A full-screen window always covers the whole screen.
     */
    static void setMaxWindowRect(const QRect &rect);
    /** The rectangle as it was set, uncut; null at first. */
    static QRect maxWindowRect();

    /**
     * Calls `filter` for every raw input event before Qt dispatches it, also for one aimed at a
     * window that a modal dialog blocks. Replaces the previous filter; an empty one ends the
     * filtering. The event lives for the call only.
     */
    static void setEventFilter(EventFilter filter);
};

}  // namespace qws

#endif
