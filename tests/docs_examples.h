/**
 * @file docs_examples.h
 * The examples of a document: its fenced blocks, and whether what a block shows is what happened.
 *
 * A shown JSON value stands for others in two ways: "<integer>" for any whole number from 0 on, and
 * a last element or a member "..." for at least one more that is not shown. Everything else has to
 * be there as shown, so a document that shows something wrong never matches.
 */
#ifndef TESTS_DOCS_EXAMPLES_H
#define TESTS_DOCS_EXAMPLES_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace docs_examples {

/** One fenced block. */
struct Block {
    int line = 0;      ///< of its first line of text
    std::string info;  ///< the words behind the opening fence, e.g. "json request"
    std::string text;  ///< without the newline of its last line
};

/** The blocks in their order; one that is not closed reaches to the end of the document. */
std::vector<Block> fenced_blocks(const std::string &markdown);

/** One command of a console block and what it prints. */
struct ConsoleStep {
    std::string command;  ///< behind "$ "
    std::string output;   ///< lines up to the next command, each with its newline
};

std::vector<ConsoleStep> console_steps(const std::string &text);

/** Where `actual` is not what is shown, e.g. "result[0].BorderWidth: 3, shown 2"; "" when it is. */
std::string difference(const nlohmann::json &shown, const nlohmann::json &actual);

/** The same for texts: as JSON when what is shown is JSON, else byte by byte. */
std::string text_difference(const std::string &shown, const std::string &actual);

}  // namespace docs_examples

#endif
