/**
 * @file qws_platform.h
 * Makes Qt draw on the framebuffer: the platform plugin "linuxfb_qws" lives inside the executable.
 *
 * Call both functions before the QApplication is made. The plugin then reads from the environment:
 * - QWS_DISPLAY, e.g. "linuxFB:/dev/fb1": the framebuffer device; /dev/fb0 when unset.
 * - QT_QWS_FONTDIR: the folder whose font files the application can use. Where it holds no usable
 *   font, those below APP_GUI_FONTDIR_FALLBACK or, unset, below /usr/share/fonts/truetype.
 * - QWS_MOUSE_PROTO, e.g. "evdev:/dev/input/event3,evdev:/tmp/mouse": the mice to read, devices or
 *   FIFOs of `struct input_event`. Unset, every mouse and tablet among /dev/input/event*.
 *
 * A framebuffer that cannot be used is told in one error line; the application then runs with a
 * screen of 1920 x 1080 that nobody sees, and a later Screen::setMode tries the device again.
 */
#ifndef WINDOW_SERVER_QWS_PLATFORM_H
#define WINDOW_SERVER_QWS_PLATFORM_H

namespace qws {

/** Makes the plugin known to Qt. Without this call the linker would leave it out. */
void registerPlatform();

/**
 * Sets QT_QPA_PLATFORM to the plugin unless something is chosen there already. If the plugin is
 * what is chosen, also removes the variables that would scale fonts or pixels (one point is one
 * pixel here) and sets XDG_RUNTIME_DIR where it is missing, which Qt would complain about.
 */
void prepareEnvironment();

}  // namespace qws

#endif
