/**
 * @file command_protocol.h
 * The device's command language: JSON-RPC 2.0 (https://www.jsonrpc.org/specification) in, calls of
 * exported command handlers, JSON-RPC 2.0 out.
 *
 * The library knows the commands (name, kind of key, record, direction) but none of their
 * addresses: a handler is the function of the command's name that the running process exports
 * (`dlsym`). A command whose handler the process does not export is "method not found".
 */
#ifndef COMMAND_PROTOCOL_COMMAND_PROTOCOL_H
#define COMMAND_PROTOCOL_COMMAND_PROTOCOL_H

#define COMMAND_PROTOCOL_API __attribute__((visibility("default")))

extern "C" {

/**
 * Serves one message: a request, a notification, or a batch of them.
 *
 * @param message   the message; need not end with NUL, one trailing NUL is accepted. Not kept.
 * @param length    its length in bytes.
 * @param one       always 1.
 * @param response  receives the reply as a NUL-terminated text from `malloc`, to be freed by the
 *                  caller, or null when there is nothing to answer (notifications).
 * @return 0; -2 for a null argument or a negative length (then nothing is done); -6 when memory ran
 *         out (then `*response` is null).
 *
 * Thread: one at a time, the one on which the handlers are to run. No exception leaves it, whatever
 * the message holds.
 */
COMMAND_PROTOCOL_API int parse_command_and_get_response_with_len(const char *message, int length,
                                                                 int one, char **response);

}  // extern "C"

#endif
