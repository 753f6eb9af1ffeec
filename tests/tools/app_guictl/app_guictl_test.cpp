#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>

#include "fake_device.h"
#include "run_guictl.h"

namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class AppGuictl : public ::testing::Test {
protected:
    void SetUp() override { fake_device() = FakeDevice(); }

    std::vector<std::string> at_device(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--socket", m_folder.socket("command")});
        return arguments;
    }

    Outcome run(const std::vector<std::string> &arguments, const std::string &input = "") const {
        return run_guictl(at_device(arguments), input);
    }

    TempFolder m_folder;
    DeviceThread m_device{m_folder.socket("command")};
};

TEST_F(AppGuictl, ListNamesEveryCommandAndNeedsNoDevice) {
    const Outcome outcome = run_guictl({"list"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const json commands = json::parse(outcome.out);
    EXPECT_EQ(commands.size(), 20u);
    EXPECT_EQ(commands[0]["command"], "GetVideoOutputDisplayParameter");
    EXPECT_THAT(run_guictl({"list", "--table"}).out,
                AllOf(HasSubstr("KEY"), HasSubstr("GetVideoOutputOSDParameter"),
                      HasSubstr("channel"), HasSubstr("UploadWatermarkPicture")));
}

TEST_F(AppGuictl, GetTakesTheCommandOrItsRecord) {
    fake_device().watermarks[1].font = 3;
    for (const char *name : {"GetWatermarkOSDParameter", "WatermarkOSDParameter"}) {
        const Outcome got = run({"get", name, "HDMI2"});
        EXPECT_EQ(got.status, 0) << got.err;
        const json records = json::parse(got.out);
        ASSERT_EQ(records.size(), 1u);
        EXPECT_EQ(records[0]["if_name"], "HDMI2");
        EXPECT_EQ(records[0]["font"], 3);
    }
}

TEST_F(AppGuictl, GetWithoutKeyOrWithAllReadsEveryKey) {
    EXPECT_EQ(json::parse(run({"get", "VideoOutputOSDParameter"}).out).size(), 16u);
    EXPECT_EQ(json::parse(run({"get", "VideoOutputOSDParameter", "all"}).out).size(), 16u);
    EXPECT_EQ(json::parse(run({"get", "VideoOutputOSDParameter", "3"}).out).size(), 4u);
    EXPECT_EQ(json::parse(run({"get", "VideoOutputDisplayParameter"}).out).size(), 1u);
}

TEST_F(AppGuictl, TablesShowFieldsInTheirOrderWithoutControlCharacters) {
    std::strcpy(fake_device().watermarks[0].contet,
                "a\033[31m\x7F\xC2\x9B"
                "b");
    const Outcome got = run({"get", "WatermarkOSDParameter", "HDMI1", "--table"});
    EXPECT_THAT(got.out, StartsWith("WatermarkOSDParameter [0]\n  if_name           HDMI1\n"
                                    "  visible           0\n"));
    EXPECT_THAT(got.out, HasSubstr("a\\x1B[31m\\x7F\\x9Bb"));
}

TEST_F(AppGuictl, SetChangesTheNamedFieldsOnly) {
    fake_device().watermarks[0].size = 9;
    const Outcome set = run({"set", "WatermarkOSDParameter", "HDMI1", "contet=12", "font=-2"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_STREQ(fake_device().watermarks[0].contet, "12");
    EXPECT_EQ(fake_device().watermarks[0].font, -2);
    EXPECT_EQ(fake_device().watermarks[0].size, 9);
    EXPECT_EQ(fake_device().watermarks[1].font, 0);
}

TEST_F(AppGuictl, SetForAllChangesEveryRecord) {
    EXPECT_EQ(run({"set", "SetWatermarkOSDParameter", "all", "contet="}).status, 0);
    EXPECT_EQ(run({"set", "WatermarkOSDParameter", "all", "text1=a=b, c"}).status, 0);
    EXPECT_STREQ(fake_device().watermarks[0].text1, "a=b, c");
    EXPECT_STREQ(fake_device().watermarks[1].text1, "a=b, c");
}

TEST_F(AppGuictl, SetTakesNoKeyWhereTheRecordHasNone) {
    EXPECT_EQ(run({"set", "VideoOutputDisplayParameter", "BorderWidth=7"}).status, 0);
    EXPECT_EQ(fake_device().display.BorderWidth, 7);
    EXPECT_EQ(run({"set", "VideoOutSourceChange", "Channel=2", "index=5"}).status, 0);
    EXPECT_EQ(fake_device().video_source.Channel, 2);
    EXPECT_EQ(fake_device().video_source.index, 5);
}

TEST_F(AppGuictl, SetReadsArraysAndReservedBytes) {
    EXPECT_EQ(run({"set", "VideoOutputInterfaceParameter", "HDMI1", "PictureLevel=1,-2,3,4",
                   "reserved_128=00ff"})
                  .status,
              0);
    EXPECT_EQ(fake_device().interfaces[0].PictureLevel[1], -2);
    EXPECT_EQ(fake_device().interfaces[0].reserved_128[1], 0xFF);
}

TEST_F(AppGuictl, IndexSelectsOneRecordOfAKey) {
    const Outcome set = run({"set", "VideoOutputOSDParameter", "1", "Index=2", "content=[hello]"});
    EXPECT_EQ(set.status, 0) << set.err;
    for (int i = 0; i < kFakeChannels * kFakeTextsPerChannel; ++i) {
        EXPECT_STREQ(fake_device().texts[i].content, i == 6 ? "[hello]" : "") << i;
        EXPECT_EQ(fake_device().texts[i].Index, i % kFakeTextsPerChannel);
    }
    EXPECT_EQ(run({"set", "VideoOutputScreenSplitParameter", "HDMI2", "Index=3",
                   "SplitString=0,0,8192,8192,0"})
                  .status,
              0);
    EXPECT_STREQ(fake_device().layouts[7].SplitString, "0,0,8192,8192,0");
    EXPECT_STREQ(fake_device().layouts[6].SplitString, "");
}

TEST_F(AppGuictl, APositionSelectsTheRecordThere) {
    const Outcome set =
        run({"set", "VideoOutputOSDParameter", "0", "[1].content=[x]", "[3].font=4"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_STREQ(fake_device().texts[0].content, "");
    EXPECT_STREQ(fake_device().texts[1].content, "[x]");
    EXPECT_EQ(fake_device().texts[3].font, 4);
}

TEST_F(AppGuictl, WithoutASelectionEveryRecordOfTheKeyChanges) {
    EXPECT_EQ(run({"set", "VideoOutputOSDParameter", "0", "visible=1"}).status, 0);
    for (int i = 0; i < kFakeChannels * kFakeTextsPerChannel; ++i) {
        EXPECT_EQ(fake_device().texts[i].visible, i < 4 ? 1 : 0) << i;
    }
}

TEST_F(AppGuictl, SetTakesRecordsFromAFileAndFromItsInput) {
    const Outcome got = run({"get", "WatermarkOSDParameter", "all"});
    json records = json::parse(got.out);
    records[1]["font"] = 6;
    const std::string path = m_folder.path("marks.json");
    std::ofstream(path) << records;
    EXPECT_EQ(run({"set", "WatermarkOSDParameter", "all", "--json", path}).status, 0);
    EXPECT_EQ(fake_device().watermarks[1].font, 6);

    const Outcome piped =
        run({"set", "WatermarkOSDParameter", "HDMI1", "--json", "-"}, "{\"font\":5}");
    EXPECT_EQ(piped.status, 0) << piped.err;
    EXPECT_EQ(fake_device().watermarks[0].font, 5);
}

TEST_F(AppGuictl, UploadNamesOneInterface) {
    EXPECT_EQ(run({"upload", "HDMI1"}).status, 0);
    EXPECT_EQ(fake_device().uploads, 1);
}

TEST_F(AppGuictl, SplitSetsANamedModeOrAUserLayout) {
    EXPECT_EQ(run({"split", "HDMI1", "Mode9"}).status, 0);
    EXPECT_STREQ(fake_device().interfaces[0].ScreenSplitMode, "Mode9");
    EXPECT_EQ(fake_device().interfaces[0].UserSplitIndex, -1);
    EXPECT_STREQ(fake_device().interfaces[1].ScreenSplitMode, "Mode4");

    EXPECT_EQ(run({"split", "all", "user2"}).status, 0);
    EXPECT_STREQ(fake_device().interfaces[0].ScreenSplitMode, "Mode9");
    EXPECT_EQ(fake_device().interfaces[0].UserSplitIndex, 2);
    EXPECT_EQ(fake_device().interfaces[1].UserSplitIndex, 2);
}

TEST_F(AppGuictl, PingTellsTheProcessAndTheRoundTrip) {
    const json result = json::parse(run({"ping"}).out);
    EXPECT_EQ(result["process"], "app_gui");
    EXPECT_EQ(result["pid"], getpid());
    EXPECT_GT(result["round_trip_ms"].get<double>(), 0);
    EXPECT_THAT(run({"ping", "--table"}).out, StartsWith("app_gui pid "));
}

TEST_F(AppGuictl, CallSendsAMessageAsItStands) {
    const Outcome one = run({"call", R"({"jsonrpc":"2.0","id":"x","method":"Keepalive"})"});
    EXPECT_EQ(one.status, 0) << one.err;
    EXPECT_EQ(json::parse(one.out)["id"], "x");

    const Outcome batch = run({"call", R"([{"jsonrpc":"2.0","id":1,"method":"Keepalive"}, 7])"});
    EXPECT_EQ(json::parse(batch.out).size(), 2u) << batch.out << batch.err;

    const Outcome refused = run({"call", "nonsense"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(json::parse(refused.out)["error"]["code"], -32700);
}

TEST_F(AppGuictl, DiscoverAndSchemaShowTheDescriptions) {
    EXPECT_EQ(json::parse(run({"discover"}).out)["openrpc"], "1.2.6");
    const json schema = json::parse(run_guictl({"schema", "WatermarkOSDParameter"}).out);
    EXPECT_TRUE(schema["properties"].contains("contet"));
    EXPECT_TRUE(schema["$schema"].is_string());
}

class Subscriber {
public:
    explicit Subscriber(const std::string &address) : m_socket(nn_socket(AF_SP, NN_SUB)) {
        const int timeout_ms = 10000;
        nn_setsockopt(m_socket, NN_SUB, NN_SUB_SUBSCRIBE, "", 0);
        nn_setsockopt(m_socket, NN_SOL_SOCKET, NN_RCVTIMEO, &timeout_ms, sizeof timeout_ms);
        nn_connect(m_socket, address.c_str());
    }
    ~Subscriber() { nn_close(m_socket); }
    std::string receive() {
        char buffer[4096];
        const int length = nn_recv(m_socket, buffer, sizeof buffer, 0);
        return length < 0 ? nn_strerror(nn_errno()) : std::string(buffer, length);
    }

private:
    int m_socket;
};

TEST_F(AppGuictl, PublishReachesASubscriber) {
    const std::string address = m_folder.socket("codec.event");
    Subscriber subscriber(address);
    // Listens all the time, as a process does: a closing publisher takes back what nobody fetched.
    std::future<std::string> received =
        std::async(std::launch::async, [&subscriber] { return subscriber.receive(); });
    const Outcome published = run_guictl({"publish", "codec", "VideoOutSourceChange", "Channel=3",
                                          "index=-1", "--address", address, "--timeout", "10000"});
    EXPECT_EQ(published.status, 0) << published.err;
    const json event = json::parse(received.get());
    EXPECT_EQ(event["method"], "SetVideoOutSourceChange");
    EXPECT_FALSE(event.contains("id"));
    const json records = json::array({{{"Channel", 3}, {"index", -1}}});
    EXPECT_EQ(event["params"]["records"], records);
}

TEST_F(AppGuictl, PublishWithoutASubscriberSaysSo) {
    const Outcome outcome =
        run_guictl({"publish", "stream", "SetStreamingInputStatusChange", "index=1", "--address",
                    m_folder.socket("stream.event"), "--timeout", "50"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("nobody subscribed"));
}

TEST_F(AppGuictl, WhatTheDeviceRefusesEndsWithOneAndItsMessage) {
    const Outcome unknown = run({"get", "WatermarkOSDParameter", "VGA9"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.out, "");
    EXPECT_EQ(unknown.err, "app_guictl: invalid argument or rejected request (-2)\n");
    fake_device().set_status = -4;
    EXPECT_EQ(run({"upload", "HDMI1"}).status, 1);
    EXPECT_THAT(run({"upload", "HDMI1"}).err, HasSubstr("feature not supported by this device"));
    EXPECT_THAT(run({"get", "WatermarkDotmatrixParameter"}).err, HasSubstr("Method not found"));
}

TEST_F(AppGuictl, NoAnswerInTimeEndsWithThree) {
    const Outcome nobody =
        run_guictl({"--socket", m_folder.socket("nobody"), "--timeout", "50", "ping"});
    EXPECT_EQ(nobody.status, 3);
    EXPECT_THAT(nobody.err, HasSubstr("within 50 ms"));
    const Outcome notification =
        run({"--timeout", "50", "call", R"({"jsonrpc":"2.0","method":"Keepalive"})"});
    EXPECT_EQ(notification.status, 3);
    EXPECT_EQ(run_guictl({"--socket", "nonsense", "ping"}).status, 3);
}

struct Misuse {
    std::vector<std::string> arguments;
    const char *message;
};

TEST_F(AppGuictl, AnUnusableCommandLineEndsWithTwoAndAHint) {
    const std::vector<Misuse> cases = {
        {{}, "subcommand is required"},
        {{"gte"}, "did you mean get?"},
        {{"get"}, "name is required"},
        {{"get", "WatermarkOSDParametr"}, "did you mean WatermarkOSDParameter?"},
        {{"get", "GetWatermarkOsdParameter"}, "did you mean GetWatermarkOSDParameter?"},
        {{"get", "SetWatermarkOSDParameter"}, "no such command or record here"},
        {{"get", "VideoOutputDisplayParameter", "HDMI1"}, "takes no key"},
        {{"get", "VideoOutputOSDParameter", "one"}, "no decimal number"},
        {{"set", "WatermarkOSDParameter", "font=1"}, "interface (or \"all\") expected"},
        {{"set", "WatermarkOSDParameter", "HDMI1"}, "nothing to change"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "font"}, "field=value expected"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "content=a"}, "did you mean contet?"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "font=big"}, "no decimal number"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "font="}, "no decimal number"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "font=2147483648"}, "outside"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "contet=\xFF"}, "not UTF-8"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "forecolor=" + std::string(64, 'a')},
         "64 bytes do not fit into 63"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "[1].font=3"}, "there are 1"},
        {{"set", "VideoOutputOSDParameter", "0", "Index=9", "font=3"}, "there are 0, 1, 2, 3"},
        {{"set", "VideoOutputOSDParameter", "0", "Index=1", "Index=2", "font=3"}, "twice"},
        {{"set", "VideoOutputInterfaceParameter", "HDMI1", "PictureLevel=1,2"}, "array of 4"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "--json", "/nonexistent"}, "cannot open"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "font=1", "--json", "-"}, "exclude each other"},
        {{"set", "WatermarkOSDParameter", "HDMI1", "--json", "-"}, "a JSON object"},
        {{"split", "HDMI1", "userX"}, "no decimal number"},
        {{"publish", "codex", "VideoOutSourceChange", "index=1"}, "did you mean codec?"},
        {{"publish", "codec", "VideoOutSourceChang", "index=1"},
         "did you mean VideoOutSourceChange?"},
        {{"schema", "WatermarkOSD"}, "no such record"},
        {{"completion", "fissh"}, "did you mean fish?"},
        {{"ping", "--timeout", "soon"}, "soon"},
        {{"ping", "--json", "--table"}, "excludes"},
        {{"ping", "--nonsense"}, "--nonsense"},
    };
    for (const Misuse &misuse : cases) {
        const Outcome wrong = run(misuse.arguments);
        std::string line;
        for (const std::string &argument : misuse.arguments)
            line += argument + " ";
        EXPECT_EQ(wrong.status, 2) << line;
        EXPECT_EQ(wrong.out, "") << line;
        EXPECT_THAT(wrong.err, AllOf(StartsWith("app_guictl: "), HasSubstr(misuse.message)))
            << line;
    }
    EXPECT_EQ(fake_device().watermarks[0].font, 0);
}

