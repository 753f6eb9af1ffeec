/**
 * @file process_figures.h
 * What a process uses, read from /proc, and the trend of such figures.
 */
#ifndef BENCH_SOAK_PROCESS_FIGURES_H
#define BENCH_SOAK_PROCESS_FIGURES_H

#include <sys/types.h>

#include <vector>

namespace soak {

struct ProcessFigures {
    double at_seconds;  ///< since the start of the run
    long resident_kib;  ///< 0 when the process is gone
    int descriptors;
    int threads;
};

ProcessFigures process_figures(pid_t pid, double at_seconds);

/**
 * Growth of resident memory in KiB an hour: the slope of the line of least squares through the
 * samples of the second half. 0 for fewer than two of them.
 */
double resident_growth_per_hour(const std::vector<ProcessFigures> &samples);

}  // namespace soak

#endif
