/**
 * @file error_line.h
 * The device's error line, for a library that must not depend on the applications.
 */
#ifndef RECORD_CODEC_ERROR_LINE_H
#define RECORD_CODEC_ERROR_LINE_H

#include <cstdio>
#include <string_view>

namespace record_codec {

/** Allocates nothing: it also tells that memory ran out. */
inline void error_line(const char *file, int line, const char *function, const char *path,
                       std::string_view reason) {
    std::fprintf(stderr, "\033[1;31m<ERROR! %s:%d, %s>: %s: %.*s\n\033[0m", file, line, function,
                 path, static_cast<int>(reason.size()), reason.data());
}

}  // namespace record_codec

#endif
