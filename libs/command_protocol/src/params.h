/**
 * @file params.h
 * The `params` member of a request.
 *
 * Thread: any; no state.
 */
#ifndef COMMAND_PROTOCOL_PARAMS_H
#define COMMAND_PROTOCOL_PARAMS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "command_protocol/command_table.h"
#include "failure.h"

namespace command_protocol {

/** Records of one message, in either direction; the device has 64 of a kind at most. */
constexpr int kMaxRecords = 4096;
/** Bytes of an interface's name, without its NUL. */
constexpr size_t kMaxInterfaceName = 63;

struct Params {
    std::string if_name;                    ///< "" for every interface
    int32_t channel = -1;                   ///< -1 for every channel
    std::vector<std::string_view> records;  ///< JSON texts, views into the message
};

/**
 * Reads the parameters of a command.
 * @param text  a checked JSON object or array, or "" for none.
 * @return false with `failure` filled: a member that the command does not have, a value of another
 *         type, a missing member, an array that is not empty.
 */
bool read_params(const Command &command, std::string_view text, Params *out, Failure *failure);

}  // namespace command_protocol

#endif
