// Peers that misbehave: broken connections, floods, missing descriptors, publishers that come and
// go. The others are served all the same.

#include <fcntl.h>
#include <nanomsg/nn.h>
#include <nanomsg/pubsub.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "device_test.h"
#include "peers.h"

using namespace e2e;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using vdevice::Milliseconds;

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer keeps what was freed.
constexpr long kMostKiB = 400 << 10;
#else
constexpr long kMostKiB = 64 << 10;
#endif

/** What a peer may send behind a proper greeting that no peer should. */
std::vector<std::string> badFrames() {
    return {
        header(0, 2),
        header(5, 0) + "hello",
        header(5, '\xff') + "hello",
        frame("") + header(1, 2) + "x",
        frame("hello").substr(0, 3) + frame("hello"),
        header(UINT64_MAX) + "x",
        header(uint64_t{1} << 63) + "x",
        header((8u << 20) + 1) + "x",
        header(8u << 20) + "x",
        header(8u << 20).substr(0, 8),
    };
}

int descriptorsOf(vdevice::Device &device) {
    const fs::directory_iterator all("/proc/" + std::to_string(device.pid()) + "/fd");
    return static_cast<int>(std::distance(begin(all), end(all)));
}

int borderWidth(vdevice::Device &device) {
    return result(device, "GetVideoOutputDisplayParameter")[0]["BorderWidth"];
}

std::string setBorderWidth(int width) {
    return notification("SetVideoOutputDisplayParameter",
                        {{"records", {{{"BorderWidth", width}}}}});
}

// ---- connections --------------------------------------------------------------------------------

class BadConnections : public SharedDevice {
protected:
    static std::string commandSocket() { return device->paths().tmp() + kCommandFile; }
};

TEST_F(BadConnections, ByTheThousandLeaveOthersServedAndNothingOpen) {
    const std::string request = std::string("\x80\0\0\1", 4);
    std::vector<std::string> openings = {
        "",
        std::string("\0S", 2),
        "GET / HTTP/1.1\r\n\r\n",
        greeting(0x30),
        greeting(0x10),
        greeting(0x30) + frame(""),
        greeting(0x30) + frame("abc"),
        greeting(0x30) + frame(std::string(400, '\0')),
        greeting(0x30) + frame(request + "{"),
        greeting(0x30) + frame(request + R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})"),
    };
    for (const std::string &bad : badFrames()) {
        openings.push_back(greeting(0x30) + bad);
    }
    expectServed(*device);
    const int before = descriptorsOf(*device);
    std::vector<Stream> kept;
    std::mt19937 random(3);
    for (int i = 0; i < 3900; ++i) {
        std::string bytes = openings[i % std::size(openings)];
        if (i % 5 == 0) bytes += std::to_string(random());
        // Most stay until they have been read, some go at once.
        kept.push_back(Stream::connectedTo(commandSocket()));
        kept.back().send(bytes);
        if (i % 100 == 0) expectServed(*device);
        if (i % 100 == 0 || i % 7 == 0) kept.clear();
    }
    kept.clear();
    expectServed(*device);
    EXPECT_TRUE(
        vdevice::wait_until([&] { return descriptorsOf(*device) <= before; }, Milliseconds(5000)))
        << descriptorsOf(*device) << " descriptors in place of " << before;
}

TEST_F(BadConnections, HalfOpenOnesAreKeptBesideTheOthers) {
    const std::string unfinished[] = {"", greeting(0x30), greeting(0x30) + header(8u << 20) + "x"};
    std::vector<Stream> kept;
    for (int i = 0; i < 300; ++i) {
        kept.push_back(Stream::connectedTo(commandSocket()));
        kept.back().send(unfinished[i % std::size(unfinished)]);
        if (i % 20 == 0) expectServed(*device);
    }
    expectServed(*device);
}

