#include "fbemu_device.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace fbemu {
namespace {

struct Format {
    const char *name;
    uint32_t bits_per_pixel;
    FbemuChannel red, green, blue, alpha;
};

/** Channels are named from the most significant bits of the pixel to the least. */
constexpr Format kFormats[] = {
    {"argb8888", 32, {16, 8}, {8, 8}, {0, 8}, {24, 8}},
    {"xrgb8888", 32, {16, 8}, {8, 8}, {0, 8}, {0, 0}},
    {"rgba8888", 32, {24, 8}, {16, 8}, {8, 8}, {0, 8}},
    {"abgr8888", 32, {0, 8}, {8, 8}, {16, 8}, {24, 8}},
    {"bgra8888", 32, {8, 8}, {16, 8}, {24, 8}, {0, 8}},
    {"rgb565", 16, {11, 5}, {5, 6}, {0, 5}, {0, 0}},
};

const Format *find_format(const char *name) {
    for (const Format &format : kFormats) {
        if (std::strcmp(format.name, name) == 0) return &format;
    }
    return nullptr;
}

/** Bytes of a row, or 0 when `rows` of them do not fit the memory. */
uint32_t row_bytes(uint64_t width, uint64_t rows, uint32_t bits_per_pixel, uint32_t padding) {
    if (width == 0 || rows == 0 || width > kFbemuMemoryBytes) return 0;
    const uint64_t bytes = width * bits_per_pixel / 8 + padding;
    if (bytes > kFbemuMemoryBytes || bytes * rows > kFbemuMemoryBytes) return 0;
    return static_cast<uint32_t>(bytes);
}

bool make_header(const Options &options, FbemuHeader *header) {
    const Format *format = find_format(options.format);
    if (format == nullptr) return false;
    const uint32_t bytes =
        row_bytes(options.width, options.height, format->bits_per_pixel, options.padding);
    if (bytes == 0) return false;
    *header = {};
    header->version = kFbemuVersion;
    header->width = header->virtual_width = options.width;
    header->height = header->virtual_height = options.height;
    header->bits_per_pixel = format->bits_per_pixel;
    header->line_length = bytes;
    header->padding = options.padding;
    header->red = format->red;
    header->green = format->green;
    header->blue = format->blue;
    header->alpha = format->alpha;
    header->behaviour = options.behaviour;
    return true;
}

/** Makes the sequence odd as long as it lives. */
class HeaderWriter {
public:
    explicit HeaderWriter(FbemuHeader *header) : m_header(header) {
        __atomic_add_fetch(&m_header->sequence, 1, __ATOMIC_ACQ_REL);
    }
    ~HeaderWriter() { __atomic_add_fetch(&m_header->sequence, 1, __ATOMIC_RELEASE); }
    HeaderWriter(const HeaderWriter &) = delete;
    HeaderWriter &operator=(const HeaderWriter &) = delete;

private:
    FbemuHeader *m_header;
};

fb_bitfield bitfield(FbemuChannel channel) {
    return {channel.offset, channel.length, 0};
}

int get_variable(FbemuHeader *header, void *argument) {
    fb_var_screeninfo info{};
    info.xres = header->width;
    info.yres = header->height;
    info.xres_virtual = header->virtual_width;
    info.yres_virtual = header->virtual_height;
    info.xoffset = header->xoffset;
    info.yoffset = header->yoffset;
    info.bits_per_pixel = header->bits_per_pixel;
    info.red = bitfield(header->red);
    info.green = bitfield(header->green);
    info.blue = bitfield(header->blue);
    info.transp = bitfield(header->alpha);
    info.height = info.width = UINT32_MAX;  // millimetres: unknown
    std::memcpy(argument, &info, sizeof info);
    return 0;
}

int get_fixed(FbemuHeader *header, void *argument) {
    fb_fix_screeninfo info{};
    std::strncpy(info.id, "fbemu", sizeof info.id - 1);
    info.smem_len = kFbemuMemoryBytes;
    info.type = FB_TYPE_PACKED_PIXELS;
    info.visual = FB_VISUAL_TRUECOLOR;
    info.ypanstep = 1;
    info.line_length = header->line_length;
    std::memcpy(argument, &info, sizeof info);
    return 0;
}

/**
 * A mode keeps the pixel format: another depth than the present one is refused, channel places are
 * the driver's own whatever is asked for. The memory keeps its bytes.
 */
int put_variable(FbemuHeader *header, void *argument) {
    __atomic_add_fetch(&header->mode_requests, 1, __ATOMIC_RELAXED);
    if (header->behaviour & kFbemuRefuseMode) return EINVAL;
    if (header->behaviour & kFbemuPretendMode) return 0;
    fb_var_screeninfo info;
    std::memcpy(&info, argument, sizeof info);
    if (info.bits_per_pixel != header->bits_per_pixel) return EINVAL;
    const uint32_t columns = info.xres_virtual > info.xres ? info.xres_virtual : info.xres;
    const uint32_t rows = info.yres_virtual > info.yres ? info.yres_virtual : info.yres;
    const uint32_t bytes = row_bytes(columns, rows, header->bits_per_pixel, header->padding);
    if (info.xres == 0 || info.yres == 0 || bytes == 0) return EINVAL;
    if (info.xoffset > columns - info.xres || info.yoffset > rows - info.yres) return EINVAL;
    if ((info.activate & FB_ACTIVATE_MASK) != FB_ACTIVATE_TEST) {
        HeaderWriter writer(header);
        header->width = info.xres;
        header->height = info.yres;
        header->virtual_width = columns;
        header->virtual_height = rows;
        header->xoffset = info.xoffset;
        header->yoffset = info.yoffset;
        header->line_length = bytes;
        ++header->mode_changes;
    }
    return get_variable(header, argument);
}

int pan(FbemuHeader *header, void *argument) {
    fb_var_screeninfo info;
    std::memcpy(&info, argument, sizeof info);
    if (info.xoffset > header->virtual_width - header->width) return EINVAL;
    if (info.yoffset > header->virtual_height - header->height) return EINVAL;
    HeaderWriter writer(header);
    header->xoffset = info.xoffset;
    header->yoffset = info.yoffset;
    return 0;
}

int accept(FbemuHeader *, void *) {
    return 0;
}

struct Request {
    unsigned long number;
    bool has_record;  ///< the argument points to a record and must not be null
    int (*answer)(FbemuHeader *, void *);
};

constexpr Request kRequests[] = {
    {FBIOGET_VSCREENINFO, true, get_variable},
    {FBIOGET_FSCREENINFO, true, get_fixed},
    {FBIOPUT_VSCREENINFO, true, put_variable},
    {FBIOPAN_DISPLAY, true, pan},
    {FBIOPUTCMAP, true, accept},
    {FBIO_WAITFORVSYNC, false, accept},
    {FBIOBLANK, false,
     [](FbemuHeader *header, void *argument) {
         header->blank = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(argument));
         return 0;
     }},
};

