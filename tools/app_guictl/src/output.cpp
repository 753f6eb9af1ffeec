#include "output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace app_guictl {
namespace {

constexpr const char *kBold = "\033[1m";
constexpr const char *kCyan = "\033[36m";
constexpr const char *kReset = "\033[0m";

void put(const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/** Columns of a terminal, counting characters. */
size_t columns(const std::string &text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

std::string pad(const std::string &text, size_t width) {
    return text + std::string(width - std::min(width, columns(text)), ' ');
}

/** A field's value as a cell: texts as they stand, arrays joined by ",". */
std::string cell(const Json &value) {
    if (value.is_string()) return printable(value.get<std::string>());
    if (!value.is_array()) return value.dump();
    std::string joined;
    for (const Json &element : value)
        joined += (joined.empty() ? "" : ",") + cell(element);
    return joined;
}

}  // namespace

bool wants_colour(FILE *stream) {
    const char *no_color = std::getenv("NO_COLOR");
    const char *term = std::getenv("TERM");
    return isatty(fileno(stream)) && (no_color == nullptr || *no_color == '\0') &&
           (term == nullptr || std::strcmp(term, "dumb") != 0);
}

std::string printable(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        const bool c1 =
            c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c1) c = static_cast<unsigned char>(text[++i]);
        if (c >= 0x20 && c != 0x7F && !c1) {
            out += static_cast<char>(c);
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", c);
        out += escape;
    }
    return out;
}

std::string Output::styled(const char *style, const std::string &text) const {
    return m_colour ? style + text + kReset : text;
}

void Output::json(const Json &value) const {
    put(value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Output::line(const std::string &text) const {
    put(text + "\n");
}

void Output::records(const std::string &name, const Json &records) const {
    if (records.empty()) line("no " + name);
    for (size_t i = 0; i < records.size(); ++i) {
        if (i > 0) line("");
        line(styled(kBold, name + " [" + std::to_string(i) + "]"));
        if (!records[i].is_object()) continue;
        size_t width = 0;
        for (const auto &field : records[i].items()) {
            width = std::max(width, columns(printable(field.key())));
        }
        for (const auto &field : records[i].items()) {
            line("  " + styled(kCyan, pad(printable(field.key()), width)) + "  " +
                 cell(field.value()));
        }
    }
}

void Output::table(const std::vector<std::vector<std::string>> &rows) const {
    std::vector<size_t> widths(rows.front().size());
    for (const auto &row : rows) {
        for (size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], columns(row[i]));
        }
    }
    for (size_t r = 0; r < rows.size(); ++r) {
        std::string text;
        for (size_t i = 0; i + 1 < widths.size(); ++i)
            text += pad(rows[r][i], widths[i]) + "  ";
        text += rows[r].back();
        line(r == 0 ? styled(kBold, text) : text);
    }
}

}  // namespace app_guictl
