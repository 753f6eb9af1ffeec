#include "window_server/qws_screen.h"

#include "fb_screen.h"
#include "server_state.h"

namespace qws {

bool Screen::setMode(int width, int height, int depth) {
    FbScreen *screen = serverState().screen;
    return screen && screen->setMode(width, height, depth);
}

ScreenCounters Screen::counters() {
    return serverState().counters;
}

void Screen::resetCounters() {
    serverState().counters = {};
}

}  // namespace qws
