// Whatever stands at the command address: the process displays, and takes the address over or tells
// why it cannot.

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "device_test.h"
#include "peers.h"

using namespace e2e;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using vdevice::Milliseconds;

/** Something that stands at the command address before the process starts. */
struct Occupant {
    const char *name;
    std::function<void(const std::string &path)> make;
};

void expectDisplayingWithoutCommands(vdevice::Device &device) {
    const auto has_borders = [](const QImage &layer) { return layer != emptyLayer(); };
    EXPECT_TRUE(device.waitForPixels(has_borders));
    EXPECT_TRUE(vdevice::wait_until(
        [&] {
            return device.standardError().find("nn_bind(ipc:///tmp/ipc/app_gui.command) fail: ") !=
                   std::string::npos;
        },
        Milliseconds(5000)))
        << device.standardError();
    EXPECT_TRUE(device.running()) << device.exitStatus();
}

TEST(CommandAddress, TakenBySomethingElseIsToldAndLeftAlone) {
    std::vector<Occupant> occupants = {
        {"a folder", [](const std::string &path) { mkdir(path.c_str(), 0755); }},
        {"a full folder", [](const std::string &path) { fs::create_directories(path + "/full"); }},
    };
    // proot binds where the link leads.
    if (vdevice::find_sandbox() == vdevice::SandboxKind::kBwrap) {
        occupants.push_back({"a link to nowhere", [](const std::string &path) {
                                 fs::create_symlink("/nowhere", path);
                             }});
    }
    for (const Occupant &occupant : occupants) {
        SCOPED_TRACE(occupant.name);
        vdevice::DeviceOptions options = sampleDevice();
        struct stat before {};
        options.prepare = [&](const vdevice::RootPaths &paths) {
            occupant.make(paths.tmp() + kCommandFile);
            ASSERT_EQ(lstat((paths.tmp() + kCommandFile).c_str(), &before), 0);
        };
        options.waitUntilServing = false;
        vdevice::Device device;
        start(device, options);
        expectDisplayingWithoutCommands(device);
        struct stat after {};
        EXPECT_EQ(lstat((device.paths().tmp() + kCommandFile).c_str(), &after), 0);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(after.st_mode, before.st_mode);
    }
}

TEST(CommandAddress, OfAStaleSocketThatCannotBeRemovedIsTold) {
    if (vdevice::find_sandbox() != vdevice::SandboxKind::kBwrap) GTEST_SKIP() << "needs mounts";
    char folder[] = "/tmp/stale.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string path = std::string(folder) + "/socket";
    Stream::boundTo(path);
    {
        vdevice::DeviceOptions options = sampleDevice();
        options.prepare = [](const vdevice::RootPaths &paths) {
            close(creat((paths.tmp() + kCommandFile).c_str(), 0644));
        };
        // A place that something is mounted on cannot be removed, not even by root.
        options.binds.push_back({path, "/tmp/ipc/app_gui.command", true});
        options.waitUntilServing = false;
        vdevice::Device device;
        start(device, options);
        expectDisplayingWithoutCommands(device);
    }
    fs::remove_all(folder);
}

TEST(CommandAddress, ThatAnotherProcessServesIsToldAndLeftToIt) {
    vdevice::DeviceOptions options = sampleDevice();
    std::unique_ptr<Stream> server;
    options.prepare = [&](const vdevice::RootPaths &paths) {
        server = std::make_unique<Stream>(Stream::boundTo(paths.tmp() + kCommandFile));
        server->listenHere();
    };
    options.waitUntilServing = false;
    vdevice::Device device;
    start(device, options);
    expectDisplayingWithoutCommands(device);
    EXPECT_THAT(device.standardError(), HasSubstr("fail: Address already in use\n"));
}

TEST(CommandAddress, ThatNobodyServesIsTakenOver) {
    const Occupant occupants[] = {
        {"a stale socket", [](const std::string &path) { Stream::boundTo(path); }},
        {"a link to a stale socket",
         [](const std::string &path) {
             Stream::boundTo(path + ".old");
             fs::create_symlink(fs::path(path + ".old").filename(), path);
         }},
        {"a file", [](const std::string &path) { close(creat(path.c_str(), 0644)); }},
        {"a pipe", [](const std::string &path) { mkfifo(path.c_str(), 0666); }},
    };
    for (const Occupant &occupant : occupants) {
        SCOPED_TRACE(occupant.name);
        vdevice::DeviceOptions options = sampleDevice();
        options.prepare = [&](const vdevice::RootPaths &paths) {
            occupant.make(paths.tmp() + kCommandFile);
        };
        vdevice::Device device;
        start(device, options);
        expectServed(device);
    }
}

}  // namespace
