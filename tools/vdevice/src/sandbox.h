/**
 * @file sandbox.h
 * The two ways to give a program its own /dev/fb1, /tmp and /mnt/usr/config on a shared host.
 *
 * bwrap uses the kernel's namespaces: the host is read-only to the program and its /dev, processes
 * and network are its own. proot follows the program's system calls and needs no privilege; it
 * translates paths only, everything else is the host's. Neither leaves anything on the host.
 */
#ifndef VDEVICE_SANDBOX_H
#define VDEVICE_SANDBOX_H

#include <string>
#include <utility>
#include <vector>

namespace vdevice {

enum class SandboxKind { kNone, kBwrap, kProot };

/** "bwrap", "proot" or "none". */
const char *sandbox_name(SandboxKind kind);

/** What runs where. */
struct SandboxPlan {
    /** A file or folder of the host that the program sees at another place. */
    struct Bind {
        std::string host;
        std::string inside;
        bool writable;
    };

    /** A folder of the plan's own, empty before prepare_sandbox(): proot shows it as "/". */
    std::string root;
    std::vector<Bind> binds;  ///< in order: a later one may lie inside an earlier one
    std::vector<std::pair<std::string, std::string>> environment;  ///< the program's whole one
    std::vector<std::string> command;  ///< program and arguments, paths as seen inside
};

/**
 * Makes the places that the plan binds to, where the sandbox would make them on the host instead.
 * False with `error` filled when that fails.
 */
bool prepare_sandbox(SandboxKind kind, const SandboxPlan &plan, std::string *error);

/**
 * The command line that runs the plan.
 * Requires: kind is kBwrap or kProot; prepare_sandbox() has succeeded.
 */
std::vector<std::string> sandbox_command(SandboxKind kind, const SandboxPlan &plan);

/** Generations from the started sandbox to the program: its monitors are in between. */
int sandbox_depth(SandboxKind kind);

/** True when that sandbox is installed and this kernel lets it work. Runs it once (some 10 ms). */
bool sandbox_works(SandboxKind kind);

/** bwrap where it works, else proot, else none. */
SandboxKind find_sandbox();

}  // namespace vdevice

#endif
