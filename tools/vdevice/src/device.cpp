#include "device.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vdevice {
namespace {

namespace fs = std::filesystem;

constexpr Milliseconds kGrace{2000};

std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/** True for places of the host that the device's own /tmp and /mnt hide. */
bool is_hidden(const std::string &path) {
    return path.rfind("/tmp/", 0) == 0 || path.rfind("/mnt/", 0) == 0;
}

/** Keeps a file or folder of the host visible under its own name. */
void keep_visible(SandboxPlan &plan, const std::string &path) {
    if (is_hidden(path) && fs::exists(path)) plan.binds.push_back({path, path, false});
}

/**
 * The environment of a program on the board is nearly empty, and ours may hold settings for other
 * programs (a test's Qt platform).
 */
std::map<std::string, std::string> program_environment(const DeviceOptions &options,
                                                       SandboxKind kind) {
    std::map<std::string, std::string> all = {{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}};
    for (const char *name :
         {"TZ", "UBSAN_OPTIONS", "LSAN_OPTIONS", "ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        const char *value = std::getenv(name);
        if (value != nullptr) all[name] = value;
    }
    // The shim is loaded before a sanitizer's library and replaces nothing that one relies on.
    std::string &asan = all["ASAN_OPTIONS"];
    asan += (asan.empty() ? "" : ":") + std::string("verify_asan_link_order=0");
    // Under proot the process is traced already, and LeakSanitizer could not trace it to look.
    if (kind == SandboxKind::kProot) asan += ":detect_leaks=0";
    if (!options.shim.empty()) {
        all["FBEMU_DIE_WITH_PARENT"] = "1";
        // proot 5.1 does not translate the paths of statx(), which Qt uses.
        if (kind == SandboxKind::kProot) all["FBEMU_STATX_BY_STAT"] = "1";
        all["LD_PRELOAD"] = fs::absolute(options.shim).lexically_normal();
    }
    for (const auto &[name, value] : options.environment)
        all[name] = value;
    return all;
}

}  // namespace

bool Device::start(const DeviceOptions &options, std::string *error) {
    m_kind = options.sandbox ? *options.sandbox : find_sandbox();
    if (m_kind == SandboxKind::kNone) {
        *error = "neither bwrap nor proot works here";
        return false;
    }
    if (!m_root.create(options.config, options.fonts, error)) return false;
    if (!FramebufferFile::create(m_root.framebufferFile(), options.framebuffer, error))
        return false;
    if (!m_framebuffer.open(m_root.framebufferFile(), error)) return false;
    if (options.prepare) options.prepare(paths());
    if (!startPeers(error) || !startProcess(options, error)) return false;
    if (!options.waitUntilServing || waitUntilServing(options.startTimeout, error)) return true;
    stop();
    return false;
}

void Device::restartCodec() {
    m_codec.reset();
    m_codec = std::make_unique<EventPublisher>(paths().address("app_codec.event"));
}

bool Device::startPeers(std::string *error) {
    restartCodec();
    m_stream = std::make_unique<EventPublisher>(paths().address("app_stream.event"));
    m_supervisor = std::make_unique<KeepaliveSurveyor>(paths().address("keepalive"));
    m_client = std::make_unique<CommandClient>(commandAddress());
    for (const std::string &failure :
         {m_codec->error(), m_stream->error(), m_supervisor->error()}) {
        if (failure.empty()) continue;
        *error = failure;
        return false;
    }
    return true;
}

SandboxPlan Device::plan(const DeviceOptions &options) const {
    const std::string program = fs::absolute(options.program).lexically_normal();
    SandboxPlan plan;
    plan.root = paths().view();
    plan.binds = {{m_root.framebufferFile(), "/dev/fb1", true},
                  {paths().tmp(), "/tmp", true},
                  {paths().config(), "/mnt/usr/config", true}};
    keep_visible(plan, program);
    keep_visible(plan, fs::path(program).parent_path().parent_path() / "lib");
    if (!options.shim.empty()) keep_visible(plan, fs::absolute(options.shim).lexically_normal());
    for (const auto &variable : program_environment(options, m_kind))
        plan.environment.push_back(variable);
    plan.binds.insert(plan.binds.end(), options.binds.begin(), options.binds.end());
    plan.command = {program};
    plan.command.insert(plan.command.end(), options.arguments.begin(), options.arguments.end());
    return plan;
}

bool Device::startProcess(const DeviceOptions &options, std::string *error) {
    const SandboxPlan where = plan(options);
    return prepare_sandbox(m_kind, where, error) &&
           m_sandbox.start(sandbox_command(m_kind, where), paths().out(), paths().err(), error);
}

bool Device::waitUntilServing(Milliseconds timeout, std::string *error) {
    const auto alive = [this] { return running(); };
    if (m_client->request("{\"jsonrpc\":\"2.0\",\"id\":0,\"method\":\"Keepalive\"}", timeout,
                          alive)) {
        return true;
    }
    *error = running() ? "the process does not answer"
                       : "the process ended with status " + std::to_string(exitStatus());
    *error += "\n" + standardError();
    return false;
}

void Device::stop() {
    if (kill(SIGTERM)) m_sandbox.wait(kGrace);
    m_sandbox.stop(Milliseconds(0));
}

pid_t Device::pid() const {
    if (m_sandbox.pid() == 0 || m_sandbox.exitStatus() >= 0) return 0;
    return descendant(m_sandbox.pid(), sandbox_depth(m_kind));
}

bool Device::kill(int signal) {
    const pid_t process = running() ? pid() : 0;
    return process > 0 && ::kill(process, signal) == 0;
}

std::string Device::standardOutput() const {
    return read_file(paths().out());
}

std::string Device::standardError() const {
    return read_file(paths().err());
}

std::optional<std::string> Device::request(const std::string &message, Milliseconds timeout) {
    return m_client->request(message, timeout, [this] { return running(); });
}

bool Device::publishCodec(const std::string &message, Milliseconds timeout) {
    return m_codec->waitForSubscriber(timeout) && m_codec->publish(message);
}

bool Device::publishStream(const std::string &message, Milliseconds timeout) {
    return m_stream->waitForSubscriber(timeout) && m_stream->publish(message);
}

std::optional<std::string> Device::survey(Milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    if (!m_supervisor->waitForRespondent(timeout)) return std::nullopt;
    return m_supervisor->survey(std::chrono::duration_cast<Milliseconds>(deadline - Clock::now()) +
                                Milliseconds(1));
}

bool Device::waitForPixels(const std::function<bool(const QImage &)> &expected,
                           Milliseconds timeout, QImage *seen) {
    QImage last;
    const bool found = wait_until(
        [&] {
            last = layer();
            return expected(last);
        },
        timeout);
    if (seen != nullptr) *seen = last;
    return found;
}

QImage Device::settledLayer(Milliseconds quiet, Milliseconds timeout) {
    QImage last = layer();
    auto changed = Clock::now();
    wait_until(
        [&] {
            const QImage now = layer();
            if (now != last) changed = Clock::now();
            last = now;
            return Clock::now() - changed >= quiet;
        },
        timeout);
    return last;
}

}  // namespace vdevice
