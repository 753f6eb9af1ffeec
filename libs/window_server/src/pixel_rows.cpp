#include "pixel_rows.h"

#include <QRgb>
#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace qws {
namespace {

constexpr size_t kPixelBytes = sizeof(uint32_t);

/// Pixels that are judged and translated together: small enough for the stack and the nearest
/// cache, and a fixed number, so that the compiler makes vector code of the loops over them.
constexpr size_t kBlock = 64;

/// Opaque and fully transparent pixels are the same with straight and with premultiplied alpha. As
/// signed numbers the opaque ones are the last below 0: two comparisons tell them all.
bool isPlain(const uint32_t *pixels, size_t count) {
    constexpr int32_t kFirstOpaque = -0x1000000;
    int32_t mixed = 0;
    const auto judge = [&mixed](uint32_t pixel) {
        const auto number = static_cast<int32_t>(pixel);
        mixed |= -static_cast<int32_t>(number > 0) | -static_cast<int32_t>(number < kFirstOpaque);
    };
    if (count == kBlock) {
        for (size_t i = 0; i < kBlock; ++i)
            judge(pixels[i]);
    } else {
        for (size_t i = 0; i < count; ++i)
            judge(pixels[i]);
    }
    return mixed == 0;
}

bool isClear(const uint32_t *pixels, size_t count) {
    uint32_t any = 0;
    if (count == kBlock) {
        for (size_t i = 0; i < kBlock; ++i)
            any |= pixels[i];
    } else {
        for (size_t i = 0; i < count; ++i)
            any |= pixels[i];
    }
    return any == 0;
}

bool isPaintedOrder(const PixelLayout &layout) {
    const PixelLayout painted;
    return layout.hasAlpha && layout.red == painted.red && layout.green == painted.green &&
           layout.blue == painted.blue && layout.alpha == painted.alpha;
}

/// Copies to the device past the cache, where the processor can: what is never read again would
/// only drive the painted pixels out of it, and each line would be fetched before it is
/// overwritten.
void copyToDevice(unsigned char *device, const uint32_t *painted, size_t count) {
#ifdef __SSE2__
    constexpr size_t kVector = sizeof(__m128i) / kPixelBytes;
    while (count > 0 && reinterpret_cast<uintptr_t>(device) % sizeof(__m128i) != 0) {
        if (reinterpret_cast<uintptr_t>(device) % kPixelBytes != 0) break;
        std::memcpy(device, painted++, kPixelBytes);
        device += kPixelBytes;
        --count;
    }
    if (reinterpret_cast<uintptr_t>(device) % sizeof(__m128i) == 0) {
        for (; count >= kVector; count -= kVector, painted += kVector, device += sizeof(__m128i)) {
            _mm_stream_si128(reinterpret_cast<__m128i *>(device),
                             _mm_loadu_si128(reinterpret_cast<const __m128i *>(painted)));
        }
    }
#endif
    std::memcpy(device, painted, count * kPixelBytes);
}

/// Translates pixel by pixel. Neighbours are often equal: a fill, the inside of a translucent
/// panel.
template <typename Translation>
void writeTranslated(const uint32_t *painted, unsigned char *device, size_t count,
                     Translation translation) {
    uint32_t translated[kBlock];
    uint32_t last = 0;
    uint32_t lastTranslated = 0;
    for (size_t i = 0; i < count; ++i) {
        if (painted[i] != last) {
            last = painted[i];
            lastTranslated = translation(last);
        }
        translated[i] = lastTranslated;
    }
    copyToDevice(device, translated, count);
}

/// Channels in the painted order: stretches of plain blocks are copied as they are, in one go.
void writeInPaintedOrder(const uint32_t *painted, unsigned char *device, size_t count) {
    size_t plainFrom = 0;
    for (size_t at = 0; at < count; at += kBlock) {
        const size_t block = std::min(kBlock, count - at);
        if (isPlain(painted + at, block)) continue;
        copyToDevice(device + plainFrom * kPixelBytes, painted + plainFrom, at - plainFrom);
        writeTranslated(painted + at, device + at * kPixelBytes, block,
                        [](uint32_t pixel) { return qUnpremultiply(pixel); });
        plainFrom = at + block;
    }
    copyToDevice(device + plainFrom * kPixelBytes, painted + plainFrom, count - plainFrom);
}

void writeInOtherOrder(const PixelLayout &layout, const uint32_t *painted, unsigned char *device,
                       size_t count) {
    for (size_t at = 0; at < count; at += kBlock) {
        const size_t block = std::min(kBlock, count - at);
        if (isClear(painted + at, block)) {
            std::memset(device + at * kPixelBytes, 0, block * kPixelBytes);
        } else {
            writeTranslated(painted + at, device + at * kPixelBytes, block,
                            [&layout](uint32_t pixel) { return devicePixel(layout, pixel); });
        }
    }
}

}  // namespace

bool operator==(const PixelLayout &a, const PixelLayout &b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha &&
           a.hasAlpha == b.hasAlpha && a.straight == b.straight;
}

uint32_t devicePixel(const PixelLayout &layout, uint32_t painted) {
    const QRgb pixel = layout.hasAlpha && layout.straight ? qUnpremultiply(painted) : painted;
    const uint32_t alpha =
        layout.hasAlpha ? static_cast<uint32_t>(qAlpha(pixel)) << layout.alpha : 0;
    return static_cast<uint32_t>(qRed(pixel)) << layout.red |
           static_cast<uint32_t>(qGreen(pixel)) << layout.green |
           static_cast<uint32_t>(qBlue(pixel)) << layout.blue | alpha;
}

void writeRow(const PixelLayout &layout, const uint32_t *painted, unsigned char *device,
              size_t count) {
    if (!isPaintedOrder(layout)) {
        writeInOtherOrder(layout, painted, device, count);
    } else if (!layout.straight) {
        copyToDevice(device, painted, count);
    } else {
        writeInPaintedOrder(painted, device, count);
    }
}

}  // namespace qws
