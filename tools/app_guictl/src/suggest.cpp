#include "suggest.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace app_guictl {
namespace {

bool same_letter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

}  // namespace

size_t edit_distance(std::string_view from, std::string_view to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t k = 0; k < to.size(); ++k) {
            const size_t replaced = diagonal + (same_letter(from[i], to[k]) ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({replaced, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string did_you_mean(std::string_view name, const std::vector<std::string> &names) {
    // A third of the letters may be wrong; past that a guess is more puzzling than helpful.
    size_t least = name.size() / 3 + 2;
    std::string nearest;
    for (const std::string &candidate : names) {
        const size_t distance = edit_distance(name, candidate);
        if (distance < least && distance < candidate.size()) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace app_guictl
