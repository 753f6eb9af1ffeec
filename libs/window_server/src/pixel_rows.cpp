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

#ifdef __SSE2__
/// Rows of at least as many pixels are stored past the cache: what is never read again would only
/// drive the painted pixels out of it, and each line would be fetched before it is overwritten. Of
/// a narrow row too many lines are stored in part, which costs more past the cache than in it.
constexpr size_t kWideRow = 512;

using Vector = __m128i;
constexpr size_t kVectorPixels = sizeof(Vector) / kPixelBytes;
constexpr size_t kLinePixels = 64 / kPixelBytes;

bool holdsEverywhere(Vector comparison) {
    return _mm_movemask_epi8(comparison) == 0xFFFF;
}

/// The pixels before the first that a whole vector may be stored at; all where there is none.
size_t pixelsToAlignment(const unsigned char *device, size_t count) {
    const size_t past = reinterpret_cast<uintptr_t>(device) % sizeof(Vector);
    if (past % kPixelBytes != 0) return count;
    return past == 0 ? 0 : std::min(count, (sizeof(Vector) - past) / kPixelBytes);
}

/// Stores to an aligned place, past the cache or not.
void store(unsigned char *device, Vector pixels, bool pastCache) {
    auto *place = reinterpret_cast<Vector *>(device);
    if (pastCache) {
        _mm_stream_si128(place, pixels);
    } else {
        _mm_store_si128(place, pixels);
    }
}

Vector load(const uint32_t *painted) {
    return _mm_loadu_si128(reinterpret_cast<const Vector *>(painted));
}

/// All bits set in the opaque and the clear pixels, which stay as they are.
Vector plainPixels(Vector pixels) {
    const Vector opaque = _mm_cmpeq_epi32(_mm_srli_epi32(pixels, 24), _mm_set1_epi32(0xFF));
    return _mm_or_si128(opaque, _mm_cmpeq_epi32(pixels, _mm_setzero_si128()));
}

/// The straight colours of one channel: what qUnpremultiply() computes. All products are below
/// 2^24, and so exact.
Vector straightChannel(Vector channel, __m128 factors) {
    const Vector product = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(channel), factors));
    return _mm_srli_epi32(_mm_add_epi32(product, _mm_set1_epi32(0x8000)), 16);
}

Vector factorsOf(const uint32_t *painted) {
    const auto factor = [painted](size_t i) {
        return static_cast<int>(qt_inv_premul_factor[qAlpha(painted[i])]);
    };
    return _mm_set_epi32(factor(3), factor(2), factor(1), factor(0));
}

/// Each pixel's alpha in all of its bytes.
Vector alphaEverywhere(Vector pixels) {
    const Vector alpha = _mm_srli_epi32(pixels, 24);
    const Vector twice = _mm_or_si128(alpha, _mm_slli_epi32(alpha, 8));
    return _mm_or_si128(twice, _mm_slli_epi32(twice, 16));
}

/** Straight colours where each channel is all of the alpha or nothing, as at the edges of white,
 * black and bright texts. */
struct Bright {
    Vector pixels;
    Vector holds;  ///< all bits set in the bytes of which that is true
};

Bright bright(Vector pixels) {
    const Vector alphaByte = _mm_set1_epi32(static_cast<int>(0xFF000000));
    const Vector none = _mm_cmpeq_epi8(pixels, _mm_setzero_si128());
    const Vector full = _mm_cmpeq_epi8(pixels, alphaEverywhere(pixels));
    return {_mm_or_si128(_mm_and_si128(pixels, alphaByte),
                         _mm_andnot_si128(_mm_or_si128(none, alphaByte), full)),
            _mm_or_si128(none, full)};
}

constexpr size_t kLineVectors = kLinePixels / kVectorPixels;

/** The pixels of a cache line. */
struct Line {
    explicit Line(const uint32_t *painted) {
        for (size_t i = 0; i < kLineVectors; ++i)
            vectors[i] = load(painted + i * kVectorPixels);
    }

    bool isClear() const {
        Vector any = vectors[0];
        for (size_t i = 1; i < kLineVectors; ++i)
            any = _mm_or_si128(any, vectors[i]);
        return holdsEverywhere(_mm_cmpeq_epi32(any, _mm_setzero_si128()));
    }

    bool isOpaque() const {
        Vector all = vectors[0];
        for (size_t i = 1; i < kLineVectors; ++i)
            all = _mm_and_si128(all, vectors[i]);
        return holdsEverywhere(_mm_cmpeq_epi32(_mm_srli_epi32(all, 24), _mm_set1_epi32(0xFF)));
    }

