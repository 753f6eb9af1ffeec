// Starts a program that draws on /dev/fb1 and tells what that takes:
//
//     start_probe learn PICTURE PROGRAM [ARGUMENT...]
//
// waits until the picture stands still, writes it to the file PICTURE, and prints KiB of memory:
// resident, of it anonymous, of files, shared; of it the mapped framebuffer; the size of a frame.
//
//     start_probe time PICTURE PROGRAM [ARGUMENT...]
//
// prints the milliseconds from the start of the program to that picture on the screen, and the
// processor time that the program has taken until then. The program is killed in the end.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>

#include "process_memory.h"
#include "watched_screen.h"

namespace {

using Clock = std::chrono::steady_clock;
using footprint::WatchedScreen;
using namespace std::chrono_literals;

constexpr char kDevice[] = "/dev/fb1";
/// Longer than a period of the display's refresh: what is drawn late is drawn by then.
constexpr auto kStanding = 5s;
constexpr auto kLongest = 120s;
constexpr auto kLook = 200us;
constexpr auto kRareLook = 100ms;
/// On a single emulated processor frequent looks double what they measure. The pause between two is
/// this part of the time so far, so that a slow start is not looked at more often than a fast one.
constexpr int kLooks = 200;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

/** The measured program; killed at the end. What it writes goes to standard error. */
class Program {
public:
    explicit Program(char **command) : m_begin(Clock::now()), m_pid(::fork()) {
        if (m_pid < 0) throw std::runtime_error("fork");
        if (m_pid > 0) return;
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        ::execv(command[0], command);
        std::perror(command[0]);
        ::_exit(127);
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    ~Program() {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }

    pid_t pid() const { return m_pid; }
    double wallMilliseconds() const { return milliseconds(Clock::now() - m_begin); }
    double processorMilliseconds() const {
        clockid_t clock{};
        timespec time{};
        if (::clock_getcpuclockid(m_pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
            return 0;
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }

    /** Looks again and again until `done`, at first after each `pause`. */
    void wait(Clock::duration pause, const std::function<bool()> &done) const {
        while (!done()) {
            siginfo_t ended{};
            ::waitid(P_PID, static_cast<id_t>(m_pid), &ended, WEXITED | WNOHANG | WNOWAIT);
            if (ended.si_pid != 0) throw std::runtime_error("the program has ended");
            const auto taken = Clock::now() - m_begin;
            if (taken > kLongest) throw std::runtime_error("no picture");
            std::this_thread::sleep_for(std::max<Clock::duration>(pause, taken / kLooks));
        }
    }

private:
    Clock::time_point m_begin;
    pid_t m_pid;
};

bool is_blank(const std::string &picture) {
    return picture.find_first_not_of('\0') == std::string::npos;
}

void learn(WatchedScreen &screen, const char *file, char **command) {
    const Program program(command);
    std::string picture = screen.picture();
    auto since = Clock::now();
    program.wait(kRareLook, [&] {
        if (!screen.shows(picture)) {
            picture = screen.picture();
            since = Clock::now();
        }
        return Clock::now() - since > kStanding && !is_blank(picture);
    });
    std::ofstream output(file, std::ios::binary);
    if (!output.write(picture.data(), static_cast<std::streamsize>(picture.size())).flush()) {
        throw std::runtime_error(file);
    }
    const auto memory = footprint::process_memory(program.pid(), screen.device(), screen.inode());
    std::printf("%ld %ld %ld %ld %ld %zu\n", memory.resident, memory.anonymous, memory.file,
                memory.shared, memory.device, screen.frameBytes() / 1024);
}

void time_start(WatchedScreen &screen, const char *file, char **command) {
    std::ifstream input(file, std::ios::binary);
    const std::string picture{std::istreambuf_iterator<char>(input), {}};
    if (picture.size() != screen.frameBytes()) throw std::runtime_error("another mode's picture");
    const Program program(command);
    program.wait(kLook, [&] { return screen.shows(picture); });
    const double wall = program.wallMilliseconds();
    std::printf("%.2f %.2f\n", wall, program.processorMilliseconds());
}

}  // namespace

int main(int argc, char **argv) {
    const std::string task = argc > 3 ? argv[1] : "";
    if (task != "learn" && task != "time") {
        std::fprintf(stderr, "usage: start_probe learn|time PICTURE PROGRAM [ARGUMENT...]\n");
        return 2;
    }
    try {
        WatchedScreen screen(kDevice);
        screen.clear();
        (task == "learn" ? learn : time_start)(screen, argv[2], argv + 3);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "start_probe: %s\n", failure.what());
        return 1;
    }
    return 0;
}
