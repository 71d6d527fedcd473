#pragma once

#include <string>
#include <vector>

#include "host/effect_module.h"
#include "host/run_options.h"

namespace Nifikral {

struct ApplyOptions {
    std::string input;
    std::vector<std::string> effects;
    RunOptions run;
    bool keepGoing = false;
};

/// Takes the input through the effects into the output.
void Apply(const ApplyOptions& options, const EffectModule& module);

}  // namespace Nifikral
