/**
 * @file error_line.h
 * The library's error line, in the device's form: on standard error, in red, the place and the
 * message.
 *
 * Thread: any.
 */
#ifndef WINDOW_SERVER_ERROR_LINE_H
#define WINDOW_SERVER_ERROR_LINE_H

namespace qws {

__attribute__((format(printf, 4, 5))) void errorLine(const char *file, int line,
                                                     const char *function, const char *format, ...);

}  // namespace qws

/** An error line from here; the message ends in "\n". */
#define QWS_ERROR(...) ::qws::errorLine(__FILE__, __LINE__, __func__, __VA_ARGS__)

#endif
