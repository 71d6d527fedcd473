#include "host/base/standard_output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "host/base/errors.h"

namespace Nifikral {

void PrintResult(const std::string& text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return;
    const int error = errno;
    if (error == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    throw HostError(ExitCode::Output, std::string("stdout cannot be written (") + std::strerror(error) +
                                          "); free some space or name another place");
}

}  // namespace Nifikral