const Request *find_request(unsigned long number) {
    for (const Request &request : kRequests) {
        // A request passed as int arrives sign-extended; only the low half counts, as in the
        // kernel.
        if (static_cast<uint32_t>(request.number) == static_cast<uint32_t>(number)) return &request;
    }
    return nullptr;
}

bool has_header(int fd) {
    FbemuHeader header{};
    return pread(fd, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header) &&
           header.magic == kFbemuMagic && header.version == kFbemuVersion;
}

int write_header(int fd, const Options &options) {
    FbemuHeader header;
    if (!make_header(options, &header)) return EINVAL;
    if (ftruncate(fd, kFbemuFileBytes) != 0) return errno;
    header.magic = kFbemuMagic;
    if (pwrite(fd, &header, sizeof header, 0) != static_cast<ssize_t>(sizeof header)) return EIO;
    return 0;
}

bool is_set(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && std::strcmp(value, "1") == 0;
}

}  // namespace

Options options_from_environment() {
    Options options;
    unsigned width = 0, height = 0;
    const char *mode = std::getenv("FBEMU_MODE");
    if (mode != nullptr && std::sscanf(mode, "%5ux%5u", &width, &height) == 2) {
        options.width = width;
        options.height = height;
    }
    unsigned padding = 0;
    const char *text = std::getenv("FBEMU_PADDING");
    if (text != nullptr && std::sscanf(text, "%5u", &padding) == 1) options.padding = padding;
    const char *format = std::getenv("FBEMU_FORMAT");
    if (format != nullptr && is_format(format)) options.format = format;
    if (is_set("FBEMU_REFUSE_MODE")) options.behaviour |= kFbemuRefuseMode;
    if (is_set("FBEMU_PRETEND_MODE")) options.behaviour |= kFbemuPretendMode;
    return options;
}

bool is_format(const char *name) {
    return find_format(name) != nullptr;
}

int format_file(int fd, const Options &options) {
    // Two processes may open a fresh file at the same moment; one of them formats it.
    if (flock(fd, LOCK_EX) != 0) return errno;
    const int result = has_header(fd) ? 0 : write_header(fd, options);
    flock(fd, LOCK_UN);
    return result;
}

FbemuHeader *map_header(int fd, bool writable) {
    struct stat status;
    if (fstat(fd, &status) != 0) return nullptr;
    if (status.st_size < static_cast<off_t>(kFbemuFileBytes) || !has_header(fd)) {
        errno = ENODEV;
        return nullptr;
    }
    void *page = mmap(nullptr, kFbemuPixelsOffset, writable ? PROT_READ | PROT_WRITE : PROT_READ,
                      MAP_SHARED, fd, 0);
    return page == MAP_FAILED ? nullptr : static_cast<FbemuHeader *>(page);
}

bool is_request(unsigned long request) {
    return find_request(request) != nullptr;
}

int answer(FbemuHeader *header, unsigned long number, void *argument) {
    const Request *request = find_request(number);
    if (request == nullptr) return ENOTTY;
    if (request->has_record && argument == nullptr) return EFAULT;
    return request->answer(header, argument);
}

}  // namespace fbemu
