/**
 * @file emulated_fb.h
 * A framebuffer for this process: a memory file whose framebuffer requests the program's own
 * ioctl() answers, so that any Qt platform plugin in it draws there.
 */
#ifndef BENCH_REFRESH_EMULATED_FB_H
#define BENCH_REFRESH_EMULATED_FB_H

#include <string>

namespace bench {

/** Makes the one framebuffer of `width` x `height` ARGB pixels. @return a path to open it by. */
std::string emulateFramebuffer(unsigned width, unsigned height);

}  // namespace bench

#endif
