#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "random_record.h"
#include "record_codec/record_json.h"

namespace {

using record_codec::Json;
using record_codec::OrderedJson;
using record_codec::Record;
using record_codec::RecordError;
using record_codec::UnknownMembers;

const Record &record_named(const char *name) {
    const Record *record = record_codec::find_record(name);
    if (!record) throw std::runtime_error(name);
    return *record;
}

template <typename X>
std::string text_of(const char *name, const X &record) {
    std::string text;
    record_codec::append_record(text, record_named(name), &record);
    return text;
}

/** Reads `text` over `record`; the error as "field: reason", empty on success. */
template <typename X>
std::string read_over(const char *name, const std::string &text, X *record,
                      UnknownMembers unknown = UnknownMembers::kRefuse) {
    RecordError error;
    if (record_codec::json_to_record(record_named(name), Json::parse(text), unknown, record,
                                     &error)) {
        return "";
    }
    return error.field + ": " + error.reason;
}

// ---- records to JSON ----------------------------------------------------------------------------

TEST(RecordToText, NamesEveryFieldInTheOrderOfTheRecord) {
    VideoOutSourceChange source{};
    source.Channel = 3;
    std::strcpy(source.if_name, "HDMI1");
    source.index = -1;
    source.type = INT32_MIN;
    EXPECT_EQ(text_of("VideoOutSourceChange", source),
              R"({"Channel":3,"if_name":"HDMI1","index":-1,"type":-2147483648})");
}

TEST(RecordToText, IndentsMembersByTwoBlanksMoreThanTheBrace) {
    VideoOutputSourceParameter source{0, 5, 1, -1};
    std::string text;
    record_codec::append_record(text, record_named("VideoOutputSourceParameter"), &source, "  ");
    EXPECT_EQ(
        text,
        "{\n    \"Channel\": 0,\n    \"index\": 5,\n    \"type\": 1,\n    \"cache\": -1\n  }");
}

TEST(RecordToText, WritesNumbersAtTheEndsOfTheirRange) {
    VideoOutputOSDParameter osd{};
    osd.x = UINT32_MAX;
    osd.font = INT32_MAX;
    const Json json = Json::parse(text_of("VideoOutputOSDParameter", osd));
    EXPECT_EQ(json["x"], 4294967295LL);
    EXPECT_EQ(json["font"], 2147483647LL);
}

TEST(RecordToText, CutsTheTrailingZerosOfUnnamedBytes) {
    VideoOutputInterfaceParameter record{};
    EXPECT_EQ(text_of("VideoOutputInterfaceParameter", record).find("reserved"), std::string::npos);
    record.reserved_128[1] = 0xAB;
    record.reserved_336[11] = 0x0F;
    const Json json = Json::parse(text_of("VideoOutputInterfaceParameter", record));
    EXPECT_EQ(json["reserved_128"], "00ab");
    EXPECT_EQ(json["reserved_336"], "00000000000000000000000f");
}

TEST(RecordToText, ATextWithoutEndIsCutAtACharacter) {
    StreamingInputParameter record{};
    std::memset(record.name, 'x', sizeof record.name);
    EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"],
              std::string(63, 'x'));
    std::memcpy(record.name + 62, "\xC3\xA4", 2);
    EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"],
              std::string(62, 'x'));
    std::memcpy(record.name + 61, "\xC3\xA4x", 3);
    EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"],
              std::string(61, 'x') + "\xC3\xA4");
}

TEST(RecordToText, BytesThatAreNotUtf8BecomeReadable) {
    const std::pair<const char *, const char *> cases[] = {
        {"abc\xFF"
         "def",
         "abc\uFFFD"
         "def"},
        {"\xC3", "\uFFFD"},                                // cut short
        {"\xC0\x80", "\uFFFD\uFFFD"},                      // overlong
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
        {"\xE2\x82\xAC", "\u20AC"},
        {"\xF0\x9F\x98\x80", "\U0001F600"},
    };
    for (const auto &[bytes, expected] : cases) {
        StreamingInputParameter record{};
        std::strcpy(record.name, bytes);
        EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"], expected);
    }
}

