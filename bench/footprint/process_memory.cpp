#include "process_memory.h"

#include <sys/sysmacros.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace footprint {
namespace {

/** The figure of a line "NAME:   FIGURE kB". */
bool figure_of(const std::string &line, const std::string &name, long *figure) {
    if (line.rfind(name + ":", 0) != 0) return false;
    *figure = std::stol(line.substr(name.size() + 1));
    return true;
}

/** Whether a line begins a mapping of smaps: "FROM-TO FLAGS OFFSET MAJOR:MINOR INODE PATH". */
bool begins_mapping(const std::string &line, bool *ours, dev_t device, ino_t inode) {
    unsigned major = 0, minor = 0;
    unsigned long number = 0;
    if (std::sscanf(line.c_str(), "%*x-%*x %*s %*x %x:%x %lu", &major, &minor, &number) != 3) {
        return false;
    }
    *ours = makedev(major, minor) == device && number == inode;
    return true;
}

long resident_of_file(const std::string &folder, dev_t device, ino_t inode) {
    std::ifstream mappings(folder + "/smaps");
    long all = 0, one = 0;
    bool ours = false;
    for (std::string line; std::getline(mappings, line);) {
        if (begins_mapping(line, &ours, device, inode)) continue;
        if (ours && figure_of(line, "Rss", &one)) all += one;
    }
    return all;
}

}  // namespace

ProcessMemory process_memory(pid_t pid, dev_t device, ino_t inode) {
    const std::string folder = "/proc/" + std::to_string(pid);
    ProcessMemory memory;
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        figure_of(line, "VmRSS", &memory.resident) ||
            figure_of(line, "RssAnon", &memory.anonymous) ||
            figure_of(line, "RssFile", &memory.file) || figure_of(line, "RssShmem", &memory.shared);
    }
    memory.device = resident_of_file(folder, device, inode);
    return memory;
}

}  // namespace footprint
