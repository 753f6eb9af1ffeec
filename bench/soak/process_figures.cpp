#include "process_figures.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace soak {
namespace {

long status_figure(const std::string &folder, const std::string &name) {
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name, 0) == 0) return std::stol(line.substr(name.size()));
    }
    return 0;
}

int entries_of(const std::string &folder) {
    std::error_code ignored;
    const std::filesystem::directory_iterator entries(folder, ignored);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace

ProcessFigures process_figures(pid_t pid, double at_seconds) {
    const std::string folder = "/proc/" + std::to_string(pid);
    return {at_seconds, status_figure(folder, "VmRSS:"), entries_of(folder + "/fd"),
            static_cast<int>(status_figure(folder, "Threads:"))};
}

double resident_growth_per_hour(const std::vector<ProcessFigures> &samples) {
    const size_t first = samples.size() / 2;
    const auto count = static_cast<double>(samples.size() - first);
    double time = 0, memory = 0;
    for (size_t i = first; i < samples.size(); ++i) {
        time += samples[i].at_seconds / count;
        memory += static_cast<double>(samples[i].resident_kib) / count;
    }
    double product = 0, square = 0;
    for (size_t i = first; i < samples.size(); ++i) {
        const double ahead = samples[i].at_seconds - time;
        product += ahead * (static_cast<double>(samples[i].resident_kib) - memory);
        square += ahead * ahead;
    }
    constexpr double kSecondsPerHour = 3600;
    return square > 0 ? product / square * kSecondsPerHour : 0;
}

}  // namespace soak
