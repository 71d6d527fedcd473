#pragma once

#include <functional>
#include <optional>
#include <string>

#include "host/media/frame_range.h"
#include "host/media/media_sink.h"

namespace Nifikral {

/// What every command that makes films or pictures is told.
struct RunOptions {
    OutputOptions output;
    std::string frames;       ///< "A-B", "A-" or "A"; empty: all
    std::string pixelFormat;  ///< of the pictures that the module sees; empty: the one that fits best
    int threads = 0;          ///< 0: all cores
    bool dryRun = false;
    std::string chunk;          ///< "A-B": only these of the run's frames, to be joined later; empty: the whole run
    bool skipExisting = false;  ///< leave an output that is complete as it is
    std::optional<long long> joinTo;  ///< join the chunks up to this frame instead of making pictures
    /// Instead of making anything, is told which frames the run has.
    std::function<void(const FrameRange&)> plan;

    /// What of the run is to be made. Throws usage errors.
    FrameRange Chunk(const FrameRange& run) const;
    /// The output of a run that makes `made`: itself, or a chunk of it.
    OutputOptions OutputFor(const FrameRange& made) const;
    int ThreadCount() const;
    /// Throws a usage error when the output is an existing file that the run reads.
    void RefuseAsOutput(const std::string& input) const;
};

}  // namespace Nifikral
