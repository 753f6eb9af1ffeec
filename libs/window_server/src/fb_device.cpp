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

/// What of a stretch lies within the frame.
struct Span {
    size_t skipped;  ///< before the frame's first
    size_t length;
};

Span inside(int first, int length, int limit) {
    const int64_t begin = std::max<int64_t>(first, 0);
    const int64_t end = std::min<int64_t>(int64_t{first} + length, limit);
    return {static_cast<size_t>(begin - first),
            static_cast<size_t>(std::max<int64_t>(end - begin, 0))};
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
    write(x, y, painted, count, 1, 0);
}

void FbDevice::write(int x, int y, const uint32_t *painted, int count, int rows,
                     size_t lineLength) {
    const Span across = inside(x, count, m_mode.width);
    const Span down = inside(y, rows, m_mode.height);
    if (!isUsable() || across.length == 0 || down.length == 0) return;
    const auto *first = reinterpret_cast<const unsigned char *>(painted + across.skipped) +
                        down.skipped * lineLength;
    const auto column = static_cast<size_t>(std::max(x, 0));
    writeRows(m_mode.layout, {first, lineLength},
              {row(std::max(y, 0)) + column * sizeof(uint32_t), m_mode.lineLength}, across.length,
              down.length);
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
    switchOn();
    return true;
}

/// Asks, reads back and maps; a driver that ends up elsewhere gets the old mode again.
bool FbDevice::change(const fb_var_screeninfo &before, int width, int height,
                      std::string *problem) {
    fb_var_screeninfo request = modeRequest(before, width, height);
    if (isUsable() && (width < m_mode.width || height < m_mode.height)) clearForSmaller();
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

/// A driver may take a smaller mode and yet go on showing the old size, and from then on look at
/// the new size only when it takes over what is drawn: nothing old must be beyond it by then.
void FbDevice::clearForSmaller() {
    blank();
    m_calls.sync(m_descriptor.get());
}

/// A driver without a console on this device may leave the display off until it is asked. Others do
/// not know the request, which is as good.
void FbDevice::switchOn() {
    void *const on = reinterpret_cast<void *>(FB_BLANK_UNBLANK);
    if (m_calls.ioctl(m_descriptor.get(), FBIOBLANK, on) == 0) return;
    if (errno == EINVAL || errno == ENOTTY) return;
    QWS_ERROR("%s %s\n", m_path.c_str(), failure("FBIOBLANK").c_str());
}

unsigned char *FbDevice::row(int y) const {
    return m_memory.bytes() + m_mode.origin + static_cast<size_t>(y) * m_mode.lineLength;
}

}  // namespace qws
