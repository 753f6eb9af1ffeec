// What the layer looks like, against stored pictures: see tests/golden/README.md.
//
//     e2e_golden_test --update      stores what the layer looks like now

#include <QPainter>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ostream>

#include "device_test.h"

using namespace e2e;

namespace {

constexpr QSize kSmall(960, 540);
/// User layouts are laid out on this canvas, whatever the screen is.
constexpr QSize kFullHd(1920, 1080);

/// A picture that may differ from the stored one by this much is the same: versions of the font
/// rasteriser place the edges of characters a little differently.
constexpr int kLargestDifference = 8;
constexpr double kDifferingShare = 0.001;

constexpr char kPictureFile[] = "picture.png";

bool updating = false;

struct Command {
    const char *method;
    json params;
};

struct Screen {
    const char *name;  ///< of the stored picture
    QSize size;        ///< of the framebuffer
    std::vector<Command> commands;
};

/** For the messages of GoogleTest. */
void PrintTo(const Screen &screen, std::ostream *out) {
    *out << screen.name;
}

Command layout(const char *mode, int userLayout) {
    return {"SetVideoOutputInterfaceParameter",
            {{"if_name", "HDMI1"},
             {"records", {{{"ScreenSplitMode", mode}, {"UserSplitIndex", userLayout}}}}}};
}

Command borders(int width) {
    return {"SetVideoOutputDisplayParameter",
            {{"records",
              {{{"BorderWidth", width},
                {"VideoBorderColor", "#20C0FF"},
                {"AudioBorderColor", "#FF8000"}}}}}};
}

/** The window's second entry, a text of 24 points at (256, 256) units from `corner`. */
Command text(int window, int corner, json entry) {
    entry.update({{"visible", 1}, {"font", 7}, {"size", 24}});
    entry.update({{"corner", corner}, {"x", 256}, {"y", 256}});
    const json others = json::object();
    return {"SetVideoOutputOSDParameter",
            {{"Channel", window}, {"records", {others, entry, others, others}}}};
}

std::vector<Screen> screens() {
    const json outlined = {{"stroke", 1}, {"backcolor", "#A00020"}, {"backalpha", 255}};
    const json boxed = {{"stroke", 0}, {"backcolor", "#004080"}, {"backalpha", 160}};
    const auto with = [](json style, const json &content) {
        style.update(content);
        return style;
    };
    const json latin = {
        {"head", "Entrance hall"}, {"content", "Camera 01, upper floor"}, {"tail", "Jäger & Søn"}};
    const json chinese = {{"head", "会议室"}, {"content", "主会场 第二层"}, {"tail", "直播 live"}};
    return {
        {"osd_texts",
         kSmall,
         {borders(2), layout("Mode4", -1), text(0, 0, with(outlined, latin)),
          text(1, 1, with(outlined, chinese)),
          text(2, 2, with(boxed, with(latin, {{"bold", 1}, {"forecolor", "#FFD200"}}))),
          text(3, 3, with(boxed, chinese))}},
        {"watermark_text",
         kSmall,
         {borders(0),
          layout("Mode1", -1),
          {"SetWatermarkOSDParameter",
           {{"if_name", "HDMI1"},
            {"records",
             {{{"visible", 1},
               {"font", 7},
               {"size", 24},
               {"stroke", 1},
               {"forecolor", "#FFFFFF"},
               {"forealpha", 200},
               {"backcolor", "#203040"},
               {"backalpha", 160},
               {"x", 512},
               {"y", 512},
               {"contet", "内部资料 Internal"},
               {"angle", 30},
               {"arrangement_mode", 3}}}}}}}},
        {"watermark_picture",
         kSmall,
         {borders(0),
          layout("Mode1", -1),
          {"SetWatermarkPictureParameter",
           {{"if_name", "HDMI1"},
            {"records",
             {{{"visible", 1},
               {"file", std::string("/tmp/") + kPictureFile},
               {"alpha", 128},
               {"sizemode", 1},
               {"arramode", 1}}}}}}}},
        {"user_layout",
         kFullHd,
         {borders(6),
          {"SetVideoOutputScreenSplitParameter",
           {{"if_name", "HDMI1"},
            {"records",
             {{{"WindowNum", 4},
               {"SplitString",
                "0,0,4096,8192,0;4096,0,4096,4096,0;4096,4096,4096,4096,0;"
                "2731,2731,2731,2731,1"}},
              json::object(),
              json::object(),
              json::object()}}}},
          layout("Mode1", 0),
          {"SetAudioOutSourceChange", {{"records", {{{"Channel", 0}, {"index", 3}, {"type", 2}}}}}},
          text(3, 0, with(boxed, {{"content", "Window 4"}}))}},
    };
}

/** A picture without text: a ring and a bar, partly transparent. */
void writePicture(const vdevice::RootPaths &paths) {
    QImage picture(100, 60, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setPen(QPen(QColor(255, 255, 255), 6));
    painter.drawEllipse(10, 10, 40, 40);
    painter.fillRect(60, 20, 30, 20, QColor(32, 192, 255, 128));
    painter.end();
    EXPECT_TRUE(picture.save(QString::fromStdString(paths.tmp() + "/" + kPictureFile)));
}

vdevice::DeviceOptions goldenDevice(const QSize &size) {
    vdevice::DeviceOptions options = sampleDevice();
    options.framebuffer.width = static_cast<uint32_t>(size.width());
    options.framebuffer.height = static_cast<uint32_t>(size.height());
    options.fonts = {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                     "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
                     "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf"};
    options.prepare = writePicture;
    return options;
}

/** The largest difference of two pixels' channels; a pixel counts as it looks, premultiplied. */
int difference(QRgb a, QRgb b) {
    const QRgb p = qPremultiply(a);
    const QRgb q = qPremultiply(b);
    return std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                     std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
}

/** Red where the two differ too much, over a faint image of `seen`. */
QImage differencePicture(const QImage &seen, const QImage &stored, int *differing) {
    QImage picture(seen.size(), QImage::Format_RGB32);
    *differing = 0;
    for (int y = 0; y < seen.height(); ++y) {
        for (int x = 0; x < seen.width(); ++x) {
            const int faint = qAlpha(seen.pixel(x, y)) / 3;
            const bool differs =
                difference(seen.pixel(x, y), stored.pixel(x, y)) > kLargestDifference;
            *differing += differs ? 1 : 0;
            picture.setPixel(x, y, differs ? qRgb(255, 0, 0) : qRgb(faint, faint, faint));
        }
    }
    return picture;
}

bool isSame(const QImage &seen, const QImage &stored) {
    if (seen.size() != stored.size()) return false;
    int differing = 0;
    differencePicture(seen, stored, &differing);
    return differing <= kDifferingShare * seen.width() * seen.height();
}

QString storedFile(const char *name) {
    return QStringLiteral(E2E_GOLDEN "/%1.png").arg(QLatin1String(name));
}

/** Leaves what was seen and where it differs beside the test, for a look at them. */
void saveFailure(const char *name, const QImage &seen, const QImage &stored) {
    const QString seenFile = QStringLiteral("golden_%1_seen.png").arg(QLatin1String(name));
    const QString differenceFile =
        QStringLiteral("golden_%1_difference.png").arg(QLatin1String(name));
    seen.save(seenFile);
    if (seen.size() != stored.size()) {
        ADD_FAILURE() << name << ": the layer is " << seen.width() << " x " << seen.height()
                      << ", the stored picture " << stored.width() << " x " << stored.height();
        return;
    }
    int differing = 0;
    differencePicture(seen, stored, &differing).save(differenceFile);
    ADD_FAILURE() << name << ": " << differing << " pixels differ; see " << seenFile.toStdString()
                  << " and " << differenceFile.toStdString();
}

class Golden : public testing::TestWithParam<Screen> {};

TEST_P(Golden, TheLayerLooksLikeTheStoredPicture) {
    const Screen &screen = GetParam();
    vdevice::Device device;
    start(device, goldenDevice(screen.size));
    if (HasFatalFailure()) return;
    for (const Command &command : screen.commands) {
        EXPECT_EQ(result(device, command.method, command.params), 0) << command.method;
    }
    if (updating) {
        const QImage layer = device.settledLayer(vdevice::Milliseconds(1000));
        EXPECT_TRUE(layer.save(storedFile(screen.name)));
        return;
    }
    const QImage stored(storedFile(screen.name));
    ASSERT_FALSE(stored.isNull()) << storedFile(screen.name).toStdString();
    QImage seen;
    const auto same = [&](const QImage &layer) { return isSame(layer, stored); };
    if (!device.waitForPixels(same, vdevice::Milliseconds(5000), &seen)) {
        saveFailure(screen.name, seen, stored);
    }
}

INSTANTIATE_TEST_SUITE_P(Screens, Golden, testing::ValuesIn(screens()),
                         [](const auto &info) { return std::string(info.param.name); });

// ---- the comparison itself

QImage greyPicture(int pixels, int grey) {
    QImage picture(kSmall, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    for (int i = 0; i < pixels; ++i)
        picture.setPixel(i % kSmall.width(), i / kSmall.width(), qRgba(grey, grey, grey, 255));
    return picture;
}

TEST(GoldenComparison, TakesSmallDifferencesAnywhereAndLargeOnesInFewPixels) {
    const int few = static_cast<int>(kDifferingShare * kSmall.width() * kSmall.height());
    const QImage stored = greyPicture(10000, 100);
    EXPECT_TRUE(isSame(stored, stored));
    EXPECT_TRUE(isSame(greyPicture(10000, 100 + kLargestDifference), stored));
    EXPECT_FALSE(isSame(greyPicture(10000, 101 + kLargestDifference), stored));
    EXPECT_TRUE(isSame(greyPicture(10000 + few, 100), stored));
    EXPECT_FALSE(isSame(greyPicture(10001 + few, 100), stored));
    EXPECT_FALSE(isSame(QImage(10, 10, QImage::Format_ARGB32), stored));
}

}  // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    updating = argc > 1 && std::strcmp(argv[1], "--update") == 0;
    return RUN_ALL_TESTS();
}
