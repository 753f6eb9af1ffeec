// A framebuffer program with the library preloaded, on a machine without that framebuffer.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "fbemu_layout.h"

namespace {

class Fbemu : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/dev/shm/test_fbemu.XXXXXX";
        const int fd = mkstemp(name);
        ASSERT_GE(fd, 0);
        close(fd);
        file = name;
    }

    void TearDown() override { unlink(file.c_str()); }

    /** Output of the client, run with `settings` ("NAME=value ...") and `words`. */
    std::string run(const std::string &words, const std::string &settings = "") {
        const std::string command =
            settings + " FBEMU_FILE=" + file +
            " LD_PRELOAD=" FBEMU " ASAN_OPTIONS=verify_asan_link_order=0 " FB_CLIENT " " + words;
        FILE *pipe = popen(command.c_str(), "r");
        std::string text;
        char buffer[4096];
        while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr)
            text += buffer;
        if (pipe != nullptr) pclose(pipe);
        return text;
    }

    FbemuHeader header() {
        FbemuHeader copy{};
        std::ifstream(file, std::ios::binary).read(reinterpret_cast<char *>(&copy), sizeof copy);
        return copy;
    }

    uint32_t word(size_t offset) {
        uint32_t value = 0;
        std::ifstream stream(file, std::ios::binary);
        stream.seekg(static_cast<std::streamoff>(kFbemuPixelsOffset + offset));
        stream.read(reinterpret_cast<char *>(&value), sizeof value);
        return value;
    }

    std::string file;
};

constexpr char kArgb[] = "rgba 16:8 8:8 0:8 24:8\n";

TEST_F(Fbemu, StartsIn1080pWith32BitsAndAlpha) {
    EXPECT_EQ(run("open get"), std::string("open 0\nget 0 1920x1080 bits 32 line 7680 ") + kArgb);
}

TEST_F(Fbemu, TakesModePaddingAndFormatFromTheEnvironment) {
    struct {
        const char *settings;
        const char *report;
    } cases[] = {
        {"FBEMU_MODE=1280x720", "1280x720 bits 32 line 5120 rgba 16:8 8:8 0:8 24:8"},
        {"FBEMU_MODE=3840x2160", "3840x2160 bits 32 line 15360 rgba 16:8 8:8 0:8 24:8"},
        {"FBEMU_PADDING=64", "1920x1080 bits 32 line 7744 rgba 16:8 8:8 0:8 24:8"},
        {"FBEMU_FORMAT=xrgb8888", "1920x1080 bits 32 line 7680 rgba 16:8 8:8 0:8 0:0"},
        {"FBEMU_FORMAT=rgba8888", "1920x1080 bits 32 line 7680 rgba 24:8 16:8 8:8 0:8"},
        {"FBEMU_FORMAT=abgr8888", "1920x1080 bits 32 line 7680 rgba 0:8 8:8 16:8 24:8"},
        {"FBEMU_FORMAT=bgra8888", "1920x1080 bits 32 line 7680 rgba 8:8 16:8 24:8 0:8"},
        {"FBEMU_FORMAT=rgb565", "1920x1080 bits 16 line 3840 rgba 11:5 5:6 0:5 0:0"},
        {"FBEMU_MODE=nonsense", "1920x1080 bits 32 line 7680 rgba 16:8 8:8 0:8 24:8"},
        {"FBEMU_FORMAT=nonsense", "1920x1080 bits 32 line 7680 rgba 16:8 8:8 0:8 24:8"},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.settings);
        EXPECT_EQ(run("open get", row.settings), std::string("open 0\nget 0 ") + row.report + "\n");
        truncate(file.c_str(), 0);
    }
}

TEST_F(Fbemu, CannotBeOpenedInAModeThatItsMemoryCannotHold) {
    EXPECT_EQ(run("open", "FBEMU_MODE=9000x9000"), "open " + std::to_string(EINVAL) + "\n");
}

TEST_F(Fbemu, IsReachedByEveryWayToOpenAFile) {
    EXPECT_EQ(run("access openat get"),
              std::string("access 0\nopenat 0\nget 0 1920x1080 bits 32 line 7680 ") + kArgb);
}

TEST_F(Fbemu, KnowsADuplicatedDescriptor) {
    EXPECT_EQ(run("open dup get"),
              std::string("open 0\ndup\nget 0 1920x1080 bits 32 line 7680 ") + kArgb);
}

