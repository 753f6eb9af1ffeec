/**
 * @file faults.cpp
 * The library that is preloaded before libfbemu.so: calls fail when and as the test says
 * (fault_plan.h). Without FAULTS_FILE nothing ever does.
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "fault_plan.h"

#define FAULTS_API extern "C" __attribute__((visibility("default")))

namespace {

using faults::Call;
using faults::FaultPlan;

constexpr char kRecordFolder[] = "/mnt/usr/config";
constexpr char kFramebuffer[] = "/dev/fb1";
constexpr int kDescriptors = 4096;

FaultPlan *g_plan;
std::atomic<bool> g_watched[kDescriptors];
std::atomic<bool> g_loading{true};  ///< until the framebuffer is opened

bool is_watched(const char *path) {
    return path && (std::strncmp(path, kRecordFolder, sizeof kRecordFolder - 1) == 0 ||
                    std::strcmp(path, kFramebuffer) == 0);
}

bool is_watched(int fd) {
    return fd >= 0 && fd < kDescriptors && g_watched[fd].load(std::memory_order_relaxed);
}

int watch(int fd) {
    if (fd >= 0 && fd < kDescriptors) g_watched[fd].store(true, std::memory_order_relaxed);
    return fd;
}

/** 0 when this call is to succeed, else what it fails with. */
int fault_of(Call call) {
    FaultPlan *plan = g_plan;
    if (!plan) return 0;
    if (call != Call::kMalloc) {
        const uint32_t position = plan->traced.fetch_add(1);
        if (position < faults::kTraceLength) plan->trace[position].store(call);
    }
    if (plan->call.load() != call || plan->before.fetch_sub(1) > 0) return 0;
    if (plan->times.fetch_sub(1) <= 0) return 0;
    plan->fired.fetch_add(1);
    return plan->error.load();
}

/** True when the call fails; errno is then set. */
bool fails(Call call) {
    const int error = fault_of(call);
    if (error <= 0) return false;
    errno = error;
    return true;
}

