// Several peers at once, and peers that behave badly: the others are served.

#include <nanomsg/nn.h>
#include <nanomsg/reqrep.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "device_test.h"

using namespace e2e;

namespace {

class Clients : public SharedDevice {};

TEST_F(Clients, TwoAtOnceAreBothServed) {
    std::atomic<int> served{0};
    const auto ask = [&](int first) {
        vdevice::CommandClient client(device->commandAddress());
        for (int i = 0; i < 200; ++i) {
            const std::string message =
                json{{"jsonrpc", "2.0"}, {"id", first + i}, {"method", "Keepalive"}}.dump();
            const auto reply = client.request(message, vdevice::Milliseconds(5000));
            if (reply && json::parse(reply->c_str())["id"] == first + i) ++served;
        }
    };
    std::thread other(ask, 10000);
    ask(0);
    other.join();
    EXPECT_EQ(served, 400);
}

TEST_F(Clients, OneThatVanishesBeforeItsReplyLeavesTheOthersServed) {
    for (int i = 0; i < 50; ++i) {
        const int socket = nn_socket(AF_SP, NN_REQ);
        ASSERT_GE(socket, 0);
        ASSERT_GE(nn_connect(socket, device->commandAddress().c_str()), 0);
        const std::string message = request("GetVideoOutputOSDParameter", json::object());
        ASSERT_GE(nn_send(socket, message.data(), message.size(), 0), 0);
        nn_close(socket);
        ASSERT_EQ(result(*device, "Keepalive")["process"], "app_gui") << i;
    }
}

TEST_F(Clients, OneThatConnectsAndSaysNothingOrNonsenseLeavesTheOthersServed) {
    const std::string path = device->commandAddress().substr(std::string("ipc://").size());
    for (const std::string &bytes :
         {std::string(), std::string("nonsense, not the protocol"),
          std::string("\0SP\0\0\x30\0\0", 8),
          std::string("\0SP\0\0\x30\0\0\x01\x7f\xff\xff\xff\xff\xff\xff\xff", 17)}) {
        const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
        ASSERT_GE(fd, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        ASSERT_LT(path.size(), sizeof address.sun_path);
        path.copy(address.sun_path, path.size());
        ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        ASSERT_EQ(::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
        EXPECT_EQ(result(*device, "Keepalive")["process"], "app_gui");
        close(fd);
        EXPECT_EQ(result(*device, "Keepalive")["process"], "app_gui");
    }
}

TEST_F(Clients, ASurveyIsAnsweredWithinASecondWhileAllOsdEntriesAreSaved) {
    std::atomic<bool> failed{false};
    std::atomic<bool> done{false};
    std::thread saver([&] {
        vdevice::CommandClient client(device->commandAddress());
        for (int round = 0; round < 5; ++round) {
            json entries = json::array();
            for (int i = 0; i < 64; ++i) {
                entries.push_back({{"head", "round " + std::to_string(round)}});
            }
            const auto reply =
                client.request(request("SetVideoOutputOSDParameter", {{"records", entries}}),
                               vdevice::Milliseconds(20000));
            if (!reply || !json::parse(reply->c_str()).contains("result")) failed = true;
        }
        done = true;
    });
    int surveys = 0;
    while (!done) {
        EXPECT_TRUE(device->survey(vdevice::Milliseconds(1000)));
        ++surveys;
    }
    saver.join();
    EXPECT_FALSE(failed);
    EXPECT_GT(surveys, 0);
}

}  // namespace
