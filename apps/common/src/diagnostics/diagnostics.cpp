#include "diagnostics.h"

#include <cstdarg>
#include <cstdio>

namespace diagnostics {

void debug_line(const char *file, int line, const char *format, ...) {
    flockfile(stdout);
    std::printf("<DEBUG file %s, line %d>: ", file, line);
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    // A supervisor reads this through a pipe: a line must not wait in a buffer for the next one.
    std::fflush(stdout);
    funlockfile(stdout);
}

void error_line(const char *file, int line, const char *function, const char *format, ...) {
    flockfile(stderr);
    std::fprintf(stderr, "\033[1;31m<ERROR! %s:%d, %s>: ", file, line, function);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputs("\033[0m", stderr);
    funlockfile(stderr);
}

}  // namespace diagnostics
