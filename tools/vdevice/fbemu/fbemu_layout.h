/**
 * @file fbemu_layout.h
 * The file behind an emulated framebuffer: what the preloaded library and its readers share.
 *
 * One page of header, then the pixel memory as the program sees it through mmap(): row y starts at
 * kFbemuPixelsOffset + (y + yoffset) * line_length. All numbers are unsigned 32-bit in the
 * machine's byte order.
 *
 * A writer makes `sequence` odd, changes the header and makes it even again; a reader whose copy
 * has an odd sequence, or another one than the file has after the copy, reads again. Pixels are not
 * covered: they change under a reader as they do on a real screen.
 */
#ifndef VDEVICE_FBEMU_LAYOUT_H
#define VDEVICE_FBEMU_LAYOUT_H

#include <cstddef>
#include <cstdint>

constexpr uint32_t kFbemuMagic = 0x4d454246;  // "FBEM"
constexpr uint32_t kFbemuVersion = 1;
constexpr uint32_t kFbemuPixelsOffset = 4096;
/** 3840 x 2160 pixels of 32 bits and up to 2116 bytes of padding a row. */
constexpr uint32_t kFbemuMemoryBytes = 36u << 20;
constexpr uint32_t kFbemuFileBytes = kFbemuPixelsOffset + kFbemuMemoryBytes;

/** Bits of FbemuHeader::behaviour, read at every request: a test may change them at any time. */
enum FbemuBehaviour : uint32_t {
    kFbemuRefuseMode = 1u << 0,   ///< FBIOPUT_VSCREENINFO fails with EINVAL
    kFbemuPretendMode = 1u << 1,  ///< FBIOPUT_VSCREENINFO returns 0 and changes nothing
};

/** Where a channel lies in a pixel. */
struct FbemuChannel {
    uint32_t offset;  ///< bits from the pixel's least significant one
    uint32_t length;  ///< bits; 0: the format has no such channel
};

struct FbemuHeader {
    uint32_t magic;  ///< kFbemuMagic once the header is whole
    uint32_t version;
    uint32_t sequence;
    uint32_t width;   ///< visible pixels
    uint32_t height;  ///< visible rows
    uint32_t virtual_width;
    uint32_t virtual_height;
    uint32_t xoffset;  ///< first visible pixel of a row
    uint32_t yoffset;  ///< first visible row
    uint32_t bits_per_pixel;
    uint32_t line_length;  ///< bytes from row to row
    uint32_t padding;      ///< bytes that the driver adds to each row
    FbemuChannel red;
    FbemuChannel green;
    FbemuChannel blue;
    FbemuChannel alpha;
    uint32_t behaviour;      ///< FbemuBehaviour bits
    uint32_t mode_requests;  ///< FBIOPUT_VSCREENINFO calls, refused ones included
    uint32_t mode_changes;   ///< those that took effect
    uint32_t maps;           ///< mmap() calls that succeeded
    uint32_t blank;          ///< argument of the last FBIOBLANK, 0 at start
};

static_assert(sizeof(FbemuHeader) == 25 * sizeof(uint32_t), "the header has no gaps");
static_assert(sizeof(FbemuHeader) <= kFbemuPixelsOffset, "the header fits its page");

#endif
