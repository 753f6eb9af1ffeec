/**
 * @file process_memory.h
 * What of a process is in memory, read from /proc.
 */
#ifndef BENCH_FOOTPRINT_PROCESS_MEMORY_H
#define BENCH_FOOTPRINT_PROCESS_MEMORY_H

#include <sys/types.h>

namespace footprint {

/** KiB. */
struct ProcessMemory {
    long resident = 0;  ///< the sum of the next three
    long anonymous = 0;
    long file = 0;
    long shared = 0;
    long device = 0;  ///< of these, pages of one mapped file
};

/** All zero for a process that is gone. `device` counts the mappings of that file. */
ProcessMemory process_memory(pid_t pid, dev_t device, ino_t inode);

}  // namespace footprint

#endif
