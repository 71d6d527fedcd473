#pragma once

#include <string>
#include <vector>

#include "host/media/frame_range.h"
#include "host/media/media_sink.h"

namespace Nifikral {

struct PlanOptions {
    long long chunks = 2;
    std::string format = "shell";  ///< shell, make, slurm or json
};

std::vector<std::string> PlanFormats();

/// The command lines that make a run in chunks, and the one that joins them. `words` is the run's own command line,
/// behind the program; `frames` are the run's.
std::string PlanRun(const PlanOptions& options, const std::string& program, const std::vector<std::string>& words,
                    const OutputOptions& output, const FrameRange& frames);

}  // namespace Nifikral
