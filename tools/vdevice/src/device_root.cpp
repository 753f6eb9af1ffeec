#include "device_root.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace vdevice {
namespace {

namespace fs = std::filesystem;

constexpr char kParent[] = "/tmp";
constexpr char kPrefix[] = "vdev.";
constexpr char kMemoryFolder[] = "/dev/shm";

std::string framebuffer_of(const std::string &root) {
    return std::string(kMemoryFolder) + "/" + fs::path(root).filename().string() + ".fb1";
}

void remove_files(const std::string &root) {
    std::error_code ignored;
    fs::remove(framebuffer_of(root), ignored);
    fs::remove_all(root, ignored);
}

/** The locked file, or -1. `flags` may hold O_CREAT. */
int take_lock(const std::string &file, int flags) {
    const int fd = open(file.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
    if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

/** The lock gets its name when it is locked: nobody takes a new root for an abandoned one. */
int make_lock(const std::string &root) {
    const std::string lock = root + "/lock";
    const int fd = take_lock(lock + ".new", O_CREAT);
    fs::rename(lock + ".new", lock);
    return fd;
}

bool is_ours(const std::string &root) {
    struct stat status;
    return lstat(root.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

/** A root without a lock file is just being made and is left alone. */
void remove_abandoned_roots() {
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(kParent, ignored)) {
        const std::string root = entry.path().string();
        if (entry.path().filename().string().rfind(kPrefix, 0) != 0 || !is_ours(root)) continue;
        const int lock = take_lock(root + "/lock", 0);
        if (lock < 0) continue;
        remove_files(root);
        close(lock);
    }
}

void fill(const RootPaths &paths, const std::string &framebuffer, const std::string &config,
          const std::vector<std::string> &fonts) {
    fs::create_directories(paths.tmp() + "/ipc");
    fs::create_directories(paths.config());
    fs::create_directories(paths.view());
    fs::create_symlink(framebuffer, paths.framebuffer());
    if (!config.empty()) fs::copy(config, paths.config(), fs::copy_options::recursive);
    fs::create_directories(paths.config() + "/app_parameters");
    for (const std::string &font : fonts) {
        fs::copy_file(font, paths.tmp() + "/" + fs::path(font).filename().string());
    }
}

}  // namespace

std::string RootPaths::address(const std::string &name) const {
    return "ipc://" + root + "/tmp/ipc/" + name;
}

bool DeviceRoot::create(const std::string &config, const std::vector<std::string> &fonts,
                        std::string *error) {
    remove_abandoned_roots();
    std::string name = std::string(kParent) + "/" + kPrefix + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        *error = name + ": " + std::strerror(errno);
        return false;
    }
    m_paths.root = name;
    m_framebuffer = framebuffer_of(name);
    try {
        m_lock = make_lock(name);
        fill(m_paths, m_framebuffer, config, fonts);
    } catch (const fs::filesystem_error &failure) {
        *error = failure.what();
        remove();
        return false;
    }
    return true;
}

void DeviceRoot::remove() {
    if (m_paths.root.empty()) return;
    remove_files(m_paths.root);
    if (m_lock >= 0) close(m_lock);
    m_lock = -1;
    m_paths.root.clear();
}

}  // namespace vdevice
