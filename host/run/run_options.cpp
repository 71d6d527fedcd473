#include "host/run/run_options.h"

#include <tbb/info.h>

#include <algorithm>
#include <filesystem>

#include "host/base/errors.h"
#include "host/base/log.h"

namespace Nifikral {

int RunOptions::ThreadCount() const {
    // Of the cores that this process may use.
    return threads > 0 ? threads : tbb::info::default_concurrency();
}

FramesOfRun RunOptions::Frames(long long count) const {
    FramesOfRun frames{ParseRange(this->frames), {}, count > 0 || !chunk.empty() || joinTo};
    if (count > 0) {
        const std::string has = "there are frames 0 to " + std::to_string(count - 1);
        if (frames.run.first >= count)
            throw HostError(ExitCode::Usage, "--frames lies past the end: " + has + "; choose among these");
        if (frames.run.last != FrameRange::noEnd && frames.run.last >= count)
            PrintWarning("--frames ends earlier: " + has);
        frames.run.last = std::min(frames.run.last, count - 1);
    }
    frames.made = chunk.empty() ? frames.run : ParseRange(chunk);
    if (frames.made.first < frames.run.first || frames.made.last > frames.run.last ||
        (!chunk.empty() && frames.made.last == FrameRange::noEnd))
        throw HostError(ExitCode::Usage, "--chunk " + chunk + " is none of this run; nifikral plan prints its chunks");
    if (joinTo) frames.made.last = *joinTo;
    return frames;
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
