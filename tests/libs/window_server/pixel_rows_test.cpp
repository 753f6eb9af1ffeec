#include "pixel_rows.h"

#include <gtest/gtest.h>
#include <QRgb>

#include <cstring>
#include <random>
#include <vector>

namespace qws {
namespace {

PixelLayout layoutOf(unsigned red, unsigned green, unsigned blue, unsigned alpha) {
    PixelLayout layout;
    layout.red = red;
    layout.green = green;
    layout.blue = blue;
    layout.alpha = alpha;
    return layout;
}

TEST(PixelRows, DevicePixelsHaveTheirChannelsWhereTheDeviceSays) {
    PixelLayout opaque = layoutOf(16, 8, 0, 0);
    opaque.hasAlpha = false;
    PixelLayout premultiplied;
    premultiplied.straight = false;
    const struct {
        PixelLayout layout;
        uint32_t painted;
        uint32_t device;
    } rows[] = {
        {PixelLayout(), 0xff123456, 0xff123456},
        {PixelLayout(), 0x00000000, 0x00000000},
        {PixelLayout(), 0x80800000, 0x80ff0000},
        {PixelLayout(), 0x80004000, 0x80008000},
        {premultiplied, 0x80800000, 0x80800000},
        {layoutOf(0, 8, 16, 24), 0xff123456, 0xff563412},
        {layoutOf(24, 16, 8, 0), 0xff123456, 0x123456ff},
        {layoutOf(24, 16, 8, 0), 0x80800000, 0xff000080},
        {layoutOf(8, 16, 24, 0), 0xff123456, 0x563412ff},
        {opaque, 0xff123456, 0x00123456},
        {opaque, 0x80800000, 0x00800000},
        {opaque, 0x00000000, 0x00000000},
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.device, devicePixel(row.layout, row.painted));
}

TEST(PixelRows, StraightColoursAreWhatQtMakesOfThemForEveryAlphaAndColour) {
    std::vector<uint32_t> painted;
    for (uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (uint32_t colour = 0; colour <= alpha; ++colour) {
            painted.push_back(alpha << 24 | colour << 16 | (alpha - colour) << 8 | colour / 2);
        }
    }
    std::vector<uint32_t> device(painted.size());
    writeRow(PixelLayout(), painted.data(), reinterpret_cast<unsigned char *>(device.data()),
             painted.size());
    for (size_t i = 0; i < painted.size(); ++i) {
        ASSERT_EQ(qUnpremultiply(painted[i]), device[i]) << std::hex << painted[i];
        ASSERT_EQ(painted[i], qPremultiply(device[i])) << "and back";
    }
}

TEST(PixelRows, ColoursBrighterThanTheirAlphaAreWhatQtMakesOfThemToo) {
    std::mt19937 random(3);
    std::vector<uint32_t> painted(4099);
    for (uint32_t &pixel : painted)
        pixel = static_cast<uint32_t>(random());
    std::vector<uint32_t> device(painted.size());
    writeRow(PixelLayout(), painted.data(), reinterpret_cast<unsigned char *>(device.data()),
             painted.size());
    for (size_t i = 0; i < painted.size(); ++i)
        ASSERT_EQ(qUnpremultiply(painted[i]), device[i]) << std::hex << painted[i];
}

/// Stretches of transparent, opaque, translucent and any pixels, of random length.
std::vector<uint32_t> mixedRow(std::mt19937 *random, size_t count) {
    std::vector<uint32_t> row;
    while (row.size() < count) {
        const uint32_t any = qPremultiply((*random)());
        const uint32_t kinds[] = {0, any | 0xff000000, any};
        const unsigned kind = (*random)() % 4;
        for (size_t left = (*random)() % 150; left > 0 && row.size() < count; --left) {
            row.push_back(kind < 3 ? kinds[kind] : qPremultiply((*random)()));
        }
    }
    return row;
}

TEST(PixelRows, RowsAreTheirPixelsOneByOneAtAnyLengthAndAlignment) {
    PixelLayout opaque = layoutOf(0, 8, 16, 0);
    opaque.hasAlpha = false;
    PixelLayout premultiplied;
    premultiplied.straight = false;
    const PixelLayout layouts[] = {PixelLayout(), premultiplied, opaque, layoutOf(24, 16, 8, 0)};
    std::mt19937 random(4711);
    for (int round = 0; round < 400; ++round) {
        const PixelLayout &layout = layouts[round % 4];
        const size_t count = random() % 700;
        const size_t shift = random() % 5;
        const std::vector<uint32_t> painted = mixedRow(&random, count);
        constexpr unsigned char kGuard = 0xa5;
        std::vector<unsigned char> device(shift + count * 4 + 8, kGuard);
        writeRow(layout, painted.data(), device.data() + shift, count);
        for (size_t i = 0; i < count; ++i) {
            uint32_t pixel;
            std::memcpy(&pixel, device.data() + shift + i * 4, sizeof pixel);
            ASSERT_EQ(devicePixel(layout, painted[i]), pixel) << "pixel " << i << " of " << count;
        }
        for (size_t i = 0; i < shift; ++i)
            ASSERT_EQ(kGuard, device[i]);
        for (size_t i = shift + count * 4; i < device.size(); ++i)
            ASSERT_EQ(kGuard, device[i]);
    }
}

TEST(PixelRows, EdgesOfTextsInFullColoursAreWhatQtMakesOfThem) {
    std::vector<uint32_t> painted;
    for (uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (uint32_t channels = 0; channels < 8; ++channels) {
            const uint32_t red = (channels & 4) != 0 ? alpha : 0;
            const uint32_t green = (channels & 2) != 0 ? alpha : 0;
            const uint32_t blue = (channels & 1) != 0 ? alpha : 0;
            painted.push_back(alpha << 24 | red << 16 | green << 8 | blue);
        }
    }
    std::vector<uint32_t> device(painted.size());
    writeRow(PixelLayout(), painted.data(), reinterpret_cast<unsigned char *>(device.data()),
             painted.size());
    for (size_t i = 0; i < painted.size(); ++i)
        ASSERT_EQ(qUnpremultiply(painted[i]), device[i]) << std::hex << painted[i];
}

TEST(PixelRows, ARectangleIsItsRowsAndNothingBesideThem) {
    PixelLayout premultiplied;
    premultiplied.straight = false;
    const PixelLayout layouts[] = {PixelLayout(), premultiplied, layoutOf(24, 16, 8, 0)};
    constexpr size_t kWidths[] = {1, 2, 3, 4, 7, 8, 15, 16, 17, 63, 200, 511, 512, 600};
    constexpr size_t kHeights[] = {1, 2, 3, 16, 17, 40};
    std::mt19937 random(815);
    for (const PixelLayout &layout : layouts) {
        for (const size_t width : kWidths) {
            for (const size_t height : kHeights) {
                const size_t shift = random() % 5;
                const size_t paintedLine = width + random() % 9;
                const size_t deviceLine = width * 4 + random() % 33;
                const std::vector<uint32_t> painted = mixedRow(&random, paintedLine * height);
                std::vector<unsigned char> device(shift + deviceLine * height, 0xa5);
                std::vector<unsigned char> expected = device;
                for (size_t y = 0; y < height; ++y)
                    writeRow(layout, painted.data() + y * paintedLine,
                             expected.data() + shift + y * deviceLine, width);
                writeRows(layout,
                          {reinterpret_cast<const unsigned char *>(painted.data()),
                           paintedLine * sizeof(uint32_t)},
                          {device.data() + shift, deviceLine}, width, height);
                ASSERT_EQ(expected, device) << width << " x " << height;
            }
        }
    }
}

TEST(PixelRows, AClearedRectangleLeavesWhatIsBesideIt) {
    for (const size_t width : {1, 2, 3, 4, 7, 8, 15, 16, 17, 63, 600}) {
        constexpr size_t kRows = 5;
        constexpr size_t kBefore = 3;
        const size_t line = width + 7;
        std::vector<uint32_t> painted(line * (kRows + 2), 0xdeadbeef);
        clearRows({reinterpret_cast<unsigned char *>(painted.data() + line + kBefore),
                   line * sizeof(uint32_t)},
                  width, kRows);
        for (size_t i = 0; i < painted.size(); ++i) {
            const size_t y = i / line;
            const size_t x = i % line;
            const bool inside = y >= 1 && y <= kRows && x >= kBefore && x < kBefore + width;
            ASSERT_EQ(inside ? 0u : 0xdeadbeef, painted[i]) << width << ": " << x << ", " << y;
        }
    }
}

}  // namespace
}  // namespace qws
