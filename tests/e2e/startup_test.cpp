// Start-up: what ends it, what it falls back to, what it says.

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>

#include "device_test.h"

using namespace e2e;
using testing::HasSubstr;

namespace {

void write(const std::string &path, const std::string &text) {
    std::FILE *file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr) << path;
    std::fputs(text.c_str(), file);
    std::fclose(file);
}

/** Runs a device that is to end by itself and returns its exit status. */
int endOf(vdevice::Device &device, vdevice::DeviceOptions options) {
    options.waitUntilServing = false;
    start(device, options);
    EXPECT_TRUE(device.waitForEnd(vdevice::Milliseconds(20000)));
    return device.exitStatus();
}

/** A file that exists and cannot be opened, not even by root: a socket's. */
class Unopenable {
public:
    Unopenable() {
        EXPECT_NE(mkdtemp(folder_), nullptr);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path().copy(address.sun_path, sizeof address.sun_path - 1);
        socket_ = socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    ~Unopenable() {
        close(socket_);
        unlink(path().c_str());
        rmdir(folder_);
    }
    std::string path() const { return std::string(folder_) + "/device"; }

private:
    char folder_[32] = "/tmp/e2e.XXXXXX";
    int socket_ = -1;
};

TEST(StartUp, WithoutAFramebufferEndsWithStatusZeroAndALine) {
    const Unopenable nothing;
    vdevice::DeviceOptions options = sampleDevice();
    options.binds.push_back({nothing.path(), "/dev/fb1", false});
    options.shim.clear();
    vdevice::Device device;
    EXPECT_EQ(endOf(device, options), 0);
    EXPECT_EQ(device.standardOutput(),
              "<DEBUG file apps/app_gui/src/app_gui.cpp, line 330>: /dev/fb1 invalid\n");
}

struct BadCapability {
    const char *file;
    const char *text;  ///< null: the file is missing
    int status;        ///< as the shell sees it
    const char *line;
};

TEST(StartUp, EndsWithTheCodeOfACapabilityFileThatCannotBeUsed) {
    const BadCapability cases[] = {
        {"DeviceCapabilitySet.json", nullptr, 256 - 7, "get dev cap fail ret:-7\n"},
        {"DeviceCapabilitySet.json", "{", 256 - 2, "get dev cap fail ret:-2\n"},
        {"VideoOutputCapabilitySet.json", nullptr, 256 - 1, "get decode video cap fail ret:-1\n"},
        {"VideoOutputInterfaces.json", "{}", 256 - 1, "get decode video cap fail ret:-1\n"},
        {"AudioOutputCapabilitySet.json", "[1]", 256 - 1, "get decode audio cap fail ret:-1\n"},
        {"VideoDecodeCapabilitySet.json", "[]", 256 - 2, "get decode video cap fail ret:-2\n"},
        {"StreamingInputCapabilitySet.json", nullptr, 256 - 7,
         "get stream input cap fail ret:-7\n"},
    };
    for (const BadCapability &bad : cases) {
        vdevice::DeviceOptions options = sampleDevice();
        options.prepare = [&](const vdevice::RootPaths &paths) {
            const std::string path = paths.config() + "/capability_sets/" + bad.file;
            std::remove(path.c_str());
            if (bad.text) write(path, bad.text);
        };
        vdevice::Device device;
        EXPECT_EQ(endOf(device, options), bad.status) << bad.file;
        EXPECT_THAT(device.standardError(), HasSubstr(bad.line));
        EXPECT_THAT(
            device.standardOutput(),
            HasSubstr("<DEBUG file apps/app_gui/src/app_gui.cpp, line 322>: init_parameters fail " +
                      std::to_string(bad.status - 256) + "\n"));
    }
}

TEST(StartUp, FallsBackFromADamagedUserFileToTheFactorysAndThenToDefaults) {
    vdevice::DeviceOptions options = sampleDevice();
    options.prepare = [](const vdevice::RootPaths &paths) {
        write(paths.config() + "/app_parameters/VideoOutputDisplayParameters.json",
              R"({"BorderWidth": 9, "BackgroundColor": "#0000)");
        write(paths.config() + "/app_parameters/WatermarkOSDParameters.json",
              R"([{"font": "big"}])");
        write(paths.config() + "/default_parameters/WatermarkOSDParameters.json",
              R"([{"x": 1e9}])");
    };
    vdevice::Device device;
    start(device, options);
    const std::string errors = device.standardError();
    EXPECT_THAT(errors,
                HasSubstr("init_VideoOutputDisplayParameter>: read "
                          "/mnt/usr/config/app_parameters/VideoOutputDisplayParameters.json "
                          "fail ret=-2\n"));
    EXPECT_THAT(errors, HasSubstr("WatermarkOSDParameters.json: record 0: font: "));
    EXPECT_THAT(errors, HasSubstr("get watermark osd para fail ret:-2\n"));
    const json factory = json::parse(fileText(
        std::string(E2E_CONFIG) + "/default_parameters/VideoOutputDisplayParameters.json"));
    EXPECT_EQ(result(device, "GetVideoOutputDisplayParameter")[0]["BorderWidth"],
              factory["BorderWidth"]);
    const json watermark = result(device, "GetWatermarkOSDParameter", {{"if_name", "HDMI1"}})[0];
    EXPECT_EQ(watermark["forecolor"], "#FF0000");
    EXPECT_EQ(watermark["font"], 2);
    // What was repaired is written back.
    const json saved = json::parse(
        fileText(device.configFolder() + "/app_parameters/WatermarkOSDParameters.json"));
    EXPECT_EQ(saved[1]["if_name"], "HDMI2");
}

TEST(StartUp, PaintsNothingBeforeThereIsSomethingToShow) {
    vdevice::DeviceOptions options = sampleDevice();
    options.program = E2E_TOLD_EVENTS;
    vdevice::Device device;
    start(device, options);
    const auto drawn = [](const QImage &layer) { return layer != emptyLayer(); };
    EXPECT_TRUE(device.waitForPixels(drawn));
    const std::string told = device.standardOutput();
    EXPECT_LT(told.find("refreshed\n"), told.find("painted\n")) << told;
    EXPECT_THAT(told, HasSubstr("painted\n"));
}

TEST(StartUp, DrawsOnTheFramebufferWhateverPlatformIsNamedForOtherPrograms) {
    vdevice::DeviceOptions options = sampleDevice();
    options.environment["QT_QPA_PLATFORM"] = "offscreen";
    vdevice::Device device;
    start(device, options);
    EXPECT_TRUE(device.waitForPixels([](const QImage &layer) { return layer != emptyLayer(); }));
}

TEST(StartUp, TellsThatTheMessageThreadCame) {
    vdevice::Device device;
    start(device, sampleDevice());
    EXPECT_THAT(device.standardOutput(),
                HasSubstr("<DEBUG file apps/app_gui/src/app_gui.cpp, line 143>: thread "
                          "recv_msg_routine, pid = "));
    EXPECT_THAT(device.standardOutput(), HasSubstr(" Enter\n"));
}

/** While it lives, programs start with thread stacks for which there is no room. */
class NoRoomForThreads {
public:
    NoRoomForThreads() {
        getrlimit(RLIMIT_STACK, &saved_);
        const rlimit huge = {rlim_t{1} << (sizeof(rlim_t) > 4 ? 46 : 31), saved_.rlim_max};
        works = setrlimit(RLIMIT_STACK, &huge) == 0;
    }
    ~NoRoomForThreads() { setrlimit(RLIMIT_STACK, &saved_); }
    bool works = false;

private:
    rlimit saved_ = {};
};

TEST(StartUp, WithoutAMessageThreadStillDisplays) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer does not start with such stacks";
#endif
    vdevice::DeviceOptions options = sampleDevice();
    options.waitUntilServing = false;
    vdevice::Device device;
    {
        const NoRoomForThreads limit;
        if (!limit.works) GTEST_SKIP() << "this user's stacks are limited";
        start(device, options);
    }
    const std::string line =
        "\033[1;31m<ERROR! apps/app_gui/src/app_gui.cpp:371, main>: "
        "[app_gui]pthread_create recv_msg fail! errno:" +
        std::to_string(ENOMEM) + "\n\033[0m";
    const auto told = [&] { return device.standardError().find(line) != std::string::npos; };
    EXPECT_TRUE(vdevice::wait_until(told, vdevice::Milliseconds(20000))) << device.standardError();
    const auto drawn = [](const QImage &layer) { return layer != emptyLayer(); };
    EXPECT_TRUE(device.waitForPixels(drawn, vdevice::Milliseconds(10000)));
    EXPECT_FALSE(device.request(request("Keepalive", json::object()), vdevice::Milliseconds(300)));
    EXPECT_TRUE(device.running());
    EXPECT_EQ(device.standardOutput(), "") << "the thread did not enter";
}

TEST(StartUp, AReaderOfItsLinesThatGoesAwayDoesNotEndTheProcess) {
    vdevice::Device device;
    start(device, sampleDevice());
    std::ifstream status("/proc/" + std::to_string(device.pid()) + "/status");
    uint64_t ignored = 0;
    for (std::string word; status >> word;) {
        if (word == "SigIgn:") status >> std::hex >> ignored;
    }
    EXPECT_NE(ignored & uint64_t{1} << (SIGPIPE - 1), 0u);
}

TEST(StartUp, WorksInEverySandboxThatThisKernelAllows) {
    int worked = 0;
    for (const auto kind : {vdevice::SandboxKind::kBwrap, vdevice::SandboxKind::kProot}) {
        if (!vdevice::sandbox_works(kind)) continue;
        vdevice::DeviceOptions options = sampleDevice();
        options.sandbox = kind;
        vdevice::Device device;
        start(device, options);
        EXPECT_EQ(result(device, "Keepalive")["process"], "app_gui") << vdevice::sandbox_name(kind);
        ++worked;
    }
    EXPECT_GT(worked, 0);
}

}  // namespace
