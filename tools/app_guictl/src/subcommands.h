/** @file subcommands.h The table of sub-commands: what the help, the dispatch and completion know.
 */
#ifndef APP_GUICTL_SUBCOMMANDS_H
#define APP_GUICTL_SUBCOMMANDS_H

#include "actions.h"

namespace CLI {
class App;
}

namespace app_guictl {

struct Subcommand {
    const char *name;
    const char *meaning;
    void (*run)(const Arguments &arguments, const Output &output);
    void (*declare)(CLI::App *app, Arguments *arguments);  ///< its arguments and options
};

constexpr int kSubcommandCount = 11;
extern const Subcommand kSubcommands[kSubcommandCount];

}  // namespace app_guictl

#endif
