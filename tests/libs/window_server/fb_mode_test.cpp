#include "fb_mode.h"

#include <gtest/gtest.h>

namespace qws {
namespace {

fb_var_screeninfo usualVar() {
    fb_var_screeninfo var{};
    var.xres = var.xres_virtual = 1920;
    var.yres = var.yres_virtual = 1080;
    var.bits_per_pixel = 32;
    var.red = {16, 8, 0};
    var.green = {8, 8, 0};
    var.blue = {0, 8, 0};
    var.transp = {24, 8, 0};
    return var;
}

fb_fix_screeninfo usualFix() {
    fb_fix_screeninfo fix{};
    fix.line_length = 7680;
    fix.smem_len = 7680 * 1080;
    return fix;
}

TEST(FbMode, AUsualModeIsReadAsItIs) {
    std::string problem;
    const auto mode = readMode(usualVar(), usualFix(), &problem);
    ASSERT_TRUE(mode.has_value());
    EXPECT_EQ("", problem);
    EXPECT_EQ(1920, mode->width);
    EXPECT_EQ(1080, mode->height);
    EXPECT_EQ(7680u, mode->lineLength);
    EXPECT_EQ(0u, mode->origin);
    EXPECT_EQ(7680u * 1080u, mode->mapLength);
    EXPECT_EQ(16u, mode->layout.red);
    EXPECT_EQ(24u, mode->layout.alpha);
    EXPECT_TRUE(mode->layout.hasAlpha);
}

TEST(FbMode, APannedAndPaddedModeStartsWhereItIsVisible) {
    fb_var_screeninfo var = usualVar();
    var.xres = 100;
    var.yres = 10;
    var.xoffset = 3;
    var.yoffset = 2;
    fb_fix_screeninfo fix = usualFix();
    fix.line_length = 512;
    fix.smem_len = 512 * 12;
    std::string problem;
    const auto mode = readMode(var, fix, &problem);
    ASSERT_TRUE(mode.has_value());
    EXPECT_EQ(2u * 512 + 12, mode->origin);
    EXPECT_EQ(11u * 512 + 12 + 400, mode->mapLength);
}

TEST(FbMode, OddAnswersAreNoModeAndSayWhy) {
    const struct {
        const char *problem;
        void (*spoil)(fb_var_screeninfo *, fb_fix_screeninfo *);
    } rows[] = {
        {"16 bits per pixel instead of 32", [](auto *var, auto *) { var->bits_per_pixel = 16; }},
        {"0 bits per pixel instead of 32", [](auto *var, auto *) { var->bits_per_pixel = 0; }},
        {"impossible size 0x1080", [](auto *var, auto *) { var->xres = 0; }},
        {"impossible size 1920x0", [](auto *var, auto *) { var->yres = 0; }},
        {"impossible size 4294967295x1080", [](auto *var, auto *) { var->xres = ~0u; }},
        {"impossible size 16385x1080", [](auto *var, auto *) { var->xres = 16385; }},
        {"impossible offset 0,4294967295", [](auto *var, auto *) { var->yoffset = ~0u; }},
        {"line length 7676 is less than the 7680 bytes of a row",
         [](auto *, auto *fix) { fix->line_length = 7676; }},
        {"line length 0 is less than the 7680 bytes of a row",
         [](auto *, auto *fix) { fix->line_length = 0; }},
        {"memory of 8294399 bytes is less than the 8294400 of the mode",
         [](auto *, auto *fix) { fix->smem_len = 7680 * 1080 - 1; }},
        {"memory of 8294400 bytes is less than the 8302080 of the mode",
         [](auto *var, auto *) { var->yoffset = 1; }},
    };
    for (const auto &row : rows) {
        fb_var_screeninfo var = usualVar();
        fb_fix_screeninfo fix = usualFix();
        row.spoil(&var, &fix);
        std::string problem;
        EXPECT_FALSE(readMode(var, fix, &problem).has_value()) << row.problem;
        EXPECT_EQ(row.problem, problem);
    }
}

TEST(FbMode, WithoutAlphaBitsTheModeIsUsableAndSaysSo) {
    fb_var_screeninfo var = usualVar();
    var.transp = {0, 0, 0};
    std::string problem;
    const auto mode = readMode(var, usualFix(), &problem);
    ASSERT_TRUE(mode.has_value());
    EXPECT_FALSE(mode->layout.hasAlpha);
    EXPECT_NE(std::string::npos, problem.find("no alpha bits"));
}

TEST(FbMode, ChannelsThatAreNoBytesAreTakenAsTheUsualOnes) {
    std::string none;
    const PixelLayout usual = readMode(usualVar(), usualFix(), &none)->layout;
    const fb_bitfield odd[] = {{0, 0, 0}, {16, 5, 0}, {25, 8, 0}, {~0u, 8, 0}};
    for (const fb_bitfield &channel : odd) {
        fb_var_screeninfo var = usualVar();
        var.green = channel;
        std::string problem;
        const auto mode = readMode(var, usualFix(), &problem);
        ASSERT_TRUE(mode.has_value());
        EXPECT_TRUE(mode->layout == usual);
        EXPECT_NE("", problem);
    }
}

TEST(FbMode, ARequestKeepsTimingsAndChannelsAndLeavesPanning) {
    fb_var_screeninfo current = usualVar();
    current.xoffset = 5;
    current.yoffset = 1080;
    current.pixclock = 6734;
    current.red = {0, 8, 0};
    const fb_var_screeninfo request = modeRequest(current, 1280, 720);
    EXPECT_EQ(1280u, request.xres);
    EXPECT_EQ(1280u, request.xres_virtual);
    EXPECT_EQ(720u, request.yres);
    EXPECT_EQ(720u, request.yres_virtual);
    EXPECT_EQ(0u, request.xoffset);
    EXPECT_EQ(0u, request.yoffset);
    EXPECT_EQ(6734u, request.pixclock);
    EXPECT_EQ(0u, request.red.offset);
    EXPECT_EQ(unsigned{FB_ACTIVATE_NOW}, request.activate);
}

TEST(FbMode, ARequestFromAnotherDepthNamesTheChannels) {
    fb_var_screeninfo current = usualVar();
    current.bits_per_pixel = 16;
    current.red = {11, 5, 0};
    current.transp = {0, 0, 0};
    const fb_var_screeninfo request = modeRequest(current, 1920, 1080);
    EXPECT_EQ(32u, request.bits_per_pixel);
    EXPECT_EQ(16u, request.red.offset);
    EXPECT_EQ(8u, request.red.length);
    EXPECT_EQ(24u, request.transp.offset);
    EXPECT_EQ(8u, request.transp.length);
}

TEST(FbMode, TheDeviceIsFoundInTheDisplayName) {
    const struct {
        const char *display;
        const char *device;
    } rows[] = {
        {"linuxFB:/dev/fb1", "/dev/fb1"},
        {"LinuxFb:mmWidth40:/dev/fb2", "/dev/fb2"},
        {"linuxFB:", "/dev/fb0"},
        {"linuxFB", "/dev/fb0"},
        {"", "/dev/fb0"},
        {nullptr, "/dev/fb0"},
        {"linuxFB:/tmp/a:b", "/tmp/a:b"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.device, devicePath(row.display));
}

}  // namespace
}  // namespace qws
