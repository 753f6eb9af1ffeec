/**
 * @file qws_screen.h
 * The framebuffer as the application's screen: its mode and what has been drawn on it so far.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_QWS_SCREEN_H
#define WINDOW_SERVER_QWS_SCREEN_H

#include <cstdint>

namespace qws {

/** What went to the screen since the start or the last reset. */
struct ScreenCounters {
    uint64_t updates = 0;           ///< copies to the device, each of one changed region
    uint64_t pixels = 0;            ///< pixels of these regions
    uint64_t paintNanoseconds = 0;  ///< time spent painting into cached memory
    uint64_t copyNanoseconds = 0;   ///< time spent composing and copying to the device
};

class Screen {
public:
    /**
     * Changes the framebuffer's mode. When it returns true the device has the new mode and is
     * blank, and every full-screen window has the new size and is painted. When the driver refuses,
     * or says yes and does something else, the old mode is put back and goes on working, one error
     * line says why, and the result is false. While another Qt platform runs: false, and nothing
     * happens.
     * @param width, height  pixels, 1 to 16384.
     * @param depth          bits per pixel; only 32 is accepted.
     */
    static bool setMode(int width, int height, int depth);

    static ScreenCounters counters();
    static void resetCounters();
};

}  // namespace qws

#endif
