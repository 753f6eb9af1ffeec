#include "framebuffer_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vdevice {
namespace {

/** One channel of a pixel, widened to 8 bits. */
uint32_t channel_value(uint32_t pixel, FbemuChannel channel, uint32_t when_absent) {
    if (channel.length == 0) return when_absent;
    const uint32_t largest = (1u << channel.length) - 1;
    return ((pixel >> channel.offset & largest) * 255 + largest / 2) / largest;
}

bool is_argb32(const FbemuHeader &header) {
    return header.bits_per_pixel == 32 && header.red.offset == 16 && header.green.offset == 8 &&
           header.blue.offset == 0 && header.alpha.offset == 24 && header.alpha.length == 8;
}

uint32_t to_argb32(const FbemuHeader &header, uint32_t pixel) {
    return channel_value(pixel, header.alpha, 255) << 24 |
           channel_value(pixel, header.red, 0) << 16 | channel_value(pixel, header.green, 0) << 8 |
           channel_value(pixel, header.blue, 0);
}

void convert_row(const FbemuHeader &header, const unsigned char *from, uint32_t *to) {
    const size_t bytes = header.bits_per_pixel / 8;
    if (is_argb32(header)) {
        std::memcpy(to, from, header.width * bytes);
        return;
    }
    for (uint32_t x = 0; x < header.width; ++x) {
        uint32_t pixel = 0;
        std::memcpy(&pixel, from + x * bytes, bytes);
        to[x] = to_argb32(header, pixel);
    }
}

/** Offset of a visible row in the file. */
size_t row_offset(const FbemuHeader &header, uint32_t y) {
    return kFbemuPixelsOffset + size_t(y + header.yoffset) * header.line_length +
           size_t(header.xoffset) * (header.bits_per_pixel / 8);
}

std::string message(const std::string &path, int error) {
    return path + ": " + std::strerror(error);
}

}  // namespace

bool FramebufferFile::create(const std::string &path, const fbemu::Options &options,
                             std::string *error) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const int result = fd < 0 ? errno : fbemu::format_file(fd, options);
    if (fd >= 0) ::close(fd);
    if (result != 0) *error = message(path, result);
    return result == 0;
}

bool FramebufferFile::open(const std::string &path, std::string *error) {
    close();
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    const FbemuHeader *header = fd < 0 ? nullptr : fbemu::map_header(fd, false);
    void *file = MAP_FAILED;
    if (header != nullptr) {
        munmap(const_cast<FbemuHeader *>(header), kFbemuPixelsOffset);
        file = mmap(nullptr, kFbemuFileBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    }
    const int result = file == MAP_FAILED ? errno : 0;
    if (fd >= 0) ::close(fd);
    if (result == 0) m_file = static_cast<unsigned char *>(file);
    if (result != 0) *error = message(path, result);
    return result == 0;
}

void FramebufferFile::close() {
    if (m_file != nullptr) munmap(m_file, kFbemuFileBytes);
    m_file = nullptr;
}

FbemuHeader FramebufferFile::header() const {
    const auto *shared = reinterpret_cast<const FbemuHeader *>(m_file);
    FbemuHeader copy;
    uint32_t sequence;
    do {
        sequence = __atomic_load_n(&shared->sequence, __ATOMIC_ACQUIRE);
        std::memcpy(&copy, shared, sizeof copy);
        __atomic_thread_fence(__ATOMIC_ACQUIRE);
    } while (sequence % 2 != 0 || sequence != __atomic_load_n(&shared->sequence, __ATOMIC_RELAXED));
    return copy;
}

void FramebufferFile::setBehaviour(uint32_t bits) {
    __atomic_store_n(&reinterpret_cast<FbemuHeader *>(m_file)->behaviour, bits, __ATOMIC_RELEASE);
}

QImage FramebufferFile::layer() const {
    const FbemuHeader now = header();
    QImage image(int(now.width), int(now.height), QImage::Format_ARGB32);
    for (uint32_t y = 0; y < now.height; ++y) {
        convert_row(now, m_file + row_offset(now, y),
                    reinterpret_cast<uint32_t *>(image.scanLine(int(y))));
    }
    return image;
}

std::string FramebufferFile::bytes() const {
    const FbemuHeader now = header();
    const size_t row = size_t(now.width) * (now.bits_per_pixel / 8);
    std::string all;
    all.reserve(row * now.height);
    for (uint32_t y = 0; y < now.height; ++y) {
        all.append(reinterpret_cast<const char *>(m_file) + row_offset(now, y), row);
    }
    return all;
}

}  // namespace vdevice
