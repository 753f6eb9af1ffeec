// The vdevice command itself, with the stand-in in app_gui's place.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "peers.h"
#include "sandbox.h"

namespace {

namespace fs = std::filesystem;
using namespace vdevice;
using testing::HasSubstr;

constexpr Milliseconds kTimeout{20000};

std::string read(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class VdeviceCommand : public testing::Test {
protected:
    void SetUp() override {
        if (find_sandbox() == SandboxKind::kNone) GTEST_SKIP() << "no sandbox works here";
        folder = testing::TempDir() + "vdevice_command";
        fs::create_directories(folder);
    }

    void TearDown() override { fs::remove_all(folder); }

    std::string log(const std::string &name) const { return folder + "/" + name; }

    /** Runs the command to its end; its exit status. */
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VDEVICE);
        ChildProcess command;
        std::string error;
        EXPECT_TRUE(command.start(arguments, log("out"), log("err"), &error)) << error;
        EXPECT_TRUE(command.wait(kTimeout));
        return command.exitStatus();
    }

    /** Starts a device that stays; fills `root`. */
    void stay(const std::vector<std::string> &more = {}) {
        std::vector<std::string> words = {VDEVICE,  "stay",   "--program",
                                          STAND_IN, "--mode", "64x32"};
        words.insert(words.end(), more.begin(), more.end());
        std::string error;
        ASSERT_TRUE(device.start(words, log("stay.out"), log("stay.err"), &error)) << error;
        const auto told = [this] {
            return read(log("stay.out")).find("Ctrl+C") != std::string::npos;
        };
        ASSERT_TRUE(wait_until([&] { return told() || !device.running(); }, kTimeout));
        ASSERT_TRUE(told()) << read(log("stay.err"));
        const std::string text = read(log("stay.out"));
        const size_t at = text.find("/tmp/vdev.");
        root = text.substr(at, text.find('\n', at) - at);
    }

    /** The stand-in's process: the last generation below the command. */
    pid_t program() {
        pid_t last = device.pid();
        for (pid_t child = last; child > 0; child = descendant(child, 1))
            last = child;
        return last;
    }

    std::string folder;
    std::string root;
    ChildProcess device;
};

TEST_F(VdeviceCommand, SaysWhichSandboxItUses) {
    stay();
    EXPECT_THAT(read(log("stay.out")),
                HasSubstr(std::string("sandbox: ") + sandbox_name(find_sandbox()) + "\n"));
}

TEST_F(VdeviceCommand, CallsAndPicturesADeviceThatIsUp) {
    stay();
    EXPECT_EQ(run({"call", "--root", root, "fill 80ff0000"}), 0);
    EXPECT_EQ(read(log("out")), "filled\n");
    const std::string picture = folder + "/layer.png";
    EXPECT_EQ(run({"shot", "--root", root, "--out", picture, "--layer"}), 0);
    const QImage layer(QString::fromStdString(picture));
    EXPECT_EQ(layer.size(), QSize(64, 32));
    EXPECT_EQ(layer.pixel(63, 31), qRgba(255, 0, 0, 128));
}

TEST_F(VdeviceCommand, DoesNotInventASplitForAPicture) {
    stay();
    EXPECT_EQ(run({"shot", "--root", root, "--out", folder + "/no.png"}), 1);
    EXPECT_THAT(read(log("err")), HasSubstr("does not tell its split"));
    EXPECT_FALSE(fs::exists(folder + "/no.png"));
}

TEST_F(VdeviceCommand, EndsCleanlyOnSigterm) {
    stay();
    ASSERT_TRUE(fs::exists(root));
    kill(device.pid(), SIGTERM);
    ASSERT_TRUE(device.wait(kTimeout));
    EXPECT_EQ(device.exitStatus(), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(VdeviceCommand, EndsWithItsProgram) {
    stay();
    kill(program(), SIGKILL);
    ASSERT_TRUE(device.wait(kTimeout));
    EXPECT_EQ(device.exitStatus(), 1);
    EXPECT_THAT(read(log("stay.err")), HasSubstr("app_gui ended with status"));
}

TEST_F(VdeviceCommand, LeavesNothingRunningWhenItIsKilled) {
    for (const SandboxKind kind : {SandboxKind::kBwrap, SandboxKind::kProot}) {
        SCOPED_TRACE(sandbox_name(kind));
        if (!sandbox_works(kind)) continue;
        stay({"--sandbox", sandbox_name(kind)});
        const pid_t pid = program();
        ASSERT_NE(pid, device.pid());
        ASSERT_EQ(kill(pid, 0), 0);
        kill(device.pid(), SIGKILL);
        ASSERT_TRUE(device.wait(kTimeout));
        EXPECT_TRUE(wait_until([pid] { return kill(pid, 0) != 0; }, kTimeout));
        device.stop(Milliseconds(0));
    }
}

TEST_F(VdeviceCommand, RefusesWhatItDoesNotKnow) {
    EXPECT_NE(run({}), 0);
    EXPECT_NE(run({"stay", "--sandbox", "chroot"}), 0);
    EXPECT_NE(run({"stay", "--format", "argb1555"}), 0);
    EXPECT_EQ(run({"stay", "--mode", "large"}), 1);
    EXPECT_THAT(read(log("err")), HasSubstr("WIDTHxHEIGHT"));
    EXPECT_EQ(run({"stay", "--program", "/nonexistent/program"}), 1);
    EXPECT_EQ(run({"call", "--root", "/nonexistent", "--timeout", "100", "{}"}), 1);
}

}  // namespace
