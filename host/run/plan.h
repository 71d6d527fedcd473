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

/// A work as command lines, each without the program that it is for. They may run on several machines.
struct CommandPlan {
    using Words = std::vector<std::string>;

    std::string output;
    std::vector<Words> makers;       ///< in any order, at any time
    Words last;                      ///< for when all of them have ended; empty: none
    std::vector<FrameRange> chunks;  ///< what each maker makes of one run; none: the makers make files of their own
};

/// Cuts frames into so many chunks of about one length; no more than there are frames.
std::vector<FrameRange> ChunksOf(const FrameRange& frames, long long chunks);

/// The command lines that make a run in chunks, and the one that joins them. `words` is the run's own command line,
/// behind the program; `frames` are the run's.
CommandPlan PlanChunks(long long chunks, const std::vector<std::string>& words, const OutputOptions& output,
                       const FrameRange& frames);

/// The plan as lines for `program` in one of the formats. Throws a usage error for a format that is none, or that
/// cannot hold the plan.
std::string PlanText(CommandPlan plan, const std::string& program, const std::string& format);

}  // namespace Nifikral
