/**
 * @file fb_client.cpp
 * An ordinary framebuffer program: carries out its arguments on /dev/fb1 and prints one line for
 * each.
 */
#include <fcntl.h>
#include <linux/fb.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

int device = -1;

int result_of(int result) {
    return result == 0 ? 0 : errno;
}

void open_device(const char *) {
    device = open("/dev/fb1", O_RDWR | O_CLOEXEC);
    std::printf("open %d\n", device >= 0 ? 0 : errno);
}

void open_at(const char *) {
    device = openat(AT_FDCWD, "/dev/fb1", O_RDWR);
    std::printf("openat %d\n", device >= 0 ? 0 : errno);
}

void duplicate(const char *) {
    const int copy = dup(device);
    close(device);
    device = copy;
    std::puts("dup");
}

void exists(const char *) {
    std::printf("access %d\n", result_of(access("/dev/fb1", R_OK | W_OK)));
}

void get(const char *) {
    fb_var_screeninfo v{};
    fb_fix_screeninfo f{};
    const int error = result_of(ioctl(device, FBIOGET_VSCREENINFO, &v));
    ioctl(device, FBIOGET_FSCREENINFO, &f);
    std::printf("get %d %ux%u bits %u line %u rgba %u:%u %u:%u %u:%u %u:%u\n", error, v.xres,
                v.yres, v.bits_per_pixel, f.line_length, v.red.offset, v.red.length, v.green.offset,
                v.green.length, v.blue.offset, v.blue.length, v.transp.offset, v.transp.length);
}

void set_mode(const char *mode, unsigned bits, unsigned activate) {
    fb_var_screeninfo v{};
    ioctl(device, FBIOGET_VSCREENINFO, &v);
    std::sscanf(mode, "%ux%u", &v.xres, &v.yres);
    v.xres_virtual = v.xres;
    v.yres_virtual = v.yres;
    v.bits_per_pixel = bits;
    v.activate = activate;
    std::printf("set %d\n", result_of(ioctl(device, FBIOPUT_VSCREENINFO, &v)));
}

void set(const char *mode) {
    set_mode(mode, 32, FB_ACTIVATE_NOW);
}
void set24(const char *mode) {
    set_mode(mode, 24, FB_ACTIVATE_NOW);
}
void try_mode(const char *mode) {
    set_mode(mode, 32, FB_ACTIVATE_TEST);
}

void pan(const char *row) {
    fb_var_screeninfo v{};
    v.yoffset = unsigned(std::atoi(row));
    std::printf("pan %d\n", result_of(ioctl(device, FBIOPAN_DISPLAY, &v)));
}

void harmless(const char *) {
    uint32_t crtc = 0;
    fb_cmap map{};
    std::printf("harmless %d %d %d\n", result_of(ioctl(device, FBIO_WAITFORVSYNC, &crtc)),
                result_of(ioctl(device, FBIOBLANK, FB_BLANK_POWERDOWN)),
                result_of(ioctl(device, FBIOPUTCMAP, &map)));
}

void null_argument(const char *) {
    void *none = nullptr;
    std::printf("null %d\n", result_of(ioctl(device, FBIOGET_VSCREENINFO, none)));
}

void unknown_request(const char *) {
    int word = 0;
    std::printf("unknown %d\n", result_of(ioctl(device, 0x46ff, &word)));
}

/** Writes one 32-bit word at a byte offset of the mapped memory. */
void write_word(const char *words) {
    size_t offset = 0;
    uint32_t value = 0;
    std::sscanf(words, "%zu=%x", &offset, &value);
    fb_fix_screeninfo f{};
    ioctl(device, FBIOGET_FSCREENINFO, &f);
    void *memory = mmap(nullptr, f.smem_len, PROT_READ | PROT_WRITE, MAP_SHARED, device, 0);
    if (memory != MAP_FAILED) std::memcpy(static_cast<char *>(memory) + offset, &value, 4);
    std::printf("write %d\n", memory != MAP_FAILED ? 0 : errno);
}

void map_beyond(const char *) {
    fb_fix_screeninfo f{};
    ioctl(device, FBIOGET_FSCREENINFO, &f);
    void *memory = mmap(nullptr, f.smem_len + 4096u, PROT_READ, MAP_SHARED, device, 0);
    std::printf("beyond %d\n", memory == MAP_FAILED ? errno : 0);
}

/** Another file's first bytes, read through a map: they must be the file's own. */
void map_other(const char *path) {
    const int fd = open(path, O_RDONLY);
    void *memory = mmap(nullptr, 4, PROT_READ, MAP_PRIVATE, fd, 0);
    std::printf("other %.4s\n", memory == MAP_FAILED ? "none" : static_cast<char *>(memory));
}

struct Verb {
    const char *name;
    void (*run)(const char *argument);
};

constexpr Verb kVerbs[] = {
    {"open", open_device},
    {"openat", open_at},
    {"dup", duplicate},
    {"access", exists},
    {"get", get},
    {"set", set},
    {"set24", set24},
    {"try", try_mode},
    {"pan", pan},
    {"harmless", harmless},
    {"null", null_argument},
    {"unknown", unknown_request},
    {"write", write_word},
    {"beyond", map_beyond},
    {"other", map_other},
};

}  // namespace

int main(int argc, char *argv[]) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const size_t colon = word.find(':');
        const std::string name = word.substr(0, colon);
        const char *argument = colon == std::string::npos ? "" : argv[i] + colon + 1;
        for (const Verb &verb : kVerbs) {
            if (name == verb.name) verb.run(argument);
        }
    }
}
