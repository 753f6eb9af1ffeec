/**
 * @file json_rpc.h
 * The envelope of the messages: JSON-RPC 2.0 (https://www.jsonrpc.org/specification).
 *
 * Thread: one at a time, the one on which the handlers are to run.
 */
#ifndef COMMAND_PROTOCOL_JSON_RPC_H
#define COMMAND_PROTOCOL_JSON_RPC_H

#include <cstddef>
#include <string>
#include <string_view>

namespace command_protocol {

/** Longest message, in bytes. */
constexpr size_t kMaxMessage = 4u << 20;
/** Levels of arrays and objects in a message. */
constexpr unsigned kMaxDepth = 32;
/** Requests of a batch. */
constexpr size_t kMaxBatch = 1000;
/** Once a batch's reply is that long, in bytes, its remaining requests are refused. */
constexpr size_t kMaxBatchReply = 8u << 20;

/**
 * Serves a message: a request, a notification or a batch of them.
 * @return the reply, "" when there is nothing to answer.
 */
std::string answer_message(std::string_view message);

/** The reply to a message that could not be served because memory was short; "" when there is
 * nothing to answer. Takes little memory itself. */
std::string answer_out_of_memory(std::string_view message);

}  // namespace command_protocol

#endif
