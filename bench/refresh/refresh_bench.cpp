// What a refresh of the screen costs, as a ratio to a plain memcpy of the frame in the same process
// and in turn with it: this project's platform plugin and Qt's stock framebuffer plugin beside each
// other.
//
//     refresh_bench             runs all cases, a process each, and prints the table
//     refresh_bench PLATFORM WIDTH HEIGHT    one case

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QPainter>
#include <QRegion>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "emulated_fb.h"
#include "window_server/qws_platform.h"
#include "window_server/qws_screen.h"

namespace {

constexpr int kRounds = 60;
constexpr int kWarmUp = 5;
constexpr int kBorder = 4;
constexpr char kOurs[] = "linuxfb_qws";
constexpr char kStock[] = "linuxfb";

/** The application's layer at its plainest: nine windows' borders on nothing. */
class Layer : public QWidget {
public:
    Layer() { setAttribute(Qt::WA_TranslucentBackground); }

    QVector<QRect> windows() const {
        QVector<QRect> rects;
        for (int i = 0; i < 9; ++i) {
            rects.append(
                QRect(i % 3 * width() / 3, i / 3 * height() / 3, width() / 3, height() / 3));
        }
        return rects;
    }

    QRegion borders() const {
        QRegion region;
        for (const QRect &rect : windows()) {
            region += QRegion(rect) - rect.adjusted(kBorder, kBorder, -kBorder, -kBorder);
        }
        return region;
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setPen(QPen(QColor(0, 160, 255), kBorder));
        for (const QRect &rect : windows()) {
            painter.drawRect(rect.adjusted(kBorder / 2, kBorder / 2, -kBorder / 2, -kBorder / 2));
        }
    }
};

double milliseconds(const std::function<void()> &work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

void prepare(const std::string &platform, const std::string &device) {
    if (platform == kOurs) {
        qputenv("QWS_DISPLAY", ("linuxFB:" + device).c_str());
        qputenv("QT_QPA_PLATFORM", kOurs);
    } else {
        qputenv("QT_QPA_PLATFORM", (platform + ":fb=" + device + ":nographicsmodeswitch").c_str());
    }
    qputenv("QT_QPA_FB_DISABLE_INPUT", "1");
    qputenv("XDG_RUNTIME_DIR", "/tmp/runtime-" + QByteArray::number(getuid()));
    qws::prepareEnvironment();
    qws::registerPlatform();
}

int measure(const std::string &platform, int width, int height) {
    const std::string device = bench::emulateFramebuffer(width, height);
    prepare(platform, device);
    int argc = 1;
    char name[] = "refresh_bench";
    char *argv[] = {name, nullptr};
    QApplication app(argc, argv);
    Layer layer;
    layer.showFullScreen();
    QCoreApplication::processEvents();

    const size_t bytes = static_cast<size_t>(width) * height * 4;
    const std::vector<char> frame(bytes, 1);
    const int file = ::open(device.c_str(), O_RDWR | O_CLOEXEC);
    void *mapped = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED) {
        std::perror("mmap");
        return 1;
    }
    const QRegion borders = layer.borders();
    std::vector<double> plain;
    std::vector<double> full;
    std::vector<double> part;
    for (int round = 0; round < kRounds + kWarmUp; ++round) {
        if (round == kWarmUp) {
            qws::Screen::resetCounters();
            plain.clear(), full.clear(), part.clear();
        }
        plain.push_back(milliseconds([&] { std::memcpy(mapped, frame.data(), bytes); }));
        full.push_back(milliseconds([&] {
            layer.repaint();
            QCoreApplication::sendPostedEvents();
        }));
        part.push_back(milliseconds([&] {
            layer.repaint(borders);
            QCoreApplication::sendPostedEvents();
        }));
    }
    const double copy = median(plain);
    std::printf(
        "%-12s %4dx%-4d  memcpy %6.3f ms  full refresh %6.3f ms = %5.2f  borders only %6.3f ms = "
        "%5.2f\n",
        platform.c_str(), width, height, copy, median(full), median(full) / copy, median(part),
        median(part) / copy);
    const qws::ScreenCounters counters = qws::Screen::counters();
    if (counters.updates != 0) {
        std::printf("%25s %llu updates, paint %.3f ms and copy %.3f ms each on average\n", "",
                    static_cast<unsigned long long>(counters.updates),
                    counters.paintNanoseconds / 1e6 / counters.updates,
                    counters.copyNanoseconds / 1e6 / counters.updates);
    }
    std::fflush(stdout);
    ::_exit(0);  // The stock plugin restores a console that it never had.
}

int runCase(const char *self, const char *platform, const char *width, const char *height) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(self, self, platform, width, height, nullptr);
        ::_exit(127);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 4) return measure(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
    const struct {
        const char *width;
        const char *height;
    } sizes[] = {{"1920", "1080"}, {"3840", "2160"}};
    int failures = 0;
    for (const auto &size : sizes) {
        for (const char *platform : {kOurs, kStock}) {
            failures += runCase("/proc/self/exe", platform, size.width, size.height) != 0;
        }
    }
    return failures == 0 ? 0 : 1;
}
