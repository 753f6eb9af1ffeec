// A process that is killed while it saves: every parameter file is the old one or the new one, and
// the next start removes what the save in progress had begun.

#include <poll.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>

#include "device_test.h"
#include "save_storm.h"

using namespace e2e;

namespace fs = std::filesystem;

namespace {

/** A folder of its own that goes away at the end. */
class ScratchFolder {
public:
    ScratchFolder() { EXPECT_NE(mkdtemp(name_), nullptr); }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(name_, ignored);
    }
    std::string path() const { return name_; }

private:
    char name_[32] = "/tmp/power.XXXXXX";
};

/** A program that saves all parameter files again and again. */
class Storm {
public:
    explicit Storm(const std::string &folder) {
        int report[2];
        EXPECT_EQ(pipe(report), 0);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(report[1], STDOUT_FILENO);
            execl(E2E_SAVE_STORM, E2E_SAVE_STORM, folder.c_str(), nullptr);
            _exit(127);
        }
        close(report[1]);
        report_ = report[0];
    }
    ~Storm() { close(report_); }
    Storm(const Storm &) = delete;
    Storm &operator=(const Storm &) = delete;

    /** Waits until it is about to save; false when the program fails. */
    bool isSaving() const {
        char byte;
        return read(report_, &byte, 1) == 1;
    }
    /** Lets it run on for a while and kills it. Returns the signal that ended it. */
    int killAfter(std::chrono::microseconds delay) const {
        const timespec pause{0, static_cast<long>(std::chrono::nanoseconds(delay).count())};
        nanosleep(&pause, nullptr);
        kill(pid_, SIGKILL);
        int status = 0;
        EXPECT_EQ(waitpid(pid_, &status, 0), pid_);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

private:
    pid_t pid_ = -1;
    int report_ = -1;
};

/** Names of files in a folder that end in ".tmp". */
std::vector<std::string> temporaryFiles(const std::string &folder) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".tmp") names.push_back(entry.path().filename());
    }
    return names;
}

TEST(PowerLoss, InAThousandMomentsOfSavingLeavesTheOldFilesOrTheNewOnes) {
    constexpr int kKills = 1000;
    constexpr int kLongestMicroseconds = 20000;  // some rounds of saves
    const ScratchFolder folder;
    std::mt19937 random(1000);
    int interrupted = 0;
    ASSERT_TRUE(save_storm::save(folder.path(), 0));
    for (int kill = 0; kill < kKills; ++kill) {
        const Storm storm(folder.path());
        ASSERT_TRUE(storm.isSaving());
        const auto delay = std::uniform_int_distribution<int>(0, kLongestMicroseconds)(random);
        ASSERT_EQ(storm.killAfter(std::chrono::microseconds(delay)), SIGKILL);
        for (const save_storm::Row &row : save_storm::kFiles) {
            const std::string path = folder.path() + "/" + row.file;
            ASSERT_TRUE(row.isWhole(path)) << "kill " << kill << "\n" << fileText(path);
        }
        if (!temporaryFiles(folder.path()).empty()) ++interrupted;
        for (const save_storm::Row &row : save_storm::kFiles)
            remove_temporary_files((folder.path() + "/" + row.file).c_str());
        ASSERT_THAT(temporaryFiles(folder.path()), testing::IsEmpty()) << "kill " << kill;
    }
    // Else the moments were not those of saving.
    EXPECT_GT(interrupted, kKills / 20);
    RecordProperty("interrupted", interrupted);
}

json entriesOf(vdevice::Device &device) {
    return result(device, "GetVideoOutputOSDParameter", {{"Channel", -1}});
}

std::string setHeads(const std::string &head) {
    json records = json::array();
    for (int i = 0; i < 64; ++i) {
        records.push_back({{"head", head}});
    }
    return request("SetVideoOutputOSDParameter", {{"Channel", -1}, {"records", records}});
}

/** Kills a process after a delay; done when the object goes. */
class Killer {
public:
    Killer(pid_t victim, int microseconds) : pid_(fork()) {
        if (pid_ != 0) return;
        usleep(static_cast<useconds_t>(microseconds));
        kill(victim, SIGKILL);
        _exit(0);
    }
    ~Killer() { waitpid(pid_, nullptr, 0); }
    Killer(const Killer &) = delete;
    Killer &operator=(const Killer &) = delete;

private:
    pid_t pid_;
};

/** Lets a device save all its OSD entries over and over until it is killed. */
void saveUntilKilled(vdevice::Device &device, int microseconds) {
    const Killer killer(device.pid(), microseconds);
    for (int i = 0; device.request(setHeads("value " + std::to_string(i)));) {
        ++i;
    }
}

TEST(PowerLoss, OfTheWholeProcessIsFollowedByAStartWithEverySettingAndNoRemains) {
    constexpr int kKills = 30;
    std::mt19937 random(30);
    int interrupted = 0;
    auto device = std::make_unique<vdevice::Device>();
    start(*device, sampleDevice());
    ASSERT_TRUE(device->request(setHeads("first")));
    for (int kill = 0; kill < kKills; ++kill) {
        saveUntilKilled(*device, std::uniform_int_distribution<int>(0, 60000)(random));
        ASSERT_FALSE(device->running());
        const std::string folder = device->configFolder() + "/app_parameters";
        const json saved =
            json::parse(fileText(folder + "/VideoOutputOSDParameters.json"), nullptr, kill == 0);
        if (!temporaryFiles(folder).empty()) ++interrupted;
        // The next start finds the files as the kill left them.
        vdevice::DeviceOptions options = sampleDevice();
        options.config = device->configFolder();
        auto next = std::make_unique<vdevice::Device>();
        start(*next, options);
        ASSERT_EQ(saved.size(), 64u) << "kill " << kill;
        EXPECT_EQ(entriesOf(*next), saved) << "kill " << kill;
        EXPECT_THAT(temporaryFiles(next->configFolder() + "/app_parameters"), testing::IsEmpty());
        EXPECT_EQ(next->standardError().find("VideoOutputOSDParameters.json: "), std::string::npos);
        device = std::move(next);
    }
    RecordProperty("interrupted", interrupted);
}

}  // namespace
