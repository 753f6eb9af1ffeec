/**
 * @file pixel_rows.h
 * Rows of painted pixels to rows of device pixels.
 *
 * Painted pixels are QImage::Format_ARGB32_Premultiplied. Device pixels are 32 bits wide, with each
 * channel's eight bits where the framebuffer says, and straight alpha unless its plane blends
 * premultiplied.
 *
 * Pure: no state, no windows. Thread: any.
 */
#ifndef WINDOW_SERVER_PIXEL_ROWS_H
#define WINDOW_SERVER_PIXEL_ROWS_H

#include <cstddef>
#include <cstdint>

namespace qws {

/** Where a device pixel has its channels: each the number of its lowest bit, 0 to 24. */
struct PixelLayout {
    unsigned red = 16;
    unsigned green = 8;
    unsigned blue = 0;
    unsigned alpha = 24;
    /// Without alpha a pixel is what it looks like over black, and its spare bits are 0.
    bool hasAlpha = true;
    /// Whether the plane multiplies the colours by alpha itself; premultiplied colours stay
    /// otherwise.
    bool straight = true;
};

bool operator==(const PixelLayout &a, const PixelLayout &b);

/** One painted pixel as the device wants it. With straight alpha a pixel of alpha 0 is 0. */
uint32_t devicePixel(const PixelLayout &layout, uint32_t painted);

/**
 * Writes `count` pixels, each once, in order; `device` is never read.
 * @param device  need not be aligned: a row may start at any byte.
 */
void writeRow(const PixelLayout &layout, const uint32_t *painted, unsigned char *device,
              size_t count);

/** Where rows of pixels begin: the first of them, and how many bytes further each next one. */
template <typename Byte>
struct PixelRows {
    Byte *first;
    size_t lineLength;
};

/** The same for `rows` rows of `count` pixels each. */
void writeRows(const PixelLayout &layout, const PixelRows<const unsigned char> &painted,
               const PixelRows<unsigned char> &device, size_t count, size_t rows);

/** Makes the first `count` pixels of `rows` rows of painted pixels transparent. */
void clearRows(const PixelRows<unsigned char> &painted, size_t count, size_t rows);

}  // namespace qws

#endif
