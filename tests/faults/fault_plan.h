/**
 * @file fault_plan.h
 * The page of memory that a test and the preloaded library libfaults.so share: which call of the
 * process is to fail, and what the library has seen.
 *
 * The test maps a file of this layout, the process finds the same file through FAULTS_FILE. Calls
 * count on record files (anything below /mnt/usr/config) and on /dev/fb1; allocations count when
 * app_gui or one of its libraries makes them, on the message thread or while loading.
 */
#ifndef TESTS_FAULTS_FAULT_PLAN_H
#define TESTS_FAULTS_FAULT_PLAN_H

#include <atomic>
#include <cstdint>

namespace faults {

enum class Call : uint32_t {
    kNone,
    kOpen,  ///< open, openat, mkostemps
    kRead,
    kWrite,
    kFsync,
    kFchmod,
    kClose,  ///< a failing one closes all the same
    kRename,
    kIoctl,
    kMmap,
    kMalloc,
};

/** In place of an errno value: a read or write moves half of what was asked for, at least 1 byte.
 */
constexpr int kHalf = -1;
constexpr uint32_t kTraceLength = 64;

struct FaultPlan {
    std::atomic<Call> call;        ///< the call that fails; kNone: none does
    std::atomic<int32_t> before;   ///< calls of that kind still to succeed
    std::atomic<int32_t> times;    ///< calls still to fail after these
    std::atomic<int32_t> error;    ///< errno, or kHalf
    std::atomic<uint32_t> fired;   ///< calls that have failed since the plan was set
    std::atomic<uint32_t> traced;  ///< calls but kMalloc since then; trace[] holds the first ones
    std::atomic<Call> trace[kTraceLength];
};

}  // namespace faults

#endif
