#include "app_gui_sockets.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

/** Whether the folder lets us remove a file of that owner. */
bool can_remove_from(const std::string &folder, uid_t owner) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0 ||
        faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return false;
    }
    // In a folder such as /tmp only the owners may remove a file.
    const uid_t user = geteuid();
    return (status.st_mode & S_ISVTX) == 0 || user == 0 || user == owner || user == status.st_uid;
}

/** Whether something is mounted on the file: it cannot be removed then. */
bool is_mounted_on(const std::string &path) {
    struct statx status {};
    return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, 0, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/** Last component of the path of a connected descriptor's peer; "" for every other descriptor. */
std::string peer_name(int descriptor) {
    sockaddr_un peer{};
    socklen_t length = sizeof peer - 1;
    if (getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer), &length) != 0 ||
        peer.sun_family != AF_UNIX) {
        return {};
    }
    const char *slash = std::strrchr(peer.sun_path, '/');
    return slash ? slash + 1 : "";
}

}  // namespace

std::string path_of(const std::string &address) {
    return address.substr(std::strlen("ipc://"));
}

bool can_make_room(const std::string &path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return true;
    return !S_ISDIR(status.st_mode) && !is_mounted_on(path) &&
           can_remove_from(path.substr(0, path.rfind('/') + 1), status.st_uid);
}

bool has_connection(const std::string &path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    DIR *descriptors = opendir("/proc/self/fd");
    if (!descriptors) return true;
    bool found = false;
    while (const dirent *entry = found ? nullptr : readdir(descriptors)) {
        found = peer_name(std::atoi(entry->d_name)) == name;
    }
    closedir(descriptors);
    return found;
}
