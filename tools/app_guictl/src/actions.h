/**
 * @file actions.h
 * The sub-commands. Each prints what it has to say and returns, or throws a CtlError.
 */
#ifndef APP_GUICTL_ACTIONS_H
#define APP_GUICTL_ACTIONS_H

#include <string>
#include <vector>

#include "device.h"
#include "output.h"

namespace app_guictl {

/** What the command line says; each sub-command uses its part. */
struct Arguments {
    std::string socket = "ipc:///tmp/ipc/app_gui.command";
    int timeout_ms = 2000;

    std::string name;                 ///< of a command, record, interface, event process or shell
    std::string key;                  ///< "" where none was given
    std::vector<std::string> values;  ///< key of a Set where it has one, then assignments
    std::string json_file;            ///< "-" for standard input
    std::string text;                 ///< a mode or a message
    std::string address;              ///< of an event socket; "" for the usual one
    int linger_ms = 200;
};

void list(const Arguments &arguments, const Output &output);
void get(const Arguments &arguments, const Output &output);
void set(const Arguments &arguments, const Output &output);
void upload(const Arguments &arguments, const Output &output);
void split(const Arguments &arguments, const Output &output);
void ping(const Arguments &arguments, const Output &output);
void publish_event(const Arguments &arguments, const Output &output);
void call(const Arguments &arguments, const Output &output);
void discover(const Arguments &arguments, const Output &output);
void schema(const Arguments &arguments, const Output &output);
void completion(const Arguments &arguments, const Output &output);

}  // namespace app_guictl

#endif
