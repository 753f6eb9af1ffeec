/**
 * @file report_pace.h
 * When to report: at once, then a minute's events together, so that no peer can fill a log.
 */
#ifndef STREAM_GUARD_REPORT_PACE_H
#define STREAM_GUARD_REPORT_PACE_H

#include <cstdint>

namespace stream_guard {

constexpr int64_t kReportPause_ms = 60000;

class ReportPace {
public:
    /** Of `total` events so far: those to report now, 0 for none. */
    unsigned due(unsigned total, int64_t now_ms) {
        const unsigned untold = total - told_;
        if (untold == 0 || (told_any_ && now_ms - told_ms_ < kReportPause_ms)) return 0;
        told_any_ = true;
        told_ms_ = now_ms;
        told_ = total;
        return untold;
    }

private:
    unsigned told_ = 0;
    bool told_any_ = false;
    int64_t told_ms_ = 0;
};

}  // namespace stream_guard

#endif
