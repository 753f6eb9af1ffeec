/**
 * @file qws_integration.h
 * What Qt asks its platform for: one framebuffer screen, its windows, its fonts and its mouse.
 *
 * No console switching (it would take signals away from the process), no cursor, no input method,
 * no GLib.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_QWS_INTEGRATION_H
#define WINDOW_SERVER_QWS_INTEGRATION_H

#include <qpa/qplatformintegration.h>

#include <memory>

namespace qws {

class EvdevMouse;
class FbScreen;
class FontFolderDatabase;

class Integration : public QPlatformIntegration {
public:
    Integration();
    ~Integration() override;

    void initialize() override;
    bool hasCapability(Capability capability) const override;
    QPlatformWindow *createPlatformWindow(QWindow *window) const override;
    QPlatformBackingStore *createPlatformBackingStore(QWindow *window) const override;
    QAbstractEventDispatcher *createEventDispatcher() const override;
    QPlatformFontDatabase *fontDatabase() const override;

private:
    FbScreen *m_screen;  ///< Qt deletes it when told that the screen is gone
    std::unique_ptr<FontFolderDatabase> m_fonts;
    std::unique_ptr<EvdevMouse> m_mouse;
};

}  // namespace qws

#endif