TEST(RecordToText, ReplacedBytesAlwaysFitTheirField) {
    StreamingInputParameter record{};
    std::memset(record.name, 0xFF, 63);
    EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"],
              std::string(63, '?'));
    std::memset(record.name, 0, sizeof record.name);
    std::memset(record.name, 0xFF, 60);
    EXPECT_EQ(Json::parse(text_of("StreamingInputParameter", record))["name"],
              "\uFFFD" + std::string(59, '?'));
}

TEST(RecordToText, AnyBytesAreReadBackAndThenStaySame) {
    Random random(7);
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(records[i].name);
        for (int round = 0; round < 200; ++round) {
            std::vector<char> bytes(records[i].size);
            for (char &byte : bytes) {
                byte = static_cast<char>(random());
            }
            std::string text;
            record_codec::append_record(text, records[i], bytes.data());
            std::vector<char> back(records[i].size);
            RecordError error;
            ASSERT_TRUE(record_codec::json_to_record(records[i], Json::parse(text),
                                                     UnknownMembers::kRefuse, back.data(), &error))
                << error.field << ": " << error.reason;
            std::string again;
            record_codec::append_record(again, records[i], back.data());
            ASSERT_EQ(again, text);
        }
    }
}

TEST(RecordToJson, HoldsWhatTheTextHolds) {
    Random random(11);
    size_t count = 0;
    const Record *records = record_codec::all_records(&count);
    for (size_t i = 0; i < count; ++i) {
        std::vector<char> bytes(records[i].size);
        fill_with_random(random, records[i], bytes.data());
        std::string text;
        record_codec::append_record(text, records[i], bytes.data());
        EXPECT_EQ(record_codec::record_to_json(records[i], bytes.data()), OrderedJson::parse(text));
    }
}

TEST(JsonString, HoldsAnyBytes) {
    const std::pair<std::string, std::string> cases[] = {
        {"", R"("")"},
        {"a\"b\\c", R"("a\"b\\c")"},
        {"\n\t\r", R"("\n\t\u000d")"},
        {std::string("\0", 1), R"("\u0000")"},
        {"\x7F", R"("\u007f")"},
        {"\xFF", "\"\uFFFD\""},
        {"\u4E2D", "\"\u4E2D\""},
    };
    for (const auto &[text, expected] : cases) {
        std::string out = "x";
        record_codec::append_json_string(out, text);
        EXPECT_EQ(out, "x" + expected);
        EXPECT_TRUE(Json::accept(out.substr(1)));
    }
}

// ---- JSON to records ----------------------------------------------------------------------------

TEST(JsonToRecord, LeavesAloneWhatIsLeftOut) {
    WatermarkOSDParameter record{};
    record.font = 5;
    std::strcpy(record.contet, "old text, rather long");
    record.reserved_220[0] = 9;
    EXPECT_EQ(read_over("WatermarkOSDParameter", R"({"contet": "new", "x": -7})", &record), "");
    EXPECT_EQ(record.font, 5);
    EXPECT_EQ(record.x, -7);
    EXPECT_STREQ(record.contet, "new");
    EXPECT_EQ(record.reserved_220[0], 9);
    for (size_t i = 3; i < sizeof record.contet; ++i) {
        ASSERT_EQ(record.contet[i], 0) << "the rest of the old text is gone";
    }
}

TEST(JsonToRecord, ReadsArraysAndUnnamedBytes) {
    VideoOutputInterfaceParameter record{};
    std::memset(record.reserved_336, 0xEE, sizeof record.reserved_336);
    EXPECT_EQ(read_over("VideoOutputInterfaceParameter",
                        R"({"PictureLevel": [1, -2, 2147483647, -2147483648],
                            "reserved_130": "aBC0", "reserved_336": "01"})",
                        &record),
              "");
    const int32_t levels[] = {1, -2, INT32_MAX, INT32_MIN};
    EXPECT_EQ(std::memcmp(record.PictureLevel, levels, sizeof levels), 0);
    EXPECT_EQ(record.reserved_128[1], 0);
    EXPECT_EQ(record.reserved_128[2], 0xAB);
    EXPECT_EQ(record.reserved_128[3], 0xC0);
    EXPECT_EQ(record.reserved_336[0], 1);
    EXPECT_EQ(record.reserved_336[1], 0) << "a span that is given is given whole";
}

