#pragma once

#include <string>
#include <vector>

#include "host/effect_module.h"
#include "host/media_sink.h"

namespace Nifikral {

struct ApplyOptions {
    std::string input;
    std::vector<std::string> effects;
    OutputOptions output;
    std::string frames;       ///< "A-B", "A-" or "A"; empty: all
    std::string pixelFormat;  ///< of the pictures that effects see; empty: the nearest to the input's
    int threads = 0;          ///< 0: all cores
    bool keepGoing = false, dryRun = false;
};

/// Takes the input through the effects into the output.
void Apply(const ApplyOptions& options, const EffectModule& module);

}  // namespace Nifikral
