#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ask.h"
#include "fake_device.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class JsonRpc : public ::testing::Test {
protected:
    void SetUp() override { fake_device() = FakeDevice(); }
};

TEST_F(JsonRpc, AnswersARequestWithItsMembersInOrder) {
    EXPECT_EQ(ask_text(R"({"jsonrpc":"2.0","method":"UploadWatermarkPicture",)"
                       R"("params":{"if_name":"HDMI1"},"id":3})"),
              R"({"jsonrpc":"2.0","id":3,"result":0})");
}

// The examples of the published document, with this device's commands for its methods.

TEST_F(JsonRpc, AnswersAnUnknownMethodWithMethodNotFound) {
    const Json reply = ask(R"({"jsonrpc": "2.0", "method": "foobar", "id": "1"})");
    EXPECT_TRUE(is_response(reply));
    EXPECT_EQ(reply["id"], "1");
    EXPECT_EQ(error_code(reply), -32601);
    EXPECT_EQ(reply["error"]["message"], "Method not found: foobar");
    EXPECT_FALSE(reply["error"].contains("data"));
}

struct Refused {
    const char *message;
    int code;
};

TEST_F(JsonRpc, AnswersWhatIsNoRequestWithNullIds) {
    const Refused cases[] = {
        {R"({"jsonrpc": "2.0", "method": "foobar, "params": "bar", "baz])", -32700},
        {R"([{"jsonrpc": "2.0", "method": "sum", "params": [1,2,4], "id": "1"},)"
         R"({"jsonrpc": "2.0", "method")",
         -32700},
        {R"({"jsonrpc": "2.0", "method": 1, "params": "bar"})", -32600},
        {"[]", -32600},
        {"", -32700},
        {" \n\t ", -32700},
        {"1", -32600},
        {"null", -32600},
        {"\"GetVideoOutputDisplayParameter\"", -32600},
        {"{}", -32600},
        {R"({"foo": "boo"})", -32600},
        {R"({"jsonrpc": 2.0, "method": "Keepalive", "id": {}})", -32600},
        {R"({"jsonrpc": "2.0", "method": "Keepalive", "id": [1]})", -32600},
        {R"({"jsonrpc": "2.0", "method": "Keepalive", "id": true})", -32600},
        {R"({"jsonrpc": "2.0", "method": "Keepalive", "params": "bar"})", -32600},
        {R"({"jsonrpc": "2.0", "method": "Keepalive", "params": null})", -32600},
    };
    for (const Refused &refused : cases) {
        const Json reply = ask(refused.message);
        EXPECT_TRUE(is_response(reply)) << refused.message;
        EXPECT_EQ(error_code(reply), refused.code) << refused.message;
        EXPECT_TRUE(reply["id"].is_null()) << refused.message;
    }
}

TEST_F(JsonRpc, AnswersAnInvalidRequestUnderItsIdWhereThatCanBeTold) {
    const char *cases[] = {
        R"({"jsonrpc": "1.0", "method": "Keepalive", "id": 5})",
        R"({"method": "Keepalive", "id": 5})",
        R"({"jsonrpc": "2.0", "method": 1, "id": 5})",
        R"({"jsonrpc": "2.0", "id": 5})",
        R"({"jsonrpc": "2.0", "method": "Keepalive", "params": 1, "id": 5})",
    };
    for (const char *message : cases) {
        const Json reply = ask(message);
        EXPECT_EQ(error_code(reply), -32600) << message;
        EXPECT_EQ(reply["id"], 5) << message;
    }
}

TEST_F(JsonRpc, AnswersEachEntryOfABatchThatIsNoRequest) {
    const Json reply = ask("[1,2,3]");
    ASSERT_TRUE(reply.is_array());
    ASSERT_EQ(reply.size(), 3u);
    for (const Json &entry : reply) {
        EXPECT_TRUE(is_response(entry));
        EXPECT_EQ(error_code(entry), -32600);
        EXPECT_TRUE(entry["id"].is_null());
    }
}

TEST_F(JsonRpc, AnswersTheRequestsOfABatchInOrderAndNotItsNotifications) {
    const Json reply = ask(
        R"([{"jsonrpc":"2.0","method":"UploadWatermarkPicture","params":{"if_name":"HDMI1"},"id":"1"},)"
        R"({"jsonrpc":"2.0","method":"UploadWatermarkPicture","params":{"if_name":"HDMI2"}},)"
        R"({"jsonrpc":"2.0","method":"GetVideoOutputDisplayParameter","id":"2"},)"
        R"({"foo":"boo"},)"
        R"({"jsonrpc":"2.0","method":"foo.get","params":{"name":"myself"},"id":"5"},)"
        R"([{"jsonrpc":"2.0","method":"Keepalive","id":"6"}],)"
        R"({"jsonrpc":"2.0","method":"Keepalive","id":"9"}])");
    ASSERT_EQ(reply.size(), 6u) << reply;
    for (const Json &entry : reply) {
        EXPECT_TRUE(is_response(entry)) << entry;
    }
    EXPECT_EQ(reply[0]["id"], "1");
    EXPECT_EQ(reply[1]["id"], "2");
    EXPECT_EQ(error_code(reply[2]), -32600);
    EXPECT_EQ(error_code(reply[3]), -32601);
    EXPECT_EQ(error_code(reply[4]), -32600);
    EXPECT_EQ(reply[5]["result"]["process"], "app_gui");
    EXPECT_EQ(fake_device().uploads, 2);
}

