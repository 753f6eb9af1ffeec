#include "fb_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "fake_driver.h"

namespace qws {
namespace {

using test::FakeDriver;
using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

constexpr uint32_t kRed[4] = {0xffff0000, 0xffff0000, 0xffff0000, 0xffff0000};

int errorLines(const std::string &text) {
    int lines = 0;
    for (size_t at = text.find("<ERROR! "); at != std::string::npos;
         at = text.find("<ERROR! ", at + 1))
        ++lines;
    return lines;
}

TEST(FbDevice, OpeningBlanksTheVisiblePixelsAndLeavesThePadding) {
    FakeDriver driver(10, 4, 12);
    driver.fillMemory(0xee);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    const std::vector<unsigned char> memory = driver.memory();
    for (size_t i = 0; i < memory.size(); ++i) {
        const bool isPadding = i % 52 >= 40;
        EXPECT_EQ(isPadding ? 0xee : 0, memory[i]) << i;
    }
}

TEST(FbDevice, TheDisplayIsSwitchedOnOnceItIsBlank) {
    FakeDriver driver(10, 4);
    driver.fillMemory(0xee);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    EXPECT_TRUE(driver.lit);
    EXPECT_EQ(0u, driver.pixelWhenLit);
}

TEST(FbDevice, ADriverThatCannotSwitchTheDisplayIsQuietlyBorne) {
    FakeDriver driver(10, 4);
    driver.failing.insert(FBIOBLANK);
    FbDevice device(driver);
    CaptureStderr();
    EXPECT_TRUE(device.open("fb"));
    EXPECT_TRUE(device.setMode(20, 30, 32));
    EXPECT_EQ("", GetCapturedStderr());
}

TEST(FbDevice, WritingKeepsToTheFrame) {
    FakeDriver driver(10, 4, 8);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    driver.fillMemory(0x11);
    const struct {
        int x, y, count;
    } outside[] = {{10, 0, 4}, {0, 4, 4},           {0, -1, 4},      {-4, 0, 4},     {0, 0, 0},
                   {0, 0, -3}, {INT_MIN + 1, 0, 4}, {INT_MAX, 0, 4}, {0, INT_MAX, 4}};
    for (const auto &row : outside)
        device.write(row.x, row.y, kRed, row.count);
    for (unsigned y = 0; y < 4; ++y) {
        for (unsigned x = 0; x < 10; ++x)
            EXPECT_EQ(0x11111111u, driver.pixel(x, y));
    }
    device.write(-2, 1, kRed, 4);
    device.write(8, 2, kRed, 4);
    for (unsigned x = 0; x < 10; ++x) {
        EXPECT_EQ(x < 2 ? kRed[0] : 0x11111111u, driver.pixel(x, 1));
        EXPECT_EQ(x >= 8 ? kRed[0] : 0x11111111u, driver.pixel(x, 2));
        EXPECT_EQ(0x11111111u, driver.pixel(x, 3));
    }
}

TEST(FbDevice, AModeChangeMapsTheNewModeBlankAndLetsTheOldOneGo) {
    FakeDriver driver(10, 4);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    driver.fillMemory(0xee);
    driver.linePadding = 16;
    ASSERT_TRUE(device.setMode(20, 30, 32));
    EXPECT_EQ(20, device.mode().width);
    EXPECT_EQ(30, device.mode().height);
    EXPECT_EQ(96u, device.mode().lineLength);
    EXPECT_EQ(1, driver.maps);
    EXPECT_EQ(0u, driver.pixel(0, 0));
    device.write(16, 29, kRed, 4);
    EXPECT_EQ(kRed[0], driver.pixel(19, 29));
}

/// Bytes of a frame of 10 x 4 pixels with rows of 48 bytes: visible ones zero, the rest 0xee.
void expectOnlyPadding(const std::vector<unsigned char> &memory) {
    ASSERT_EQ(4u * 48u, memory.size());
    for (size_t i = 0; i < memory.size(); ++i) {
        const bool isPadding = i % 48 >= 40;
        EXPECT_EQ(isPadding ? 0xee : 0, memory[i]) << i;
    }
}

TEST(FbDevice, ASmallerModeLeavesNothingOldBeyondIt) {
    const struct { int width, height; } rows[] = {{6, 3}, {6, 4}, {10, 3}};
    for (const auto &row : rows) {
        FakeDriver driver(10, 4, 8);
        FbDevice device(driver);
        ASSERT_TRUE(device.open("fb"));
        driver.keepsFrame = true;
        driver.fillMemory(0xee);
        ASSERT_TRUE(device.setMode(row.width, row.height, 32));
        expectOnlyPadding(driver.memory());
        expectOnlyPadding(driver.memoryWhenSynced);
    }
}

TEST(FbDevice, ARefusedSmallerModeLeavesTheOldOneBlankAndWorking) {
    FakeDriver driver(10, 4, 8);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    driver.fillMemory(0xee);
    driver.pretends = true;
    CaptureStderr();
    EXPECT_FALSE(device.setMode(6, 3, 32));
    EXPECT_EQ(1, errorLines(GetCapturedStderr()));
    expectOnlyPadding(driver.memory());
    device.write(6, 3, kRed, 4);
    EXPECT_EQ(kRed[0], driver.pixel(9, 3));
}

TEST(FbDevice, ARefusedOrPretendedModeLeavesTheOldOneWorkingAndSaysSoOnce) {
    const struct {
        const char *message;
        void (*spoil)(FakeDriver *);
    } rows[] = {
        {"FBIOPUT_VSCREENINFO fail! errno:25",
         [](FakeDriver *driver) { driver->failing.insert(FBIOPUT_VSCREENINFO); }},
        {"FBIOGET_VSCREENINFO fail! errno:25",
         [](FakeDriver *driver) { driver->failing.insert(FBIOGET_VSCREENINFO); }},
        {"FBIOGET_FSCREENINFO fail! errno:25",
         [](FakeDriver *driver) { driver->failing.insert(FBIOGET_FSCREENINFO); }},
        {"driver stays at 10x4", [](FakeDriver *driver) { driver->pretends = true; }},
        {"16 bits per pixel", [](FakeDriver *driver) { driver->depthAfterPut = 16; }},
        {"line length 4", [](FakeDriver *driver) { driver->lineLengthAfterPut = 4; }},
        {"memory of 100 bytes", [](FakeDriver *driver) { driver->memoryAfterPut = 100; }},
        {"mmap fail! errno:12", [](FakeDriver *driver) { driver->mapFails = true; }},
    };
    for (const auto &row : rows) {
        FakeDriver driver(10, 4);
        FbDevice device(driver);
        ASSERT_TRUE(device.open("fb")) << row.message;
        device.write(0, 0, kRed, 4);
        row.spoil(&driver);
        CaptureStderr();
        EXPECT_FALSE(device.setMode(20, 30, 32)) << row.message;
        const std::string errors = GetCapturedStderr();
        EXPECT_THAT(errors, HasSubstr(row.message));
        EXPECT_EQ(1, errorLines(errors)) << errors;
        EXPECT_EQ(10u, driver.var.xres);
        EXPECT_EQ(4u, driver.var.yres);
        EXPECT_EQ(10, device.mode().width);
        EXPECT_EQ(kRed[0], driver.pixel(0, 0)) << "untouched";
        device.write(6, 3, kRed, 4);
        EXPECT_EQ(kRed[0], driver.pixel(9, 3)) << row.message;
    }
}

TEST(FbDevice, ImpossibleModesNeverReachTheDriver) {
    FakeDriver driver(10, 4);
    FbDevice device(driver);
    ASSERT_TRUE(device.open("fb"));
    const struct {
        int width, height, depth;
    } rows[] = {{0, 10, 32},       {10, 0, 32},     {-1, -1, 32},
                {16385, 10, 32},   {10, 16385, 32}, {INT_MAX, INT_MAX, 32},
                {INT_MIN, 10, 32}, {10, 10, 16},    {10, 10, 0}};
    for (const auto &row : rows) {
        CaptureStderr();
        EXPECT_FALSE(device.setMode(row.width, row.height, row.depth));
        EXPECT_EQ(1, errorLines(GetCapturedStderr()));
    }
    EXPECT_EQ(0, driver.puts);
}

TEST(FbDevice, AnUnusableDeviceSaysSoOnceAndSwallowsWhatIsWritten) {
    const struct {
        const char *message;
        void (*spoil)(FakeDriver *);
    } rows[] = {
        {"open fail! errno:13", [](FakeDriver *driver) { driver->openError = EACCES; }},
        {"FBIOGET_VSCREENINFO fail! errno:25",
         [](FakeDriver *driver) { driver->failing.insert(FBIOGET_VSCREENINFO); }},
        {"FBIOGET_FSCREENINFO fail! errno:25",
         [](FakeDriver *driver) { driver->failing.insert(FBIOGET_FSCREENINFO); }},
        {"mmap fail! errno:12", [](FakeDriver *driver) { driver->mapFails = true; }},
        {"line length 3", [](FakeDriver *driver) { driver->fix.line_length = 3; }},
    };
    for (const auto &row : rows) {
        FakeDriver driver(10, 4);
        row.spoil(&driver);
        FbDevice device(driver);
        CaptureStderr();
        EXPECT_FALSE(device.open("/dev/fb1"));
        const std::string errors = GetCapturedStderr();
        EXPECT_THAT(errors, HasSubstr(std::string("/dev/fb1 ") + row.message));
        EXPECT_EQ(1, errorLines(errors));
        EXPECT_FALSE(device.isUsable());
        device.write(0, 0, kRed, 4);
    }
}

TEST(FbDevice, AChangeOfModeBringsAnUnusableDeviceToLife) {
    FakeDriver driver(10, 4);
    driver.openError = ENXIO;
    FbDevice device(driver);
    CaptureStderr();
    EXPECT_FALSE(device.open("fb"));
    EXPECT_FALSE(device.setMode(20, 30, 32));
    EXPECT_EQ(2, errorLines(GetCapturedStderr()));
    driver.openError = 0;
    EXPECT_TRUE(device.setMode(20, 30, 32));
    device.write(0, 0, kRed, 4);
    EXPECT_EQ(kRed[0], driver.pixel(0, 0));
}

TEST(FbDevice, ADeviceOfAnotherDepthIsAskedForThirtyTwoBits) {
    FakeDriver driver(10, 4);
    driver.var.bits_per_pixel = 16;
    FbDevice device(driver);
    CaptureStderr();
    EXPECT_TRUE(device.open("fb"));
    EXPECT_EQ("", GetCapturedStderr());
    EXPECT_EQ(32u, driver.var.bits_per_pixel);
}

TEST(FbDevice, AModeWithoutAlphaIsNamedAndWorks) {
    FakeDriver driver(10, 4);
    driver.var.transp = {0, 0, 0};
    FbDevice device(driver);
    CaptureStderr();
    ASSERT_TRUE(device.open("fb"));
    const std::string errors = GetCapturedStderr();
    EXPECT_THAT(errors, HasSubstr("no alpha bits"));
    EXPECT_EQ(1, errorLines(errors));
    device.write(0, 0, kRed, 4);
    EXPECT_EQ(0x00ff0000u, driver.pixel(0, 0));
}

TEST(FbDevice, NothingStaysOpenOrMapped) {
    FakeDriver driver(10, 4);
    {
        FbDevice device(driver);
        ASSERT_TRUE(device.open("fb"));
        ASSERT_TRUE(device.setMode(20, 30, 32));
        EXPECT_EQ(1, driver.opens);
        EXPECT_EQ(1, driver.maps);
    }
    EXPECT_EQ(0, driver.opens);
    EXPECT_EQ(0, driver.maps);
}

}  // namespace
}  // namespace qws
