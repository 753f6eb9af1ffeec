#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "ask.h"
#include "command_protocol/command_table.h"
#include "fake_device.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CommandService : public ::testing::Test {
protected:
    void SetUp() override { fake_device() = FakeDevice(); }
};

TEST_F(CommandService, GetAsksForTheSizeAndThenForTheRecordsOfTheKey) {
    fake_device().watermarks[1].font = 3;
    const Json reply = ask(request("GetWatermarkOSDParameter", R"({"if_name":"HDMI2"})"));
    ASSERT_EQ(reply["result"].size(), 1u) << reply;
    EXPECT_EQ(reply["result"][0]["if_name"], "HDMI2");
    EXPECT_EQ(reply["result"][0]["font"], 3);
    EXPECT_THAT(fake_device().calls, ElementsAre("GetWatermarkOSDParameterSize(HDMI2)",
                                                 "GetWatermarkOSDParameter(HDMI2)"));
}

struct GetCase {
    const char *method;
    const char *params;
    size_t records;
};

TEST_F(CommandService, GetAnswersEveryRecordOfTheKey) {
    const GetCase cases[] = {
        {"GetVideoOutputInterfaceParameter", "{}", 2},
        {"GetVideoOutputInterfaceParameter", R"({"if_name":""})", 2},
        {"GetVideoOutputInterfaceParameter", R"({"if_name":"HDMI1"})", 1},
        {"GetVideoOutputScreenSplitParameter", "{}", 8},
        {"GetVideoOutputScreenSplitParameter", R"({"if_name":"HDMI1"})", 4},
        {"GetWatermarkOSDParameter", "{}", 2},
        {"GetWatermarkPictureParameter", "{}", 2},
        {"GetVideoOutputOSDParameter", "{}", 16},
        {"GetVideoOutputOSDParameter", R"({"Channel":-1})", 16},
        {"GetVideoOutputOSDParameter", R"({"Channel":3})", 4},
        {"GetVideoOutputDisplayParameter", "{}", 1},
    };
    for (const GetCase &get : cases) {
        const Json reply = ask(request(get.method, get.params));
        EXPECT_TRUE(reply["result"].is_array()) << get.method << reply;
        EXPECT_EQ(reply["result"].size(), get.records) << get.method << get.params;
    }
}

TEST_F(CommandService, GetWithoutRecordsStillTellsTheHandlersStatus) {
    const Json reply = ask(request("GetVideoOutputOSDParameter", R"({"Channel":4})"));
    EXPECT_EQ(error_code(reply), -2);
    EXPECT_THAT(fake_device().calls,
                ElementsAre("GetVideoOutputOSDParameterSize(4)", "GetVideoOutputOSDParameter(4)"));
}

TEST_F(CommandService, GetTakesANegativeSizeForNoneAndRefusesAHugeOne) {
    const std::string get = request("GetWatermarkOSDParameter", R"({"if_name":"HDMI1"})");
    fake_device().watermark_size = -1;
    EXPECT_EQ(ask(get)["result"], Json::array());
    fake_device().watermark_size = 4096;
    EXPECT_EQ(ask(get)["result"].size(), 4096u);
    fake_device().watermark_size = 4097;
    EXPECT_EQ(error_code(ask(get)), -32603);
}

TEST_F(CommandService, GetShowsTextsThatAreNotUtf8AsValidJson) {
    std::memset(fake_device().watermarks[0].contet, 0xFF, 256);
    const Json reply = ask(request("GetWatermarkOSDParameter", R"({"if_name":"HDMI1"})"));
    EXPECT_TRUE(is_response(reply));
}

