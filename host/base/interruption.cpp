#include "host/base/interruption.h"

#include <csignal>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnSignal(int) { interrupted = 1; }

}  // namespace

void InstallSignalHandlers() {
    struct sigaction action = {};
    action.sa_handler = OnSignal;         // without SA_RESTART: a read that waits for a pipe ends
    action.sa_flags = int(SA_RESETHAND);  // a second signal ends the program at once
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool IsInterrupted() { return interrupted; }

void ThrowIfInterrupted() {
    if (interrupted) throw HostError(ExitCode::Interrupted, "interrupted; no output was kept");
}

}  // namespace Nifikral
