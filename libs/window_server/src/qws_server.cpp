#include "window_server/qws_server.h"

#include <memory>
#include <utility>

#include "fb_screen.h"
#include "input_filter.h"
#include "server_state.h"

namespace qws {

ServerState &serverState() {
    static ServerState state;
    return state;
}

void Server::setBackground(const QBrush &brush) {
    if (brush == serverState().background) return;
    serverState().background = brush;
    if (FbScreen *screen = serverState().screen) screen->refresh();
}

QBrush Server::background() {
    return serverState().background;
}

void Server::setCursorVisible(bool visible) {
    serverState().cursorVisible = visible;
}

bool Server::isCursorVisible() {
    return serverState().cursorVisible;
}

void Server::setMaxWindowRect(const QRect &rect) {
    serverState().maxWindowRect = rect;
    if (FbScreen *screen = serverState().screen) screen->applyMaxWindowRect();
}

QRect Server::maxWindowRect() {
    return serverState().maxWindowRect;
}

void Server::setEventFilter(EventFilter filter) {
    static std::unique_ptr<InputFilter> installed;
    installed.reset();
    if (filter) installed = std::make_unique<InputFilter>(std::move(filter));
}

}  // namespace qws
