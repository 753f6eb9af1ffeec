// A device under random traffic for as long as one likes: what it answers, how fast, and whether it
// grows. Starts a virtual device of its own. Ends with 1 when the device dies or leaves a request
// unanswered.

#include <CLI/CLI.hpp>
#include <QImage>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "device.h"
#include "device_files.h"
#include "process_figures.h"
#include "traffic.h"

namespace {

using vdevice::Clock;
using vdevice::Milliseconds;

struct Options {
    int seconds = 60;
    int rate = 500;
    unsigned seed = 1;
};

struct Totals {
    long requests = 0, refused = 0, unanswered = 0, events = 0, surveys = 0;
    bool crashed = false;
    std::vector<float> latency_us;
    std::vector<soak::ProcessFigures> samples;
};

constexpr const char *kPictures[] = {"/tmp/logo.png", "/tmp/photo.jpg", "/tmp/damaged.png",
                                     "/tmp/none.png", ""};

void write_picture(const QImage &image, const std::string &path) {
    if (!image.save(QString::fromStdString(path))) throw std::runtime_error(path);
}

/** The files of kPictures, as far as they are to be there. */
void make_pictures(const vdevice::RootPaths &paths) {
    QImage logo(120, 80, QImage::Format_ARGB32);
    logo.fill(QColor(255, 128, 0, 160));
    write_picture(logo, paths.root + "/tmp/logo.png");
    QImage photo(640, 360, QImage::Format_RGB32);
    photo.fill(Qt::darkCyan);
    write_picture(photo, paths.root + "/tmp/photo.jpg");
    std::ofstream(paths.root + "/tmp/damaged.png", std::ios::binary) << "\x89PNG\r\n\x1a\n????";
}

void start(vdevice::Device &device) {
    const vdevice::DeviceFiles files = vdevice::find_device_files();
    vdevice::DeviceOptions options;
    options.program = files.program;
    options.shim = files.shim;
    options.config = files.config;
    options.fonts = files.fonts;
    options.prepare = make_pictures;
    std::string error;
    if (!device.start(options, &error)) throw std::runtime_error(error);
}

/** What the traffic changes again and again; sets it moving, so that every tick has work. */
constexpr const char *kScrolling[] = {
    R"({"jsonrpc":"2.0","id":1,"method":"SetWatermarkOSDParameter","params":{"if_name":"HDMI1",
        "records":[{"visible":1,"contet":"moving","font":3,"arrangement_mode":4,"en":1,"step":8,
        "speed":1,"direction":0}]}})",
    R"({"jsonrpc":"2.0","id":1,"method":"SetWatermarkPictureParameter","params":{"if_name":"HDMI1",
        "records":[{"visible":1,"file":"/tmp/logo.png","arramode":3,"en":1,"step":5,"speed":1,
        "direction":1,"w":0,"h":0}]}})",
    R"({"jsonrpc":"2.0","id":1,"method":"SetVideoOutputOSDParameter","params":{"Channel":0,
        "records":[{"visible":1,"type":0,"content":"yyyy-MM-dd hh:mm:ss","font":3},{},{},{}]}})",
};

class Run {
public:
    Run(vdevice::Device &device, const Options &options)
        : m_device(device),
          m_options(options),
          m_traffic(options.seed, {std::begin(kPictures), std::end(kPictures)}) {}

    Totals go() {
        const auto begin = Clock::now();
        const auto end = begin + std::chrono::seconds(m_options.seconds);
        const std::chrono::nanoseconds period(1000000000 / m_options.rate);
        auto next = begin;
        for (long step = 0; Clock::now() < end && m_device.running(); ++step, next += period) {
            std::this_thread::sleep_until(next);
            if (step % m_options.rate == 0) {
                sample(std::chrono::duration<double>(Clock::now() - begin).count());
            }
            if (step % (10L * m_options.rate) == 0) everyTenSeconds();
            ask(m_traffic.request());
            if (step % 5 == 0) publish(step);
        }
        m_totals.crashed = !m_device.running();
        return std::move(m_totals);
    }

private:
    void ask(const std::string &message) {
        const auto sent = Clock::now();
        const auto reply = m_device.request(message);
        const std::chrono::duration<float, std::micro> took = Clock::now() - sent;
        m_totals.latency_us.push_back(took.count());
        ++m_totals.requests;
        if (!reply) {
            ++m_totals.unanswered;
        } else if (reply->find("\"error\":") != std::string::npos) {
            ++m_totals.refused;
        }
    }

