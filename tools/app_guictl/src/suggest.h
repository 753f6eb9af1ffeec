/** @file suggest.h The name that somebody may have meant. */
#ifndef APP_GUICTL_SUGGEST_H
#define APP_GUICTL_SUGGEST_H

#include <string>
#include <string_view>
#include <vector>

namespace app_guictl {

/** Single characters to insert, delete or replace to get from one text to the other; no case. */
size_t edit_distance(std::string_view from, std::string_view to);

/** "; did you mean NAME?" for the nearest of the names, "" when none is near. */
std::string did_you_mean(std::string_view name, const std::vector<std::string> &names);

}  // namespace app_guictl

#endif
