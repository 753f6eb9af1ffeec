// The real process in a virtual device, on the sample configuration.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <filesystem>
#include <string>
#include <vector>

#include "arrangement_query.h"
#include "device.h"
#include "tour.h"

namespace {

using namespace vdevice;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class RealDevice : public testing::Test {
protected:
    void SetUp() override {
        if (find_sandbox() == SandboxKind::kNone) GTEST_SKIP() << "no sandbox works here";
        options.program = APP_GUI;
        options.shim = FBEMU;
        options.config = CONFIG_FOLDER;
    }

    DeviceOptions options;
};

TEST_F(RealDevice, FindsNothingToRepairInTheSampleConfiguration) {
    Device device;
    std::string error;
    ASSERT_TRUE(device.start(options, &error)) << error;
    EXPECT_THAT(device.standardError(), Not(HasSubstr("invalid")));
    EXPECT_TRUE(std::filesystem::is_empty(device.configFolder() + "/app_parameters"));
}

TEST_F(RealDevice, RepairsWhatIsBroken) {
    options.prepare = [](const RootPaths &paths) {
        std::filesystem::remove(paths.config() + "/default_parameters/WatermarkOSDParameters.json");
    };
    Device device;
    std::string error;
    ASSERT_TRUE(device.start(options, &error)) << error;
    EXPECT_THAT(device.standardError(), HasSubstr("intf=HDMI1 invalid"));
    EXPECT_TRUE(std::filesystem::exists(device.configFolder() +
                                        "/app_parameters/WatermarkOSDParameters.json"));
}

TEST_F(RealDevice, TellsItsArrangement) {
    Device device;
    std::string error;
    ASSERT_TRUE(device.start(options, &error)) << error;
    const auto arrangement = query_arrangement(
        [&device](const std::string &message) { return device.request(message); });
    ASSERT_TRUE(arrangement.has_value());
    EXPECT_EQ(arrangement->mode, 4u);
}

TEST_F(RealDevice, WalksTheTourWithoutFaults) {
    const std::string folder = testing::TempDir() + "vdevice_tour";
    std::filesystem::remove_all(folder);
    std::vector<std::string> faults;
    const int count = walk_tour(options, folder, [&faults](const std::string &line) {
        if (line.rfind("fault", 0) == 0) faults.push_back(line);
    });
    EXPECT_EQ(count, 0);
    EXPECT_THAT(faults, IsEmpty());
    size_t pictures = 0;
    for (const TourPart &part : tour_parts()) {
        for (const TourStep &step : part.steps)
            pictures += size_t(step.pictures);
    }
    using Files = std::filesystem::directory_iterator;
    EXPECT_EQ(size_t(std::distance(Files(folder), Files())), pictures);
    EXPECT_EQ(QImage(QString::fromStdString(folder + "/01-mode9.png")).size(), QSize(1920, 1080));
    std::filesystem::remove_all(folder);
}

}  // namespace
