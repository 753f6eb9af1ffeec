/**
 * @file configuration_markdown.h
 * The generated parts of docs/configuration.md.
 */
#ifndef CONFIGURATION_DOC_CONFIGURATION_MARKDOWN_H
#define CONFIGURATION_DOC_CONFIGURATION_MARKDOWN_H

#include <string>

namespace configuration_doc {

/**
 * The document: `text` with its line "@FILES@" replaced by the table of all files and its line
 * "@FIELDS@" by one section per file. A text without one of the lines is an std::runtime_error.
 */
std::string configuration_markdown(std::string text);

}  // namespace configuration_doc

#endif
