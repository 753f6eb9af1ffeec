// Borders of the windows: from a command on the socket to pixels on the framebuffer.

#include <QPainter>

#include "device_test.h"

using namespace e2e;

namespace {

const QColor kVideo("#20C0FF");
const QColor kAudio("#FF8000");

struct Layout {
    const char *mode;
    std::vector<QRect> windows;
};

/** Windows of a grid of equal cells, row by row. */
std::vector<QRect> grid(int columns, int rows) {
    std::vector<QRect> cells;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const int width = 1920 / columns;
            const int height = 1080 / rows;
            cells.emplace_back(column * width, row * height, width, height & ~1);
        }
    }
    return cells;
}

class Borders : public SharedDevice {
protected:
    static void showMode(const std::string &mode) {
        EXPECT_EQ(result(*device, "SetVideoOutputInterfaceParameter",
                         {{"if_name", "HDMI1"},
                          {"records", {{{"ScreenSplitMode", mode}, {"UserSplitIndex", -1}}}}}),
                  0);
    }

    static void setBorders(int width, const QColor &video = kVideo, const QColor &audio = kAudio) {
        EXPECT_EQ(result(*device, "SetVideoOutputDisplayParameter",
                         {{"records",
                           {{{"BorderWidth", width},
                             {"VideoBorderColor", video.name().toUpper().toStdString()},
                             {"AudioBorderColor", audio.name().toUpper().toStdString()}}}}}),
                  0);
    }

    /** Selects a window by the audio source that selects a window directly. */
    static void selectAudio(int window) {
        EXPECT_EQ(result(*device, "SetAudioOutSourceChange",
                         {{"records", {{{"Channel", 0}, {"index", window}, {"type", 2}}}}}),
                  0);
    }

    static QImage expected(const std::vector<QRect> &windows, int width, int audio) {
        QImage layer = emptyLayer();
        for (size_t i = 0; i < windows.size(); ++i) {
            drawBorder(layer, windows[i], width, static_cast<int>(i) == audio ? kAudio : kVideo);
        }
        return layer;
    }
};

TEST_F(Borders, AreDrawnForEveryWidthInTheAudioColourWhereTheAudioWindowIs) {
    const Layout layouts[] = {
        {"Mode1", grid(1, 1)},  {"Mode4", grid(2, 2)},   {"Mode9", grid(3, 3)},
        {"Mode16", grid(4, 4)}, {"Mode6_4", grid(3, 2)},
    };
    for (const Layout &layout : layouts) {
        showMode(layout.mode);
        for (int width = 0; width <= 5; ++width) {
            const int audio = width % static_cast<int>(layout.windows.size() + 1) - 1;
            setBorders(width);
            selectAudio(audio);
            EXPECT_TRUE(shows(*device, expected(layout.windows, width, audio)))
                << layout.mode << ", width " << width << ", audio " << audio;
        }
    }
}

TEST_F(Borders, FollowAnEventOfTheCodecThatMovesTheAudio) {
    showMode("Mode4");
    setBorders(4);
    // Video input 3 is heard; the window that shows it takes the audio colour.
    EXPECT_EQ(result(*device, "SetAudioOutSourceChange",
                     {{"records", {{{"Channel", 0}, {"index", 3}, {"type", 0}}}}}),
              0);
    ASSERT_TRUE(device->publishCodec(notification(
        "SetVideoOutSourceChange", {{"records", {{{"Channel", 2}, {"index", 3}, {"type", 0}}}}})));
    EXPECT_TRUE(shows(*device, expected(grid(2, 2), 4, 2)));
    ASSERT_TRUE(device->publishCodec(notification(
        "SetVideoOutSourceChange", {{"records", {{{"Channel", 2}, {"index", 5}, {"type", 0}}}}})));
    EXPECT_TRUE(shows(*device, expected(grid(2, 2), 4, -1)));
}

TEST_F(Borders, OfAUserLayoutFollowItsSplitString) {
    // Two halves, and a window over both.
    json layouts = result(*device, "GetVideoOutputScreenSplitParameter", {{"if_name", "HDMI1"}});
    ASSERT_EQ(layouts.size(), 4u);
    layouts[1]["WindowNum"] = 3;
    layouts[1]["SplitString"] = "0,0,4096,8192,0;4096,0,4096,8192,0;2048,2048,4096,4096,1";
    setBorders(2);
    selectAudio(2);
    EXPECT_EQ(result(*device, "SetVideoOutputScreenSplitParameter",
                     {{"if_name", "HDMI1"}, {"records", layouts}}),
              0);
    EXPECT_EQ(result(*device, "SetVideoOutputInterfaceParameter",
                     {{"if_name", "HDMI1"}, {"records", {{{"UserSplitIndex", 1}}}}}),
              0);
    // Edges as lines; where a window covers one, it ends a pixel before it. The right window covers
    // the left one's right edge, which it shares.
    struct Line {
        QLineF line;
        QColor color;
    };
    const std::vector<Line> lines = {
        {{0, 0, 959, 0}, kVideo},        {{0, 0, 0, 1080}, kVideo},
        {{0, 1080, 959, 1080}, kVideo},  {{960, 0, 1920, 0}, kVideo},
        {{1920, 0, 1920, 1080}, kVideo}, {{960, 0, 960, 269}, kVideo},
        {{960, 811, 960, 1080}, kVideo}, {{960, 1080, 1920, 1080}, kVideo},
        {{480, 270, 1440, 270}, kAudio}, {{1440, 270, 1440, 810}, kAudio},
        {{480, 270, 480, 810}, kAudio},  {{480, 810, 1440, 810}, kAudio},
    };
    QImage layer = emptyLayer();
    QPainter painter(&layer);
    for (const Line &line : lines) {
        painter.setPen(QPen(line.color, 2));
        painter.drawLine(line.line);
    }
    painter.end();
    EXPECT_TRUE(shows(*device, layer));
}

TEST(BordersOnOtherScreens, FillTheScreenThatTheDriverReports) {
    struct Screen {
        uint32_t width, height, padding;
    };
    for (const Screen &screen :
         {Screen{1280, 720, 0}, Screen{1366, 768, 40}, Screen{3840, 2160, 0}}) {
        vdevice::Device device;
        vdevice::DeviceOptions options = sampleDevice();
        options.framebuffer.width = screen.width;
        options.framebuffer.height = screen.height;
        options.framebuffer.padding = screen.padding;
        start(device, options);
        EXPECT_EQ(result(device, "SetVideoOutputInterfaceParameter",
                         {{"if_name", "HDMI1"},
                          {"records", {{{"ScreenSplitMode", "Mode1"}, {"UserSplitIndex", -1}}}}}),
                  0);
        EXPECT_EQ(result(device, "SetVideoOutputDisplayParameter",
                         {{"records",
                           {{{"BorderWidth", 3},
                             {"VideoBorderColor", "#20C0FF"},
                             {"AudioBorderColor", "#20C0FF"}}}}}),
                  0);
        const int width = static_cast<int>(screen.width);
        const int height = static_cast<int>(screen.height);
        QImage layer = emptyLayer(width, height);
        drawBorder(layer, {0, 0, width, height}, 3, kVideo);
        EXPECT_TRUE(shows(device, layer)) << width << " x " << height;
    }
}

}  // namespace
