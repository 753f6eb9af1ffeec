#include "qws_integration.h"

#include <QtGui/private/qunixeventdispatcher_qpa_p.h>
#include <qpa/qwindowsysteminterface.h>

#include "evdev_mouse.h"
#include "fb_screen.h"
#include "fb_window.h"
#include "font_folder.h"

namespace qws {

Integration::Integration()
    : m_screen(new FbScreen(FbCalls::current())), m_fonts(std::make_unique<FontFolderDatabase>()) {}

Integration::~Integration() {
    m_mouse.reset();
    QWindowSystemInterface::handleScreenRemoved(m_screen);
}

void Integration::initialize() {
    m_screen->initialize();
    QWindowSystemInterface::handleScreenAdded(m_screen);

    m_mouse = std::make_unique<EvdevMouse>([this] { return m_screen->geometry(); }, queueReport);
    const QString named = qEnvironmentVariable("QWS_MOUSE_PROTO");
    if (named.isEmpty()) {
        m_mouse->openMice(inputDevices());
    } else {
        m_mouse->open(mousePaths(named));
    }
}

bool Integration::hasCapability(Capability capability) const {
    switch (capability) {
        case ThreadedPixmaps:
            return true;
        case WindowManagement:
            return false;
        default:
            return QPlatformIntegration::hasCapability(capability);
    }
}

QPlatformWindow *Integration::createPlatformWindow(QWindow *window) const {
    return new FbWindow(window);
}

QPlatformBackingStore *Integration::createPlatformBackingStore(QWindow *window) const {
    return new FbBackingStore(window);
}

QAbstractEventDispatcher *Integration::createEventDispatcher() const {
    return new QUnixEventDispatcherQPA;
}

QPlatformFontDatabase *Integration::fontDatabase() const {
    return m_fonts.get();
}

}  // namespace qws
