/**
 * @file command_service.h
 * Serves one command: reads its parameters, calls its handlers, writes its result.
 *
 * Thread: one at a time, the one on which the handlers are to run.
 */
#ifndef COMMAND_PROTOCOL_COMMAND_SERVICE_H
#define COMMAND_PROTOCOL_COMMAND_SERVICE_H

#include <string>
#include <string_view>

#include "failure.h"

namespace command_protocol {

/** Whether a command does nothing but answer, so that there is nothing to do without a reply. */
bool only_answers(std::string_view method);

/**
 * Serves one request.
 * @param method  the command's name.
 * @param params  a checked JSON object or array, or "" for none.
 * @param out     the result's JSON text is appended.
 * @return false with `failure` filled; what was appended is then of no use.
 */
bool serve_command(std::string_view method, std::string_view params, std::string *out,
                   Failure *failure);

}  // namespace command_protocol

#endif