TEST_F(CommandService, SetKeepsTheFieldsThatItLeavesOut) {
    fake_device().watermarks[0].font = 5;
    fake_device().watermarks[0].reserved_220[1] = 0xAB;
    EXPECT_EQ(ask(request("SetWatermarkOSDParameter",
                          R"({"if_name":"HDMI1","records":[{"contet":"hello"}]})"))["result"],
              0);
    EXPECT_STREQ(fake_device().watermarks[0].contet, "hello");
    EXPECT_EQ(fake_device().watermarks[0].font, 5);
    EXPECT_EQ(fake_device().watermarks[0].reserved_220[1], 0xAB);
    EXPECT_STREQ(fake_device().watermarks[0].if_name, "HDMI1");
    EXPECT_THAT(fake_device().calls,
                ElementsAre("GetWatermarkOSDParameterSize(HDMI1)",
                            "GetWatermarkOSDParameter(HDMI1)", "SetWatermarkOSDParameter(HDMI1)"));
}

TEST_F(CommandService, SetTakesOneBareObjectForOneRecord) {
    EXPECT_EQ(ask(request("SetVideoOutputDisplayParameter",
                          R"({"records":{"BorderWidth":7}})"))["result"],
              0);
    EXPECT_EQ(fake_device().display.BorderWidth, 7);
    EXPECT_STREQ(fake_device().display.BackgroundColor, "#000000");
}

TEST_F(CommandService, SetOfAChannelReachesItsEntriesOnly) {
    EXPECT_EQ(ask(request("SetVideoOutputOSDParameter",
                          R"({"Channel":1,"records":[{},{},{"font":6},{}]})"))["result"],
              0);
    for (int i = 0; i < kFakeChannels * kFakeTextsPerChannel; ++i) {
        EXPECT_EQ(fake_device().texts[i].font, i == 6 ? 6 : 0) << i;
        EXPECT_EQ(fake_device().texts[i].Channel, i / kFakeTextsPerChannel);
    }
}

TEST_F(CommandService, WhatTheGetAnswersCanBeSetAsItIs) {
    for (const char *record : {"VideoOutputInterfaceParameter", "VideoOutputScreenSplitParameter",
                               "WatermarkOSDParameter", "WatermarkPictureParameter",
                               "VideoOutputOSDParameter", "VideoOutputDisplayParameter"}) {
        const std::string get = ask(request(std::string("Get") + record))["result"].dump();
        EXPECT_EQ(ask(request(std::string("Set") + record, "{\"records\":" + get + "}"))["result"],
                  0)
            << record;
    }
}

struct BadParams {
    const char *method;
    const char *params;
    const char *field;
    const char *reason;
};

TEST_F(CommandService, BadParametersNameTheFieldAndChangeNothing) {
    const std::string long_name(64, 'a');
    const std::string long_params = "{\"if_name\":\"" + long_name + "\"}";
    const BadParams cases[] = {
        {"GetWatermarkOSDParameter", R"({"if_name":1})", "if_name", "must be a text"},
        {"GetWatermarkOSDParameter", R"({"if_name":null})", "if_name", "must be a text"},
        {"GetWatermarkOSDParameter", R"({"if_name":"a\u0000"})", "if_name", "must not contain NUL"},
        {"GetWatermarkOSDParameter", long_params.c_str(), "if_name", "64 bytes do not fit into 63"},
        {"GetWatermarkOSDParameter", R"({"Channel":0})", "Channel", "unknown parameter"},
        {"GetWatermarkOSDParameter", R"({"records":[]})", "records", "unknown parameter"},
        {"GetWatermarkOSDParameter", R"({"ifname":"HDMI1"})", "ifname", "unknown parameter"},
        {"GetVideoOutputDisplayParameter", R"({"if_name":""})", "if_name", "unknown parameter"},
        {"GetVideoOutputOSDParameter", R"({"Channel":"0"})", "Channel", "must be a number"},
        {"GetVideoOutputOSDParameter", R"({"Channel":0.5})", "Channel", "must be a 32-bit integer"},
        {"GetVideoOutputOSDParameter", R"({"Channel":2147483648})", "Channel",
         "must be a 32-bit integer"},
        {"Keepalive", R"({"x":1})", "x", "unknown parameter"},
        {"UploadWatermarkPicture", "{}", "if_name", "missing"},
        {"SetWatermarkOSDParameter", "{}", "records", "missing"},
        {"SetVideoOutSourceChange", "{}", "records", "missing"},
        {"SetWatermarkOSDParameter", R"({"records":"x"})", "records",
         "must be an array of records or one record"},
        {"SetWatermarkOSDParameter", R"({"records":[{},{},{}]})", "records", "3 given, 2 needed"},
        {"SetWatermarkOSDParameter", R"({"records":[]})", "records", "0 given, 2 needed"},
        {"SetVideoOutSourceChange", R"({"records":[{},{}]})", "records", "2 given, 1 needed"},
        {"SetVideoOutSourceChange", R"({"records":[]})", "records", "0 given, 1 needed"},
        {"SetWatermarkOSDParameter", R"({"records":[{},7]})", "records[1]", "must be an object"},
    };
    for (const BadParams &bad : cases) {
        const Json reply = ask(request(bad.method, bad.params));
        EXPECT_EQ(error_code(reply), -32602) << bad.method << bad.params << reply;
        const Json expected = {{"field", bad.field}, {"reason", bad.reason}};
        EXPECT_EQ(reply["error"]["data"], expected) << reply;
        EXPECT_EQ(reply["error"]["message"],
                  std::string("Invalid params: ") + bad.field + ": " + bad.reason);
    }
    for (const std::string &call : fake_device().calls) {
        EXPECT_NE(call.substr(0, 3), "Set") << call;
    }
}