TEST_F(Fbemu, MapsPixelsBehindTheHeader) {
    EXPECT_EQ(run("open write:0=11223344 write:7680=80ff0000"), "open 0\nwrite 0\nwrite 0\n");
    EXPECT_EQ(word(0), 0x11223344u);
    EXPECT_EQ(word(7680), 0x80ff0000u);
    EXPECT_EQ(header().magic, kFbemuMagic);
    EXPECT_EQ(header().maps, 2u);
}

TEST_F(Fbemu, DoesNotMapMoreThanItsMemory) {
    EXPECT_EQ(run("open beyond"), "open 0\nbeyond " + std::to_string(EINVAL) + "\n");
}

TEST_F(Fbemu, LeavesOtherFilesAlone) {
    const std::string other = testing::TempDir() + "fbemu_other";
    std::ofstream(other) << "abcdefgh";
    EXPECT_EQ(run("open other:" + other), "open 0\nother abcd\n");
    unlink(other.c_str());
}

TEST_F(Fbemu, ChangesTheModeAndKeepsTheMemory) {
    EXPECT_EQ(run("open write:0=11223344 set:1280x720 get", "FBEMU_PADDING=16"),
              std::string("open 0\nwrite 0\nset 0\nget 0 1280x720 bits 32 line 5136 ") + kArgb);
    EXPECT_EQ(word(0), 0x11223344u);
    EXPECT_EQ(header().mode_requests, 1u);
    EXPECT_EQ(header().mode_changes, 1u);
    EXPECT_EQ(header().sequence % 2, 0u);
}

TEST_F(Fbemu, KeepsItsModeForTheNextProgram) {
    run("open set:1024x768");
    EXPECT_EQ(run("open get", "FBEMU_MODE=640x480"),
              std::string("open 0\nget 0 1024x768 bits 32 line 4096 ") + kArgb);
}

TEST_F(Fbemu, OnlyChecksAModeThatIsToBeTested) {
    EXPECT_EQ(run("open try:1280x720 get"),
              std::string("open 0\nset 0\nget 0 1920x1080 bits 32 line 7680 ") + kArgb);
    EXPECT_EQ(header().mode_changes, 0u);
}

TEST_F(Fbemu, RefusesModesThatCannotBe) {
    const std::string refused = "open 0\nset " + std::to_string(EINVAL) + "\n";
    for (const char *mode : {"set:0x0", "set:0x1080", "set:9000x9000", "set24:1280x720",
                             "set:4294967295x1", "set:1x4294967295"}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(run(std::string("open ") + mode), refused);
    }
    EXPECT_EQ(header().width, 1920u);
    EXPECT_EQ(header().mode_changes, 0u);
}

TEST_F(Fbemu, RefusesEveryModeWhenToldSo) {
    EXPECT_EQ(
        run("open set:1280x720 get", "FBEMU_REFUSE_MODE=1"),
        "open 0\nset " + std::to_string(EINVAL) + "\nget 0 1920x1080 bits 32 line 7680 " + kArgb);
}

TEST_F(Fbemu, PretendsAModeChangeWhenToldSo) {
    EXPECT_EQ(run("open set:1280x720 get", "FBEMU_PRETEND_MODE=1"),
              std::string("open 0\nset 0\nget 0 1920x1080 bits 32 line 7680 ") + kArgb);
    EXPECT_EQ(header().mode_requests, 1u);
    EXPECT_EQ(header().mode_changes, 0u);
}

TEST_F(Fbemu, PansOnlyWithinTheVirtualScreen) {
    EXPECT_EQ(run("open pan:0 pan:1"), "open 0\npan 0\npan " + std::to_string(EINVAL) + "\n");
}

TEST_F(Fbemu, AcceptsWhatChangesNothing) {
    EXPECT_EQ(run("open harmless"), "open 0\nharmless 0 0 0\n");
}

TEST_F(Fbemu, AnswersBadRequestsWithErrors) {
    EXPECT_EQ(run("open null unknown"), "open 0\nnull " + std::to_string(EFAULT) + "\nunknown " +
                                            std::to_string(ENOTTY) + "\n");
}

TEST_F(Fbemu, IsAbsentWithoutItsFile) {
    unlink(file.c_str());
    EXPECT_EQ(run("access open"),
              "access " + std::to_string(ENOENT) + "\nopen " + std::to_string(ENOENT) + "\n");
}

}  // namespace
