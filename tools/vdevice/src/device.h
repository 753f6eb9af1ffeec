/**
 * @file device.h
 * One virtual device: app_gui in a sandbox with its framebuffer, its configuration and its peers.
 *
 * Any number of devices run side by side. A device's files live as long as the object; stop() ends
 * the process only, so that what it left can be read.
 *
 * Thread: one; the process is killed when the thread that started it ends.
 */
#ifndef VDEVICE_DEVICE_H
#define VDEVICE_DEVICE_H

#include <QImage>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "child_process.h"
#include "device_root.h"
#include "framebuffer_file.h"
#include "peers.h"
#include "sandbox.h"

namespace vdevice {

struct DeviceOptions {
    std::string program;  ///< app_gui or a stand-in
    std::string shim;     ///< libfbemu.so; "" for a program that needs no framebuffer
    std::vector<std::string> arguments;
    /** Copied to the device's /mnt/usr/config; "" for an empty one. */
    std::string config;
    std::vector<std::string> fonts;  ///< font files that are put into the device's /tmp
    fbemu::Options framebuffer;
    std::optional<SandboxKind> sandbox;  ///< default: the first one that works
    /** The program's; of ours it gets only the time zone and the sanitizers' options. */
    std::map<std::string, std::string> environment;
    std::vector<SandboxPlan::Bind> binds;  ///< further files, e.g. an input device
    /** Called with the finished root before the process starts, e.g. to change the configuration.
     */
    std::function<void(const RootPaths &)> prepare;
    /** Whether start() waits until the process answers commands; no for one that is to fail. */
    bool waitUntilServing = true;
    Milliseconds startTimeout{20000};
};

class Device {
public:
    Device() = default;
    ~Device() { stop(); }
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    /**
     * Makes the root, starts the peers and then the process, and waits until it serves.
     * @return false with `error` filled; the process is then gone, its logs are there.
     * Requires: not started before.
     */
    bool start(const DeviceOptions &options, std::string *error);
    /** SIGTERM to the process, SIGKILL to whatever is left after two seconds. */
    void stop();

    bool running() { return m_sandbox.running(); }
    /** Waits for the process to end by itself. */
    bool waitForEnd(Milliseconds timeout) { return m_sandbox.wait(timeout); }
    /** Exit status, or 128 + signal (proot: 255 for any signal); -1 while running. */
    int exitStatus() const { return m_sandbox.exitStatus(); }
    /** The process itself, not its sandbox; 0 when there is none. */
    pid_t pid() const;
    /** Sends the process a signal; false when there is none. */
    bool kill(int signal);

    SandboxKind sandbox() const { return m_kind; }
    const RootPaths &paths() const { return m_root.paths(); }
    std::string commandAddress() const { return paths().commandAddress(); }
    std::string configFolder() const { return paths().config(); }
    /** What the process has written so far. */
    std::string standardOutput() const;
    std::string standardError() const;

    /** Sends a command; nothing when no reply comes in time or the process ends. */
    std::optional<std::string> request(const std::string &message,
                                       Milliseconds timeout = Milliseconds(5000));
    /** Publishes as the codec or the streaming process, once app_gui is subscribed. */
    bool publishCodec(const std::string &message, Milliseconds timeout = Milliseconds(5000));
    /** The codec process ends, whatever it has not sent yet, and comes back. */
    void restartCodec();
    bool publishStream(const std::string &message, Milliseconds timeout = Milliseconds(5000));
    /** One keepalive survey. */
    std::optional<std::string> survey(Milliseconds timeout = Milliseconds(5000));

    /** The emulated framebuffer, e.g. to make it refuse modes. */
    FramebufferFile &framebuffer() { return m_framebuffer; }
    /** What is on the layer now, straight alpha. */
    QImage layer() const { return m_framebuffer.layer(); }
    /** Waits until the layer is as `expected` says; the last layer looked at is put into `seen`. */
    bool waitForPixels(const std::function<bool(const QImage &)> &expected,
                       Milliseconds timeout = Milliseconds(5000), QImage *seen = nullptr);
    /** The layer once it has not changed for `quiet`, or as it is when `timeout` passes. */
    QImage settledLayer(Milliseconds quiet = Milliseconds(150),
                        Milliseconds timeout = Milliseconds(5000));

private:
    bool startPeers(std::string *error);
    bool startProcess(const DeviceOptions &options, std::string *error);
    bool waitUntilServing(Milliseconds timeout, std::string *error);
    SandboxPlan plan(const DeviceOptions &options) const;

    DeviceRoot m_root;
    SandboxKind m_kind = SandboxKind::kNone;
    FramebufferFile m_framebuffer;
    std::unique_ptr<EventPublisher> m_codec;
    std::unique_ptr<EventPublisher> m_stream;
    std::unique_ptr<KeepaliveSurveyor> m_supervisor;
    std::unique_ptr<CommandClient> m_client;
    ChildProcess m_sandbox;
};

}  // namespace vdevice

#endif
