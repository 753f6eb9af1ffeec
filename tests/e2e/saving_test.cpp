// What is saved, when, and that a save survives a sudden end.

#include <sys/wait.h>

#include <csignal>
#include <random>

#include "device_test.h"

using namespace e2e;

namespace {

std::string userFile(vdevice::Device &device, const std::string &name) {
    return device.configFolder() + "/app_parameters/" + name;
}

struct SavedFamily {
    const char *set;
    json params;
    const char *file;  ///< null: the family is kept in memory only
};

const std::vector<SavedFamily> kFamilies = {
    {"SetWatermarkOSDParameter",
     {{"if_name", "HDMI2"}, {"records", {{{"contet", "saved"}}}}},
     "WatermarkOSDParameters.json"},
    {"SetWatermarkPictureParameter",
     {{"if_name", "HDMI1"}, {"records", {{{"file", "/tmp/none.png"}}}}},
     "WatermarkPictureParameters.json"},
    {"SetWatermarkDotmatrixParameter",
     {{"if_name", "HDMI1"}, {"records", {{{"text", "saved"}}}}},
     "WatermarkDotmatrixParameters.json"},
    {"SetVideoOutputOSDParameter",
     {{"Channel", 15},
      {"records", {{{"head", "saved"}}, json::object(), json::object(), json::object()}}},
     "VideoOutputOSDParameters.json"},
    {"SetVideoOutputDisplayParameter", {{"records", {{{"BorderWidth", 7}}}}}, nullptr},
    {"SetVideoOutputInterfaceParameter",
     {{"if_name", "HDMI1"}, {"records", {{{"ScreenSplitMode", "Mode5"}}}}},
     nullptr},
};

TEST(Saving, WritesTheFilesOfOsdAndWatermarksAndOfNothingElse) {
    vdevice::Device device;
    start(device, sampleDevice());
    std::vector<std::string> written;
    for (const SavedFamily &family : kFamilies) {
        EXPECT_EQ(result(device, family.set, family.params), 0) << family.set;
        if (!family.file) continue;
        const std::string text = fileText(userFile(device, family.file));
        EXPECT_THAT(text,
                    testing::AnyOf(testing::HasSubstr("saved"), testing::HasSubstr("none.png")))
            << family.file;
        written.push_back(text);
    }
    for (const char *file :
         {"VideoOutputDisplayParameters.json", "VideoOutputInterfaceParameters.json"}) {
        EXPECT_EQ(fileText(userFile(device, file)), "") << file;
    }
    // The same again changes nothing and writes nothing.
    const std::string path = userFile(device, "WatermarkOSDParameters.json");
    ASSERT_EQ(std::remove(path.c_str()), 0);
    EXPECT_EQ(result(device, kFamilies[0].set, kFamilies[0].params), 0);
    EXPECT_EQ(fileText(path), "");
}

TEST(Saving, IsThereAfterTheNextStart) {
    const auto parameters = [](const vdevice::RootPaths &paths) {
        return paths.config() + "/app_parameters/WatermarkOSDParameters.json";
    };
    std::string saved;
    {
        vdevice::Device device;
        start(device, sampleDevice());
        EXPECT_EQ(result(device, kFamilies[0].set, kFamilies[0].params), 0);
        saved = fileText(parameters(device.paths()));
    }
    vdevice::DeviceOptions options = sampleDevice();
    options.prepare = [&](const vdevice::RootPaths &paths) {
        std::FILE *file = std::fopen(parameters(paths).c_str(), "w");
        ASSERT_NE(file, nullptr) << parameters(paths);
        std::fputs(saved.c_str(), file);
        std::fclose(file);
    };
    vdevice::Device device;
    start(device, options);
    EXPECT_EQ(result(device, "GetWatermarkOSDParameter", {{"if_name", "HDMI2"}})[0]["contet"],
              "saved");
}

TEST(Saving, CutShortByAKillLeavesTheOldFileOrTheNewOne) {
    std::mt19937 random(7);
    for (int round = 0; round < 12; ++round) {
        vdevice::Device device;
        start(device, sampleDevice());
        const std::string path = userFile(device, "VideoOutputOSDParameters.json");
        const auto set = [&](const std::string &head) {
            json entries =
                json::array({{{"head", head}}, json::object(), json::object(), json::object()});
            return request("SetVideoOutputOSDParameter", {{"Channel", 0}, {"records", entries}});
        };
        ASSERT_TRUE(device.request(set("first")));
        // The kill comes while saves follow each other.
        const pid_t pid = device.pid();
        const auto delay = std::uniform_int_distribution<int>(0, 30000)(random);
        const pid_t killer = fork();
        ASSERT_GE(killer, 0);
        if (killer == 0) {
            usleep(static_cast<useconds_t>(delay));
            ::kill(pid, SIGKILL);
            _exit(0);
        }
        int saves = 0;
        while (device.request(set("save " + std::to_string(saves)), vdevice::Milliseconds(3000))) {
            ++saves;
        }
        waitpid(killer, nullptr, 0);
        const std::string text = fileText(path);
        const json entries = json::parse(text, nullptr, false);
        ASSERT_FALSE(entries.is_discarded()) << "round " << round << ": " << text;
        ASSERT_EQ(entries.size(), 64u);
        const std::string last = saves > 0 ? "save " + std::to_string(saves - 1) : "first";
        EXPECT_THAT(entries[0]["head"].get<std::string>(),
                    testing::AnyOf(last, "save " + std::to_string(saves)))
            << "round " << round;
    }
}

}  // namespace
