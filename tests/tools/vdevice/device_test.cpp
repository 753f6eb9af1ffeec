// A device with the stand-in in app_gui's place, once in each sandbox that works on this machine.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "device.h"

namespace {

using namespace vdevice;
using testing::HasSubstr;

class DeviceIn : public testing::TestWithParam<SandboxKind> {
protected:
    void SetUp() override {
        if (!sandbox_works(GetParam())) {
            GTEST_SKIP() << sandbox_name(GetParam()) << " does not work on this machine";
        }
        options.program = STAND_IN;
        options.shim = FBEMU;
        options.sandbox = GetParam();
        options.framebuffer.width = 320;
        options.framebuffer.height = 200;
    }

    void start() {
        std::string error;
        ASSERT_TRUE(device.start(options, &error)) << error;
    }

    std::string ask(const std::string &message) {
        return device.request(message).value_or("(no reply)");
    }

    DeviceOptions options;
    Device device;
};

bool all_pixels_are(const QImage &image, QRgb pixel) {
    QImage expected(image.size(), image.format());
    expected.fill(pixel);
    return image == expected;
}

TEST_P(DeviceIn, ShowsWhatTheProgramPaints) {
    start();
    EXPECT_EQ(ask("fill 80ff2040"), "filled");
    const QImage layer = device.layer();
    EXPECT_EQ(layer.size(), QSize(320, 200));
    EXPECT_TRUE(all_pixels_are(layer, 0x80ff2040));
}

TEST_P(DeviceIn, PutsTheRowsInPlaceWhenTheyArePadded) {
    options.framebuffer.padding = 96;
    start();
    EXPECT_EQ(ask("fill ff00ff00"), "filled");
    EXPECT_EQ(device.framebuffer().header().line_length, 320u * 4 + 96);
    EXPECT_TRUE(all_pixels_are(device.layer(), 0xff00ff00));
}

TEST_P(DeviceIn, ConvertsTheFramebuffersChannelOrder) {
    options.framebuffer.format = "rgba8888";
    start();
    EXPECT_EQ(ask("fill 11223380"), "filled");  // red, green, blue, alpha from the top
    EXPECT_TRUE(all_pixels_are(device.layer(), 0x80112233));
}

TEST_P(DeviceIn, FollowsAModeChange) {
    start();
    EXPECT_EQ(ask("mode 640x400"), "yes");
    EXPECT_EQ(ask("fill ff123456"), "filled");
    EXPECT_EQ(device.layer().size(), QSize(640, 400));
    EXPECT_TRUE(all_pixels_are(device.layer(), 0xff123456));
}

TEST_P(DeviceIn, CanMakeTheDriverRefuseAMode) {
    start();
    device.framebuffer().setBehaviour(kFbemuRefuseMode);
    EXPECT_EQ(ask("mode 640x400"), "no");
    EXPECT_EQ(device.layer().size(), QSize(320, 200));
    EXPECT_EQ(device.framebuffer().header().mode_requests, 1u);
    EXPECT_EQ(device.framebuffer().header().mode_changes, 0u);
}

TEST_P(DeviceIn, GivesTheProgramTheConfigurationToReadAndWrite) {
    options.prepare = [](const RootPaths &paths) {
        std::filesystem::create_directories(paths.config() + "/capability_sets");
        std::ofstream(paths.config() + "/capability_sets/mark") << "here";
    };
    start();
    EXPECT_EQ(ask("exists /mnt/usr/config/capability_sets/mark"), "yes");
    EXPECT_EQ(ask("exists /mnt/usr/config/capability_sets/other"), "no");
    EXPECT_EQ(ask("writable /mnt/usr/config/app_parameters/new"), "yes");
    EXPECT_TRUE(std::filesystem::exists(device.configFolder() + "/app_parameters/new"));
}

TEST_P(DeviceIn, HasATmpOfItsOwn) {
    const std::string outside = testing::TempDir() + "vdevice_outside";
    std::ofstream(outside) << "outside";
    start();
    EXPECT_EQ(ask("exists " + outside), "no");
    EXPECT_EQ(ask("writable /tmp/inside"), "yes");
    EXPECT_FALSE(std::filesystem::exists("/tmp/inside"));
    EXPECT_TRUE(std::filesystem::exists(device.paths().tmp() + "/inside"));
    std::filesystem::remove(outside);
}

TEST_P(DeviceIn, TranslatesPathsOfStatxToo) {
    options.prepare = [](const RootPaths &paths) {
        std::ofstream(paths.tmp() + "/mark") << "12345";
    };
    start();
    EXPECT_EQ(ask("statx /tmp/mark"), "file of 5 bytes");
    EXPECT_EQ(ask("statx /tmp/ipc"), "folder");
    EXPECT_EQ(ask("statx /tmp/other"), "errno " + std::to_string(ENOENT));
}

TEST_P(DeviceIn, MakesNothingOnTheHost) {
    const bool framebuffer = std::filesystem::exists("/dev/fb1");
    const bool configuration = std::filesystem::exists("/mnt/usr");
    start();
    EXPECT_EQ(ask("exists /dev/fb1"), "yes");
    EXPECT_EQ(ask("exists /mnt/usr/config/app_parameters"), "yes");
    EXPECT_EQ(std::filesystem::exists("/dev/fb1"), framebuffer);
    EXPECT_EQ(std::filesystem::exists("/mnt/usr"), configuration);
}

TEST_P(DeviceIn, PutsFontsIntoTheFontFolder) {
    const std::string font = testing::TempDir() + "vdevice_font.ttf";
    std::ofstream(font) << "font";
    options.fonts = {font};
    start();
    EXPECT_EQ(ask("exists /tmp/vdevice_font.ttf"), "yes");
    std::filesystem::remove(font);
}

TEST_P(DeviceIn, StartsTheProgramInACleanEnvironment) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    options.environment["LANG"] = "C.UTF-8";
    start();
    EXPECT_EQ(ask("variable QT_QPA_PLATFORM"), "(unset)");
    EXPECT_EQ(ask("variable LANG"), "C.UTF-8");
}

