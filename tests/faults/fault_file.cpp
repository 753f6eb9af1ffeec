#include "fault_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace faults {

FaultFile::~FaultFile() {
    if (m_plan) munmap(m_plan, sizeof *m_plan);
}

void FaultFile::addTo(vdevice::DeviceOptions &options, const std::string &library) {
    options.environment["LD_PRELOAD"] = library + ":" + options.shim;
    options.environment["FAULTS_FILE"] = "/tmp/faults";
    options.prepare = [this, prepare = options.prepare](const vdevice::RootPaths &paths) {
        if (prepare) prepare(paths);
        create(paths.tmp() + "/faults");
    };
}

void FaultFile::create(const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void *memory = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, sizeof(FaultPlan)) == 0) {
        memory = mmap(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    }
    if (fd >= 0) close(fd);
    if (memory == MAP_FAILED) throw std::runtime_error(path + ": cannot be mapped");
    if (m_plan) munmap(m_plan, sizeof *m_plan);
    m_plan = static_cast<FaultPlan *>(memory);
    arm(m_first);
}

void FaultFile::arm(const Fault &fault) {
    m_first = fault;
    if (!m_plan) return;
    m_plan->call = Call::kNone;
    m_plan->before = fault.nth - 1;
    m_plan->times = fault.times;
    m_plan->error = fault.error;
    m_plan->fired = 0;
    m_plan->traced = 0;
    m_plan->call = fault.call;
}

unsigned FaultFile::fired() const {
    return m_plan ? m_plan->fired.load() : 0;
}

std::vector<Call> FaultFile::trace() const {
    std::vector<Call> calls;
    const uint32_t length = m_plan ? std::min(m_plan->traced.load(), kTraceLength) : 0;
    for (uint32_t i = 0; i < length; ++i) {
        calls.push_back(m_plan->trace[i].load());
    }
    return calls;
}

}  // namespace faults
