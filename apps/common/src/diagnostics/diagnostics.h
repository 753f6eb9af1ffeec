/**
 * @file diagnostics.h
 * The device's two kinds of diagnostic line.
 *
 * A debug line goes to standard output: "<DEBUG file %s, line %d>: " and, as a second print, the
 * message. An error line goes to standard error as three prints: the red prefix
 * "\033[1;31m<ERROR! %s:%d, %s>: " with file, line and function, the message, and "\033[0m".
 * Messages end in "\n". Files are given relative to the repository.
 *
 * Thread: any; the prints of one line are not interleaved with those of another.
 */
#ifndef APPS_COMMON_DIAGNOSTICS_DIAGNOSTICS_H
#define APPS_COMMON_DIAGNOSTICS_DIAGNOSTICS_H

namespace diagnostics {

__attribute__((format(printf, 3, 4))) void debug_line(const char *file, int line,
                                                      const char *format, ...);

__attribute__((format(printf, 4, 5))) void error_line(const char *file, int line,
                                                      const char *function, const char *format,
                                                      ...);

}  // namespace diagnostics

/** A debug line from here. */
#define DEBUG_LINE(...) ::diagnostics::debug_line(__FILE__, __LINE__, __VA_ARGS__)
/** An error line from here, under this function's name. */
#define ERROR_LINE(...) ::diagnostics::error_line(__FILE__, __LINE__, __func__, __VA_ARGS__)
/** An error line from here, under another name (that of the step or of the exported function). */
#define ERROR_LINE_AS(function, ...) \
    ::diagnostics::error_line(__FILE__, __LINE__, function, __VA_ARGS__)

#endif