struct Refusal {
    const char *record;
    const char *json;
    const char *error;
};

const Refusal kRefusals[] = {
    {"WatermarkOSDParameter", "[]", ": an object is expected, not array"},
    {"WatermarkOSDParameter", "7", ": an object is expected, not number"},
    {"WatermarkOSDParameter", "null", ": an object is expected, not null"},
    {"WatermarkOSDParameter", R"({"font": 2147483648})",
     "font: 2147483648 is outside -2147483648 to 2147483647"},
    {"WatermarkOSDParameter", R"({"font": -2147483649})",
     "font: -2147483649 is outside -2147483648 to 2147483647"},
    {"WatermarkOSDParameter", R"({"font": 18446744073709551615})",
     "font: 18446744073709551615 is outside -2147483648 to 2147483647"},
    {"WatermarkOSDParameter", R"({"font": 18446744073709551616})", "font: not an integer"},
    {"WatermarkOSDParameter", R"({"font": 1.5})", "font: not an integer"},
    {"WatermarkOSDParameter", R"({"font": 1.0})", "font: not an integer"},
    {"WatermarkOSDParameter", R"({"font": 1e2})", "font: not an integer"},
    {"WatermarkOSDParameter", R"({"font": true})", "font: a number is expected, not boolean"},
    {"WatermarkOSDParameter", R"({"font": "3"})", "font: a number is expected, not string"},
    {"WatermarkOSDParameter", R"({"font": null})", "font: a number is expected, not null"},
    {"WatermarkOSDParameter", R"({"font": [3]})", "font: a number is expected, not array"},
    {"WatermarkOSDParameter", R"({"contet": 3})", "contet: a text is expected, not number"},
    {"WatermarkOSDParameter", R"({"contet": null})", "contet: a text is expected, not null"},
    {"WatermarkOSDParameter", R"({"contet": "a\u0000b"})", "contet: the text contains a NUL"},
    {"VideoOutputOSDParameter", R"({"x": -1})", "x: -1 is outside 0 to 4294967295"},
    {"VideoOutputOSDParameter", R"({"x": 4294967296})", "x: 4294967296 is outside 0 to 4294967295"},
    {"VideoOutputInterfaceParameter", R"({"PictureLevel": [1,2,3]})",
     "PictureLevel: an array of 4 numbers is expected"},
    {"VideoOutputInterfaceParameter", R"({"PictureLevel": [1,2,3,4,5]})",
     "PictureLevel: an array of 4 numbers is expected"},
    {"VideoOutputInterfaceParameter", R"({"PictureLevel": 1})",
     "PictureLevel: an array of 4 numbers is expected"},
    {"VideoOutputInterfaceParameter", R"({"PictureLevel": [1,2,"3",4]})",
     "PictureLevel[2]: a number is expected, not string"},
    {"VideoOutputInterfaceParameter", R"({"PictureLevel": [1,2,3,2147483648]})",
     "PictureLevel[3]: 2147483648 is outside -2147483648 to 2147483647"},
    {"WatermarkOSDParameter", R"({"reserved_220": "0"})",
     "reserved_220: pairs of hexadecimal digits are expected"},
    {"WatermarkOSDParameter", R"({"reserved_220": "0g"})",
     "reserved_220: pairs of hexadecimal digits are expected"},
    {"WatermarkOSDParameter", R"({"reserved_220": 1})",
     "reserved_220: pairs of hexadecimal digits are expected"},
    {"WatermarkOSDParameter", R"({"reserved_220": "0102030405"})",
     "reserved_220: 5 bytes do not fit into 4"},
    {"WatermarkOSDParameter", R"({"reserved_222": "010203"})",
     "reserved_222: 3 bytes do not fit into 2"},
};

