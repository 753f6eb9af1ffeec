/**
 * @file fake_driver.h
 * A framebuffer driver for tests, on a memory file: behaves as told, also badly.
 */
#ifndef TESTS_WINDOW_SERVER_FAKE_DRIVER_H
#define TESTS_WINDOW_SERVER_FAKE_DRIVER_H

#include <linux/fb.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "fb_calls.h"

namespace qws::test {

class FakeDriver : public FbCalls {
public:
    explicit FakeDriver(unsigned width = 64, unsigned height = 48, unsigned padding = 0)
        : linePadding(padding), m_file(::memfd_create("fake_driver", 0)) {
        var.bits_per_pixel = 32;
        var.red = {16, 8, 0};
        var.green = {8, 8, 0};
        var.blue = {0, 8, 0};
        var.transp = {24, 8, 0};
        apply(width, height);
    }
    ~FakeDriver() override { ::close(m_file); }

    int open(const char *) override {
        ++opens;
        if (openError != 0) return fail(openError);
        return ::dup(m_file);
    }

    int ioctl(int, unsigned long request, void *argument) override {
        if (failing.count(request) != 0) return fail(ENOTTY);
        switch (request) {
            case FBIOGET_VSCREENINFO:
                *static_cast<fb_var_screeninfo *>(argument) = var;
                return 0;
            case FBIOGET_FSCREENINFO:
                *static_cast<fb_fix_screeninfo *>(argument) = fix;
                return 0;
            case FBIOPUT_VSCREENINFO:
                return put(*static_cast<const fb_var_screeninfo *>(argument));
            case FBIOBLANK:
                lit = reinterpret_cast<uintptr_t>(argument) == FB_BLANK_UNBLANK;
                pixelWhenLit = pixel(0, 0);
                return 0;
            default:
                return fail(EINVAL);
        }
    }

    void *map(int descriptor, size_t length) override {
        if (mapFails) {
            errno = ENOMEM;
            return MAP_FAILED;
        }
        ++maps;
        return FbCalls::map(descriptor, length);
    }
    void unmap(void *memory, size_t length) override {
        --maps;
        FbCalls::unmap(memory, length);
    }
    void sync(int) override { memoryWhenSynced = memory(); }
    void close(int descriptor) override {
        --opens;
        ::close(descriptor);
    }

    /** The visible pixel as it is in the device's memory. */
    uint32_t pixel(unsigned x, unsigned y) const {
        uint32_t value = 0;
        const off_t at = static_cast<off_t>(var.yoffset + y) * fix.line_length +
                         static_cast<off_t>(var.xoffset + x) * 4;
        if (::pread(m_file, &value, sizeof value, at) != sizeof value) ADD_FAILURE();
        return value;
    }

    /** Everything, padding included. */
    std::vector<unsigned char> memory() const {
        std::vector<unsigned char> bytes(fix.smem_len);
        if (::pread(m_file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            ADD_FAILURE();
        }
        return bytes;
    }
    void fillMemory(unsigned char value) {
        const std::vector<unsigned char> bytes(fix.smem_len, value);
        if (::pwrite(m_file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            ADD_FAILURE();
        }
    }

    fb_var_screeninfo var{};
    fb_fix_screeninfo fix{};
    unsigned linePadding;             ///< bytes behind each row
    std::set<unsigned long> failing;  ///< requests that answer ENOTTY
    int openError = 0;
    bool mapFails = false;
    bool pretends = false;    ///< says yes to a mode and changes nothing
    bool keepsFrame = false;  ///< takes a mode in the memory and with the rows it has
    std::vector<unsigned char> memoryWhenSynced;
    unsigned depthAfterPut = 32;      ///< what a change of mode ends up with
    unsigned lineLengthAfterPut = 0;  ///< 0 for the right one
    unsigned memoryAfterPut = 0;      ///< 0 for enough
    bool lit = false;                 ///< whether the display was asked to be on
    uint32_t pixelWhenLit = 0;        ///< the first visible one when it was
    int puts = 0;
    int opens = 0;
    int maps = 0;

private:
    static int fail(int error) {
        errno = error;
        return -1;
    }

    int put(const fb_var_screeninfo &request) {
        ++puts;
        if (pretends) return 0;
        var = request;
        if (keepsFrame) return 0;
        apply(request.xres, request.yres);
        if (puts > 1) return 0;
        var.bits_per_pixel = depthAfterPut;
        if (lineLengthAfterPut != 0) fix.line_length = lineLengthAfterPut;
        if (memoryAfterPut != 0) fix.smem_len = memoryAfterPut;
        return 0;
    }

    void apply(unsigned width, unsigned height) {
        var.xres = var.xres_virtual = width;
        var.yres = var.yres_virtual = height;
        fix.line_length = width * 4 + linePadding;
        fix.smem_len = fix.line_length * height;
        // Never shrinks: an old mapping must not fault.
        if (fix.smem_len > m_fileLength) m_fileLength = fix.smem_len;
        if (::ftruncate(m_file, m_fileLength) != 0) ADD_FAILURE();
    }

    int m_file;
    unsigned m_fileLength = 0;
};

}  // namespace qws::test

#endif