TEST_F(JsonRpc, AnswersNothingToNotifications) {
    const char *cases[] = {
        R"({"jsonrpc":"2.0","method":"UploadWatermarkPicture","params":{"if_name":"HDMI1"}})",
        R"({"jsonrpc":"2.0","method":"foobar"})",
        R"({"jsonrpc":"2.0","method":"Keepalive","params":[1,2,3,4,5]})",
        R"({"jsonrpc":"2.0","method":"SetWatermarkOSDParameter","params":{"records":7}})",
        R"([{"jsonrpc":"2.0","method":"Keepalive"},{"jsonrpc":"2.0","method":"foobar"}])",
    };
    for (const char *message : cases) {
        EXPECT_EQ(ask_text(message), "") << message;
    }
    EXPECT_EQ(fake_device().uploads, 1);
}

TEST_F(JsonRpc, EchoesTheIdExactlyAsGiven) {
    const char *ids[] = {"null", "0",    "-1",
                         "1.50", "1e3",  "12345678901234567890123",
                         "-0",   "\"\"", R"("a\u0042 \" ü")"};
    for (const std::string id : ids) {
        EXPECT_THAT(ask_text(R"({"jsonrpc":"2.0","id": )" + id + R"( ,"method":"Keepalive"})"),
                    StartsWith(R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)"));
    }
}

TEST_F(JsonRpc, IgnoresOtherMembersAndWhiteSpaceAndOneTrailingNul) {
    const std::string message =
        "\r\n { \"x\" : [1,{}], \"method\" : \"Keep\\u0061live\" ,\"id\":1,"
        "\"json\\u0072pc\":\"2.0\" } \t";
    EXPECT_EQ(ask(message)["result"]["process"], "app_gui");
    EXPECT_EQ(ask(message + '\0')["result"]["process"], "app_gui");
    EXPECT_EQ(error_code(ask(message + '\0' + '\0')), -32700);
}

TEST_F(JsonRpc, TakesTheLastOfRepeatedMembers) {
    EXPECT_EQ(ask(R"({"jsonrpc":"2.0","id":1,"id":2,"method":"x","method":"Keepalive"})")["id"], 2);
}

TEST_F(JsonRpc, RefusesPositionalParametersButTakesAnEmptyArrayForNone) {
    const Json refused = ask(request("Keepalive", "[0]"));
    EXPECT_EQ(error_code(refused), -32602);
    EXPECT_THAT(refused["error"]["message"].get<std::string>(), HasSubstr("by name"));
    EXPECT_EQ(ask(request("Keepalive", "[ ]"))["result"]["pid"], getpid());
}

TEST_F(JsonRpc, NamesThePlaceOfAParseError) {
    EXPECT_EQ(ask("{\n\"a\": 1\n\"b\": 2}")["error"]["message"],
              "Parse error: line 3: ',' or '}' expected");
    EXPECT_EQ(ask("\"\xC3\x28\"")["error"]["message"],
              "Parse error: line 1: a string is not UTF-8");
}

TEST_F(JsonRpc, RefusesWhatIsTooLargeOrTooDeep) {
    const size_t limit = 4u << 20;
    const std::string head = R"({"jsonrpc":"2.0","id":1,"method":"Keepalive","x":")", tail = "\"}";
    const std::string largest = head + std::string(limit - head.size() - tail.size(), 'a') + tail;
    EXPECT_EQ(error_code(ask(largest)), 0);
    EXPECT_THAT(ask(largest + " ")["error"]["message"].get<std::string>(),
                HasSubstr("message of 4194305 bytes exceeds 4194304"));
    EXPECT_EQ(error_code(ask(largest + " ")), -32600);

    const auto nested = [](int depth) {
        return R"({"jsonrpc":"2.0","id":1,"method":"Keepalive","x":)" + std::string(depth, '[') +
               std::string(depth, ']') + "}";
    };
    EXPECT_EQ(error_code(ask(nested(31))), 0);
    EXPECT_EQ(error_code(ask(nested(32))), -32700);
    EXPECT_THAT(ask(nested(32))["error"]["message"].get<std::string>(),
                HasSubstr("nesting above 32 levels"));
    EXPECT_EQ(error_code(ask(std::string(limit, '['))), -32700);
}

std::string batch_of(size_t count, const std::string &entry) {
    std::string batch = "[" + entry;
    for (size_t i = 1; i < count; ++i) {
        batch += "," + entry;
    }
    return batch + "]";
}

TEST_F(JsonRpc, RefusesABatchOfMoreThanAThousand) {
    EXPECT_EQ(ask(batch_of(1000, request("Keepalive"))).size(), 1000u);
    const Json reply = ask(batch_of(1001, request("Keepalive")));
    EXPECT_TRUE(is_response(reply));
    EXPECT_EQ(error_code(reply), -32600);
}

TEST_F(JsonRpc, StopsServingABatchWhoseReplyGrowsWithoutMeasure) {
    const std::string text = ask_text(batch_of(1000, request("rpc.discover")));
    EXPECT_LT(text.size(), 10u << 20);
    const Json reply = Json::parse(text);
    ASSERT_EQ(reply.size(), 1000u);
    EXPECT_EQ(error_code(reply.front()), 0);
    EXPECT_EQ(error_code(reply.back()), -32603);
    EXPECT_TRUE(is_response(reply.back()));
}

TEST_F(JsonRpc, RefusesNullArgumentsAndNegativeLengths) {
    char untouched;
    char *response = &untouched;
    EXPECT_EQ(parse_command_and_get_response_with_len(nullptr, 0, 1, &response), -2);
    EXPECT_EQ(parse_command_and_get_response_with_len("{}", -1, 1, &response), -2);
    EXPECT_EQ(response, &untouched);
    EXPECT_EQ(parse_command_and_get_response_with_len("{}", 2, 1, nullptr), -2);
}

}  // namespace
