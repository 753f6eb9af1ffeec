/**
 * @file failure.h
 * Why a request is answered with an error.
 */
#ifndef COMMAND_PROTOCOL_FAILURE_H
#define COMMAND_PROTOCOL_FAILURE_H

#include <string>
#include <string_view>

namespace command_protocol {

/** The codes that JSON-RPC 2.0 defines. */
enum ErrorCode {
    kParseError = -32700,
    kInvalidRequest = -32600,
    kMethodNotFound = -32601,
    kInvalidParams = -32602,
    kInternalError = -32603,
};

/** An error object: `message` is for people, `field` and `reason` become its `data`. */
struct Failure {
    int code = 0;
    std::string message;
    std::string field;
    std::string reason;
};

/** What a message repeats of a name that the sender chose: at most its first 64 bytes. */
std::string shown(std::string_view name);

/** The standard message of the code followed by the reason; never with `data`. */
Failure rpc_failure(ErrorCode code, const std::string &reason);

/** A member of `params` is at fault; `field` is e.g. "records[2].font". */
Failure invalid_params(std::string field, std::string reason);

/** A command handler returned the negative `status`. */
Failure handler_failure(int status);

/** What a negative status of a handler means, e.g. "not found" for -1. */
const char *status_meaning(int status);

}  // namespace command_protocol

#endif