TEST_F(CommandService, OneBadFieldOfOneRecordLeavesAllRecordsAsTheyWere) {
    const char *bad_fields[] = {
        R"("font":"3")",
        R"("font":1.5)",
        R"("font":2147483648)",
        R"("nosuch":1)",
        R"("forecolor":1)",
        R"("forecolor":"0123456789012345678901234567890123456789012345678901234567890123")",
        R"("contet":"a\u0000b")",
        R"("contet":["a"])",
        R"("reserved_220":"0102030405")"};
    for (const std::string field : bad_fields) {
        const Json reply =
            ask(request("SetWatermarkOSDParameter", R"({"records":[{"font":4},{)" + field + "}]}"));
        EXPECT_EQ(error_code(reply), -32602) << field;
        const std::string name = field.substr(1, field.find('"', 1) - 1);
        EXPECT_EQ(reply["error"]["data"]["field"], "records[1]." + name) << reply;
        EXPECT_NE(reply["error"]["data"]["reason"], "") << reply;
    }
    EXPECT_EQ(fake_device().watermarks[0].font, 0);
    EXPECT_THAT(fake_device().calls,
                ::testing::Not(::testing::Contains("SetWatermarkOSDParameter()")));
}

TEST_F(CommandService, EventsTakeOneRecordWhoseMissingFieldsAreZero) {
    fake_device().video_source.type = 9;
    EXPECT_EQ(ask(request("SetVideoOutSourceChange",
                          R"({"records":[{"Channel":3,"index":-1}]})"))["result"],
              0);
    EXPECT_EQ(fake_device().video_source.Channel, 3);
    EXPECT_EQ(fake_device().video_source.index, -1);
    EXPECT_EQ(fake_device().video_source.type, 0);

    EXPECT_EQ(ask(request("SetAudioOutSourceChange", R"({"records":{"index":2}})"))["result"], 0);
    EXPECT_EQ(fake_device().audio_source.index, 2);

    EXPECT_EQ(ask(request("SetStreamingInputStatusChange",
                          R"({"records":{"url":"rtsp://10.0.0.1/1"}})"))["result"],
              0);
    EXPECT_STREQ(fake_device().stream.url, "rtsp://10.0.0.1/1");
}

struct Status {
    int status;
    const char *meaning;
};

TEST_F(CommandService, ANegativeStatusBecomesTheError) {
    const Status cases[] = {
        {-1, "not found"},
        {-2, "invalid argument or rejected request"},
        {-4, "feature not supported by this device"},
        {-6, "out of memory"},
        {-7, "file or command could not be opened"},
        {-8, "socket or interface enumeration failed"},
        {-3, "failed"},
        {-2147483647 - 1, "failed"},
    };
    const std::string requests[] = {
        request("UploadWatermarkPicture", R"({"if_name":"HDMI1"})"),
        request("SetVideoOutputDisplayParameter", R"({"records":{}})"),
        request("SetVideoOutSourceChange", R"({"records":{}})"),
        request("GetVideoOutputDisplayParameter"),
    };
    for (const Status &row : cases) {
        fake_device().get_status = fake_device().set_status = row.status;
        for (const std::string &message : requests) {
            const Json reply = ask(message);
            EXPECT_EQ(error_code(reply), row.status) << message;
            EXPECT_EQ(reply["error"]["message"], row.meaning) << message;
            EXPECT_FALSE(reply["error"].contains("data")) << message;
        }
    }
}

TEST_F(CommandService, APositiveStatusIsSuccess) {
    fake_device().set_status = 1;
    EXPECT_EQ(ask(request("UploadWatermarkPicture", R"({"if_name":"HDMI1"})"))["result"], 0);
}

TEST_F(CommandService, WhenNothingCanBeReadTheSetSaysItselfWhyItRefuses) {
    fake_device().get_status = -7;
    fake_device().set_status = -4;
    EXPECT_EQ(error_code(
                  ask(request("SetWatermarkOSDParameter", R"({"records":[{"font":1},{},{},{}]})"))),
              -4);
    fake_device().get_status = fake_device().set_status = 0;
    EXPECT_EQ(error_code(ask(request("SetWatermarkOSDParameter",
                                     R"({"if_name":"VGA9","records":[{"font":1}]})"))),
              -2);
}

TEST_F(CommandService, WhenNothingCanBeReadFieldsLeftOutAreZero) {
    fake_device().get_status = -1;
    fake_device().watermarks[0].font = 5;
    EXPECT_EQ(ask(request("SetWatermarkOSDParameter",
                          R"({"if_name":"HDMI1","records":[{"size":1}]})"))["result"],
              0);
    EXPECT_EQ(fake_device().watermarks[0].font, 0);
    EXPECT_EQ(fake_device().watermarks[0].size, 1);
}

TEST_F(CommandService, CommandsWithoutHandlersOrCompanionsAreNotFound) {
    for (const char *method :
         {"GetWatermarkDotmatrixParameter", "SetWatermarkDotmatrixParameter"}) {
        EXPECT_EQ(error_code(ask(request(method, R"({"records":{}})"))), -32601) << method;
    }
    EXPECT_THAT(fake_device().calls, IsEmpty());
}

TEST_F(CommandService, ExportedFunctionsThatAreNoCommandsAreNeverCalled) {
    for (const char *method : {"abort", "exit", "GetWatermarkOSDParameterSize", "main", "",
                               "parse_command_and_get_response_with_len"}) {
        EXPECT_EQ(error_code(ask(request(method))), -32601) << method;
    }
    EXPECT_THAT(fake_device().calls, IsEmpty());
}

TEST_F(CommandService, KeepaliveTellsTheProcess) {
    const Json reply = ask(request("Keepalive"));
    EXPECT_EQ(reply["result"]["process"], "app_gui");
    EXPECT_EQ(reply["result"]["pid"], getpid());
    EXPECT_GE(reply["result"]["uptime_s"].get<int>(), 0);
    EXPECT_LT(reply["result"]["uptime_s"].get<int>(), 3600);
}

TEST_F(CommandService, EveryCommandIsFoundByItsNameAndNoOther) {
    for (const command_protocol::Command &command : command_protocol::kCommands) {
        EXPECT_EQ(command_protocol::find_command(command.name), &command);
        EXPECT_EQ(command_protocol::find_command(std::string(command.name) + "x"), nullptr);
    }
}

}  // namespace