TEST_F(BadConnections, ThatBringDescriptorsLeaveNoneOfThemOpen) {
    expectServed(*device);
    const int before = descriptorsOf(*device);
    std::vector<Stream> kept;
    for (const std::string &bytes :
         {greeting(0x30), greeting(0x30) + frame("hello"), greeting(0x30) + header(7),
          std::string("\0S", 2), std::string("GET / HTTP/1.1")}) {
        for (int i = 0; i < 10; ++i) {
            kept.push_back(Stream::connectedTo(commandSocket()));
            // nanomsg 1.1.5 would close the first of them.
            kept.back().sendWithDescriptors(bytes, 50);
            kept.back().sendWithDescriptors("x", 50);
        }
        expectServed(*device);
    }
    EXPECT_LE(descriptorsOf(*device), before + static_cast<int>(kept.size()));
    kept.clear();
    EXPECT_TRUE(
        vdevice::wait_until([&] { return descriptorsOf(*device) <= before; }, Milliseconds(5000)))
        << descriptorsOf(*device) << " descriptors in place of " << before;
}

/** A line of the process's /proc status in KiB. */
long statusKiB(vdevice::Device &device, const std::string &name) {
    std::ifstream status("/proc/" + std::to_string(device.pid()) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ":", 0) == 0) return std::stol(line.substr(name.size() + 1));
    }
    ADD_FAILURE() << "no " << name;
    return 0;
}

TEST_F(BadConnections, ThatAnnounceGigabytesCostAFewMegabytes) {
    constexpr int kConnections = 500;
    constexpr size_t kAnnounced = 8u << 20;
    const std::string request = R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})";
    const std::string large = request + std::string((1u << 20) - request.size(), ' ');
    const auto answered = [&] {
        return vdevice::CommandClient(device->commandAddress())
            .request(large, Milliseconds(1000))
            .has_value();
    };
    // What a large message costs once is there before.
    ASSERT_TRUE(answered());
    const long peak = statusKiB(*device, "VmPeak"), resident = statusKiB(*device, "VmRSS");
    const std::string all_but_the_end =
        greeting(0x30) + header(kAnnounced) + std::string(kAnnounced - 1, 'x');
    std::vector<Stream> kept;
    for (int i = 0; i < kConnections; ++i) {
        kept.push_back(Stream::connectedTo(commandSocket()));
        kept.back().send(i % 2 == 0 ? all_but_the_end.substr(0, 20) : all_but_the_end);
        if (i % 50 == 0) expectServed(*device);
    }
    expectServed(*device);
    EXPECT_LT(statusKiB(*device, "VmPeak") - peak, kMostKiB);
    EXPECT_LT(statusKiB(*device, "VmRSS") - resident, kMostKiB);
    // They are all still there, and give way.
    EXPECT_TRUE(vdevice::wait_until(answered, Milliseconds(20000)));
    EXPECT_THAT(device->standardError(), HasSubstr("connections ended: "));
}

TEST_F(BadConnections, OfHugeAnswersThatNobodyReadsCostAFewMegabytes) {
    constexpr int kConnections = 24;
    std::string batch = "[";
    for (int i = 0; i < 500; ++i) {
        batch += request("GetVideoOutputOSDParameter", {{"Channel", -1}}) + ",";
    }
    batch.back() = ']';
    const std::string message = frame(std::string("\x80\0\0\1", 4) + batch);
    const auto reply = device->request(batch, Milliseconds(10000));
    ASSERT_TRUE(reply);
    ASSERT_GT(reply->size(), 6u << 20);
    const long before = statusKiB(*device, "VmRSS");
    std::vector<Stream> deaf;
    for (int i = 0; i < kConnections; ++i) {
        deaf.push_back(Stream::connectedTo(commandSocket()));
        deaf.back().send(greeting(0x30) + message);
        // So that one is served after the other.
        EXPECT_EQ(deaf.back().received(8), greeting(0x31));
        expectServed(*device);
    }
    EXPECT_LT(statusKiB(*device, "VmRSS") - before, kMostKiB);
}

TEST_F(BadConnections, OfAnswersThatNobodyReadsHoldNobodyUp) {
    const std::string get =
        std::string("\x80\0\0\1", 4) + request("GetVideoOutputOSDParameter", {{"Channel", -1}});
    const Stream deaf = Stream::connectedTo(commandSocket());
    deaf.send(greeting(0x30));
    for (int i = 0; i < 50; ++i) {
        deaf.send(frame(get));
    }
    expectServed(*device);
}

/** A device one of whose peers, by its socket's name, is a bare socket: what that says and when it
 *  goes is up to the test. */
