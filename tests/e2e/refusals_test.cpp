// Bad input on the command socket: each gets its error and changes nothing.

#include <nanomsg/nn.h>
#include <nanomsg/reqrep.h>

#include "device_test.h"

using namespace e2e;

namespace {

struct Refusal {
    const char *name;
    std::string message;
    int code;
    const char *names;  ///< what the error has to name
};

std::string setOsd(const std::string &entry) {
    return R"({"jsonrpc":"2.0","id":1,"method":"SetVideoOutputOSDParameter","params":)"
           R"({"Channel":0,"records":[)" +
           entry + R"(,{},{},{}]}})";
}

std::string setText(const std::string &members) {
    return R"({"jsonrpc":"2.0","id":1,"method":"SetWatermarkOSDParameter","params":)"
           R"({"if_name":"HDMI1","records":[{)" +
           members + "}]}}";
}

std::vector<Refusal> refusals() {
    return {
        {"empty", "", -32700, ""},
        {"truncated", R"({"jsonrpc":"2.0","id":1,"meth)", -32700, ""},
        {"not UTF-8", "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\xfe\"}", -32700, ""},
        {"deep nest", std::string(100000, '[') + std::string(100000, ']'), -32700, ""},
        {"another version", R"({"jsonrpc":"1.0","id":1,"method":"Keepalive"})", -32600, ""},
        {"no method", R"({"jsonrpc":"2.0","id":1})", -32600, ""},
        {"unknown method", R"({"jsonrpc":"2.0","id":1,"method":"system","params":{}})", -32601, ""},
        {"wrong type", setText(R"("font":"large")"), -32602, "font"},
        {"fraction", setText(R"("font":1.5)"), -32602, "font"},
        {"out of range", setText(R"("x":2147483648)"), -32602, "x"},
        {"negative unsigned", setOsd(R"({"x":-1})"), -32602, "x"},
        {"text too long", setText(R"("contet":")" + std::string(256, 'a') + "\""), -32602,
         "contet"},
        {"1 MiB text", setText(R"("contet":")" + std::string(1 << 20, 'a') + "\""), -32602,
         "contet"},
        {"NUL in a text", setText(R"("contet":"a\u0000b")"), -32602, "contet"},
        {"unknown field", setText(R"("content":"a")"), -32602, "content"},
        {"wrong count", setText(R"("x":1},{"x":2)"), -32602, "records"},
        {"unknown interface",
         R"({"jsonrpc":"2.0","id":1,"method":"SetWatermarkOSDParameter","params":)"
         R"({"if_name":"HDMI9","records":[{"x":1}]}})",
         -2, ""},
        {"other interface's name", setText(R"("if_name":"HDMI2")"), -2, ""},
        {"bad channel",
         R"({"jsonrpc":"2.0","id":1,"method":"GetVideoOutputOSDParameter","params":{"Channel":16}})",
         -2, ""},
        {"key of another type",
         R"({"jsonrpc":"2.0","id":1,"method":"GetVideoOutputOSDParameter","params":{"Channel":"0"}})",
         -32602, "Channel"},
        {"refused by the check", setOsd(R"({"x":9000})"), -2, ""},
        {"unknown timing",
         R"({"jsonrpc":"2.0","id":1,"method":"SetVideoOutputInterfaceParameter","params":)"
         R"({"if_name":"HDMI1","records":[{"Timing":"9x9"}]}})",
         -2, ""},
    };
}

class Refusals : public SharedDevice {
protected:
    /** Every record that can be asked for, as one text. */
    static std::string everything() {
        std::string all;
        for (const char *method :
             {"GetVideoOutputInterfaceParameter", "GetVideoOutputScreenSplitParameter",
              "GetVideoOutputDisplayParameter", "GetVideoOutputOSDParameter",
              "GetWatermarkOSDParameter", "GetWatermarkPictureParameter",
              "GetWatermarkDotmatrixParameter"}) {
            all += result(*device, method).dump();
        }
        return all;
    }
};

TEST_F(Refusals, AnswerInWordsAndChangeNothing) {
    const std::string before = everything();
    for (const Refusal &refusal : refusals()) {
        const auto reply = device->request(refusal.message);
        ASSERT_TRUE(reply) << refusal.name << " got no reply";
        const json answer = json::parse(reply->c_str());
        ASSERT_TRUE(answer.contains("error")) << refusal.name << ": " << *reply;
        EXPECT_EQ(answer["error"]["code"], refusal.code) << refusal.name << ": " << *reply;
        EXPECT_THAT(answer["error"]["message"].get<std::string>(),
                    testing::HasSubstr(refusal.names))
            << refusal.name;
    }
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(fileText(device->configFolder() + "/app_parameters/WatermarkOSDParameters.json"), "");
    EXPECT_TRUE(device->running());
}

TEST_F(Refusals, LeaveLaterRequestsServed) {
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(device->request(std::string(static_cast<size_t>(i), '{')));
    }
    EXPECT_EQ(result(*device, "Keepalive")["process"], "app_gui");
}

TEST_F(Refusals, AreAnsweredWithTheTerminatingNul) {
    const int socket = nn_socket(AF_SP, NN_REQ);
    ASSERT_GE(socket, 0);
    ASSERT_GE(nn_connect(socket, device->commandAddress().c_str()), 0);
    ASSERT_EQ(nn_send(socket, "{}", 2, 0), 2);
    char *reply = nullptr;
    const int length = nn_recv(socket, &reply, NN_MSG, 0);
    ASSERT_GT(length, 1);
    EXPECT_EQ(reply[length - 1], '\0');
    EXPECT_EQ(std::string(reply).size(), static_cast<size_t>(length) - 1);
    nn_freemsg(reply);
    nn_close(socket);
}

}  // namespace
