// What the display's overlays cost the processor, one case a process:
//
//     overlays_bench CASE FONT_FOLDER [PICTURE]
//
// prints the case's figure; with PICTURE it also writes what is on the screen then as a PNG file.
// compare.sh runs the cases in turn with another program's and judges them.

#include <fcntl.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <QEventLoop>
#include <QImage>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "emulated_fb.h"
#include "encoderapp.h"
#include "overlay_scene.h"
#include "window_server/qws_platform.h"
#include "window_server/qws_screen.h"

namespace {

using bench::OverlayScene;
using bench::TextStyle;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr size_t kFrameBytes = size_t{kWidth} * kHeight * 4;
constexpr int kSteps = 200;
constexpr int kSpareSteps = 10;
constexpr int kIdleSeconds = 5;
constexpr double kNothingShown = -1;

double cpuMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

double costOf(const std::function<void()> &work) {
    const double before = cpuMilliseconds();
    work();
    return cpuMilliseconds() - before;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

/** Paints what is due and copies it to the screen. False when nothing was due. */
bool bringToScreen() {
    const uint64_t before = qws::Screen::counters().updates;
    QCoreApplication::sendPostedEvents();
    return qws::Screen::counters().updates != before;
}

/** Milliseconds that `change` and its way to the screen take; the median. */
double costPerStep(const std::function<void()> &change) {
    std::vector<double> costs;
    for (int i = 0; i < kSteps + kSpareSteps; ++i) {
        ::usleep(1100);  // the clocks show milliseconds
        bool shown = false;
        const double cost = costOf([&] {
            change();
            shown = bringToScreen();
        });
        if (shown) costs.push_back(cost);
    }
    // A scrolling text stands still for a step where it turns.
    return costs.size() < kSteps ? kNothingShown : median(costs);
}

/** The frame as another process would see it. */
class Frame {
public:
    explicit Frame(const std::string &device)
        : mFile(::open(device.c_str(), O_RDWR | O_CLOEXEC)),
          mPixels(::mmap(nullptr, kFrameBytes, PROT_READ | PROT_WRITE, MAP_SHARED, mFile, 0)) {}

    bool ok() const { return mPixels != MAP_FAILED; }
    bool save(const char *file) const {
        return QImage(static_cast<const uchar *>(mPixels), kWidth, kHeight, QImage::Format_ARGB32)
            .save(file, "PNG");
    }

private:
    int mFile;
    void *mPixels;
};

/** The cost of `change` as a ratio to a plain copy of a frame in turn with it. The copy leaves the
 * screen alone, as whatever else a device does between two changes. */
double ratioToCopy(const std::function<void()> &change) {
    const std::vector<char> content(kFrameBytes, 1);
    std::vector<char> place(kFrameBytes);
    std::vector<double> changes;
    std::vector<double> copies;
    for (int i = 0; i < kSteps; ++i) {
        ::usleep(1100);
        const double copy = costOf([&] { std::memcpy(place.data(), content.data(), kFrameBytes); });
        bool shown = false;
        const double cost = costOf([&] {
            change();
            shown = bringToScreen();
        });
        if (!shown) return kNothingShown;
        copies.push_back(copy);
        changes.push_back(cost);
    }
    return median(changes) / median(copies);
}

double idleCostPerSecond() {
    // A loop of its own: what ends with the application is none of an idle second's.
    QEventLoop loop;
    QTimer::singleShot(kIdleSeconds * 1000, &loop, &QEventLoop::quit);
    return costOf([&loop] { loop.exec(); }) / kIdleSeconds;
}

template <TextStyle kStyle>
double tickCost(OverlayScene &scene) {
    scene.showClocks(bench::kTextsPerWindow, kStyle);
    bringToScreen();
    return costPerStep([&] { scene.tick(); });
}

double scrollCost(OverlayScene &scene) {
    scene.showWatermark();
    bringToScreen();
    return costPerStep([&] { scene.tick(); });
}

double refreshRatio(OverlayScene &scene) {
    scene.showBorders();
    scene.showFixedTexts(1, TextStyle::kPlain);
    bringToScreen();
    return ratioToCopy([] { MainWindow::instance()->update(); });
}

double changeRatio(OverlayScene &scene) {
    scene.showBorders();
    scene.showFixedTexts(1, TextStyle::kPlain);
    bringToScreen();
    const QRegion content = scene.content();
    return ratioToCopy([&] { MainWindow::instance()->update(content); });
}

template <TextStyle kStyle>
double idleCost(OverlayScene &scene) {
    scene.showFixedTexts(bench::kTextsPerWindow, kStyle);
    bringToScreen();
    return idleCostPerSecond();
}

struct Case {
    const char *name;
    double (*run)(OverlayScene &);
    const char *unit;
};

constexpr Case kCases[] = {
    {"tick_plain", tickCost<TextStyle::kPlain>, "ms of 64 clocks' tick"},
    {"tick_box", tickCost<TextStyle::kBox>, "ms of 64 clocks' tick"},
    {"tick_outline", tickCost<TextStyle::kOutline>, "ms of 64 clocks' tick"},
    {"scroll", scrollCost, "ms of a scroll step of 16 turned texts"},
    {"refresh", refreshRatio, "copies of the frame: 16 borders and 16 texts painted anew"},
    {"change", changeRatio,
     "copies of the frame: the places of 16 borders and 16 texts painted anew"},
    {"idle_plain", idleCost<TextStyle::kPlain>, "ms a second with 64 fixed texts"},
    {"idle_outline", idleCost<TextStyle::kOutline>, "ms a second with 64 fixed texts"},
};

int run(const Case &chosen, const char *fonts, const char *picture) {
    const std::string device = bench::emulateFramebuffer(kWidth, kHeight);
    qputenv("QWS_DISPLAY", ("linuxFB:" + device).c_str());
    qputenv("QT_QPA_PLATFORM", "linuxfb_qws");
    qputenv("QT_QWS_FONTDIR", fonts);
    qws::prepareEnvironment();
    qws::registerPlatform();
    int argc = 1;
    char name[] = "overlays_bench";
    char *argv[] = {name, nullptr};
    EncoderApp app(argc, argv, LANGUAGE_SOURCE);
    init_split();
    init_split_info();
    MainWindow::instance()->showFullScreen();
    QCoreApplication::processEvents();
    Frame frame(device);
    if (!frame.ok()) {
        std::perror("framebuffer");
        return 1;
    }
    OverlayScene scene(*MainWindow::instance());
    const double figure = chosen.run(scene);
    if (figure == kNothingShown) {
        std::fprintf(stderr, "%s: a step did not reach the screen\n", chosen.name);
        return 1;
    }
    std::printf("%.4f %s\n", figure, chosen.unit);
    return picture == nullptr || frame.save(picture) ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 3 || argc == 4) {
        for (const Case &row : kCases) {
            if (std::strcmp(row.name, argv[1]) == 0) {
                return run(row, argv[2], argc == 4 ? argv[3] : nullptr);
            }
        }
    }
    std::fprintf(stderr, "overlays_bench CASE FONT_FOLDER [PICTURE], CASE one of\n");
    for (const Case &row : kCases)
        std::fprintf(stderr, "  %-13s %s\n", row.name, row.unit);
    return 2;
}
