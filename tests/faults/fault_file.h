/**
 * @file fault_file.h
 * The test's side of libfaults.so: sets what is to fail in a device's process, and reads what did.
 *
 * Thread: one.
 */
#ifndef TESTS_FAULTS_FAULT_FILE_H
#define TESTS_FAULTS_FAULT_FILE_H

#include <string>
#include <vector>

#include "device.h"
#include "fault_plan.h"

namespace faults {

/** One call that fails, and how. */
struct Fault {
    Call call;
    int nth;        ///< 1 for the next call of that kind
    int error;      ///< errno, or kHalf
    int times = 1;  ///< how many calls in succession fail
};

class FaultFile {
public:
    FaultFile() = default;
    ~FaultFile();
    FaultFile(const FaultFile &) = delete;
    FaultFile &operator=(const FaultFile &) = delete;

    /**
     * Lets a device start with the library and this file, after `options.prepare` as it is.
     * @param library  libfaults.so.
     */
    void addTo(vdevice::DeviceOptions &options, const std::string &library);
    /** What fails from now on; before a device's start, from the start on. */
    void arm(const Fault &fault);
    void disarm() { arm({Call::kNone, 1, 0}); }
    /** Calls that have failed since the last arm(). */
    unsigned fired() const;
    /** The calls since the last arm(), the first kTraceLength of them. */
    std::vector<Call> trace() const;

private:
    void create(const std::string &path);

    FaultPlan *m_plan = nullptr;
    Fault m_first{Call::kNone, 1, 0};
};

}  // namespace faults

#endif
