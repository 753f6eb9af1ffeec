// Windows' places, test cards, and the layer over them.

#include <gtest/gtest.h>

#include <QImage>
#include <map>

#include "arrangement_query.h"
#include "composition.h"

namespace {

using namespace vdevice;

constexpr QSize kScreen(1920, 1080);

TEST(VideoWindows, LieWhereTheSplitModeSays) {
    Arrangement arrangement;
    arrangement.mode = 9;
    const auto windows = video_windows(arrangement, kScreen);
    ASSERT_EQ(windows.size(), 9u);
    EXPECT_EQ(windows[4].rect, QRect(640, 360, 640, 360));
    EXPECT_EQ(windows[8].rect, QRect(1280, 720, 640, 360));
}

TEST(VideoWindows, FollowTheScreensSize) {
    Arrangement arrangement;
    arrangement.mode = 4;
    const auto windows = video_windows(arrangement, QSize(3840, 2160));
    ASSERT_EQ(windows.size(), 4u);
    EXPECT_EQ(windows[3].rect, QRect(1920, 1080, 1920, 1080));
}

TEST(VideoWindows, OfAUserLayoutComeFromItsText) {
    Arrangement arrangement;
    arrangement.mode = 27;
    arrangement.userWindows = 2;
    arrangement.userText = "0,0,8192,8192,0;2048,2048,4096,4096,3";
    const auto windows = video_windows(arrangement, kScreen);
    ASSERT_EQ(windows.size(), 2u);
    EXPECT_EQ(windows[0].rect, QRect(0, 0, 1920, 1080));
    EXPECT_EQ(windows[1].rect, QRect(480, 270, 960, 540));
    EXPECT_EQ(windows[1].layer, 3);
}

TEST(VideoWindows, AreNoMoreThanSixteenAndNoneForANegativeCount) {
    Arrangement arrangement;
    arrangement.mode = 26;
    for (const auto &[asked, got] : {std::pair(1000000, 16), {16, 16}, {0, 0}, {-5, 0}}) {
        arrangement.userWindows = asked;
        EXPECT_EQ(video_windows(arrangement, kScreen).size(), size_t(got));
    }
}

TEST(TestVideo, ShowsEachWindowsOwnCard) {
    Arrangement arrangement;
    arrangement.mode = 4;
    const QImage video = test_video(arrangement, kScreen);
    for (int i = 0; i < 4; ++i) {
        const QRect place(960 * (i % 2), 540 * (i / 2), 960, 540);
        EXPECT_EQ(video.copy(place), test_card(QSize(960, 540), i + 1)) << i;
    }
    EXPECT_NE(test_card(QSize(960, 540), 1), test_card(QSize(960, 540), 2));
}

TEST(TestVideo, PutsTheHigherLayerOnTopWhateverTheOrder) {
    Arrangement arrangement;
    arrangement.mode = 26;
    arrangement.userWindows = 2;
    arrangement.userText = "2048,2048,4096,4096,1;0,0,8192,8192,0";
    const QImage video = test_video(arrangement, kScreen);
    EXPECT_EQ(video.copy(480, 270, 960, 540), test_card(QSize(960, 540), 1));
}

TEST(TestVideo, ShowsTheBackgroundWhereNoWindowIs) {
    Arrangement arrangement;
    arrangement.mode = 15;
    arrangement.background = QColor(1, 2, 3);
    const QImage video = test_video(arrangement, kScreen);
    EXPECT_EQ(video.pixel(1440, 810), qRgb(1, 2, 3));
    EXPECT_EQ(video.pixel(1919, 1079), qRgb(1, 2, 3));
}

TEST(Composition, BlendsStraightAlpha) {
    QImage video(4, 1, QImage::Format_RGB32);
    video.fill(qRgb(100, 200, 0));
    QImage layer(4, 1, QImage::Format_ARGB32);
    layer.setPixel(0, 0, qRgba(0, 0, 0, 0));
    layer.setPixel(1, 0, qRgba(10, 20, 30, 255));
    layer.setPixel(2, 0, qRgba(200, 0, 255, 51));   // a fifth
    layer.setPixel(3, 0, qRgba(255, 255, 255, 0));  // colour without alpha
    const QImage picture = compose(video, layer);
    EXPECT_EQ(picture.pixel(0, 0), qRgb(100, 200, 0));
    EXPECT_EQ(picture.pixel(1, 0), qRgb(10, 20, 30));
    EXPECT_NEAR(qRed(picture.pixel(2, 0)), 120, 1);
    EXPECT_NEAR(qGreen(picture.pixel(2, 0)), 160, 1);
    EXPECT_NEAR(qBlue(picture.pixel(2, 0)), 51, 1);
    EXPECT_EQ(picture.pixel(3, 0), qRgb(100, 200, 0));
}

/** Answers Get commands with fixed results. */
class FakeDevice {
public:
    std::map<std::string, std::string> results;

