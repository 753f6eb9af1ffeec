/**
 * @file configuration_schema.h
 * JSON Schema (draft 2020-12) of a record file.
 */
#ifndef CONFIGURATION_DOC_CONFIGURATION_SCHEMA_H
#define CONFIGURATION_DOC_CONFIGURATION_SCHEMA_H

#include <string>

#include "configuration_files.h"

namespace configuration_doc {

/** The schema's text with a final newline. */
std::string file_schema(const ConfigurationFile &file);

}  // namespace configuration_doc

#endif