TEST(JsonToRecord, SaysWhichMemberIsWrongAndWhy) {
    for (const Refusal &row : kRefusals) {
        SCOPED_TRACE(row.json);
        std::vector<char> bytes(record_named(row.record).size, 0x5A);
        const std::vector<char> before = bytes;
        EXPECT_EQ(read_over(row.record, row.json, bytes.data()), row.error);
        EXPECT_EQ(bytes, before);
    }
}

TEST(JsonToRecord, RefusesAWrongMemberEvenWhereUnknownOnesAreSkipped) {
    for (const Refusal &row : kRefusals) {
        std::vector<char> bytes(record_named(row.record).size);
        EXPECT_EQ(read_over(row.record, row.json, bytes.data(), UnknownMembers::kSkip), row.error);
    }
}

TEST(JsonToRecord, ChangesNothingWhenALaterMemberIsWrong) {
    WatermarkOSDParameter record{};
    record.angle = 45;
    EXPECT_EQ(read_over("WatermarkOSDParameter", R"({"angle": 1, "font": 2, "x": 1.5})", &record),
              "x: not an integer");
    EXPECT_EQ(record.angle, 45);
    EXPECT_EQ(record.font, 0);
}

TEST(JsonToRecord, ATextFitsWithItsNulOrNotAtAll) {
    StreamingInputParameter record{};
    const auto name_of = [](size_t length) {
        return R"({"name": ")" + std::string(length, 'n') + "\"}";
    };
    EXPECT_EQ(read_over("StreamingInputParameter", name_of(63), &record), "");
    EXPECT_EQ(record.name, std::string(63, 'n'));
    EXPECT_EQ(read_over("StreamingInputParameter", name_of(64), &record),
              "name: 64 bytes do not fit into 63");
    EXPECT_EQ(record.name, std::string(63, 'n'));
    std::string characters;
    for (int i = 0; i < 32; ++i) {
        characters += "\u00E4";
    }
    EXPECT_EQ(read_over("StreamingInputParameter", R"({"name": ")" + characters + "\"}", &record),
              "name: 64 bytes do not fit into 63");
}

TEST(JsonToRecord, NamesAMemberThatTheRecordHasNot) {
    const char *const names[] = {
        "content",        // the record's field is spelt contet
        "Font",           // names tell upper from lower case
        "",               //
        "reserved_",      //
        "reserved_4x",    //
        "reserved_-4",    //
        "reserved_219",   // a named byte
        "reserved_1036",  // behind the record
        "reserved_99999999999999999999",
    };
    for (const char *name : names) {
        SCOPED_TRACE(name);
        WatermarkOSDParameter record{};
        const std::string json = "{\"" + std::string(name) + "\": \"01\"}";
        EXPECT_EQ(read_over("WatermarkOSDParameter", json, &record),
                  std::string(name) + ": unknown field of WatermarkOSDParameter");
        EXPECT_EQ(read_over("WatermarkOSDParameter", json, &record, UnknownMembers::kSkip), "");
        const WatermarkOSDParameter zero{};
        EXPECT_EQ(std::memcmp(&record, &zero, sizeof zero), 0);
    }
}

// ---- parsing ------------------------------------------------------------------------------------

bool parses(const std::string &text, unsigned max_depth, std::string *reason) {
    Json json;
    return record_codec::parse_json(text.data(), text.size(), max_depth, &json, reason);
}

