// The files of a device on the host: made, removed, and swept when nobody owns them any more.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "device_root.h"

namespace {

namespace fs = std::filesystem;
using vdevice::DeviceRoot;
using vdevice::RootPaths;

TEST(DeviceRoot, HasAPlaceForEverything) {
    DeviceRoot root;
    std::string error;
    ASSERT_TRUE(root.create("", {}, &error)) << error;
    EXPECT_TRUE(fs::is_directory(root.paths().tmp() + "/ipc"));
    EXPECT_TRUE(fs::is_directory(root.paths().config() + "/app_parameters"));
    EXPECT_TRUE(fs::is_symlink(root.paths().framebuffer()));
}

TEST(DeviceRoot, LeavesRoomForSocketAddresses) {
    DeviceRoot root;
    std::string error;
    ASSERT_TRUE(root.create("", {}, &error)) << error;
    const std::string scheme = "ipc://";
    EXPECT_EQ(root.paths().commandAddress().rfind(scheme + root.paths().root, 0), 0u);
    EXPECT_LE(root.paths().commandAddress().size() - scheme.size(), 107u);
}

TEST(DeviceRoot, CopiesTheConfigurationAndTheFonts) {
    const fs::path source = fs::path(testing::TempDir()) / "vdevice_root_source";
    fs::create_directories(source / "capability_sets");
    std::ofstream(source / "capability_sets" / "one.json") << "{}";
    std::ofstream(source / "font.ttf") << "font";
    DeviceRoot root;
    std::string error;
    ASSERT_TRUE(root.create(source, {source / "font.ttf"}, &error)) << error;
    EXPECT_TRUE(fs::exists(root.paths().config() + "/capability_sets/one.json"));
    EXPECT_TRUE(fs::exists(root.paths().tmp() + "/font.ttf"));
    fs::remove_all(source);
}

TEST(DeviceRoot, LeavesNothingWhenItCannotBeFilled) {
    std::string error;
    DeviceRoot root;
    EXPECT_FALSE(root.create("/nonexistent/configuration", {}, &error));
    EXPECT_NE(error.find("/nonexistent/configuration"), std::string::npos);
    EXPECT_EQ(root.paths().root, "");
}

TEST(DeviceRoot, GoesWithItsOwner) {
    std::string path, error;
    {
        DeviceRoot root;
        ASSERT_TRUE(root.create("", {}, &error)) << error;
        path = root.paths().root;
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(DeviceRoot, SweepsRootsWhoseOwnerWasKilledAndNoOthers) {
    const std::string abandoned = "/tmp/vdev.abandoned-by-test";
    const std::string unlocked = "/tmp/vdev.just-made-by-test";
    fs::create_directories(abandoned);
    fs::create_directories(unlocked);
    std::ofstream(abandoned + "/lock");
    std::ofstream("/dev/shm/vdev.abandoned-by-test.fb1") << "pixels";
    std::string error;
    DeviceRoot living, next;
    ASSERT_TRUE(living.create("", {}, &error)) << error;
    ASSERT_TRUE(next.create("", {}, &error)) << error;
    EXPECT_FALSE(fs::exists(abandoned));
    EXPECT_FALSE(fs::exists("/dev/shm/vdev.abandoned-by-test.fb1"));
    EXPECT_TRUE(fs::exists(unlocked));
    EXPECT_TRUE(fs::exists(living.paths().root));
    fs::remove_all(unlocked);
}

}  // namespace
