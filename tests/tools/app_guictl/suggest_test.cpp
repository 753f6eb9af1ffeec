#include "suggest.h"

#include <gtest/gtest.h>

namespace app_guictl {
namespace {

struct Distance {
    const char *from;
    const char *to;
    size_t distance;
};

TEST(Suggest, DistanceCountsSingleCharacters) {
    const Distance cases[] = {{"", "", 0},         {"", "abc", 3},          {"abc", "", 3},
                              {"font", "font", 0}, {"FONT", "font", 0},     {"fnt", "font", 1},
                              {"fotn", "font", 2}, {"kitten", "sitting", 3}};
    for (const Distance &row : cases) {
        EXPECT_EQ(edit_distance(row.from, row.to), row.distance) << row.from << " " << row.to;
    }
}

TEST(Suggest, NamesTheNearestOrNothing) {
    const std::vector<std::string> names = {"list", "get", "set"};
    EXPECT_EQ(did_you_mean("lst", names), "; did you mean list?");
    EXPECT_EQ(did_you_mean("GET", names), "; did you mean get?");
    EXPECT_EQ(did_you_mean("completely", names), "");
    EXPECT_EQ(did_you_mean("x", names), "");
    EXPECT_EQ(did_you_mean("x", {}), "");
}

}  // namespace
}  // namespace app_guictl