TEST_F(AppGuictl, HelpTellsTheExitCodesAndExamplesAndVersionTheVersion) {
    const Outcome help = run_guictl({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, AllOf(HasSubstr("Exit codes:"), HasSubstr("Examples:")));
    EXPECT_EQ(run_guictl({"set", "--help"}).status, 0);
    EXPECT_THAT(run_guictl({"--version"}).out, ::testing::MatchesRegex("app_guictl [0-9.]+\n"));
}

TEST_F(AppGuictl, TheManualPageTellsEverySubcommandAndOption) {
    std::ifstream file(APP_GUICTL_MANUAL);
    std::string page{std::istreambuf_iterator<char>(file), {}};
    page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
    const std::string fish = run_guictl({"completion", "fish"}).out;
    size_t subcommands = 0;
    const std::string before = "__fish_use_subcommand -a ";
    for (size_t at = 0; (at = fish.find(before, at)) != std::string::npos; ++subcommands) {
        at += before.size();
        const std::string name = fish.substr(at, fish.find(' ', at) - at);
        EXPECT_THAT(page, ::testing::ContainsRegex("\n\\.BI? " + name)) << name;
    }
    EXPECT_EQ(subcommands, 11u);
    for (const char *option : {"--socket", "--timeout", "--json", "--table", "--version", "--help",
                               "--address", "--linger", "NO_COLOR"}) {
        EXPECT_THAT(page, HasSubstr(option));
    }
}

TEST_F(AppGuictl, ATerminalGetsColouredTablesUnlessNoColorIsSet) {
    const std::vector<std::string> get = at_device({"get", "WatermarkOSDParameter", "HDMI1"});
    const Outcome coloured = run_guictl_on_terminal(get);
    EXPECT_EQ(coloured.status, 0);
    EXPECT_THAT(coloured.out, AllOf(HasSubstr("\033["), HasSubstr("WatermarkOSDParameter [0]")));
    EXPECT_THAT(run_guictl_on_terminal(get, {"NO_COLOR=1"}).out,
                AllOf(Not(HasSubstr("\033")), HasSubstr("if_name           HDMI1")));
    EXPECT_THAT(run_guictl_on_terminal(get, {"TERM=dumb"}).out, Not(HasSubstr("\033")));
    EXPECT_THAT(run_guictl(at_device({"get", "WatermarkOSDParameter", "--table"})).out,
                Not(HasSubstr("\033")));
    EXPECT_THAT(run_guictl_on_terminal(at_device({"--json", "get", "WatermarkOSDParameter"})).out,
                StartsWith("["));
}

TEST_F(AppGuictl, CompletionScriptsKnowCommandsRecordsAndFields) {
    for (const char *shell : {"bash", "zsh", "fish"}) {
        const Outcome script = run_guictl({"completion", shell});
        EXPECT_EQ(script.status, 0) << script.err;
        EXPECT_THAT(script.out, AllOf(HasSubstr("publish"), HasSubstr("VideoOutSourceChange"),
                                      HasSubstr("GetWatermarkOSDParameter"), HasSubstr("contet=")))
            << shell;
    }
    EXPECT_THAT(run_guictl({"completion", "fish"}).out,
                AllOf(HasSubstr("__fish_seen_subcommand_from completion' -a 'bash zsh fish'"),
                      HasSubstr("__fish_seen_subcommand_from codec' -a 'SetAudioOutSourceChange")));
}

TEST_F(AppGuictl, BashCompletesRecordsAndFields) {
    const std::string path = m_folder.path("completion");
    std::ofstream(path) << run_guictl({"completion", "bash"}).out;
    const auto complete = [&](const std::string &words, int current) {
        const std::string command = "bash -c 'source " + path + "; COMP_WORDS=(app_guictl " +
                                    words + "); COMP_CWORD=" + std::to_string(current) +
                                    "; compopt() { :; }; _app_guictl; echo ${COMPREPLY[*]}'";
        FILE *pipe = popen(command.c_str(), "r");
        char line[4096] = "";
        if (fgets(line, sizeof line, pipe) == nullptr) line[0] = '\0';
        pclose(pipe);
        return std::string(line);
    };
    EXPECT_EQ(complete("sp", 1), "split\n");
    EXPECT_EQ(complete("get WatermarkD", 2), "WatermarkDotmatrixParameter\n");
    EXPECT_EQ(complete("set WatermarkOSDParameter HDMI1 cont", 4), "contet=\n");
    EXPECT_EQ(complete("publish codec VideoOutS", 3), "VideoOutSourceChange\n");
    EXPECT_EQ(complete("publish co", 2), "codec\n");
}

}  // namespace
