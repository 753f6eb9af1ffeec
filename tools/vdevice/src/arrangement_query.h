/**
 * @file arrangement_query.h
 * Asks a running device how its screen is divided.
 */
#ifndef VDEVICE_ARRANGEMENT_QUERY_H
#define VDEVICE_ARRANGEMENT_QUERY_H

#include <functional>
#include <optional>
#include <string>

#include "composition.h"

namespace vdevice {

/** Sends a message to the command socket and returns the reply, if any. */
using Requester = std::function<std::optional<std::string>(const std::string &)>;

/** A JSON-RPC 2.0 request; `params` is JSON text. */
std::string rpc_request(int id, const std::string &method, const std::string &params);
/** A JSON-RPC 2.0 notification; `params` is JSON text. */
std::string rpc_notification(const std::string &method, const std::string &params);
/** The message of an error reply, "no reply", or "" for a good reply. */
std::string rpc_error(const std::optional<std::string> &reply);

/** The arrangement of the first interface; nothing when the device does not tell. */
std::optional<Arrangement> query_arrangement(const Requester &request);

}  // namespace vdevice

#endif
