#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/media/prepared_source.h"
#include "host/run/effect_request.h"
#include "host/run/run_options.h"

namespace Nifikral {

struct ApplyOptions {
    std::vector<std::string> inputs;
    std::vector<std::string> effects;
    RunOptions run;
    bool keepGoing = false;
    Preparation preparation;  ///< of the inputs' pictures
    std::string gaps;         ///< what to do where a number is missing in numbered pictures; empty: refuse them
    std::string presets;      ///< a file of presets; empty: the user's own
};

/// Reads the words of a command line into inputs, output and effects: IN OUT EFFECT..., or, where the output is named
/// already, IN... EFFECT.... Throws usage errors.
void ReadApplyWords(const std::vector<std::string>& words, const EffectModule& module, ApplyOptions& options);

/// Throws a usage error for a request of a generator, which has a command of its own.
void RefuseGenerators(const std::vector<EffectRequest>& requests);

/// Whether one of the effects changes what is transparent; the others may leave anything in the alpha of an opaque
/// source.
bool AnyChangesAlpha(const std::vector<EffectRequest>& requests);

/// The code of the layout in which effects see the pictures of a source, where the command does not say.
unsigned FormatForEffects(const PictureShape& source, const std::vector<EffectRequest>& requests);

/// Takes each input through the effects into an output of its own.
void Apply(const ApplyOptions& options, const EffectModule& module);

/// What is done to an input.
struct EffectRun {
    std::vector<EffectRequest> requests;
    long long stillFrames = 0;  ///< above 0: the input's only picture is shown for so many frames
};

/// The same with effects that follow from the input. `single`: it has one picture, which the effects may repeat.
void RunEffects(const std::string& input, const ApplyOptions& options, const EffectModule& module, bool single,
                const std::function<EffectRun(const PreparedSource&)>& effectsFor);

}  // namespace Nifikral
