#include "error_line.h"

#include <cstdarg>
#include <cstdio>

namespace qws {

void errorLine(const char *file, int line, const char *function, const char *format, ...) {
    flockfile(stderr);
    std::fprintf(stderr, "\033[1;31m<ERROR! %s:%d, %s>: ", file, line, function);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputs("\033[0m", stderr);
    funlockfile(stderr);
}

}  // namespace qws
