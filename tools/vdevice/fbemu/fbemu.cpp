/**
 * @file fbemu.cpp
 * The library that is preloaded: it answers for /dev/fb1 on a shared file.
 *
 * The file is FBEMU_FILE, else /dev/fb1 itself (a regular file bound over it in a sandbox). A file
 * without a header is formatted at its first opening (see options_from_environment()). With
 * FBEMU_DIE_WITH_PARENT=1 the process is killed when its parent ends; with FBEMU_STATX_BY_STAT=1
 * statx() is carried out by fstatat() (statx_by_stat.cpp).
 *
 * A descriptor is the framebuffer's when it is open on that very file: descriptors need no book
 * keeping, and duplicated and inherited ones work. Everything else goes to the kernel by system
 * call, not to the next library's function: these wrappers run before the dynamic linker can look
 * one up, and in the middle of allocators.
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "fbemu_device.h"

#define FBEMU_API extern "C" __attribute__((visibility("default")))

namespace {

constexpr char kDevice[] = "/dev/fb1";

const char *backing_file() {
    const char *file = std::getenv("FBEMU_FILE");
    return file != nullptr && *file != '\0' ? file : kDevice;
}

bool is_device(const char *path) {
    return path != nullptr && std::strcmp(path, kDevice) == 0;
}

/** The backing file as this process came to know it: identity and header, set once. */
struct Backing {
    std::mutex mutex;
    std::atomic<FbemuHeader *> header{nullptr};
    dev_t device = 0;
    ino_t inode = 0;
};

// Never destroyed: other threads may still use the framebuffer while the process ends.
Backing &backing() {
    static Backing *const instance = new Backing;
    return *instance;
}

int raw_open(int folder, const char *path, int flags, mode_t mode) {
    return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

/** Formats and maps the backing file at its first use; 0 or an errno value. */
int attach(Backing &state) {
    if (state.header.load(std::memory_order_acquire) != nullptr) return 0;
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (state.header.load(std::memory_order_relaxed) != nullptr) return 0;
    const int fd = raw_open(AT_FDCWD, backing_file(), O_RDWR | O_CLOEXEC, 0);
    if (fd < 0) return errno;
    struct stat status;
    int result = fstat(fd, &status) != 0 ? errno : 0;
    if (result == 0 && !S_ISREG(status.st_mode)) result = ENODEV;
    if (result == 0) result = fbemu::format_file(fd, fbemu::options_from_environment());
    FbemuHeader *header = result == 0 ? fbemu::map_header(fd, true) : nullptr;
    if (result == 0 && header == nullptr) result = errno;
    syscall(SYS_close, fd);
    if (result != 0) return result;
    state.device = status.st_dev;
    state.inode = status.st_ino;
    state.header.store(header, std::memory_order_release);
    return 0;
}

int open_device(int flags) {
    const int error = attach(backing());
    if (error != 0) {
        errno = error;
        return -1;
    }
    // Neither creation nor truncation means anything to a device.
    return raw_open(AT_FDCWD, backing_file(), flags & ~(O_CREAT | O_EXCL | O_TRUNC), 0);
}

int open_at(int folder, const char *path, int flags, mode_t mode) {
    return is_device(path) ? open_device(flags) : raw_open(folder, path, flags, mode);
}

FbemuHeader *header_of(int fd) {
    Backing &state = backing();
    FbemuHeader *header = state.header.load(std::memory_order_acquire);
    if (header == nullptr || fd < 0) return nullptr;
    const int saved_errno = errno;
    struct stat status;
    const bool same =
        fstat(fd, &status) == 0 && status.st_dev == state.device && status.st_ino == state.inode;
    errno = saved_errno;
    return same ? header : nullptr;
}

void *raw_mmap(void *address, size_t length, int protection, int flags, int fd, off64_t offset) {
#ifdef SYS_mmap2
    constexpr off64_t kUnit = 4096;
    if (offset % kUnit != 0) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    return reinterpret_cast<void *>(syscall(SYS_mmap2, address, length, protection, flags, fd,
                                            static_cast<long>(offset / kUnit)));
#else
    return reinterpret_cast<void *>(
        syscall(SYS_mmap, address, length, protection, flags, fd, offset));
#endif
}

void *map(void *address, size_t length, int protection, int flags, int fd, off64_t offset) {
    FbemuHeader *header = header_of(fd);
    if (header == nullptr) return raw_mmap(address, length, protection, flags, fd, offset);
    if (offset < 0 || static_cast<uint64_t>(offset) > kFbemuMemoryBytes ||
        length > kFbemuMemoryBytes - static_cast<uint64_t>(offset)) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    void *memory = raw_mmap(address, length, protection, flags, fd, offset + kFbemuPixelsOffset);
    if (memory != MAP_FAILED) __atomic_add_fetch(&header->maps, 1, __ATOMIC_RELAXED);
    return memory;
}

const char *existing(const char *path) {
    return is_device(path) ? backing_file() : path;
}

__attribute__((constructor)) void die_with_parent() {
    const char *value = std::getenv("FBEMU_DIE_WITH_PARENT");
    if (value == nullptr || std::strcmp(value, "1") != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

mode_t mode_argument(int flags, va_list arguments) {
    const bool creates = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return creates ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

}  // namespace

FBEMU_API int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return open_at(AT_FDCWD, path, flags, mode);
}

FBEMU_API int open64(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return open_at(AT_FDCWD, path, flags | O_LARGEFILE, mode);
}

FBEMU_API int openat(int folder, const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return open_at(folder, path, flags, mode);
}

FBEMU_API int openat64(int folder, const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return open_at(folder, path, flags | O_LARGEFILE, mode);
}

// What fortified programs call in place of the four above when no mode is given.
FBEMU_API int __open_2(const char *path, int flags) {
    return open_at(AT_FDCWD, path, flags, 0);
}

FBEMU_API int __open64_2(const char *path, int flags) {
    return open_at(AT_FDCWD, path, flags | O_LARGEFILE, 0);
}

FBEMU_API int __openat_2(int folder, const char *path, int flags) {
    return open_at(folder, path, flags, 0);
}

FBEMU_API int __openat64_2(int folder, const char *path, int flags) {
    return open_at(folder, path, flags | O_LARGEFILE, 0);
}

FBEMU_API int access(const char *path, int mode) noexcept {
    return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, existing(path), mode));
}

FBEMU_API int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    FbemuHeader *header = fbemu::is_request(request) ? header_of(fd) : nullptr;
    if (header == nullptr) return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
    const std::lock_guard<std::mutex> lock(backing().mutex);
    const int error = fbemu::answer(header, request, argument);
    if (error == 0) return 0;
    errno = error;
    return -1;
}

FBEMU_API void *mmap(void *address, size_t length, int protection, int flags, int fd,
                     off_t offset) noexcept {
    return map(address, length, protection, flags, fd, offset);
}

FBEMU_API void *mmap64(void *address, size_t length, int protection, int flags, int fd,
                       off64_t offset) noexcept {
    return map(address, length, protection, flags, fd, offset);
}