struct BarePeer {
    explicit BarePeer(const std::string &name) {
        EXPECT_NE(mkdtemp(folder_), nullptr);
        const std::string path = std::string(folder_) + "/" + name;
        listener_ = std::make_unique<Stream>(Stream::boundTo(path));
        listener_->listenHere();
        vdevice::DeviceOptions options = sampleDevice();
        options.binds.push_back({path, "/tmp/ipc/" + name, true});
        start(device_, options);
    }
    ~BarePeer() {
        device_.stop();
        fs::remove_all(folder_);
    }

    char folder_[32] = "/tmp/peer.XXXXXX";
    std::unique_ptr<Stream> listener_;
    vdevice::Device device_;
};

// ---- events -------------------------------------------------------------------------------------

TEST(BadPublishers, ThatFloodLeaveRequestsServed) {
    vdevice::Device device;
    start(device, sampleDevice());
    for (int event = 0; event < 10000; ++event) {
        ASSERT_TRUE(device.publishCodec(setBorderWidth(event % 8)));
        if (event % 100 == 0) expectServed(device);
    }
    const auto heard = [&] {
        return device.publishCodec(setBorderWidth(9)) && borderWidth(device) == 9;
    };
    EXPECT_TRUE(vdevice::wait_until(heard, Milliseconds(5000)));
}

TEST(BadPublishers, ThatSpeakThreeTimesAndGoAreHeardWhenTheyStay) {
    constexpr int kRestarts = 100;
    constexpr Milliseconds kHeardWithin(20000);
    vdevice::Device device;
    start(device, sampleDevice());
    for (int restart = 0; restart < kRestarts; ++restart) {
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(device.publishCodec(setBorderWidth(1), kHeardWithin)) << restart;
        }
        device.restartCodec();
        const int width = 2 + restart % 6;
        const auto heard = [&] {
            return device.publishCodec(setBorderWidth(width), Milliseconds(100)) &&
                   borderWidth(device) == width;
        };
        ASSERT_TRUE(vdevice::wait_until(heard, kHeardWithin)) << restart;
    }
}

TEST(BadPublishers, OfAnyBytesAreLeftForTheNextOneThatPublishesProperly) {
    const std::string hello = greeting(0x20);
    std::vector<std::string> openings = {"", "GET / HTTP/1.1", greeting(0x62), hello + frame("")};
    for (const std::string &bad : badFrames()) {
        openings.push_back(hello + bad);
    }
    for (const char *name : {"app_codec.event", "app_stream.event"}) {
        BarePeer peer(name);
        const auto hears = [&](int width) {
            return vdevice::wait_until([&] { return borderWidth(peer.device_) == width; },
                                       Milliseconds(5000));
        };
        for (const std::string &bytes : openings) {
            SCOPED_TRACE(name + (": " + testing::PrintToString(bytes)));
            const Stream publisher = peer.listener_->accepted();
            publisher.send(bytes);
            EXPECT_EQ(publisher.received(8), greeting(0x21));
            expectServed(peer.device_);
            if (HasFatalFailure()) return;
        }
        const Stream proper = peer.listener_->accepted();
        proper.send(hello + frame(setBorderWidth(7)));
        EXPECT_TRUE(hears(7)) << name;
        // What comes before the offence of a bad one counts.
        proper.send(frame(setBorderWidth(6)) + header(0, 2));
        EXPECT_TRUE(hears(6)) << name;
        const Stream next = peer.listener_->accepted();
        next.send(hello + frame(setBorderWidth(5)));
        EXPECT_TRUE(hears(5)) << name;
    }
}

TEST(BadPublishers, OfTheStreamsLeaveTheCodecsHeard) {
    BarePeer peer("app_stream.event");
    for (const std::string &bad : badFrames()) {
        const Stream publisher = peer.listener_->accepted();
        publisher.send(greeting(0x20) + bad);
        EXPECT_EQ(publisher.received(8), greeting(0x21));
        ASSERT_TRUE(peer.device_.publishCodec(setBorderWidth(3)));
        expectServed(peer.device_);
    }
    const auto heard = [&] {
        return peer.device_.publishCodec(setBorderWidth(9)) && borderWidth(peer.device_) == 9;
    };
    EXPECT_TRUE(vdevice::wait_until(heard, Milliseconds(5000)));
}

// ---- surveys ------------------------------------------------------------------------------------

class BadSurveyors : public testing::Test, protected BarePeer {
protected:
    BadSurveyors() : BarePeer("keepalive") {}