    void write(unsigned char *device, bool pastCache) const {
        for (size_t i = 0; i < kLineVectors; ++i)
            store(device + i * sizeof(Vector), vectors[i], pastCache);
    }

    Vector vectors[kLineVectors];
};

/// Makes the colours of a line straight if its pixels are all bright.
bool straightenBright(Line *line) {
    Line straight = *line;
    Vector holds = _mm_set1_epi32(-1);
    for (Vector &pixels : straight.vectors) {
        const Bright simple = bright(pixels);
        pixels = simple.pixels;
        holds = _mm_and_si128(holds, simple.holds);
    }
    if (!holdsEverywhere(holds)) return false;
    *line = straight;
    return true;
}

/// A vector of pixels with straight colours.
Vector unpremultiplied(const uint32_t *painted) {
    const Vector pixels = load(painted);
    const Bright simple = bright(pixels);
    if (holdsEverywhere(simple.holds)) return simple.pixels;
    const Vector low = _mm_set1_epi32(0xFF);
    const Vector alpha = _mm_srli_epi32(pixels, 24);
    const Vector red = _mm_and_si128(_mm_srli_epi32(pixels, 16), low);
    const Vector green = _mm_and_si128(_mm_srli_epi32(pixels, 8), low);
    const Vector blue = _mm_and_si128(pixels, low);
    const Vector brightest = _mm_max_epi16(red, _mm_max_epi16(green, blue));
    if (_mm_movemask_epi8(_mm_cmpgt_epi32(brightest, alpha)) != 0) {
        // No premultiplied colours; painting makes none.
        return _mm_set_epi32(static_cast<int>(qUnpremultiply(painted[3])),
                             static_cast<int>(qUnpremultiply(painted[2])),
                             static_cast<int>(qUnpremultiply(painted[1])),
                             static_cast<int>(qUnpremultiply(painted[0])));
    }
    const __m128 factors = _mm_cvtepi32_ps(factorsOf(painted));
    const Vector colours =
        _mm_or_si128(_mm_slli_epi32(straightChannel(red, factors), 16),
                     _mm_or_si128(_mm_slli_epi32(straightChannel(green, factors), 8),
                                  straightChannel(blue, factors)));
    return _mm_or_si128(_mm_slli_epi32(alpha, 24), colours);
}
#endif

