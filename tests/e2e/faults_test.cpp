// Calls of the real process that fail: every one in turn, at start-up and during every command that
// saves. The process goes on, a file is the old one or the new one, and a line says what failed.

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>

#include "device_test.h"
#include "fault_file.h"

using namespace e2e;
using faults::Call;
using testing::AnyOf;
using testing::HasSubstr;

namespace {

/** Whether a failure during a save costs something and is told then. */
enum class Told {
    kAlways,
    kNever,      ///< the save goes on and succeeds
    kSometimes,  ///< it depends on what the call was for
};

/** One kind of failure. */
struct Failure {
    Call call;
    int error;
    Told told;
};

constexpr Failure kSavingFailures[] = {
    {Call::kOpen, EMFILE, Told::kAlways},
    {Call::kWrite, ENOSPC, Told::kAlways},
    {Call::kWrite, EINTR, Told::kNever},
    {Call::kWrite, faults::kHalf, Told::kNever},
    {Call::kFsync, EIO, Told::kAlways},
    // Where files have no mode of their own the setting is saved all the same.
    {Call::kFchmod, EPERM, Told::kNever},
    // The file's descriptor, or the folder's that was only opened to be synchronised.
    {Call::kClose, EIO, Told::kSometimes},
    {Call::kRename, EROFS, Told::kAlways},
};

/** A command that saves: which records it sets and where they are found again. */
struct SavingCommand {
    const char *record;
    json key;
    unsigned records;  ///< of the key
    unsigned first;    ///< position of the key's first record in the file
    unsigned in_file;
    const char *field;
    const char *file;
};

const SavingCommand kCommands[] = {
    {"WatermarkOSDParameter",
     {{"if_name", "HDMI2"}},
     1,
     1,
     2,
     "contet",
     "WatermarkOSDParameters.json"},
    {"WatermarkOSDParameter", {{"if_name", ""}}, 2, 0, 2, "contet", "WatermarkOSDParameters.json"},
    {"WatermarkPictureParameter",
     {{"if_name", "HDMI2"}},
     1,
     1,
     2,
     "file",
     "WatermarkPictureParameters.json"},
    {"WatermarkPictureParameter",
     {{"if_name", ""}},
     2,
     0,
     2,
     "file",
     "WatermarkPictureParameters.json"},
    {"WatermarkDotmatrixParameter",
     {{"if_name", "HDMI1"}},
     1,
     0,
     2,
     "text",
     "WatermarkDotmatrixParameters.json"},
    {"WatermarkDotmatrixParameter",
     {{"if_name", ""}},
     2,
     0,
     2,
     "text",
     "WatermarkDotmatrixParameters.json"},
    {"VideoOutputOSDParameter",
     {{"Channel", 3}},
     4,
     12,
     64,
     "head",
     "VideoOutputOSDParameters.json"},
    {"VideoOutputOSDParameter",
     {{"Channel", -1}},
     64,
     0,
     64,
     "head",
     "VideoOutputOSDParameters.json"},
};

using Values = std::vector<std::string>;

/** All parameter files of the sample device. */
const Values kUserFiles = {"AudioOutputParameters.json",
                           "StreamingInputParameters.json",
                           "VideoOutputAccessParameters.json",
                           "VideoOutputDisplayParameters.json",
                           "VideoOutputInterfaceParameters.json",
                           "VideoOutputOSDParameters.json",
                           "VideoOutputScreenSplitParameters.json",
                           "WatermarkDotmatrixParameters.json",
                           "WatermarkOSDParameters.json",
                           "WatermarkPictureParameters.json"};

/** Names in a folder, sorted. */
Values filesOf(const std::string &folder) {
    Values names;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/** A device whose calls can be made to fail, and one command of it. */
class Saving {
public:
    Saving(vdevice::Device &device, faults::FaultFile &faults, const SavingCommand &command)
        : device_(device), faults_(faults), command_(command) {}

    /** Sets a new value while a call fails. False when the command needs fewer such calls. */
    bool survives(const Failure &failure, int nth) {
        const Values memory = stored();
        const Values file = saved();
        const size_t said = device_.standardError().size();
        const std::string value = "value " + std::to_string(++values_);
        faults_.arm({failure.call, nth, failure.error});
        const auto reply = device_.request(setRequest(value));
        const bool fired = faults_.fired() > 0;
        faults_.disarm();
        const std::string lines = device_.standardError().substr(said);
        SCOPED_TRACE(std::string(command_.record) + command_.key.dump() + ", call " +
                     std::to_string(static_cast<int>(failure.call)) + " no. " +
                     std::to_string(nth) + ", error " + std::to_string(failure.error) + "\n" +
                     lines);
        checkReply(reply, value);
        const bool told = lines.find(std::string("/") + command_.file + ": ") != lines.npos;
        checkFile(told, value, memory, file);
        if (told) {
            EXPECT_THAT(lines, HasSubstr(std::strerror(failure.error)));
        }
        if (failure.told != Told::kSometimes) {
            EXPECT_EQ(told, fired && failure.told == Told::kAlways);
        }
        return fired;
    }

    /** The calls of one undisturbed save. */
    std::vector<Call> calls() {
        faults_.disarm();
        EXPECT_TRUE(device_.request(setRequest("value " + std::to_string(++values_))));
        return faults_.trace();
    }

private:
    std::string setRequest(const std::string &value) const {
        json params = command_.key;
        params["records"] = json::array();
        for (unsigned i = 0; i < command_.records; ++i) {
            params["records"].push_back({{command_.field, value}});
        }
        return request(std::string("Set") + command_.record, params);
    }

    Values valuesOf(const json &records) const {
        Values values;
        for (const json &record : records) {
            values.push_back(record.value(command_.field, "no such field"));
        }
        return values;
    }

    Values stored() {
        return valuesOf(result(device_, std::string("Get") + command_.record, command_.key));
    }

    /** The key's records as the file has them; a file that is not whole fails the test. */
    Values saved() {
        const std::string folder = device_.configFolder() + "/app_parameters/";
        const std::string text = fileText(folder + command_.file);
        const json records = json::parse(text, nullptr, false);
        EXPECT_TRUE(records.is_array() && records.size() == command_.in_file) << text;
        EXPECT_EQ(filesOf(folder), kUserFiles) << "a temporary file stayed";
        if (!records.is_array() || records.size() != command_.in_file) return {};
        const Values all = valuesOf(records);
        return Values(all.begin() + command_.first,
                      all.begin() + command_.first + command_.records);
    }

    /** A save that fails costs the file only: the setting is in force, and the reply says so. */
    void checkReply(const std::optional<std::string> &reply, const std::string &value) {
        ASSERT_TRUE(reply) << "no reply";
        EXPECT_EQ(json::parse(reply->c_str(), nullptr, false).value("result", json()), 0) << *reply;
        EXPECT_EQ(stored(), Values(command_.records, value));
    }

    /** What is not told is saved; what is told left the old file or one of its later saves. */
    void checkFile(bool told, const std::string &value, const Values &memory, const Values &file) {
        const Values after = saved();
        if (!told) {
            EXPECT_EQ(after, Values(command_.records, value));
            return;
        }
        ASSERT_EQ(after.size(), file.size());
        for (size_t i = 0; i < after.size(); ++i) {
            EXPECT_THAT(after[i], AnyOf(file[i], memory[i], value)) << i;
        }
    }

    vdevice::Device &device_;
    faults::FaultFile &faults_;
    const SavingCommand &command_;
    int values_ = 0;
};

/** A device with all files in the user's folder, and the preloaded library. */
vdevice::DeviceOptions faultyDevice(faults::FaultFile &faults) {
    vdevice::DeviceOptions options = sampleDevice();
    options.prepare = [](const vdevice::RootPaths &paths) {
        std::filesystem::copy(paths.config() + "/default_parameters",
                              paths.config() + "/app_parameters");
    };
    faults.addTo(options, E2E_FAULTS);
    return options;
}

TEST(Faults, DuringASaveLoseNothingAndAreTold) {
    faults::FaultFile faults;
    vdevice::Device device;
    start(device, faultyDevice(faults));
    int survived = 0;
    for (const SavingCommand &command : kCommands) {
        Saving saving(device, faults, command);
        for (const Failure &failure : kSavingFailures) {
            int nth = 1;
            while (saving.survives(failure, nth)) {
                ++nth;
                ++survived;
            }
            EXPECT_GT(nth, 1) << command.record << ": nothing failed";
            ASSERT_TRUE(device.running()) << device.standardError();
        }
    }
    EXPECT_GT(survived, 250);
}

TEST(Faults, FindTheTextOnDiskBeforeItTakesTheNameAndTheNameBeforeTheReply) {
    faults::FaultFile faults;
    vdevice::Device device;
    start(device, faultyDevice(faults));
    const std::vector<Call> order = {Call::kOpen,  Call::kFchmod, Call::kWrite,
                                     Call::kFsync, Call::kClose,  Call::kRename,
                                     Call::kOpen,  Call::kFsync,  Call::kClose};
    for (const SavingCommand &command : kCommands) {
        if (command.records == command.in_file) continue;  // of every key: one save each
        EXPECT_EQ(Saving(device, faults, command).calls(), order) << command.record;
    }
}

TEST(Faults, ThatLastCostTheSavesAndEndWithTheFirstOneThatSucceeds) {
    faults::FaultFile faults;
    vdevice::Device device;
    start(device, faultyDevice(faults));
    const std::string path = device.configFolder() + "/app_parameters/WatermarkOSDParameters.json";
    const std::string old = fileText(path);
    const auto set = [&](const std::string &text) {
        return result(device, "SetWatermarkOSDParameter",
                      {{"if_name", "HDMI1"}, {"records", {{{"contet", text}}}}});
    };
    faults.arm({Call::kWrite, 1, ENOSPC, INT_MAX});
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(set("disk full " + std::to_string(i)), 0);
    }
    EXPECT_EQ(fileText(path), old);
    EXPECT_EQ(filesOf(device.configFolder() + "/app_parameters"), kUserFiles);
    faults.disarm();
    EXPECT_EQ(set("room again"), 0);
    EXPECT_EQ(json::parse(fileText(path))[0]["contet"], "room again");
}

// ---- memory -------------------------------------------------------------------------------------

// A sanitizer has an allocator of its own, which no library can stand in for.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/** A request while allocations of the message thread fail. */
class MemoryFaults {
public:
    MemoryFaults() { start(device_, faultyDevice(faults_)); }

