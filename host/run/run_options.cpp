#include "host/run/run_options.h"

#include <algorithm>
#include <filesystem>
#include <thread>

#include "host/base/errors.h"

namespace Nifikral {

int RunOptions::ThreadCount() const {
    return threads > 0 ? threads : std::max(1, int(std::thread::hardware_concurrency()));
}

FrameRange RunOptions::Chunk(const FrameRange& run) const {
    if (chunk.empty()) return run;
    const FrameRange range = ParseRange(chunk);
    if (range.first < run.first || range.last > run.last || range.last == FrameRange::noEnd)
        throw HostError(ExitCode::Usage, "--chunk " + chunk + " is none of this run; nifikral plan tells its chunks");
    return range;
}

OutputOptions RunOptions::OutputFor(const FrameRange& made) const {
    OutputOptions result = output;
    result.threads = ThreadCount();
    if (!chunk.empty()) result.chunk = made;
    result.overwrite = output.overwrite || skipExisting;
    return result;
}

void RunOptions::RefuseAsOutput(const std::string& input) const {
    std::error_code error;
    if (!input.empty() && std::filesystem::equivalent(input, output.path, error))
        throw HostError(ExitCode::Usage, output.path + " is an input itself; name another output");
}

}  // namespace Nifikral
