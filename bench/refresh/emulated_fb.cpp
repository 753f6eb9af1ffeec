#include "emulated_fb.h"

#include <linux/fb.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

fb_var_screeninfo var{};
fb_fix_screeninfo fix{};

}  // namespace

namespace bench {

std::string emulateFramebuffer(unsigned width, unsigned height) {
    var.xres = var.xres_virtual = width;
    var.yres = var.yres_virtual = height;
    var.bits_per_pixel = 32;
    var.red = {16, 8, 0};
    var.green = {8, 8, 0};
    var.blue = {0, 8, 0};
    var.transp = {24, 8, 0};
    fix.line_length = width * 4;
    fix.smem_len = fix.line_length * height;
    fix.visual = FB_VISUAL_TRUECOLOR;
    const int file = ::memfd_create("emulated_fb", 0);
    if (file < 0 || ::ftruncate(file, fix.smem_len) != 0) {
        std::perror("emulated framebuffer");
        std::exit(1);
    }
    return "/proc/self/fd/" + std::to_string(file);
}

}  // namespace bench

/// Takes the C library's place for the whole process.
extern "C" __attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request,
                                                            ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    switch (request) {
        case FBIOGET_VSCREENINFO:
            *static_cast<fb_var_screeninfo *>(argument) = var;
            return 0;
        case FBIOGET_FSCREENINFO:
            *static_cast<fb_fix_screeninfo *>(argument) = fix;
            return 0;
        case FBIOPUT_VSCREENINFO:
        case FBIOBLANK:
            return 0;
        default:
            return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    }
}