TEST_P(DeviceIn, CarriesEventsOfBothPublishers) {
    start();
    const auto heard = [this](const std::string &event) {
        return wait_until([&] { return ask("event") == event; }, Milliseconds(5000));
    };
    ASSERT_TRUE(device.publishCodec("codec-1"));
    EXPECT_TRUE(heard("codec-1"));
    ASSERT_TRUE(device.publishStream("stream-1"));
    EXPECT_TRUE(heard("stream-1"));
}

TEST_P(DeviceIn, SurveysTheProgramAndCounts) {
    start();
    EXPECT_EQ(device.survey().value_or(""), R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})");
    EXPECT_EQ(device.survey().value_or(""), R"({"jsonrpc":"2.0","id":2,"method":"Keepalive"})");
}

TEST_P(DeviceIn, NamesTheProgramsOwnProcess) {
    start();
    const std::string name = "/proc/" + std::to_string(device.pid()) + "/cmdline";
    std::string first;
    std::getline(std::ifstream(name), first, '\0');
    EXPECT_THAT(first, HasSubstr("stand_in"));
}

TEST_P(DeviceIn, TellsTheExitStatusAndKeepsTheOutput) {
    start();
    EXPECT_FALSE(device.request("exit 7").has_value());
    ASSERT_TRUE(device.waitForEnd(Milliseconds(5000)));
    EXPECT_EQ(device.exitStatus(), 7);
    EXPECT_EQ(device.standardOutput(), "serving\n");
    EXPECT_FALSE(device.running());
}

TEST_P(DeviceIn, TellsTheSignalThatEndedTheProgram) {
    start();
    ASSERT_TRUE(device.kill(SIGABRT));
    ASSERT_TRUE(device.waitForEnd(Milliseconds(5000)));
    EXPECT_EQ(device.exitStatus(), GetParam() == SandboxKind::kProot ? 255 : 128 + SIGABRT);
}

TEST_P(DeviceIn, SaysWhyTheProgramDidNotServe) {
    options.program = "/bin/false";
    std::string error;
    EXPECT_FALSE(device.start(options, &error));
    EXPECT_THAT(error, HasSubstr("ended with status 1"));
}

TEST_P(DeviceIn, LeavesNothingBehind) {
    std::string root, framebuffer;
    pid_t pid = 0;
    {
        Device brief;
        std::string error;
        ASSERT_TRUE(brief.start(options, &error)) << error;
        root = brief.paths().root;
        framebuffer = std::filesystem::read_symlink(brief.paths().framebuffer());
        pid = brief.pid();
        ASSERT_GT(pid, 0);
        ASSERT_TRUE(std::filesystem::exists(framebuffer));
    }
    EXPECT_FALSE(std::filesystem::exists(root));
    EXPECT_FALSE(std::filesystem::exists(framebuffer));
    EXPECT_EQ(kill(pid, 0), -1);
}

TEST_P(DeviceIn, RunsBesideAnother) {
    start();
    Device other;
    std::string error;
    ASSERT_TRUE(other.start(options, &error)) << error;
    EXPECT_EQ(ask("fill ff000011"), "filled");
    EXPECT_EQ(other.request("fill ff000022").value_or(""), "filled");
    EXPECT_TRUE(all_pixels_are(device.layer(), 0xff000011));
    EXPECT_TRUE(all_pixels_are(other.layer(), 0xff000022));
}

INSTANTIATE_TEST_SUITE_P(Sandboxes, DeviceIn,
                         testing::Values(SandboxKind::kBwrap, SandboxKind::kProot),
                         [](const auto &parameter) { return sandbox_name(parameter.param); });

}  // namespace
