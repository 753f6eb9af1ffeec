/**
 * @file discovery.h
 * The result of `rpc.discover`: an OpenRPC document (https://spec.open-rpc.org, version 1.2.6) of
 * the commands that the running process serves.
 *
 * Thread: the one on which commands are served.
 */
#ifndef COMMAND_PROTOCOL_DISCOVERY_H
#define COMMAND_PROTOCOL_DISCOVERY_H

#include <string>

namespace command_protocol {

/** The document as JSON text, made from the command table and the tables of fields. */
std::string discovery_document();

}  // namespace command_protocol

#endif
