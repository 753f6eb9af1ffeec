/**
 * @file fb_device.h
 * One framebuffer: its descriptor, its mode and its mapped memory. Only ever written to.
 *
 * Whatever the driver answers, the device is afterwards either usable with a mode that has been
 * read back and mapped, or it is not usable and swallows what is written. Each failure is one error
 * line.
 *
 * Thread: the display thread.
 */
#ifndef WINDOW_SERVER_FB_DEVICE_H
#define WINDOW_SERVER_FB_DEVICE_H

#include <linux/fb.h>

#include <cstdint>
#include <optional>
#include <string>

#include "fb_calls.h"
#include "fb_mode.h"

namespace qws {

class FbDevice {
public:
    /** @param calls  must outlive the device. */
    explicit FbDevice(FbCalls &calls) : m_calls(calls) {}

    /**
     * Opens the device in the mode it has, asking for 32 bits per pixel where it has others, blanks
     * it and has the driver switch the display on.
     * @return whether it is usable. If not, the descriptor may still be open, and setMode may help.
     */
    bool open(const std::string &path);

    /**
     * Changes the mode and blanks the new frame.
     * @return false with the old mode put back, its memory still mapped; when the new mode was to
     * be smaller in width or height, its frame is blank, else untouched.
     */
    bool setMode(int width, int height, int depth);

    bool isUsable() const { return m_memory.bytes() != nullptr; }
    /** All zero until the device is usable. */
    const FbMode &mode() const { return m_mode; }

    /**
     * Writes painted pixels to row `y` from column `x` on, each once; what lies outside the frame
     * is left out.
     */
    void write(int x, int y, const uint32_t *painted, int count);
    /** The same for a rectangle of `rows` rows, which begin `lineLength` bytes apart. */
    void write(int x, int y, const uint32_t *painted, int count, int rows, size_t lineLength);

private:
    bool readBack(fb_var_screeninfo *var, FbMode *mode, std::string *problem);
    bool adopt(const FbMode &mode, std::string *problem);
    bool change(const fb_var_screeninfo &before, int width, int height, std::string *problem);
    void blank();
    void clearForSmaller();
    void switchOn();
    unsigned char *row(int y) const;

    FbCalls &m_calls;
    FbDescriptor m_descriptor;
    std::string m_path;
    FbMode m_mode;
    FbMap m_memory;
};

}  // namespace qws

#endif
