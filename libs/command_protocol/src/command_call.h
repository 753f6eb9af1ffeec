/**
 * @file command_call.h
 * Calls of the command handlers that the running process exports.
 *
 * A handler is found by its name (`dlsym`) when it is needed first and remembered; one that is not
 * there is looked for again next time. Only names of the command table are ever looked up, never a
 * text from a message.
 *
 * Thread: one at a time, the one on which the handlers are to run.
 */
#ifndef COMMAND_PROTOCOL_COMMAND_CALL_H
#define COMMAND_PROTOCOL_COMMAND_CALL_H

#include <cstdint>

#include "command_protocol/command_table.h"

namespace command_protocol {

/** What a handler is asked about; which of the two counts is the command's `key`. */
struct Key {
    const char *if_name = "";
    int32_t channel = -1;
};

/** Whether the process exports all that the command takes: its handler and its companions. */
bool is_served(const Command &command);

/** How many records the key of a Get has, as its companion tells. Requires: is_served(get). */
int call_size(const Command &get, const Key &key);

/**
 * Calls a Get, with room for at least call_size() records at `records`.
 * @return the handler's status. Requires: is_served(get).
 */
int call_get(const Command &get, const Key &key, void *records);

/**
 * Calls a Set or an event's handler.
 * @return the handler's status. Requires: is_served(set).
 */
int call_set(const Command &set, const Key &key, const void *records);

/** Calls an upload's handler. Requires: is_served(upload). */
int call_upload(const Command &upload, const Key &key);

}  // namespace command_protocol

#endif
