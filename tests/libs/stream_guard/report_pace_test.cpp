// How often ended connections are told of.

#include "report_pace.h"

#include <gtest/gtest.h>

namespace {

using stream_guard::kReportPause_ms;
using stream_guard::ReportPace;

TEST(ReportPace, TellsTheFirstAtOnceAndAMinutesOthersTogether) {
    ReportPace pace;
    EXPECT_EQ(pace.due(0, 0), 0u);
    EXPECT_EQ(pace.due(1, 5), 1u);
    EXPECT_EQ(pace.due(1, 6), 0u);
    EXPECT_EQ(pace.due(900, 4 + kReportPause_ms), 0u);
    EXPECT_EQ(pace.due(901, 5 + kReportPause_ms), 900u);
    EXPECT_EQ(pace.due(901, 5 + 3 * kReportPause_ms), 0u);
    EXPECT_EQ(pace.due(902, 5 + 3 * kReportPause_ms), 1u);
}

TEST(ReportPace, OutlivesTheLargestNumber) {
    ReportPace pace;
    EXPECT_EQ(pace.due(UINT32_MAX, 0), UINT32_MAX);
    EXPECT_EQ(pace.due(1, kReportPause_ms), 2u);
}

}  // namespace
