// The examples of the documents are only worth something if a wrong one is found.

#include "docs_examples.h"

#include <gtest/gtest.h>

using namespace docs_examples;
using nlohmann::json;

namespace {

struct Case {
    const char *name;
    const char *shown;
    const char *actual;
    const char *difference;  ///< "" when the document is right
};

constexpr Case kCases[] = {
    {"the same", R"({"a": [1, "x"]})", R"({"a":[1,"x"]})", ""},
    {"another order", R"({"a": 1, "b": 2})", R"({"b":2,"a":1})", ""},
    {"another number", R"({"a": [1, 2]})", R"({"a":[1,3]})", "a[1]: 3, shown 2"},
    {"another type", R"({"a": 1})", R"({"a":"1"})", "a: \"1\", shown 1"},
    {"a member too many", R"({"a": 1, "b": 2})", R"({"a":1})", "b: not there"},
    {"a member left out", R"({"a": 1})", R"({"a":1,"b":2})", ": 2 members, shown 1"},
    {"an element left out", "[1]", "[1,2]", ": 2 elements, shown 1"},
    {"an element too many", "[1, 2]", "[1]", ": 1 elements, shown 2"},
    {"more elements", R"([1, "..."])", "[1,2]", ""},
    {"no more elements", R"([1, "..."])", "[1]", ": 1 elements, shown 1 and more"},
    {"a wrong element before more", R"([1, "..."])", "[2,3]", "[0]: 2, shown 1"},
    {"more in the middle", R"(["...", 1])", "[0,1]", "[0]: 0, shown \"...\""},
    {"more members", R"({"a": 1, "...": "..."})", R"({"a":1,"b":2})", ""},
    {"no more members", R"({"a": 1, "...": "..."})", R"({"a":1})", ": 1 members, shown 1 and more"},
    {"a wrong member before more", R"({"a": 1, "...": "..."})", R"({"a":2,"b":2})",
     "a: 2, shown 1"},
    {"an integer", R"({"a": "<integer>"})", R"({"a":17})", ""},
    {"no integer", R"({"a": "<integer>"})", R"({"a":"17"})", "a: \"17\", shown \"<integer>\""},
    {"a fraction", R"({"a": "<integer>"})", R"({"a":1.5})", "a: 1.5, shown \"<integer>\""},
    {"a negative number", R"({"a": "<integer>"})", R"({"a":-1})", "a: -1, shown \"<integer>\""},
};

TEST(DocumentedValues, MatchOnlyWhatTheyShow) {
    for (const Case &row : kCases) {
        EXPECT_EQ(difference(json::parse(row.shown), json::parse(row.actual)), row.difference)
            << row.name;
    }
}

TEST(DocumentedTexts, AreComparedAsJsonWhereTheyAreJson) {
    EXPECT_EQ(text_difference("{\"a\": 1}", "{\"a\":1}\n"), "");
    EXPECT_NE(text_difference("{\"a\": 1}", "{\"a\":2}\n"), "");
    EXPECT_NE(text_difference("{\"a\": 1}", "Can't connect\n"), "");
    EXPECT_EQ(text_difference("done\n", "done\n"), "");
    EXPECT_NE(text_difference("done\n", "done"), "");
    EXPECT_NE(text_difference("", "Can't bind\n"), "");
}

TEST(FencedBlocks, AreFoundWithTheirLineAndWords) {
    const auto blocks = fenced_blocks("text\n```json request\n{\n}\n```\n```\nx\n```\n");
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].line, 3);
    EXPECT_EQ(blocks[0].info, "json request");
    EXPECT_EQ(blocks[0].text, "{\n}");
    EXPECT_EQ(blocks[1].info, "");
    EXPECT_EQ(blocks[1].text, "x");
}

TEST(ConsoleBlocks, AreSplitIntoCommandsAndWhatTheyPrint) {
    const auto steps = console_steps("$ one\n$ two | tr a b\nx\ny");
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[0].command, "one");
    EXPECT_EQ(steps[0].output, "");
    EXPECT_EQ(steps[1].command, "two | tr a b");
    EXPECT_EQ(steps[1].output, "x\ny\n");
}

}  // namespace
