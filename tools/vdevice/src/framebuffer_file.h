/**
 * @file framebuffer_file.h
 * Reads an emulated framebuffer from outside (fbemu/fbemu_layout.h).
 */
#ifndef VDEVICE_FRAMEBUFFER_FILE_H
#define VDEVICE_FRAMEBUFFER_FILE_H

#include <QImage>
#include <string>

#include "fbemu_device.h"

namespace vdevice {

/** The mapped file of one framebuffer. Thread: any one at a time; the program draws meanwhile. */
class FramebufferFile {
public:
    FramebufferFile() = default;
    ~FramebufferFile() { close(); }
    FramebufferFile(const FramebufferFile &) = delete;
    FramebufferFile &operator=(const FramebufferFile &) = delete;

    /** Makes the file, or gives one without header its mode; false with `error` filled. */
    static bool create(const std::string &path, const fbemu::Options &options, std::string *error);

    bool open(const std::string &path, std::string *error);
    void close();
    bool isOpen() const { return m_file != nullptr; }

    /** A consistent copy of the header. Requires: isOpen(). */
    FbemuHeader header() const;
    /** FbemuBehaviour bits for the requests to come. */
    void setBehaviour(uint32_t bits);

    /**
     * The visible pixels with straight alpha (QImage::Format_ARGB32); opaque where the format has
     * no alpha. Requires: isOpen().
     */
    QImage layer() const;
    /** The visible rows as they are in memory, padding left out: for comparisons by bytes. */
    std::string bytes() const;

private:
    unsigned char *m_file = nullptr;
};

}  // namespace vdevice

#endif
