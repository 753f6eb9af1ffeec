/**
 * @file configuration_files.h
 * The record files of the device, in the order in which they are loaded at start.
 */
#ifndef CONFIGURATION_DOC_CONFIGURATION_FILES_H
#define CONFIGURATION_DOC_CONFIGURATION_FILES_H

#include <cstddef>
#include <string_view>

namespace configuration_doc {

enum class FileKind {
    kCapability,         ///< mandatory, never written
    kParameter,          ///< with a factory copy, never written
    kWrittenBackToFile,  ///< a parameter file that is written after a repair and after every change
};

enum class FileForm {
    kObject,  ///< one record
    kArray,   ///< up to `capacity` records
};

/** One row of the table. */
struct ConfigurationFile {
    std::string_view name;    ///< without folder
    std::string_view record;  ///< record type
    FileForm form;
    unsigned capacity;  ///< records that the device has room for
    FileKind kind;
    std::string_view content;  ///< which record stands for what, a sentence
    std::string_view check;    ///< parameter: when a record is replaced by its defaults, a sentence
};

/** All files in loading order. */
const ConfigurationFile *configuration_files(size_t *count);

}  // namespace configuration_doc

#endif
