// Peers that misbehave: broken connections, floods, missing descriptors, publishers that come and
// go, somebody else's file at the command address. The others are served all the same.

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
#include "record_codec/record_schema.h"

using namespace e2e;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using vdevice::Milliseconds;

constexpr char kCommandFile[] = "/ipc/app_gui.command";

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer keeps what was freed.
constexpr long kMostKiB = 400 << 10;
#else
constexpr long kMostKiB = 64 << 10;
#endif

/** A Unix stream socket, closed at the end. */
class Stream {
public:
    explicit Stream(int fd = -1) : fd_(fd) {}
    Stream(Stream &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    ~Stream() {
        if (fd_ >= 0) close(fd_);
    }

    static sockaddr_un addressOf(const std::string &path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }
    static Stream connectedTo(const std::string &path) {
        Stream stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = addressOf(path);
        // A full backlog makes the connection wait its turn.
        EXPECT_EQ(connect(stream.fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address),
                  0)
            << path << ": " << std::strerror(errno);
        return stream;
    }
    static Stream boundTo(const std::string &path) {
        Stream stream(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = addressOf(path);
        EXPECT_EQ(bind(stream.fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0)
            << path;
        return stream;
    }

    void listenHere() const { EXPECT_EQ(listen(fd_, 8), 0); }
    /** The next connection; one that does not come within ten seconds fails the test. */
    Stream accepted() const {
        const timeval patience{10, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        Stream stream(accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC));
        EXPECT_GE(stream.fd_, 0) << "no connection";
        return stream;
    }
    void send(const std::string &bytes) const {
        // The other side may have closed already: that is its right.
        (void)::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    /** The bytes, and so many descriptors with them. */
    void sendWithDescriptors(const std::string &bytes, size_t count) const {
        const std::vector<int> descriptors(count, fd_);
        std::vector<char> control(CMSG_SPACE(count * sizeof(int)));
        iovec place{const_cast<char *>(bytes.data()), bytes.size()};
        msghdr message{};
        message.msg_iov = &place;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr *rights = CMSG_FIRSTHDR(&message);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(count * sizeof(int));
        std::memcpy(CMSG_DATA(rights), descriptors.data(), count * sizeof(int));
        (void)::sendmsg(fd_, &message, MSG_NOSIGNAL);
    }
    /** Exactly `size` bytes; fewer when the other side closes or nothing comes for two seconds. */
    std::string received(size_t size) const {
        const timeval patience{2, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        std::string bytes(size, '\0');
        const ssize_t length = recv(fd_, bytes.data(), size, MSG_WAITALL);
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
        return bytes;
    }

private:
    int fd_;
};

/** First bytes of a connection: who speaks (0x20 publisher, 0x30 requester, 0x62 surveyor). */
std::string greeting(char protocol) {
    return std::string("\0SP\0\0", 5) + protocol + std::string(2, '\0');
}

/** What stands in front of a message: its type, 1, and its length. */
std::string frame(uint64_t length, char type = 1) {
    std::string bytes(1, type);
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(length >> shift & 0xff);
    }
    return bytes;
}

std::string framed(const std::string &message) {
    return frame(message.size()) + message;
}

/** What a peer may send behind a proper greeting that no peer should. */
std::vector<std::string> badFrames() {
    return {
        frame(0, 2),
        frame(5, 0) + "hello",
        frame(5, '\xff') + "hello",
        framed("") + frame(1, 2) + "x",
        framed("hello").substr(0, 3) + framed("hello"),
        frame(UINT64_MAX) + "x",
        frame(uint64_t{1} << 63) + "x",
        frame((8u << 20) + 1) + "x",
        frame(8u << 20) + "x",
        frame(8u << 20).substr(0, 8),
    };
}

int descriptorsOf(vdevice::Device &device) {
    const fs::directory_iterator all("/proc/" + std::to_string(device.pid()) + "/fd");
    return static_cast<int>(std::distance(begin(all), end(all)));
}

void expectServed(vdevice::Device &device) {
    ASSERT_EQ(result(device, "Keepalive").value("process", ""), "app_gui");
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
        greeting(0x30) + framed(""),
        greeting(0x30) + framed("abc"),
        greeting(0x30) + framed(std::string(400, '\0')),
        greeting(0x30) + framed(request + "{"),
        greeting(0x30) + framed(request + R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})"),
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
    const std::string unfinished[] = {"", greeting(0x30), greeting(0x30) + frame(8u << 20) + "x"};
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
         {greeting(0x30), greeting(0x30) + framed("hello"), greeting(0x30) + frame(7),
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
        greeting(0x30) + frame(kAnnounced) + std::string(kAnnounced - 1, 'x');
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
    const std::string message = framed(std::string("\x80\0\0\1", 4) + batch);
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
        deaf.send(framed(get));
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
    std::vector<std::string> openings = {"", "GET / HTTP/1.1", greeting(0x62), hello + framed("")};
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
        proper.send(hello + framed(setBorderWidth(7)));
        EXPECT_TRUE(hears(7)) << name;
        // What comes before the offence of a bad one counts.
        proper.send(framed(setBorderWidth(6)) + frame(0, 2));
        EXPECT_TRUE(hears(6)) << name;
        const Stream next = peer.listener_->accepted();
        next.send(hello + framed(setBorderWidth(5)));
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
        proper.send(greeting(0x62) + framed(id_ + "garbage") + framed(survey_));
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
                                         hello + framed(""),
                                         hello + framed("ab"),
                                         hello + framed(std::string(64, '\0')),
                                         hello + framed(id_ + "{"),
                                         hello + framed(survey_).substr(0, 20),
                                         hello + framed(survey_)};
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

// ---- limits -------------------------------------------------------------------------------------

class Limits : public SharedDevice {
protected:
    static json answer(const std::string &message) {
        const auto reply = device->request(message);
        EXPECT_TRUE(reply) << "no reply";
        return reply ? json::parse(reply->c_str()) : json();
    }
    static int codeOf(const std::string &message) {
        return answer(message).value("error", json::object()).value("code", 0);
    }
};

TEST_F(Limits, OfAMessagesSizeAreKept) {
    const std::string request = R"({"jsonrpc":"2.0","id":1,"method":"Keepalive"})";
    const auto padded = [&](size_t size) {
        return request + std::string(size - request.size(), ' ');
    };
    EXPECT_TRUE(answer(padded(4u << 20)).contains("result"));
    EXPECT_EQ(codeOf(padded((4u << 20) + 1)), -32600);
    EXPECT_EQ(codeOf(padded((8u << 20) - 4)), -32600);  // a request's number comes before it
    // A larger one is not read at all; its sender is cut off, nobody else.
    vdevice::CommandClient greedy(device->commandAddress());
    EXPECT_FALSE(greedy.request(padded((8u << 20) + 1), Milliseconds(300)));
    expectServed(*device);
}

TEST_F(Limits, OfNestingAreKept) {
    const auto nested = [](size_t levels) {
        return R"({"jsonrpc":"2.0","id":1,"method":"Keepalive","extra":)" +
               std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    EXPECT_TRUE(answer(nested(32)).contains("result"));
    EXPECT_EQ(codeOf(nested(33)), -32700);
    EXPECT_EQ(codeOf(nested(1000000)), -32700);
}

TEST_F(Limits, OfEveryTextAreItsFieldsSizeLessOne) {
    for (const char *name :
         {"WatermarkOSDParameter", "WatermarkPictureParameter", "WatermarkDotmatrixParameter"}) {
        const record_codec::Record *record = record_codec::find_record(name);
        ASSERT_NE(record, nullptr);
        for (size_t i = 0; i < record->field_count; ++i) {
            const record_codec::Field &field = record->fields[i];
            if (field.kind != record_codec::FieldKind::kText) continue;
            const auto set = [&](size_t length) {
                const json value = {{field.name, std::string(length, 'a')}};
                return codeOf(request(std::string("Set") + name,
                                      {{"if_name", "HDMI1"}, {"records", {value}}}));
            };
            EXPECT_EQ(set(field.size), -32602) << name << " " << field.name;
            EXPECT_NE(set(field.size - 1), -32602) << name << " " << field.name;
        }
    }
}

std::string bigEndian(uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xff);
    }
    return bytes;
}

int occurrences(const std::string &text, const std::string &part) {
    int count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(PictureLimits, AFewBytesThatClaimAHugePictureAreRefusedAndTheOldOneStays) {
    const std::string side = "60000 60000";
    const std::string huge[] = {
        "P6 " + side + " 255\n",
        std::string("GIF89a\x60\xEA\x60\xEA", 10),
        "BM" + std::string(16, '\0') + "\x60\xEA" + std::string(2, '\0') + "\x60\xEA" +
            std::string(2, '\0') + std::string("\1\0\x18\0", 4) + std::string(24, '\0'),
        "\x89PNG\r\n\x1a\n" + bigEndian(13) + "IHDR" + bigEndian(60000) + bigEndian(60000) +
            std::string("\x8\x6\0\0\0", 5) + bigEndian(0x80d27542),
        "",
    };
    vdevice::Device device;
    vdevice::DeviceOptions options = sampleDevice();
    const auto put = [](const vdevice::RootPaths &paths, const std::string &bytes) {
        std::ofstream(paths.tmp() + "/logo", std::ios::binary) << bytes;
    };
    options.prepare = [&](const vdevice::RootPaths &paths) {
        put(paths, "P6 2 1 255\n\xff" + std::string(5, '\0'));
    };
    start(device, options);
    const QImage before = device.settledLayer();
    EXPECT_EQ(
        result(device, "SetWatermarkPictureParameter",
               {{"if_name", "HDMI1"},
                {"records", {{{"file", "/tmp/logo"}, {"visible", 1}, {"x", 100}, {"y", 100}}}}}),
        0);
    ASSERT_TRUE(device.waitForPixels([&](const QImage &layer) { return layer != before; }));
    const QImage shown = device.settledLayer();
    int refused = 0;
    for (const std::string &bytes : huge) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        put(device.paths(), bytes);
        EXPECT_EQ(result(device, "UploadWatermarkPicture", {{"if_name", "HDMI1"}}), 0);
        EXPECT_EQ(device.settledLayer(), shown);
        EXPECT_EQ(++refused, occurrences(device.standardError(), "load /tmp/logo failed!\n"));
        ASSERT_TRUE(device.running());
    }
    put(device.paths(), "P6 1 2 255\n" + std::string(6, '\x7f'));
    EXPECT_EQ(result(device, "UploadWatermarkPicture", {{"if_name", "HDMI1"}}), 0);
    EXPECT_TRUE(device.waitForPixels([&](const QImage &layer) { return layer != shown; }));
}

// ---- the command address ------------------------------------------------------------------------

/** Something that stands at the command address before the process starts. */
struct Occupant {
    const char *name;
    std::function<void(const std::string &path)> make;
};

void expectDisplayingWithoutCommands(vdevice::Device &device) {
    const auto has_borders = [](const QImage &layer) { return layer != emptyLayer(); };
    EXPECT_TRUE(device.waitForPixels(has_borders));
    EXPECT_TRUE(vdevice::wait_until(
        [&] {
            return device.standardError().find("nn_bind(ipc:///tmp/ipc/app_gui.command) fail: ") !=
                   std::string::npos;
        },
        Milliseconds(5000)))
        << device.standardError();
    EXPECT_TRUE(device.running()) << device.exitStatus();
}

TEST(CommandAddress, TakenBySomethingElseIsToldAndLeftAlone) {
    const Occupant occupants[] = {
        {"a file", [](const std::string &path) { close(creat(path.c_str(), 0644)); }},
        {"a folder", [](const std::string &path) { mkdir(path.c_str(), 0755); }},
        {"a full folder", [](const std::string &path) { fs::create_directories(path + "/full"); }},
        {"a pipe", [](const std::string &path) { mkfifo(path.c_str(), 0666); }},
        {"a link to nowhere",
         [](const std::string &path) { fs::create_symlink("/nowhere", path); }},
    };
    for (const Occupant &occupant : occupants) {
        SCOPED_TRACE(occupant.name);
        vdevice::DeviceOptions options = sampleDevice();
        struct stat before {};
        options.prepare = [&](const vdevice::RootPaths &paths) {
            occupant.make(paths.tmp() + kCommandFile);
            ASSERT_EQ(lstat((paths.tmp() + kCommandFile).c_str(), &before), 0);
        };
        options.waitUntilServing = false;
        vdevice::Device device;
        start(device, options);
        expectDisplayingWithoutCommands(device);
        struct stat after {};
        EXPECT_EQ(lstat((device.paths().tmp() + kCommandFile).c_str(), &after), 0);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(after.st_mode, before.st_mode);
    }
}

TEST(CommandAddress, OfAStaleSocketThatCannotBeRemovedIsTold) {
    if (vdevice::find_sandbox() != vdevice::SandboxKind::kBwrap) GTEST_SKIP() << "needs mounts";
    char folder[] = "/tmp/stale.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string path = std::string(folder) + "/socket";
    Stream::boundTo(path);
    {
        vdevice::DeviceOptions options = sampleDevice();
        options.prepare = [](const vdevice::RootPaths &paths) {
            close(creat((paths.tmp() + kCommandFile).c_str(), 0644));
        };
        // A place that something is mounted on cannot be removed, not even by root.
        options.binds.push_back({path, "/tmp/ipc/app_gui.command", true});
        options.waitUntilServing = false;
        vdevice::Device device;
        start(device, options);
        expectDisplayingWithoutCommands(device);
    }
    fs::remove_all(folder);
}

TEST(CommandAddress, ThatAnotherProcessServesIsToldAndLeftToIt) {
    vdevice::DeviceOptions options = sampleDevice();
    std::unique_ptr<Stream> server;
    options.prepare = [&](const vdevice::RootPaths &paths) {
        server = std::make_unique<Stream>(Stream::boundTo(paths.tmp() + kCommandFile));
        server->listenHere();
    };
    options.waitUntilServing = false;
    vdevice::Device device;
    start(device, options);
    expectDisplayingWithoutCommands(device);
    EXPECT_THAT(device.standardError(), HasSubstr("fail: Address already in use\n"));
}

TEST(CommandAddress, OfAProcessThatWasKilledIsTakenOver) {
    vdevice::DeviceOptions options = sampleDevice();
    options.prepare = [](const vdevice::RootPaths &paths) {
        Stream::boundTo(paths.tmp() + kCommandFile);  // the file stays behind
    };
    vdevice::Device device;
    start(device, options);
    expectServed(device);
}

}  // namespace
