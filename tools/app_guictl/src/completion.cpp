#include "completion.h"

#include <vector>

#include "catalogue.h"
#include "ctl_error.h"
#include "subcommands.h"
#include "suggest.h"

namespace app_guictl {
namespace {

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::vector<std::string> subcommand_names() {
    std::vector<std::string> names;
    for (const Subcommand &row : kSubcommands)
        names.emplace_back(row.name);
    return names;
}

/** Which words may follow a sub-command. */
struct Words {
    const char *subcommand;
    std::vector<std::string> words;
};

std::vector<Words> following_words() {
    return {
        {"get", names_of({Direction::kGet})},
        {"set", names_of({Direction::kSet, Direction::kEvent})},
        {"publish codec", names_of({Direction::kEvent})},
        {"publish stream", names_of({Direction::kEvent})},
        {"publish", {"codec", "stream"}},
        {"schema", record_names()},
        {"completion", {"bash", "zsh", "fish"}},
    };
}

/** Records whose fields may follow, with the fields as "name=". */
std::vector<Words> assignable_fields() {
    std::vector<Words> rows;
    for (const Command &command : command_protocol::kCommands) {
        if (command.direction != Direction::kSet && command.direction != Direction::kEvent)
            continue;
        Words row = {command.record, field_names(record_of(command))};
        for (std::string &name : row.words)
            name += "=";
        rows.push_back(std::move(row));
    }
    return rows;
}

/** A "case" of patterns and words, the same in bash and zsh. */
std::string shell_cases() {
    std::string text;
    for (const Words &row : assignable_fields()) {
        text += std::string("        *\" ") + row.subcommand + " \"*|*\" Set" + row.subcommand +
                " \"*) words=\"" + joined(row.words) + "\" ;;\n";
    }
    for (const Words &row : following_words()) {
        text += std::string("        *\" ") + row.subcommand + " \") words=\"" + joined(row.words) +
                "\" ;;\n";
    }
    return text;
}

std::string bash_script() {
    return "# bash completion for app_guictl\n"
           "_app_guictl() {\n"
           "    local words before=\" ${COMP_WORDS[*]:1:COMP_CWORD-1} \"\n"
           "    COMPREPLY=()\n"
           "    case \"$before\" in\n" +
           shell_cases() + "        *) words=\"" + joined(subcommand_names()) +
           " --socket --timeout --json --table --version --help\" ;;\n"
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
           "    [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace\n"
           "    return 0\n"
           "}\n"
           "complete -F _app_guictl app_guictl";
}

std::string zsh_script() {
    return "#compdef app_guictl\n"
           "_app_guictl() {\n"
           "    local found before=\" ${words[2,CURRENT-1]} \"\n"
           "    _app_guictl_words \"$before\"\n"
           "    compadd -- ${=found}\n"
           "}\n"
           "_app_guictl_words() {\n"
           "    local words\n"
           "    case \"$1\" in\n" +
           shell_cases() + "        *) words=\"" + joined(subcommand_names()) +
           " --socket --timeout --json --table --version --help\" ;;\n"
           "    esac\n"
           "    found=\"$words\"\n"
           "}\n"
           "compdef _app_guictl app_guictl";
}

std::string fish_script() {
    std::string text = "# fish completion for app_guictl\ncomplete -c app_guictl -f\n";
    for (const Subcommand &row : kSubcommands) {
        text += std::string("complete -c app_guictl -n __fish_use_subcommand -a ") + row.name +
                " -d '" + row.meaning + "'\n";
    }
    for (const Words &row : following_words()) {
        const std::string words = row.subcommand;
        const std::string last = words.substr(words.rfind(' ') + 1);
        text += "complete -c app_guictl -n '__fish_seen_subcommand_from " + last + "' -a '" +
                joined(row.words) + "'\n";
    }
    for (const Words &row : assignable_fields()) {
        text += std::string("complete -c app_guictl -n '__fish_seen_subcommand_from ") +
                row.subcommand + " Set" + row.subcommand + "' -a '" + joined(row.words) + "'\n";
    }
    for (const char *option : {"socket -r", "timeout -r", "json", "table", "version", "help"}) {
        text += std::string("complete -c app_guictl -l ") + option + "\n";
    }
    text.pop_back();
    return text;
}

struct Shell {
    const char *name;
    std::string (*script)();
};

constexpr Shell kShells[] = {{"bash", bash_script}, {"zsh", zsh_script}, {"fish", fish_script}};

}  // namespace

std::string completion_script(const std::string &shell) {
    std::vector<std::string> names;
    for (const Shell &row : kShells) {
        if (shell == row.name) return row.script();
        names.emplace_back(row.name);
    }
    throw CtlError(kUsage, "bash, zsh or fish expected, not " + shell + did_you_mean(shell, names));
}

}  // namespace app_guictl