/// Copies a wide row to the device past the cache, where the processor can.
void copyToDevice(unsigned char *device, const uint32_t *painted, size_t count) {
#ifdef __SSE2__
    if (count >= kWideRow) {
        const size_t first = pixelsToAlignment(device, count);
        std::memcpy(device, painted, first * kPixelBytes);
        device += first * kPixelBytes;
        painted += first;
        count -= first;
        for (; count >= kVectorPixels; count -= kVectorPixels) {
            store(device, load(painted), true);
            painted += kVectorPixels;
            device += sizeof(Vector);
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

void writeStraight(const uint32_t *painted, unsigned char *device, size_t count) {
    writeTranslated(painted, device, count, [](uint32_t pixel) { return qUnpremultiply(pixel); });
}

#ifdef __SSE2__
/// Writes `count` pixels to an aligned place: whole vectors, the neighbours of which are often
/// equal.
void writeVectors(const uint32_t *painted, unsigned char *device, size_t count, bool pastCache) {
    Vector last = _mm_setzero_si128();
    Vector lastStraight = last;
    for (size_t at = 0; at < count; at += kVectorPixels) {
        const Vector pixels = load(painted + at);
        if (!holdsEverywhere(_mm_cmpeq_epi32(pixels, last))) {
            last = pixels;
            lastStraight =
                holdsEverywhere(plainPixels(pixels)) ? pixels : unpremultiplied(painted + at);
        }
        store(device + at * kPixelBytes, lastStraight, pastCache);
    }
}

/// A row of a few pixels, in as few steps as can be.
void writeNarrow(const uint32_t *painted, unsigned char *device, size_t count) {
    size_t at = 0;
    for (; at + kVectorPixels <= count; at += kVectorPixels) {
        const Vector pixels = load(painted + at);
        const bool plain = holdsEverywhere(plainPixels(pixels));
        _mm_storeu_si128(reinterpret_cast<Vector *>(device + at * kPixelBytes),
                         plain ? pixels : unpremultiplied(painted + at));
    }
    for (; at < count; ++at) {
        const uint32_t pixel = qUnpremultiply(painted[at]);
        std::memcpy(device + at * kPixelBytes, &pixel, kPixelBytes);
    }
}

/// Channels in the painted order: most lines are all clear, all opaque or a bright text's.
void writeInPaintedOrder(const uint32_t *painted, unsigned char *device, size_t count) {
    const bool pastCache = count >= kWideRow;
    const size_t first = pixelsToAlignment(device, count);
    for (size_t at = 0; at < first; at += kBlock)
        writeStraight(painted + at, device + at * kPixelBytes, std::min(kBlock, first - at));
    size_t at = first;
    for (; count - at >= kLinePixels; at += kLinePixels) {
        Line line(painted + at);
        if (line.isClear() || line.isOpaque() || straightenBright(&line)) {
            line.write(device + at * kPixelBytes, pastCache);
        } else {
            writeVectors(painted + at, device + at * kPixelBytes, kLinePixels, pastCache);
        }
    }
    const size_t rest = (count - at) / kVectorPixels * kVectorPixels;
    writeVectors(painted + at, device + at * kPixelBytes, rest, pastCache);
    at += rest;
    writeStraight(painted + at, device + at * kPixelBytes, count - at);
}
#else
void writeInPaintedOrder(const uint32_t *painted, unsigned char *device, size_t count);

void writeNarrow(const uint32_t *painted, unsigned char *device, size_t count) {
    writeInPaintedOrder(painted, device, count);
}

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

/// Channels in the painted order: stretches of plain blocks are copied as they are, in one go.
void writeInPaintedOrder(const uint32_t *painted, unsigned char *device, size_t count) {
    size_t plainFrom = 0;
    for (size_t at = 0; at < count; at += kBlock) {
        const size_t block = std::min(kBlock, count - at);
        if (isPlain(painted + at, block)) continue;
        copyToDevice(device + plainFrom * kPixelBytes, painted + plainFrom, at - plainFrom);
        writeStraight(painted + at, device + at * kPixelBytes, block);
        plainFrom = at + block;
    }
    copyToDevice(device + plainFrom * kPixelBytes, painted + plainFrom, count - plainFrom);
}
#endif

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

using RowWriter = void (*)(const PixelLayout &layout, const uint32_t *painted,
                           unsigned char *device, size_t count);

RowWriter writerOf(const PixelLayout &layout) {
    if (!isPaintedOrder(layout)) return writeInOtherOrder;
    if (!layout.straight)
        return [](const PixelLayout &, const uint32_t *painted, unsigned char *device,
                  size_t count) { copyToDevice(device, painted, count); };
    return [](const PixelLayout &, const uint32_t *painted, unsigned char *device, size_t count) {
        writeInPaintedOrder(painted, device, count);
    };
}

/// Rows of at most so many pixels are those of a border's upright strip.
constexpr size_t kNarrowRow = 16;

template <typename Writer>
void writeEach(const PixelRows<const unsigned char> &painted,
               const PixelRows<unsigned char> &device, size_t count, size_t rows, Writer write) {
    const unsigned char *from = painted.first;
    unsigned char *to = device.first;
    for (; rows > 0; --rows, from += painted.lineLength, to += device.lineLength)
        write(reinterpret_cast<const uint32_t *>(from), to, count);
}

/// A few pixels, without a call for them.
void clearNarrow(unsigned char *row, size_t count) {
    constexpr size_t kStep = 4;
    constexpr unsigned char kClear[kStep * kPixelBytes] = {};
    size_t at = 0;
    for (; at + kStep <= count; at += kStep)
        std::memcpy(row + at * kPixelBytes, kClear, sizeof kClear);
    for (; at < count; ++at)
        std::memcpy(row + at * kPixelBytes, kClear, kPixelBytes);
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
    writerOf(layout)(layout, painted, device, count);
}

void writeRows(const PixelLayout &layout, const PixelRows<const unsigned char> &painted,
               const PixelRows<unsigned char> &device, size_t count, size_t rows) {
    if (count <= kNarrowRow && layout.straight && isPaintedOrder(layout)) {
        writeEach(painted, device, count, rows, writeNarrow);
    } else {
        const RowWriter write = writerOf(layout);
        writeEach(painted, device, count, rows,
                  [&](const uint32_t *from, unsigned char *to, size_t pixels) {
                      write(layout, from, to, pixels);
                  });
    }
}

void clearRows(const PixelRows<unsigned char> &painted, size_t count, size_t rows) {
    unsigned char *row = painted.first;
    for (; rows > 0; --rows, row += painted.lineLength) {
        if (count <= kNarrowRow) {
            clearNarrow(row, count);
        } else {
            std::memset(row, 0, count * kPixelBytes);
        }
    }
}

}  // namespace qws
