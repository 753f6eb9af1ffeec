/**
 * @file fbemu_device.h
 * The emulated framebuffer driver: formatting its file, answering its requests.
 *
 * Pure of interposition, so that the device root can format a file and tests can call it directly.
 * Thread: requests of one process are serialised by the caller.
 */
#ifndef VDEVICE_FBEMU_DEVICE_H
#define VDEVICE_FBEMU_DEVICE_H

#include <linux/fb.h>

#include "fbemu_layout.h"

namespace fbemu {

/** How a fresh framebuffer looks. */
struct Options {
    uint32_t width = 1920;
    uint32_t height = 1080;
    uint32_t padding = 0;             ///< bytes after each row
    const char *format = "argb8888";  ///< a name of the table of formats
    uint32_t behaviour = 0;           ///< FbemuBehaviour bits
};

/**
 * Options from FBEMU_MODE ("1920x1080"), FBEMU_PADDING (bytes), FBEMU_FORMAT, FBEMU_REFUSE_MODE=1
 * and FBEMU_PRETEND_MODE=1; what is unset or unreadable keeps its default.
 */
Options options_from_environment();

/** True for "argb8888", "xrgb8888", "rgba8888", "abgr8888", "bgra8888" and "rgb565". */
bool is_format(const char *name);

/**
 * Gives `fd` its size and a header, unless it has one already.
 * @param fd  a regular file open for reading and writing.
 * @return 0, or an errno value: EINVAL for an unknown format or a mode that the memory cannot hold.
 */
int format_file(int fd, const Options &options);

/** Maps the header of a formatted file; null with errno set when there is none. Never unmapped. */
FbemuHeader *map_header(int fd, bool writable);

/** True when `request` is one of the framebuffer's ioctl requests. */
bool is_request(unsigned long request);

/**
 * Answers one ioctl request.
 * @param argument  the ioctl's third argument.
 * @return 0, or an errno value: ENOTTY for an unknown request, EFAULT for a null argument.
 */
int answer(FbemuHeader *header, unsigned long request, void *argument);

}  // namespace fbemu

#endif
