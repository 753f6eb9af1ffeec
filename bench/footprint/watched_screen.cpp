#include "watched_screen.h"

#include <fcntl.h>
#include <linux/fb.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace footprint {

WatchedScreen::WatchedScreen(const char *device) {
    const int file = ::open(device, O_RDWR | O_CLOEXEC);
    fb_var_screeninfo var{};
    fb_fix_screeninfo fix{};
    struct stat status {};
    if (file < 0 || ::ioctl(file, FBIOGET_VSCREENINFO, &var) < 0 ||
        ::ioctl(file, FBIOGET_FSCREENINFO, &fix) < 0 || ::fstat(file, &status) < 0) {
        throw std::runtime_error(std::string(device) + ": no framebuffer");
    }
    const size_t pixel = var.bits_per_pixel / 8;
    m_rowBytes = var.xres * pixel;
    m_rows = var.yres;
    m_stride = fix.line_length;
    m_length = fix.smem_len;
    m_device = status.st_dev;
    m_inode = status.st_ino;
    void *memory = ::mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (memory == MAP_FAILED) throw std::runtime_error(std::string(device) + ": cannot be mapped");
    m_memory = static_cast<unsigned char *>(memory);
    m_first = m_memory + var.yoffset * m_stride + var.xoffset * pixel;
}

WatchedScreen::~WatchedScreen() {
    ::munmap(m_memory, m_length);
}

void WatchedScreen::clear() {
    for (size_t y = 0; y < m_rows; ++y)
        std::memset(row(y), 0, m_rowBytes);
}

std::string WatchedScreen::picture() const {
    std::string all;
    all.reserve(frameBytes());
    for (size_t y = 0; y < m_rows; ++y)
        all.append(reinterpret_cast<const char *>(row(y)), m_rowBytes);
    return all;
}

bool WatchedScreen::shows(const std::string &wanted) {
    if (wanted.size() != frameBytes() || !rowShows(wanted, m_missing)) return false;
    for (size_t y = 0; y < m_rows; ++y) {
        if (rowShows(wanted, y)) continue;
        m_missing = y;
        return false;
    }
    return true;
}

bool WatchedScreen::rowShows(const std::string &wanted, size_t y) const {
    return std::memcmp(row(y), wanted.data() + y * m_rowBytes, m_rowBytes) == 0;
}

}  // namespace footprint
