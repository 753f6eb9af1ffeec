/**
 * @file server_state.h
 * What the public faces and the platform plugin share.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_SERVER_STATE_H
#define WINDOW_SERVER_SERVER_STATE_H

#include <QBrush>
#include <QRect>

#include "window_server/qws_screen.h"

namespace qws {

class FbScreen;

struct ServerState {
    QBrush background{Qt::transparent};
    bool cursorVisible = true;
    QRect maxWindowRect;
    ScreenCounters counters;
    FbScreen *screen = nullptr;  ///< set while the plugin runs
};

ServerState &serverState();

}  // namespace qws

#endif