/** The same function of the next library. */
template <typename Function>
Function *next(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

#ifdef SYS_mmap2
constexpr long kMapCall = SYS_mmap2;
#else
constexpr long kMapCall = SYS_mmap;
#endif

__attribute__((constructor)) void map_plan() {
    const char *file = std::getenv("FAULTS_FILE");
    const int fd = file ? static_cast<int>(syscall(SYS_openat, AT_FDCWD, file, O_RDWR)) : -1;
    if (fd < 0) return;
    void *memory = reinterpret_cast<void *>(
        syscall(kMapCall, nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0));
    syscall(SYS_close, fd);
    if (memory != MAP_FAILED) g_plan = static_cast<FaultPlan *>(memory);
}

mode_t mode_argument(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

template <typename Open>
int watched_open(const char *path, Open open_it) {
    if (!is_watched(path)) return open_it();
    if (std::strcmp(path, kFramebuffer) == 0) g_loading = false;
    return fails(Call::kOpen) ? -1 : watch(open_it());
}

template <typename Transfer>
ssize_t transfer(Call call, int fd, size_t size, Transfer transfer_it) {
    const int error = is_watched(fd) ? fault_of(call) : 0;
    if (error == faults::kHalf) return transfer_it(std::max<size_t>(size / 2, 1));
    if (error == 0) return transfer_it(size);
    errno = error;
    return -1;
}

}  // namespace

FAULTS_API int open(const char *path, int flags, ...) {
    static const auto real = next<int(const char *, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return watched_open(path, [&] { return real(path, flags, mode); });
}

FAULTS_API int open64(const char *path, int flags, ...) {
    static const auto real = next<int(const char *, int, ...)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return watched_open(path, [&] { return real(path, flags, mode); });
}

FAULTS_API int openat(int folder, const char *path, int flags, ...) {
    static const auto real = next<int(int, const char *, int, ...)>("openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return watched_open(path, [&] { return real(folder, path, flags, mode); });
}

FAULTS_API int mkostemps(char *pattern, int suffix, int flags) {
    static const auto real = next<int(char *, int, int)>("mkostemps");
    return watched_open(pattern, [&] { return real(pattern, suffix, flags); });
}

FAULTS_API int mkostemps64(char *pattern, int suffix, int flags) {
    static const auto real = next<int(char *, int, int)>("mkostemps64");
    return watched_open(pattern, [&] { return real(pattern, suffix, flags); });
}

FAULTS_API ssize_t read(int fd, void *buffer, size_t size) {
    static const auto real = next<ssize_t(int, void *, size_t)>("read");
    return transfer(Call::kRead, fd, size, [&](size_t part) { return real(fd, buffer, part); });
}

FAULTS_API ssize_t write(int fd, const void *buffer, size_t size) {
    static const auto real = next<ssize_t(int, const void *, size_t)>("write");
    return transfer(Call::kWrite, fd, size, [&](size_t part) { return real(fd, buffer, part); });
}

FAULTS_API int fsync(int fd) {
    static const auto real = next<int(int)>("fsync");
    return is_watched(fd) && fails(Call::kFsync) ? -1 : real(fd);
}

FAULTS_API int fchmod(int fd, mode_t mode) noexcept {
    static const auto real = next<int(int, mode_t)>("fchmod");
    return is_watched(fd) && fails(Call::kFchmod) ? -1 : real(fd, mode);
}

FAULTS_API int close(int fd) {
    static const auto real = next<int(int)>("close");
    if (!is_watched(fd)) return real(fd);
    g_watched[fd].store(false, std::memory_order_relaxed);
    const int result = real(fd);
    return fails(Call::kClose) ? -1 : result;
}

FAULTS_API int rename(const char *from, const char *to) noexcept {
    static const auto real = next<int(const char *, const char *)>("rename");
    return is_watched(to) && fails(Call::kRename) ? -1 : real(from, to);
}

FAULTS_API int ioctl(int fd, unsigned long request, ...) noexcept {
    static const auto real = next<int(int, unsigned long, ...)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return is_watched(fd) && fails(Call::kIoctl) ? -1 : real(fd, request, argument);
}

FAULTS_API void *mmap(void *address, size_t length, int protection, int flags, int fd,
                      off_t offset) noexcept {
    static const auto real = next<void *(void *, size_t, int, int, int, off_t)>("mmap");
    if (is_watched(fd) && fails(Call::kMmap)) return MAP_FAILED;
    return real(address, length, protection, flags, fd, offset);
}

FAULTS_API void *mmap64(void *address, size_t length, int protection, int flags, int fd,
                        off64_t offset) noexcept {
    static const auto real = next<void *(void *, size_t, int, int, int, off64_t)>("mmap64");
    if (is_watched(fd) && fails(Call::kMmap)) return MAP_FAILED;
    return real(address, length, protection, flags, fd, offset);
}

#ifdef FAULTS_MALLOC  // a sanitizer has its own

FAULTS_API void *__libc_malloc(size_t size);

namespace {

struct Range {
    uintptr_t begin, end;
};

/** The code of app_gui, its libraries, and what `new` is. */
constexpr int kModules = 4;
Range g_modules[kModules];
std::atomic<int> g_module_count;

bool is_ours(const char *name) {
    if (!name || *name == '\0') return true;  // the program itself
    constexpr const char *kLibraries[] = {"librecord_codec", "libcommand_protocol", "libstdc++"};
    return std::any_of(std::begin(kLibraries), std::end(kLibraries),
                       [&](const char *library) { return std::strstr(name, library); });
}

int note_module(dl_phdr_info *module, size_t, void *) {
    const int count = g_module_count;
    if (!is_ours(module->dlpi_name) || count == kModules) return 0;
    Range range{UINTPTR_MAX, 0};
    for (int i = 0; i < module->dlpi_phnum; ++i) {
        const ElfW(Phdr) &segment = module->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD) continue;
        const uintptr_t begin = module->dlpi_addr + segment.p_vaddr;
        range.begin = std::min(range.begin, begin);
        range.end = std::max(range.end, begin + segment.p_memsz);
    }
    g_modules[count] = range;
    g_module_count = count + 1;
    return 0;
}

__attribute__((constructor)) void note_modules() {
    dl_iterate_phdr(note_module, nullptr);
}

bool is_message_thread() {
    char name[16] = "";
    return prctl(PR_GET_NAME, name) == 0 && std::strcmp(name, "app_gui_msg") == 0;
}

bool counts(const void *caller) {
    if (!g_plan || g_plan->call.load(std::memory_order_relaxed) != Call::kMalloc) return false;
    const auto address = reinterpret_cast<uintptr_t>(caller);
    const bool ours = std::any_of(g_modules, g_modules + g_module_count, [&](const Range &range) {
        return address >= range.begin && address < range.end;
    });
    return ours && (g_loading ? getpid() == gettid() : is_message_thread());
}

}  // namespace

FAULTS_API void *malloc(size_t size) {
    if (counts(__builtin_return_address(0)) && fails(Call::kMalloc)) return nullptr;
    return __libc_malloc(size);
}

#endif
