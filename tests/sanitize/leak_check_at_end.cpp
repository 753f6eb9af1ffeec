// Lets LeakSanitizer look at the process when it is told to end. It runs until SIGTERM, which by
// itself leaves no time for a check. Linked into the process in AddressSanitizer builds only.

#include <pthread.h>
#include <sanitizer/lsan_interface.h>
#include <unistd.h>

#include <csignal>

namespace {

constexpr int kEndedBySigterm = 128 + SIGTERM;

sigset_t only_sigterm() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    return signals;
}

void *wait_for_the_end(void *) {
    const sigset_t signals = only_sigterm();
    int signal = 0;
    sigwait(&signals, &signal);
    __lsan_do_leak_check();
    _exit(kEndedBySigterm);
}

/** All threads inherit the mask, so that the signal is left to the one that waits for it. */
__attribute__((constructor)) void begin() {
    const sigset_t signals = only_sigterm();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    pthread_t thread;
    pthread_create(&thread, nullptr, wait_for_the_end, nullptr);
}

}  // namespace
