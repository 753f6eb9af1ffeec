// app_guictl: the command line of the on-screen display process.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ctl_error.h"
#include "subcommands.h"
#include "suggest.h"

namespace {

using namespace app_guictl;

constexpr const char *kFooter = R"(Examples:
  app_guictl list
  app_guictl get WatermarkOSDParameter HDMI1
  app_guictl set WatermarkOSDParameter HDMI1 contet=hello font=2 visible=1
  app_guictl set VideoOutputOSDParameter 0 Index=2 content=hello visible=1
  app_guictl set VideoOutputDisplayParameter BorderWidth=4
  app_guictl --json get WatermarkOSDParameter all > marks.json
  app_guictl set WatermarkOSDParameter all --json marks.json
  app_guictl split HDMI1 Mode9
  app_guictl publish codec VideoOutSourceChange Channel=0 index=3
  app_guictl call '{"jsonrpc":"2.0","id":1,"method":"Keepalive"}'

Output is a table on a terminal and JSON elsewhere; NO_COLOR turns colours off.

Exit codes:
  0  done
  1  refused by the device (its message is on standard error)
  2  the command line cannot be used
  3  no answer, or no subscriber, in time)";

/** The options that stand before or behind any sub-command. */
struct GlobalFlags {
    bool json = false;
    bool table = false;
};

void declare_global(CLI::App *app, Arguments *arguments, GlobalFlags *flags) {
    app->set_version_flag("--version", "app_guictl " APP_GUICTL_VERSION);
    app->set_help_flag("-h,--help", "Show this help");
    app->add_option("--socket", arguments->socket, "command socket of the process")
        ->type_name("ADDRESS")
        ->capture_default_str();
    app->add_option("--timeout", arguments->timeout_ms, "longest wait for an answer")
        ->type_name("MS")
        ->capture_default_str()
        ->check(CLI::Range(1, 3600000));
    CLI::Option *json = app->add_flag("--json", flags->json, "print JSON");
    app->add_flag("--table", flags->table, "print tables")->excludes(json);
}

Format format_of(const GlobalFlags &flags) {
    const bool table = flags.table || (!flags.json && isatty(STDOUT_FILENO));
    return table ? Format::kTable : Format::kJson;
}

void print_error(const std::string &message) {
    const bool colour = wants_colour(stderr);
    std::fprintf(stderr, "%sapp_guictl: %s%s\n", colour ? "\033[31m" : "",
                 printable(message).c_str(), colour ? "\033[0m" : "");
}

/** What to say about a first word that is no sub-command, "" when none is to blame. */
std::string misspelt_subcommand(const CLI::App &app, const std::vector<std::string> &extras) {
    if (!app.get_subcommands().empty() || extras.empty()) return "";
    std::vector<std::string> names;
    for (const Subcommand &row : kSubcommands) {
        names.emplace_back(row.name);
    }
    return "no such sub-command: " + extras.front() + did_you_mean(extras.front(), names);
}

/** Help and version are done, anything else cannot be used. */
int end_parsing(const CLI::App &app, const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    const std::string misspelt = misspelt_subcommand(app, app.remaining());
    print_error((misspelt.empty() ? error.what() : misspelt) + "; see --help");
    return kUsage;
}

/** The parser takes an argument in brackets for a list; with this before it, it stays whole. */
constexpr char kWhole = '\1';

/** The arguments in the order that the parser wants, last one first. */
std::vector<std::string> reversed_words(int argc, char **argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    for (std::string &word : words) {
        if (!word.empty() && word.front() == '[') word.insert(0, 1, kWhole);
    }
    std::reverse(words.begin(), words.end());
    return words;
}

void unmark(std::string *word) {
    if (!word->empty() && word->front() == kWhole) word->erase(0, 1);
}

int run(const Subcommand &row, Arguments arguments, const GlobalFlags &flags) try {
    for (std::string *word : {&arguments.name, &arguments.key, &arguments.text}) {
        unmark(word);
    }
    for (std::string &word : arguments.values) {
        unmark(&word);
    }
    row.run(arguments, Output(format_of(flags), wants_colour(stdout)));
    // A full disk or a closed pipe must not look like success.
    if (std::fflush(stdout) != 0) throw CtlError(kUsage, "cannot write the output");
    return kDone;
} catch (const CtlError &error) {
    std::fflush(stdout);
    print_error(error.what());
    return error.code();
}

}  // namespace

int main(int argc, char **argv) try {
    CLI::App app("Reads and changes what the on-screen display process app_gui shows.",
                 "app_guictl");
    Arguments arguments;
    GlobalFlags flags;
    declare_global(&app, &arguments, &flags);
    app.fallthrough();
    int status = kUsage;
    for (const Subcommand &row : kSubcommands) {
        CLI::App *sub = app.add_subcommand(row.name, row.meaning);
        row.declare(sub, &arguments);
        sub->callback([&status, &row, &arguments, &flags] { status = run(row, arguments, flags); });
    }
    app.require_subcommand(1);
    app.footer(kFooter);  // after the sub-commands, which would inherit it
    try {
        app.parse(reversed_words(argc, argv));
    } catch (const CLI::ParseError &error) {
        return end_parsing(app, error);
    }
    return status;
} catch (const std::exception &error) {
    print_error(error.what());
    return kUsage;
}
