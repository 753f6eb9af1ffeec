// Whatever arrives, the reply is a JSON-RPC response, a batch of them or nothing.

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "ask.h"
#include "fake_device.h"

namespace {

bool is_answer(const std::string &text) {
    if (text.empty()) return true;
    const Json reply = Json::parse(text, nullptr, false);
    if (!reply.is_array()) return is_response(reply);
    for (const Json &entry : reply) {
        if (!is_response(entry)) return false;
    }
    return !reply.empty();
}

TEST(Robustness, RandomBytesAreAnsweredWithParseErrors) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string message(random() % 64, '\0');
        for (char &c : message) {
            c = static_cast<char>(random());
        }
        ASSERT_TRUE(is_answer(ask_text(message)));
    }
}

TEST(Robustness, MutatedRequestsAreAnswered) {
    const std::string seeds[] = {
        request("GetVideoOutputOSDParameter", R"({"Channel":1})"),
        request("SetVideoOutputOSDParameter",
                R"({"Channel":1,"records":[{"font":1},{},{"content":"\u00e4"},{"x":9}]})"),
        request(
            "SetVideoOutputInterfaceParameter",
            R"({"if_name":"HDMI1","records":{"PictureLevel":[1,2,3,4],"reserved_128":"00ff"}})"),
        "[" + request("Keepalive") + "," + request("GetVideoOutputDisplayParameter") + "]",
    };
    const std::string alphabet = "{}[]\",:\\u0159-.eE \n\xFF\xC3\x80";
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string message = seeds[round % 4];
        for (int i = random() % 4; i >= 0 && !message.empty(); --i) {
            const size_t at = random() % message.size();
            const size_t length = random() % 8;
            switch (random() % 4) {
                case 0:
                    message[at] = alphabet[random() % alphabet.size()];
                    break;
                case 1:
                    message.erase(at, length);
                    break;
                case 2:
                    message.insert(at, message.substr(random() % message.size(), length));
                    break;
                default:
                    message.insert(at, std::to_string(static_cast<int>(random())));
            }
        }
        ASSERT_TRUE(is_answer(ask_text(message))) << message;
    }
}

TEST(Robustness, EveryPrefixOfARequestIsAnswered) {
    const std::string message = request(
        "SetWatermarkOSDParameter", R"({"if_name":"HDMI1","records":[{"contet":"\ud83d\ude00"}]})");
    for (size_t length = 0; length < message.size(); ++length) {
        // A copy of just that size, so that a read past its end is seen by the sanitizer.
        const std::vector<char> part(message.begin(), message.begin() + length);
        const Json reply = ask({part.data() ? part.data() : "", part.size()});
        ASSERT_EQ(error_code(reply), -32700) << length;
    }
    EXPECT_EQ(error_code(ask(message)), 0);
}

struct Large {
    const char *what;
    std::string message;
};

std::string repeat(size_t bytes, const std::string &piece) {
    std::string text;
    while (text.size() + piece.size() < bytes) {
        text += piece;
    }
    return text;
}

std::string distinct_members(int count) {
    std::string text = "{\"m\":0";
    for (int i = 0; i < count; ++i) {
        text += ",\"" + std::to_string(i) + "\":0";
    }
    return text + "}";
}

TEST(Robustness, LargeMessagesAreAnsweredInTime) {
    const size_t bytes = (4u << 20) - 4096;
    const Large cases[] = {
        {"1 MiB text", request("SetWatermarkOSDParameter",
                               "{\"if_name\":\"HDMI1\",\"records\":{"
                               "\"contet\":\"" +
                                   std::string(1u << 20, 'x') + "\"}}")},
        {"long name", request(std::string(bytes, 'm'))},
        {"many members", request("Keepalive", distinct_members(300000))},
        {"many fields", request("SetWatermarkOSDParameter", "{\"if_name\":\"HDMI1\",\"records\":" +
                                                                distinct_members(300000) + "}")},
        {"many records",
         request("SetWatermarkOSDParameter", "{\"records\":[{}" + repeat(bytes, ",{}") + "]}")},
        {"many numbers", request("SetVideoOutputInterfaceParameter",
                                 "{\"if_name\":\"HDMI1\",\"records\":{\"PictureLevel\":[0" +
                                     repeat(bytes, ",0") + "]}}")},
        {"many brackets", "[" + repeat(bytes, "[],") + "[]]"},
        {"escapes", request("Keepalive", "{\"" + repeat(bytes, "\\u0041") + "\":1}")},
        {"white space", std::string(bytes, ' ')},
    };
    for (const Large &large : cases) {
        const auto start = std::chrono::steady_clock::now();
        const std::string reply = ask_text(large.message);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_NE(error_code(Json::parse(reply, nullptr, false)), 0) << large.what;
        EXPECT_LT(reply.size(), 1000u) << large.what;
        // Quadratic work would take minutes.
        EXPECT_LT(taken.count(), 5.0 * TEST_SLOWDOWN) << large.what;
    }
}

}  // namespace
