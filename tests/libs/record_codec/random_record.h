/**
 * @file random_record.h
 * Records of random but well-formed content: every number any number, every text UTF-8 that fits,
 * every unnamed byte any byte.
 */
#ifndef TESTS_RECORD_CODEC_RANDOM_RECORD_H
#define TESTS_RECORD_CODEC_RANDOM_RECORD_H

#include <cstring>
#include <random>
#include <string>

#include "record_codec/record_schema.h"

using Random = std::mt19937;

inline uint32_t random_below(Random &random, uint32_t end) {
    return static_cast<uint32_t>(random() % end);
}

/** UTF-8 of up to `longest` bytes, control characters, quotes and four-byte characters included. */
inline std::string random_text(Random &random, size_t longest) {
    static const char *const kCharacters[] = {
        "a",      "Z",      "0",      " ",      "\"",     "\\",         "/",          "\n",
        "\t",     "\r",     "\b",     "\x01",   "\x1F",   "\x7F",       "{",          "[",
        "\u00E4", "\u0416", "\u20AC", "\u4E2D", "\uFFFD", "\U0001F600", "\U0010FFFF",
    };
    const size_t length = random_below(random, static_cast<uint32_t>(longest + 1));
    std::string text;
    for (;;) {
        const char *next = kCharacters[random_below(random, std::size(kCharacters))];
        if (text.size() + std::strlen(next) > length) return text;
        text += next;
    }
}

inline void fill_with_random(Random &random, const record_codec::Record &record, void *out) {
    auto *bytes = static_cast<char *>(out);
    for (size_t i = 0; i < record.size; ++i) {
        bytes[i] = static_cast<char>(random());
    }
    for (size_t i = 0; i < record.field_count; ++i) {
        const record_codec::Field &field = record.fields[i];
        if (field.kind != record_codec::FieldKind::kText) continue;
        const std::string text = random_text(random, field.size - 1);
        std::memset(bytes + field.offset, 0, field.size);
        std::memcpy(bytes + field.offset, text.data(), text.size());
    }
}

#endif