    void publish(long step) {
        const bool sent = step % 2 == 0 ? m_device.publishCodec(m_traffic.codecEvent())
                                        : m_device.publishStream(m_traffic.streamEvent());
        m_totals.events += sent ? 1 : 0;
    }

    void everyTenSeconds() {
        for (const char *message : kScrolling) {
            ask(message);
        }
        m_totals.surveys += m_device.survey() ? 1 : 0;
    }

    void sample(double at_seconds) {
        m_totals.samples.push_back(soak::process_figures(m_device.pid(), at_seconds));
    }

    vdevice::Device &m_device;
    const Options &m_options;
    soak::Traffic m_traffic;
    Totals m_totals;
};

float percentile(std::vector<float> &values, double part) {
    if (values.empty()) return 0;
    const auto at =
        values.begin() + static_cast<long>(static_cast<double>(values.size() - 1) * part);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/** Least and most of a figure over the run. */
template <typename Figure>
std::string span(const std::vector<soak::ProcessFigures> &samples, Figure figure) {
    const auto [least, most] =
        std::minmax_element(samples.begin(), samples.end(),
                            [&](const auto &a, const auto &b) { return a.*figure < b.*figure; });
    return std::to_string((*least).*figure) + " to " + std::to_string((*most).*figure);
}

/** Mean resident memory of each quarter of the run: pictures come and go, a leak stays. */
std::string quarters(const std::vector<soak::ProcessFigures> &samples) {
    std::string text;
    for (size_t quarter = 0; quarter < 4; ++quarter) {
        const size_t first = samples.size() * quarter / 4;
        const size_t end = std::max(samples.size() * (quarter + 1) / 4, first + 1);
        long sum = 0;
        for (size_t i = first; i < end; ++i) {
            sum += samples[i].resident_kib;
        }
        text += (quarter > 0 ? ", " : "") + std::to_string(sum / static_cast<long>(end - first));
    }
    return text;
}

void report(Totals &totals) {
    using soak::ProcessFigures;
    std::printf("requests    %ld, refused %ld, unanswered %ld\n", totals.requests, totals.refused,
                totals.unanswered);
    std::printf("events      %ld, surveys answered %ld\n", totals.events, totals.surveys);
    std::printf("latency     p50 %.0f us, p99 %.0f us, longest %.0f us\n",
                percentile(totals.latency_us, 0.5), percentile(totals.latency_us, 0.99),
                percentile(totals.latency_us, 1));
    std::printf("resident    first %ld KiB, last %ld KiB, %+.0f KiB an hour (second half)\n",
                totals.samples.front().resident_kib, totals.samples.back().resident_kib,
                soak::resident_growth_per_hour(totals.samples));
    std::printf("by quarter  %s KiB on average\n", quarters(totals.samples).c_str());
    std::printf("descriptors %s\n", span(totals.samples, &ProcessFigures::descriptors).c_str());
    std::printf("threads     %s\n", span(totals.samples, &ProcessFigures::threads).c_str());
    std::printf("crashes     %d\n", totals.crashed ? 1 : 0);
}

int run(const Options &options) {
    vdevice::Device device;
    start(device);
    Totals totals = Run(device, options).go();
    if (totals.crashed) {
        const std::string errors = device.standardError();
        std::fprintf(stderr, "the process ended with status %d\n%s\n", device.exitStatus(),
                     errors.substr(errors.size() - std::min<size_t>(errors.size(), 2000)).c_str());
    }
    report(totals);
    return totals.crashed || totals.unanswered > 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app("A virtual device under random traffic, valid and not.");
    Options options;
    app.add_option("--seconds", options.seconds, "how long")
        ->capture_default_str()
        ->check(CLI::Range(1, 30 * 86400));
    app.add_option("--rate", options.rate, "requests a second, at most")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000));
    app.add_option("--seed", options.seed, "of the traffic")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        return run(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 2;
    }
}