TEST(ParseJson, CountsNestingOutsideStrings) {
    const struct {
        const char *text;
        unsigned depth;
    } cases[] = {
        {"7", 0},
        {"[]", 1},
        {R"({"a": [1, {"b": []}], "c": [[]]})", 4},
        {R"(["[[[[[[", "{{{{"])", 1},
        {R"(["\"[[[", "\\", ["]]]]"]])", 2},
        {R"([[], [], [], []])", 2},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.text);
        std::string reason;
        EXPECT_TRUE(parses(row.text, row.depth, &reason)) << reason;
        if (row.depth == 0) continue;
        EXPECT_FALSE(parses(row.text, row.depth - 1, &reason));
        EXPECT_EQ(reason, "nested deeper than " + std::to_string(row.depth - 1) + " levels");
    }
}

TEST(ParseJson, RefusesWhatIsNotOneJsonValue) {
    const std::string cases[] = {
        "",       " ",     "{",        "[1,]",    "{\"a\":}",    "[1] 2",
        "'a'",    "nul",   "\"\xFF\"", "\"\xC3",  "[1",          "\"a\nb\"",
        "01",     "+1",    "NaN",      "// c\n1", "\"\\ud800\"", std::string("[1]\0", 4),
        "\\\"[[", "{a:1}", "]",        "}{",      "\"\\x41\"",   "1e999999",
    };
    for (const std::string &text : cases) {
        std::string reason;
        EXPECT_FALSE(parses(text, 16, &reason)) << text;
        EXPECT_NE(reason, "") << text;
        EXPECT_LE(reason.size(), 200u) << text;
    }
}

TEST(ParseJson, SaysWhereTheTextBreaksOff) {
    std::string reason;
    EXPECT_FALSE(parses("[1,\n2,\n", 16, &reason));
    EXPECT_EQ(reason.rfind("line 3", 0), 0u) << reason;
}

TEST(ParseJson, SaysWhereANumberIsThatNoFloatHolds) {
    const std::pair<const char *, const char *> cases[] = {
        {"1e999", "line 1, column 5: number overflow parsing '1e999'"},
        {R"({"MaxCache":1e999})", "line 1, column 17: number overflow parsing '1e999'"},
        {"[1,\n  -2e9999\n]", "line 2, column 9: number overflow parsing '-2e9999'"},
        {"\n[\"1e999\",\n\n1e999\n,\n3]", "line 4, column 5: number overflow parsing '1e999'"},
    };
    for (const auto &[text, expected] : cases) {
        std::string reason;
        EXPECT_FALSE(parses(text, 16, &reason));
        EXPECT_EQ(reason, expected) << text;
    }
}

TEST(ParseJson, AcceptsAnEmptyRange) {
    Json json;
    std::string reason;
    EXPECT_FALSE(record_codec::parse_json(nullptr, 0, 16, &json, &reason));
}

TEST(ParseJson, KeepsALongReasonShort) {
    const std::string cases[] = {
        "[\"" + std::string(1 << 20, 'a') + "\n\"]",
        "[" + std::string(1 << 20, '1') + "e999]",
    };
    for (const std::string &text : cases) {
        std::string reason;
        EXPECT_FALSE(parses(text, 16, &reason));
        EXPECT_LE(reason.size(), 200u);
    }
}

TEST(ParseJson, NeverWalksDeepIntoAHostileText) {
    std::string reason;
    EXPECT_FALSE(parses(std::string(4 << 20, '['), 16, &reason));
    EXPECT_FALSE(parses(std::string(4 << 20, '{'), 16, &reason));
}

TEST(ParseJson, ReadsHalfAMillionMembersInTimeThatGrowsWithTheirNumber) {
    std::string text = "{";
    for (int i = 0; i < 500000; ++i) {
        text += "\"k" + std::to_string(i) + "\":0,";
    }
    text += "\"font\":4}";
    const auto start = std::chrono::steady_clock::now();
    Json json;
    std::string reason;
    ASSERT_TRUE(record_codec::parse_json(text.data(), text.size(), 16, &json, &reason)) << reason;
    WatermarkOSDParameter record{};
    RecordError error;
    ASSERT_TRUE(record_codec::json_to_record(record_named("WatermarkOSDParameter"), json,
                                             UnknownMembers::kSkip, &record, &error));
    EXPECT_EQ(record.font, 4);
    // Comparing every member with every other one would take minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5 * TEST_SLOWDOWN));
}

}  // namespace
