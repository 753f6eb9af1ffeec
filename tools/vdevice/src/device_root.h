/**
 * @file device_root.h
 * The files of one virtual device on the host.
 *
 *   <root>/          a new folder /tmp/vdev.XXXXXX
 *     lock           held locked while the device lives
 *     fb1            link to the framebuffer's file in /dev/shm
 *     config/        the device's /mnt/usr/config
 *     tmp/           the device's /tmp: fonts, pictures
 *       ipc/         its sockets
 *     view/          where a sandbox may put the program's "/" together
 *     app_gui.out    what the process writes
 *     app_gui.err
 *
 * A socket's address is limited to 107 bytes, so roots are always directly in /tmp.
 */
#ifndef VDEVICE_DEVICE_ROOT_H
#define VDEVICE_DEVICE_ROOT_H

#include <string>
#include <vector>

namespace vdevice {

/** Names of things in a root; the root may be another process's. */
struct RootPaths {
    std::string root;

    std::string framebuffer() const { return root + "/fb1"; }
    std::string config() const { return root + "/config"; }
    std::string tmp() const { return root + "/tmp"; }
    std::string view() const { return root + "/view"; }
    std::string out() const { return root + "/app_gui.out"; }
    std::string err() const { return root + "/app_gui.err"; }
    /** "ipc://<root>/tmp/ipc/<name>". */
    std::string address(const std::string &name) const;
    std::string commandAddress() const { return address("app_gui.command"); }
};

/**
 * Makes the files and removes them at the end. Roots that a killed process left behind are removed
 * when the next one is made.
 */
class DeviceRoot {
public:
    DeviceRoot() = default;
    ~DeviceRoot() { remove(); }
    DeviceRoot(const DeviceRoot &) = delete;
    DeviceRoot &operator=(const DeviceRoot &) = delete;

    /**
     * @param config  folder whose content becomes the device's configuration; "" for none.
     * @param fonts   files that are put into the device's /tmp.
     * @return false with `error` filled; nothing is left then.
     */
    bool create(const std::string &config, const std::vector<std::string> &fonts,
                std::string *error);
    void remove();

    const RootPaths &paths() const { return m_paths; }
    /** The framebuffer's file itself, for a bind. */
    const std::string &framebufferFile() const { return m_framebuffer; }

private:
    RootPaths m_paths;
    std::string m_framebuffer;
    int m_lock = -1;
};

}  // namespace vdevice

#endif