    Requester requester() {
        return [this](const std::string &message) -> std::optional<std::string> {
            for (const auto &[method, result] : results) {
                if (message.find("\"" + method + "\"") == std::string::npos) continue;
                return "{\"jsonrpc\":\"2.0\",\"id\":1,\"result\":" + result + "}";
            }
            return std::nullopt;
        };
    }
};

constexpr char kInterfaces[] = "GetVideoOutputInterfaceParameter";
constexpr char kLayouts[] = "GetVideoOutputScreenSplitParameter";
constexpr char kDisplay[] = "GetVideoOutputDisplayParameter";

TEST(ArrangementQuery, ReadsANamedMode) {
    FakeDevice device;
    device.results = {
        {kInterfaces, R"([{"if_name":"HDMI1","ScreenSplitMode":"Mode6_4","UserSplitIndex":-1}])"},
        {kDisplay, R"([{"BackgroundColor":"#102030"}])"}};
    const auto arrangement = query_arrangement(device.requester());
    ASSERT_TRUE(arrangement.has_value());
    EXPECT_EQ(arrangement->mode, 25u);
    EXPECT_EQ(arrangement->background, QColor(0x10, 0x20, 0x30));
}

TEST(ArrangementQuery, ReadsAUserLayout) {
    FakeDevice device;
    device.results = {
        {kInterfaces, R"([{"if_name":"HDMI1","ScreenSplitMode":"Mode4","UserSplitIndex":1}])"},
        {kLayouts, R"([{"WindowNum":1,"SplitString":"a"},{"WindowNum":3,"SplitString":"b"}])"}};
    const auto arrangement = query_arrangement(device.requester());
    ASSERT_TRUE(arrangement.has_value());
    EXPECT_EQ(arrangement->mode, 27u);
    EXPECT_EQ(arrangement->userWindows, 3);
    EXPECT_EQ(arrangement->userText, "b");
}

TEST(ArrangementQuery, FallsBackToTheNamedModeWithoutSuchALayout) {
    FakeDevice device;
    device.results = {
        {kInterfaces, R"([{"if_name":"HDMI1","ScreenSplitMode":"Mode4","UserSplitIndex":4}])"},
        {kLayouts, R"([{},{},{},{}])"}};
    EXPECT_EQ(query_arrangement(device.requester())->mode, 4u);
}

TEST(ArrangementQuery, GivesNothingForADeviceThatDoesNotTell) {
    for (const char *result : {"[]", "0", "null", "{"}) {
        FakeDevice device;
        device.results = {{kInterfaces, result}};
        EXPECT_FALSE(query_arrangement(device.requester()).has_value()) << result;
    }
    EXPECT_FALSE(query_arrangement(FakeDevice().requester()).has_value());
}

TEST(RpcError, TellsErrorsFromResults) {
    EXPECT_EQ(rpc_error(R"({"jsonrpc":"2.0","id":1,"result":0})"), "");
    EXPECT_EQ(rpc_error(R"({"jsonrpc":"2.0","id":1,"error":{"code":-2}})"), R"({"code":-2})");
    EXPECT_EQ(rpc_error(std::nullopt), "no reply");
    EXPECT_EQ(rpc_error("oops"), "not JSON: oops");
}

}  // namespace
