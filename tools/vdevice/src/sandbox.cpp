#include "sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "child_process.h"

namespace vdevice {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

void append(Words &line, std::initializer_list<std::string> words) {
    line.insert(line.end(), words);
}

/** env(1) sets the variables, so that LD_PRELOAD reaches the program but not the sandbox. */
void append_program(Words &line, const SandboxPlan &plan) {
    append(line, {"/usr/bin/env", "-i"});
    for (const auto &[name, value] : plan.environment)
        line.push_back(name + "=" + value);
    line.insert(line.end(), plan.command.begin(), plan.command.end());
}

Words bwrap_command(const SandboxPlan &plan) {
    // /dev and /mnt are fresh: the places to bind to are made there, not on the host.
    Words line = {"bwrap",
                  "--die-with-parent",
                  "--unshare-pid",
                  "--unshare-ipc",
                  "--unshare-net",
                  "--chdir",
                  "/",
                  "--ro-bind",
                  "/",
                  "/",
                  "--proc",
                  "/proc",
                  "--dev",
                  "/dev",
                  "--tmpfs",
                  "/mnt"};
    for (const SandboxPlan::Bind &bind : plan.binds) {
        append(line, {bind.writable ? "--bind" : "--ro-bind", bind.host, bind.inside});
    }
    append_program(line, plan);
    return line;
}

/** The host's files that a proot shows, each at its own place; /tmp, /mnt and most of /dev are not.
 */
std::vector<SandboxPlan::Bind> proot_view() {
    std::vector<SandboxPlan::Bind> view;
    for (const char *device : {"null", "zero", "full", "random", "urandom", "tty", "shm", "pts"}) {
        const std::string path = std::string("/dev/") + device;
        if (fs::exists(path)) view.push_back({path, path, true});
    }
    for (const fs::directory_entry &entry : fs::directory_iterator("/")) {
        const std::string path = entry.path();
        const bool hidden = path == "/tmp" || path == "/mnt" || path == "/dev";
        if (!hidden && fs::exists(path)) view.push_back({path, path, true});
    }
    return view;
}

std::vector<SandboxPlan::Bind> proot_binds(const SandboxPlan &plan) {
    std::vector<SandboxPlan::Bind> binds = proot_view();
    binds.insert(binds.end(), plan.binds.begin(), plan.binds.end());
    return binds;
}

/** In the root of "/" proot would make what is missing there on the host. */
Words proot_command(const SandboxPlan &plan) {
    Words line = {"proot", "-r", plan.root, "-w", "/"};
    for (const SandboxPlan::Bind &bind : proot_binds(plan)) {
        append(line, {"-b", bind.host + ":" + bind.inside});
    }
    append_program(line, plan);
    return line;
}

/** An empty folder or file at `place`, and the folders above it. */
void make_place(const std::string &place, bool folder) {
    if (folder) {
        fs::create_directories(place);
        return;
    }
    fs::create_directories(fs::path(place).parent_path());
    std::ofstream(place, std::ios::app);
}

void make_places(const SandboxPlan &plan) {
    for (const SandboxPlan::Bind &bind : proot_binds(plan)) {
        make_place(plan.root + bind.inside, fs::is_directory(bind.host));
    }
}

/** The name of a new folder; removed with its content at the end. */
class ScratchFolder {
public:
    ScratchFolder() {
        char name[] = "/tmp/vdevice-probe.XXXXXX";
        if (mkdtemp(name) != nullptr) m_path = name;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        if (!m_path.empty()) fs::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::string &path() const { return m_path; }

private:
    std::string m_path;
};

struct Kind {
    SandboxKind kind;
    const char *name;
    int depth;  ///< see sandbox_depth()
    Words (*command)(const SandboxPlan &);
};

/** In order of preference. */
constexpr Kind kKinds[] = {
    {SandboxKind::kBwrap, "bwrap", 2, bwrap_command},  // bwrap, the namespace's first process, ours
    {SandboxKind::kProot, "proot", 1, proot_command},
    {SandboxKind::kNone, "none", 0, nullptr},
};

const Kind &row_of(SandboxKind kind) {
    for (const Kind &row : kKinds) {
        if (row.kind == kind) return row;
    }
    return kKinds[std::size(kKinds) - 1];
}

}  // namespace

const char *sandbox_name(SandboxKind kind) {
    return row_of(kind).name;
}

bool prepare_sandbox(SandboxKind kind, const SandboxPlan &plan, std::string *error) {
    if (kind != SandboxKind::kProot) return true;
    try {
        make_places(plan);
        return true;
    } catch (const fs::filesystem_error &failure) {
        *error = failure.what();
        return false;
    }
}

std::vector<std::string> sandbox_command(SandboxKind kind, const SandboxPlan &plan) {
    return row_of(kind).command(plan);
}

int sandbox_depth(SandboxKind kind) {
    return row_of(kind).depth;
}

bool sandbox_works(SandboxKind kind) {
    if (kind == SandboxKind::kNone) return false;
    const ScratchFolder scratch;
    SandboxPlan plan;
    plan.root = scratch.path();
    // The same kinds of places as a device binds: a file under /dev, a folder under /mnt.
    plan.binds = {{"/etc/passwd", "/dev/fb1", true}, {"/usr", "/mnt/usr/config", true}};
    plan.command = {"/usr/bin/test", "-f", "/dev/fb1", "-a", "-d", "/mnt/usr/config/bin"};
    ChildProcess probe;
    std::string error;
    if (!prepare_sandbox(kind, plan, &error)) return false;
    if (!probe.start(sandbox_command(kind, plan), "/dev/null", "/dev/null", &error)) return false;
    return probe.wait(Milliseconds(10000)) && probe.exitStatus() == 0;
}

SandboxKind find_sandbox() {
    for (const Kind &row : kKinds) {
        if (sandbox_works(row.kind)) return row.kind;
    }
    return SandboxKind::kNone;
}

}  // namespace vdevice
