/** @file completion.h Completion of the command line in a shell. */
#ifndef APP_GUICTL_COMPLETION_H
#define APP_GUICTL_COMPLETION_H

#include <string>

namespace app_guictl {

/**
 * The script for "bash", "zsh" or "fish"; its words are made from the tables of commands, records
 * and fields. Throws CtlError(kUsage) for another shell.
 */
std::string completion_script(const std::string &shell);

}  // namespace app_guictl

#endif
