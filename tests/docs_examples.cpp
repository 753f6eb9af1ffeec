#include "docs_examples.h"

#include <sstream>

namespace docs_examples {
namespace {

using nlohmann::json;

constexpr const char *kFence = "```";
constexpr const char *kMore = "...";
constexpr const char *kInteger = "<integer>";

bool starts_with(const std::string &text, const std::string &start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string compare(const json &shown, const json &actual, const std::string &path);

std::string compare_arrays(const json &shown, const json &actual, const std::string &path) {
    const bool more = !shown.empty() && shown.back() == kMore;
    const size_t count = shown.size() - (more ? 1 : 0);
    if (more ? actual.size() <= count : actual.size() != count) {
        return path + ": " + std::to_string(actual.size()) + " elements, shown " +
               std::to_string(count) + (more ? " and more" : "");
    }
    for (size_t i = 0; i < count; ++i) {
        const std::string found =
            compare(shown[i], actual[i], path + "[" + std::to_string(i) + "]");
        if (!found.empty()) return found;
    }
    return "";
}

std::string compare_objects(const json &shown, const json &actual, const std::string &path) {
    const bool more = shown.contains(kMore);
    const size_t count = shown.size() - (more ? 1 : 0);
    for (const auto &member : shown.items()) {
        if (more && member.key() == kMore) continue;
        const std::string where = path.empty() ? member.key() : path + "." + member.key();
        if (!actual.contains(member.key())) return where + ": not there";
        const std::string found = compare(member.value(), actual[member.key()], where);
        if (!found.empty()) return found;
    }
    if (more ? actual.size() > count : actual.size() == count) return "";
    return path + ": " + std::to_string(actual.size()) + " members, shown " +
           std::to_string(count) + (more ? " and more" : "");
}

std::string compare(const json &shown, const json &actual, const std::string &path) {
    if (shown.is_array() && actual.is_array()) return compare_arrays(shown, actual, path);
    if (shown.is_object() && actual.is_object()) return compare_objects(shown, actual, path);
    const bool whole = actual.is_number_integer() && actual >= 0;
    if (shown == kInteger ? whole : shown == actual) return "";
    return path + ": " + actual.dump() + ", shown " + shown.dump();
}

}  // namespace

std::vector<Block> fenced_blocks(const std::string &markdown) {
    std::vector<Block> blocks;
    std::istringstream lines(markdown);
    bool inside = false;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (starts_with(line, kFence)) {
            inside = !inside;
            if (inside) blocks.push_back({number + 1, line.substr(std::string(kFence).size()), ""});
        } else if (inside) {
            std::string &text = blocks.back().text;
            text += (blocks.back().line == number ? "" : "\n") + line;
        }
    }
    return blocks;
}

std::vector<ConsoleStep> console_steps(const std::string &text) {
    constexpr const char *kPrompt = "$ ";
    std::vector<ConsoleStep> steps;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (starts_with(line, kPrompt)) {
            steps.push_back({line.substr(std::string(kPrompt).size()), ""});
        } else if (!steps.empty()) {
            steps.back().output += line + "\n";
        }
    }
    return steps;
}

std::string difference(const json &shown, const json &actual) {
    return compare(shown, actual, "");
}

std::string text_difference(const std::string &shown, const std::string &actual) {
    const json shownValue = json::parse(shown, nullptr, false);
    if (shownValue.is_discarded()) {
        return shown == actual ? "" : "\"" + actual + "\", shown \"" + shown + "\"";
    }
    const json actualValue = json::parse(actual, nullptr, false);
    return actualValue.is_discarded() ? "no JSON: \"" + actual + "\""
                                      : difference(shownValue, actualValue);
}

}  // namespace docs_examples
