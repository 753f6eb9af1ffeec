#include "fb_device.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "error_line.h"

namespace qws {
namespace {

std::string failure(const char *call) {
    return std::string(call) + " fail! errno:" + std::to_string(errno) + " " + std::strerror(errno);
}

bool isPossible(int width, int height, int depth) {
    return depth == kDepth && width >= 1 && height >= 1 && width <= kLongestSide &&
           height <= kLongestSide;
}

}  // namespace

bool FbDevice::open(const std::string &path) {
    m_path = path;
    m_memory = {};
    m_mode = {};
    m_descriptor = FbDescriptor(m_calls, m_calls.open(path.c_str()));
    std::string problem;
    if (!m_descriptor.isOpen()) {
        problem = failure("open");
        QWS_ERROR("%s %s\n", path.c_str(), problem.c_str());
        return false;
    }
    fb_var_screeninfo var{};
    FbMode mode;
    bool usable = readBack(&var, &mode, &problem);
    if (usable) {
        std::string mapProblem;
        usable = adopt(mode, &mapProblem);
        if (!usable) problem = mapProblem;
    } else if (var.bits_per_pixel != kDepth && isPossible(var.xres, var.yres, kDepth)) {
        usable = change(var, var.xres, var.yres, &problem);
    }
    if (!problem.empty()) QWS_ERROR("%s %s\n", path.c_str(), problem.c_str());
    return usable;
}

bool FbDevice::setMode(int width, int height, int depth) {
    if (!isPossible(width, height, depth)) {
        QWS_ERROR("%s mode %dx%d-%d invalid\n", m_path.c_str(), width, height, depth);
        return false;
    }
    if (!m_descriptor.isOpen()) m_descriptor = FbDescriptor(m_calls, m_calls.open(m_path.c_str()));
    std::string problem;
    fb_var_screeninfo before{};
    if (!m_descriptor.isOpen()) {
        problem = failure("open");
    } else if (m_calls.ioctl(m_descriptor.get(), FBIOGET_VSCREENINFO, &before) < 0) {
        problem = failure("FBIOGET_VSCREENINFO");
    } else if (change(before, width, height, &problem)) {
        return true;
    }
    QWS_ERROR("%s mode %dx%d-%d refused: %s\n", m_path.c_str(), width, height, depth,
              problem.c_str());
    return false;
}

void FbDevice::write(int x, int y, const uint32_t *painted, int count) {
    if (!isUsable() || y < 0 || y >= m_mode.height || x >= m_mode.width || count <= 0) return;
    const int skipped = std::max(0, -x);
    if (skipped >= count) return;
    x += skipped;
    const int inside = std::min(count - skipped, m_mode.width - x);
    writeRow(m_mode.layout, painted + skipped, row(y) + static_cast<size_t>(x) * sizeof(uint32_t),
             static_cast<size_t>(inside));
}

/// @return false with `problem` filled; `var` then holds what was read of it.
bool FbDevice::readBack(fb_var_screeninfo *var, FbMode *mode, std::string *problem) {
    fb_fix_screeninfo fix{};
    if (m_calls.ioctl(m_descriptor.get(), FBIOGET_VSCREENINFO, var) < 0) {
        *problem = failure("FBIOGET_VSCREENINFO");
        return false;
    }
    if (m_calls.ioctl(m_descriptor.get(), FBIOGET_FSCREENINFO, &fix) < 0) {
        *problem = failure("FBIOGET_FSCREENINFO");
        return false;
    }
    const std::optional<FbMode> read = readMode(*var, fix, problem);
    if (read) *mode = *read;
    return read.has_value();
}

/// Maps the mode's memory before the old one goes, so that a failure costs nothing.
bool FbDevice::adopt(const FbMode &mode, std::string *problem) {
    void *memory = m_calls.map(m_descriptor.get(), mode.mapLength);
    if (memory == MAP_FAILED || !memory) {
        *problem = failure("mmap");
        return false;
    }
    m_memory = FbMap(m_calls, memory, mode.mapLength);
    m_mode = mode;
    blank();
    return true;
}

/// Asks, reads back and maps; a driver that ends up elsewhere gets the old mode again.
bool FbDevice::change(const fb_var_screeninfo &before, int width, int height,
                      std::string *problem) {
    fb_var_screeninfo request = modeRequest(before, width, height);
    if (m_calls.ioctl(m_descriptor.get(), FBIOPUT_VSCREENINFO, &request) < 0) {
        *problem = failure("FBIOPUT_VSCREENINFO");
    } else {
        fb_var_screeninfo after{};
        FbMode mode;
        const bool readable = readBack(&after, &mode, problem);
        if (readable && (mode.width != width || mode.height != height)) {
            *problem =
                "driver stays at " + std::to_string(mode.width) + "x" + std::to_string(mode.height);
        } else if (readable && adopt(mode, problem)) {
            return true;
        }
    }
    fb_var_screeninfo old = before;
    old.activate = FB_ACTIVATE_NOW;
    if (m_calls.ioctl(m_descriptor.get(), FBIOPUT_VSCREENINFO, &old) < 0) {
        *problem += ", old mode: " + failure("FBIOPUT_VSCREENINFO");
    }
    return false;
}

/// The visible pixels only: the end of a padded row may be somebody else's.
void FbDevice::blank() {
    for (int y = 0; y < m_mode.height; ++y) {
        std::memset(row(y), 0, static_cast<size_t>(m_mode.width) * sizeof(uint32_t));
    }
}

unsigned char *FbDevice::row(int y) const {
    return m_memory.bytes() + m_mode.origin + static_cast<size_t>(y) * m_mode.lineLength;
}

}  // namespace qws
