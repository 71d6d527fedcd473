#include "host/base/interruption.h"

#include <atomic>
#include <csignal>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

// Without a lock, so that a signal's handler may set it while any thread reads.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void OnSignal(int) { interrupted = true; }

}  // namespace

void InstallSignalHandlers() {
    struct sigaction action = {};
    action.sa_handler = OnSignal;         // without SA_RESTART: a read that waits for a pipe ends
    action.sa_flags = int(SA_RESETHAND);  // a second signal ends the program at once
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(signal, &action, &before);
        // As nohup and shells in the background ask for.
        if (before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool IsInterrupted() { return interrupted; }

void ThrowIfInterrupted() {
    if (interrupted) throw HostError(ExitCode::Interrupted, "interrupted");
}

}  // namespace Nifikral
