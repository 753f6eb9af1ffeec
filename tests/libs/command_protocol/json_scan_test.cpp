#include "json_scan.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <vector>

namespace command_protocol {
namespace {

using nlohmann::json;

bool accepts(std::string_view text, unsigned depth = 32) {
    std::string reason;
    const bool accepted = check_json(text, depth, &reason);
    EXPECT_NE(accepted, !reason.empty()) << text;
    return accepted;
}

TEST(JsonScan, AcceptsWhatTheGrammarAllows) {
    for (const char *text :
         {"0", "-0", "1.5e+10", "1E-2", "[]", "{}", " [ 1 , 2 ] ",
          R"({"a":{"b":[null,true,false]}})", R"("\"\\\/\b\f\n\r\t\u00e4\ud83d\ude00")",
          "\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\""}) {
        EXPECT_TRUE(accepts(text)) << text;
    }
}

TEST(JsonScan, RefusesWhatTheGrammarForbids) {
    for (const char *text :
         {"", " ", "01", "-", "1.", ".5", "1e", "+1", "tru", "truex", "nul", "[1,]", "[,1]",
          "[1 2]", "{,}", "{1:2}", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "[1}", "{\"a\":1]", "1 2",
          "\"", "\"\\", "\"\\x\"", "\"\\u12\"", "\"\\u12g4\"", "\"\\ud800\"", "\"\\ud800\\u0041\"",
          "\"\\udc00\"", "\"\n\"", "\"\x01\"", "'a'", "NaN", "// x\n1",
          "\xEF\xBB\xBF"
          "1",
          // Over-long forms, halves of pairs, past the last character, cut sequences, lone bytes.
          "\"\xC0\x80\"", "\"\xE0\x80\x80\"", "\"\xED\xA0\x80\"", "\"\xF4\x90\x80\x80\"",
          "\"\xF0\x80\x80\x80\"", "\"\xC3\"", "\"\xE2\x82\"", "\"\xF0\x9F\x98", "\"\x80\"",
          "\"\xFF\""}) {
        EXPECT_FALSE(accepts(text)) << text;
    }
    EXPECT_FALSE(accepts(std::string_view("\"\\\0\"", 4)));
    EXPECT_FALSE(accepts(std::string_view("1\0", 2)));
}

TEST(JsonScan, AllowsJustTheDepthThatIsAskedFor) {
    EXPECT_TRUE(accepts("[{\"a\":[]}]", 3));
    EXPECT_FALSE(accepts("[{\"a\":[]}]", 2));
    EXPECT_TRUE(accepts("[[],[],{}]", 2));
    EXPECT_TRUE(accepts("1", 0));
}

/** The tree that the walks see. */
json tree_of(std::string_view value) {
    json tree;
    if (json_type(value) == JsonType::kObject) {
        tree = json::object();
        for (ObjectWalk walk(value); walk.next();) {
            tree[std::string(walk.name())] = tree_of(walk.value());
        }
    } else if (json_type(value) == JsonType::kArray) {
        tree = json::array();
        for (ArrayWalk walk(value); walk.next();) {
            tree.push_back(tree_of(walk.value()));
        }
    } else if (json_type(value) == JsonType::kString) {
        tree = json_string(value);
    } else {
        tree = json::parse(value);
    }
    return tree;
}

constexpr const char *kSeeds[] = {
    R"({"jsonrpc":"2.0","id":-1.5e3,"method":"a\"\\\/\b\f\n\r\tb","params":{"records":[{},{"x":[1,2,[]]}]}})",
    R"([ { "a\u0062" : "\u00e4\u20ac\ud83d\ude00" , "" : null } , true, false , [ [ ] , { } ] , 0.5 ])",
    "\"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80\"",
};

TEST(JsonScan, SeesTheTreeThatAnotherParserSees) {
    for (const char *seed : kSeeds) {
        EXPECT_EQ(tree_of(trim_json(seed)), json::parse(seed));
    }
}

TEST(JsonScan, AgreesWithAnotherParserOnMutatedTexts) {
    std::mt19937 random(20240611);
    const std::string alphabet = "{}[]\",:\\u0123456789abdeflnrst.-+ \n\xC3\xA4\xF0\x9F\xED";
    int accepted = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = kSeeds[round % 3];
        for (int i = random() % 3; i >= 0; --i) {
            const size_t at = random() % text.size();
            const char c = alphabet[random() % alphabet.size()];
            if (random() % 2 == 0) {
                text[at] = c;
            } else {
                text.insert(at, 1, c);
            }
        }
        // What no double can hold is grammatical here and refused there.
        const json other = json::parse(text, nullptr, false);
        const bool ours = accepts(text);
        ASSERT_EQ(ours, !other.is_discarded()) << text;
        if (!ours) continue;
        ++accepted;
        ASSERT_EQ(tree_of(trim_json(text)), other) << text;
    }
    EXPECT_GT(accepted, 3000);
}

TEST(JsonScan, ReadsIntegersThatFit) {
    int32_t number = 0;
    EXPECT_TRUE(json_int32("-2147483648", &number));
    EXPECT_EQ(number, -2147483647 - 1);
    for (const char *text : {"2147483648", "1.0", "1e2", "99999999999999999999"}) {
        EXPECT_FALSE(json_int32(text, &number)) << text;
    }
}

}  // namespace
}  // namespace command_protocol
