#pragma once

#include <string>

#include "host/media_sink.h"

namespace Nifikral {

/// What every command that makes films or pictures is told.
struct RunOptions {
    OutputOptions output;
    std::string frames;       ///< "A-B", "A-" or "A"; empty: all
    std::string pixelFormat;  ///< of the pictures that the module sees; empty: the one that fits best
    int threads = 0;          ///< 0: all cores
    bool dryRun = false;

    int ThreadCount() const;
    /// Throws a usage error when the output is an existing file that the run reads.
    void RefuseAsOutput(const std::string& input) const;
};

}  // namespace Nifikral