    void expectAnswer() {
        const Stream proper = listener_->accepted();
        proper.send(greeting(0x62) + frame(id_ + "garbage") + frame(survey_));
        EXPECT_EQ(proper.received(8), greeting(0x63));
        EXPECT_THAT(proper.received(13), testing::EndsWith(id_));
    }

    const std::string id_{"\x80\0\0\7", 4};
    const std::string survey_ = id_ + R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})";
};

TEST_F(BadSurveyors, AreLeftForTheNextOneThatAsksProperly) {
    const std::string hello = greeting(0x62);
    std::vector<std::string> openings = {"",
                                         std::string("\0SP\0", 4),
                                         "GET / HTTP",
                                         greeting(0x30),
                                         hello,
                                         hello + frame(""),
                                         hello + frame("ab"),
                                         hello + frame(std::string(64, '\0')),
                                         hello + frame(id_ + "{"),
                                         hello + frame(survey_).substr(0, 20),
                                         hello + frame(survey_)};
    for (const std::string &bad : badFrames()) {
        openings.push_back(hello + bad);
    }
    for (const std::string &bytes : openings) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const Stream surveyor = listener_->accepted();
        surveyor.send(bytes);
        EXPECT_EQ(surveyor.received(8), greeting(0x63));
        expectServed(device_);
    }
    expectAnswer();
}

TEST_F(BadSurveyors, ThatGoRightAfterTheirGreetingAreAnsweredWhenTheyComeBack) {
    for (int i = 0; i < 10; ++i) {
        // nanomsg 1.1.5 often gives up on such a connection and still counts it.
        listener_->accepted().send(greeting(0x62));
        expectServed(device_);
        if (HasFailure()) return;
    }
    expectAnswer();
}

// ---- descriptors --------------------------------------------------------------------------------

/** Leaves a process `more` descriptors beside those that it has. */
void limitDescriptors(vdevice::Device &device, rlim_t more) {
    const auto used = static_cast<rlim_t>(descriptorsOf(device));
    rlimit limit{};
    ASSERT_EQ(prlimit(device.pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
    limit.rlim_cur = std::min(used + more, limit.rlim_max);
    ASSERT_EQ(prlimit(device.pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
}

TEST(MissingDescriptors, CostNewConnectionsAndSavesAndNothingElse) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer needs descriptors to look at objects";
#endif
    vdevice::Device device;
    start(device, sampleDevice());
    const auto set = [&](const std::string &text) {
        return result(device, "SetWatermarkOSDParameter",
                      {{"if_name", "HDMI1"}, {"records", {{{"contet", text}}}}});
    };
    const std::string file = device.configFolder() + "/app_parameters/WatermarkOSDParameters.json";
    EXPECT_EQ(set("before"), 0);
    limitDescriptors(device, 0);
    {
        std::vector<Stream> crowd;
        for (int i = 0; i < 8; ++i) {  // more would wait in connect()
            crowd.push_back(Stream::connectedTo(device.paths().tmp() + kCommandFile));
        }
        device.restartCodec();
        for (int i = 0; i < 100; ++i) {
            expectServed(device);
        }
        EXPECT_EQ(set("not saved"), 0);
        EXPECT_THAT(device.standardError(), HasSubstr("WatermarkOSDParameters.json: temporary file "
                                                      "cannot be opened: Too many open files"));
        EXPECT_EQ(json::parse(fileText(file))[0]["contet"], "before");
    }
    limitDescriptors(device, 200);
    const auto saved = [&] {
        return set("after") == 0 && json::parse(fileText(file))[0]["contet"] == "after";
    };
    EXPECT_TRUE(
        vdevice::wait_until([&] { return set("again") == 0 && saved(); }, Milliseconds(5000)));
    // Who waited for a connection gets one, and the publisher that came back is heard.
    vdevice::CommandClient late(device.commandAddress());
    EXPECT_TRUE(late.request(request("Keepalive", json::object()), Milliseconds(10000)));
    const auto heard = [&] {
        return device.publishCodec(setBorderWidth(9), Milliseconds(100)) &&
               borderWidth(device) == 9;
    };
    EXPECT_TRUE(vdevice::wait_until(heard, Milliseconds(10000)));
}

}  // namespace
