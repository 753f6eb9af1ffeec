/**
 * @file fuzz_target.h
 * What the fuzz targets share: taking an input apart, and saying what must hold.
 *
 * A target is the function LLVMFuzzerTestOneInput (https://llvm.org/docs/LibFuzzer.html). With
 * clang and APP_GUI_FUZZERS it is linked with libFuzzer, which makes inputs; else with
 * seed_runner.cpp, which runs the files that it is given.
 *
 * Thread: the main thread of the target.
 */
#ifndef TESTS_FUZZ_FUZZ_TARGET_H
#define TESTS_FUZZ_FUZZ_TARGET_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "record_codec/record_schema.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

/** Ends the process with a finding when a promise does not hold. */
inline void require(bool holds, const char *promise) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/** An input read from its start. Past its end everything reads as zero or empty. */
class Input {
public:
    Input(const uint8_t *data, size_t size)
        : mNext(reinterpret_cast<const char *>(data)), mLeft(size) {}

    bool empty() const { return mLeft == 0; }

    /** A plain value from its bytes in memory order. */
    template <typename T>
    T value() {
        static_assert(std::is_trivially_copyable_v<T>);
        T value{};
        take(&value, sizeof value);
        return value;
    }

    uint8_t byte() { return value<uint8_t>(); }

    /** A text of any bytes behind its length, one byte. */
    std::string text() {
        std::string text(std::min<size_t>(byte(), mLeft), '\0');
        take(text.data(), text.size());
        return text;
    }

    /** All that is left. */
    std::string rest() {
        std::string text(mLeft, '\0');
        take(text.data(), text.size());
        return text;
    }

    /** What is left up to `end`, which is taken and dropped; all of it where there is no `end`. */
    std::string until(const std::string &end) {
        const std::string_view left(mNext, mLeft);
        const size_t at = left.find(end);
        std::string text(left.substr(0, at));
        skip(at == left.npos ? mLeft : at + end.size());
        return text;
    }

    /**
     * Changes fields of a record: the number of changes, then for each the field's position in its
     * table and its new first bytes as text(). A text may so fill its field to the last byte.
     */
    void patch(const record_codec::Record &record, void *bytes) {
        for (int changes = byte() % 8; changes > 0; --changes) {
            const record_codec::Field &field = record.fields[byte() % record.field_count];
            const std::string content = text();
            std::memcpy(static_cast<char *>(bytes) + field.offset, content.data(),
                        std::min<size_t>(content.size(), field.size));
        }
    }

private:
    void skip(size_t size) {
        mNext += size;
        mLeft -= size;
    }

    void take(void *to, size_t size) {
        const size_t taken = std::min(size, mLeft);
        if (taken == 0) return;
        std::memcpy(to, mNext, taken);
        skip(taken);
    }

    const char *mNext;
    size_t mLeft;
};

}  // namespace fuzz

#endif
