/** @file catalogue.h Commands and records as people name them. */
#ifndef APP_GUICTL_CATALOGUE_H
#define APP_GUICTL_CATALOGUE_H

#include <initializer_list>
#include <string>
#include <vector>

#include "command_protocol/command_table.h"
#include "record_codec/record_schema.h"

namespace app_guictl {

using command_protocol::Command;
using command_protocol::Direction;
using command_protocol::KeyKind;
using record_codec::Record;

/**
 * The command of one of these directions that goes by that name: its own ("GetX", "SetX") or its
 * record's ("X"). Throws CtlError(kUsage) with the nearest name.
 */
const Command &find_named(const std::string &name, std::initializer_list<Direction> directions);

/** All names that find_named() takes for these directions. */
std::vector<std::string> names_of(std::initializer_list<Direction> directions);

/** A record type by its name. Throws CtlError(kUsage) with the nearest name. */
const Record &find_record_named(const std::string &name);

/** The record type of a command. Requires: the command has one. */
const Record &record_of(const Command &command);

/** Names of all record types. */
std::vector<std::string> record_names();

/** Names of a record's fields. */
std::vector<std::string> field_names(const Record &record);

/** What a key is for people: "interface", "channel", "". */
const char *key_noun(KeyKind key);

}  // namespace app_guictl

#endif