    /** The reply to a request whose nth allocation fails and `times` - 1 more behind it; none when
     * fewer are made. */
    std::optional<json> reply(const std::string &request, int nth, int times,
                              vdevice::Milliseconds timeout = vdevice::Milliseconds(5000)) {
        faults_.arm({Call::kMalloc, nth, ENOMEM, times});
        const auto reply = device_.request(request, timeout);
        fired_ = faults_.fired() > 0;
        faults_.disarm();
        EXPECT_TRUE(device_.running()) << "allocation no. " << nth << "\n"
                                       << device_.standardError();
        if (!reply) return {};
        return json::parse(reply->c_str(), nullptr, false);
    }
    bool fired() const { return fired_; }
    vdevice::Device &device() { return device_; }

private:
    faults::FaultFile faults_;
    vdevice::Device device_;
    bool fired_ = false;
};

const std::string kRequests[] = {
    request("SetWatermarkOSDParameter",
            {{"if_name", "HDMI1"},
             {"records", {{{"contet", "a text that is longer than a few bytes"}, {"font", 3}}}}}),
    request("SetVideoOutputDisplayParameter",
            {{"records", {{{"PictureLevel", {1, 2, 3, "no number"}}}}}}),
    request("SetVideoOutputOSDParameter",
            {{"Channel", 3}, {"records", json::array({{{"head", "1"}}, {{"head", "2"}}})}}),
    request("SetVideoOutputOSDParameter",
            {{"Channel", 3},
             {"records", json::array({{{"head", "a head of more than a few bytes"}},
                                      {{"head", "2"}},
                                      {{"head", "3"}},
                                      {{"head", "4"}}})}}),
    request(
        "SetWatermarkPictureParameter",
        {{"if_name", "HDMI1"}, {"records", {{{"file", "/tmp/a picture with a long name.png"}}}}}),
    request("SetWatermarkDotmatrixParameter",
            {{"if_name", "HDMI1"}, {"records", {{{"text", "a text of more than a few bytes"}}}}}),
    request("GetVideoOutputOSDParameter", {{"Channel", -1}}),
    request("GetVideoOutputDisplayParameter", json::object()),
    request("NoSuchCommandAtAllIsKnownHere", json::object()),
    "[" + request("Keepalive", json::object()) + "," + request("Keepalive", json::object()) + "]",
    "{ no JSON",
};

TEST(Faults, OneAllocationThatFailsCostsARequestAtMostAndItIsAnswered) {
    MemoryFaults memory;
    for (const std::string &request : kRequests) {
        SCOPED_TRACE(request);
        int nth = 1;
        for (bool fired = true; fired && memory.device().running(); ++nth) {
            const auto reply = memory.reply(request, nth, 1);
            fired = memory.fired();
            ASSERT_TRUE(reply) << "allocation no. " << nth;
            ASSERT_FALSE(reply->is_discarded()) << "allocation no. " << nth;
        }
        EXPECT_GT(nth, 2) << "nothing failed";
    }
    EXPECT_EQ(result(memory.device(), "Keepalive")["process"], "app_gui");
}

TEST(Faults, AllocationsThatFailForSomeTimeDoNotEndTheProcess) {
    MemoryFaults memory;
    for (const std::string &request : kRequests) {
        SCOPED_TRACE(request);
        for (int nth = 1; nth == 1 || (memory.fired() && memory.device().running()); ++nth)
            memory.reply(request, nth, INT_MAX, vdevice::Milliseconds(20));
        EXPECT_EQ(result(memory.device(), "Keepalive")["process"], "app_gui");
    }
}

TEST(Faults, ASetThatMemoryFailsIsDoneOrNotDone) {
    MemoryFaults memory;
    const auto stored = [&memory] {
        return result(memory.device(), "GetWatermarkOSDParameter", {{"if_name", "HDMI1"}});
    };
    int values = 0;
    int refused = 0;
    for (int nth = 1; nth == 1 || memory.fired(); ++nth) {
        const json before = stored();
        const std::string value = "value no. " + std::to_string(++values);
        const auto reply = memory.reply(
            request("SetWatermarkOSDParameter",
                    {{"if_name", "HDMI1"},
                     {"records", {{{"contet", value}, {"text1", value}, {"font", values % 7}}}}}),
            nth, 1);
        ASSERT_TRUE(reply);
        json after = before;
        after[0]["contet"] = value;
        after[0]["text1"] = value;
        after[0]["font"] = values % 7;
        if (reply->contains("result")) {
            EXPECT_EQ(stored(), after);
            continue;
        }
        ++refused;
        EXPECT_EQ((*reply)["error"]["code"], -32603) << *reply;
        EXPECT_THAT(stored(), AnyOf(before, after));
    }
    EXPECT_GT(refused, 3);
}

TEST(Faults, AllocationsThatFailDuringStartUpEndItWithALineOrDoNotMatter) {
    int ended = 0;
    // There are thousands; each costs a start. The first three come before main().
    for (int nth = 4; nth < 20000; nth += 1 + nth / 4) {
        SCOPED_TRACE("allocation no. " + std::to_string(nth));
        faults::FaultFile faults;
        vdevice::DeviceOptions options = faultyDevice(faults);
        options.waitUntilServing = false;
        faults.arm({Call::kMalloc, nth, ENOMEM});
        vdevice::Device device;
        start(device, options);
        const bool serves = device.request(request("Keepalive", json::object())).has_value();
        if (!serves) {
            ++ended;
            EXPECT_FALSE(device.running());
            const int status = device.exitStatus();
            EXPECT_TRUE(status == 1 || status >= 256 - 8) << status;
            EXPECT_THAT(device.standardError(),
                        HasSubstr(status == 1 ? "out of memory" : "no memory"));
        }
        for (const std::string &file : kUserFiles) {
            EXPECT_EQ(fileText(device.configFolder() + "/app_parameters/" + file),
                      fileText(std::string(E2E_CONFIG) + "/default_parameters/" + file));
        }
    }
    EXPECT_GT(ended, 3);
}

#endif

// ---- start-up -----------------------------------------------------------------------------------

/** Calls of start-up: those on record files and those on the framebuffer. */
constexpr Failure kStartFailures[] = {
    {Call::kOpen, EMFILE, Told::kAlways}, {Call::kRead, EIO, Told::kAlways},
    {Call::kRead, EINTR, Told::kNever},   {Call::kRead, faults::kHalf, Told::kNever},
    {Call::kClose, EIO, Told::kNever},    {Call::kIoctl, EIO, Told::kAlways},
    {Call::kMmap, ENOMEM, Told::kAlways},
};

/** Starts a device whose nth call fails. False when start-up needs fewer such calls. */
bool starts(const Failure &failure, int nth) {
    faults::FaultFile faults;
    vdevice::DeviceOptions options = faultyDevice(faults);
    options.waitUntilServing = false;
    faults.arm({failure.call, nth, failure.error});
    vdevice::Device device;
    start(device, options);
    // Either it serves, or it has ended and says why.
    const bool serves = device.request(request("Keepalive", json::object())).has_value();
    const bool fired = faults.fired() > 0;
    SCOPED_TRACE("call " + std::to_string(static_cast<int>(failure.call)) + " no. " +
                 std::to_string(nth) + ", error " + std::to_string(failure.error) + "\n" +
                 device.standardOutput() + device.standardError());
    const std::string said = device.standardOutput() + device.standardError();
    if (!serves) {
        EXPECT_FALSE(device.running());
        const int status = device.exitStatus();
        EXPECT_TRUE(status == 0 || status >= 256 - 8) << status;  // its own, no signal
        EXPECT_THAT(device.standardOutput(),
                    AnyOf(HasSubstr("init_parameters fail -"), HasSubstr("/dev/fb1 invalid\n")));
    }
    if (failure.told == Told::kNever) {
        EXPECT_TRUE(serves);
        EXPECT_EQ(device.standardError(), "");
    } else if (fired && serves) {
        EXPECT_THAT(device.standardError(), HasSubstr(std::strerror(failure.error)));
    }
    for (const std::string &file : kUserFiles) {
        EXPECT_EQ(fileText(device.configFolder() + "/app_parameters/" + file),
                  fileText(std::string(E2E_CONFIG) + "/default_parameters/" + file))
            << file;
    }
    return fired;
}

TEST(Faults, DuringStartUpEndItWithItsCodeOrAreToldAndNoFileIsTouched) {
    for (const Failure &failure : kStartFailures) {
        int nth = 1;
        while (starts(failure, nth)) {
            ++nth;
        }
        EXPECT_GT(nth, 1) << "call " << static_cast<int>(failure.call) << " is not made";
    }
}

}  // namespace
