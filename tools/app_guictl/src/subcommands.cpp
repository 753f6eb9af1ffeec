#include "subcommands.h"

#include <CLI/CLI.hpp>

namespace app_guictl {
namespace {

void declare_nothing(CLI::App *, Arguments *) {}

void declare_get(CLI::App *app, Arguments *arguments) {
    app->add_option("name", arguments->name, "command or record, e.g. WatermarkOSDParameter")
        ->required();
    app->add_option("key", arguments->key, "interface or channel; all of them without it");
}

void declare_set(CLI::App *app, Arguments *arguments) {
    app->add_option("record", arguments->name, "record, e.g. WatermarkOSDParameter")->required();
    app->add_option(
        "values", arguments->values,
        "KEY field=value ...  KEY is an interface, a channel or \"all\" (left out where the "
        "record has no key). Index=N selects one of a key's records, [I].field=value the "
        "I-th one; without either every record of the key is changed");
    app->add_option("--json", arguments->json_file, "take the records from a file, \"-\" for input")
        ->type_name("FILE");
}

void declare_upload(CLI::App *app, Arguments *arguments) {
    app->add_option("if_name", arguments->name, "interface")->required();
}

void declare_split(CLI::App *app, Arguments *arguments) {
    app->add_option("if_name", arguments->name, "interface, or \"all\"")->required();
    app->add_option("mode", arguments->text, "name of a mode such as Mode9, or user0 to user3")
        ->required();
}

void declare_publish(CLI::App *app, Arguments *arguments) {
    app->add_option("process", arguments->name, "whose events: codec or stream")->required();
    app->add_option("event", arguments->text, "command or record, e.g. VideoOutSourceChange")
        ->required();
    app->add_option("values", arguments->values, "field=value ...; fields left out are zero");
    app->add_option("--address", arguments->address, "event socket in place of the usual one");
    app->add_option("--linger", arguments->linger_ms, "time that the message has to leave")
        ->type_name("MS")
        ->capture_default_str()
        ->check(CLI::Range(0, 60000));
}

void declare_call(CLI::App *app, Arguments *arguments) {
    app->add_option("text", arguments->text, "a JSON-RPC 2.0 message")->required();
}

void declare_schema(CLI::App *app, Arguments *arguments) {
    app->add_option("record", arguments->name, "record")->required();
}

void declare_completion(CLI::App *app, Arguments *arguments) {
    app->add_option("shell", arguments->name, "bash, zsh or fish")->required();
}

}  // namespace

const Subcommand kSubcommands[kSubcommandCount] = {
    {"list", "Show the commands, their keys and records", list, declare_nothing},
    {"get", "Read the records of a key", get, declare_get},
    {"set", "Change fields of records", set, declare_set},
    {"upload", "Tell that a watermark picture has new content", upload, declare_upload},
    {"split", "Change the screen split of an interface", split, declare_split},
    {"ping", "Ask whether the process is alive", ping, declare_nothing},
    {"publish", "Publish an event as the codec or streaming process", publish_event,
     declare_publish},
    {"call", "Send a JSON-RPC message as it stands", call, declare_call},
    {"discover", "Show the OpenRPC description of the commands", discover, declare_nothing},
    {"schema", "Show the JSON schema of a record", schema, declare_schema},
    {"completion", "Print a completion script for a shell", completion, declare_completion},
};

}  // namespace app_guictl
