/**
 * @file utf8.h
 * Well-formed UTF-8 (RFC 3629) in bytes from outside.
 */
#ifndef RECORD_CODEC_UTF8_H
#define RECORD_CODEC_UTF8_H

#include <cstddef>
#include <string_view>

namespace record_codec {

/** Bytes of the character at the start of `text`, 0 when what stands there is none. */
inline size_t utf8_character_length(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty()) return 0;
    if (byte(0) < 0x80) return 1;
    // Row: lead bytes, length, range of the second byte (it excludes overlong forms, surrogates and
    // what lies above U+10FFFF).
    struct Row {
        unsigned char first, last;
        size_t length;
        unsigned char second_first, second_last;
    };
    static constexpr Row kRows[] = {
        {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
        {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
        {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
    };
    for (const Row &row : kRows) {
        if (byte(0) < row.first || byte(0) > row.last) continue;
        if (text.size() < row.length) return 0;
        if (byte(1) < row.second_first || byte(1) > row.second_last) return 0;
        for (size_t i = 2; i < row.length; ++i) {
            if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
        }
        return row.length;
    }
    return 0;
}

}  // namespace record_codec

#endif
