#include "host/run_options.h"

#include <algorithm>
#include <filesystem>
#include <thread>

#include "host/errors.h"

namespace Nifikral {

int RunOptions::ThreadCount() const {
    return threads > 0 ? threads : std::max(1, int(std::thread::hardware_concurrency()));
}

void RunOptions::RefuseAsOutput(const std::string& input) const {
    std::error_code error;
    if (!input.empty() && std::filesystem::equivalent(input, output.path, error))
        throw HostError(ExitCode::Usage, output.path + " is an input itself; name another output");
}

}  // namespace Nifikral
