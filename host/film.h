#pragma once

#include "host/effect_module.h"
#include "host/run_options.h"

namespace Nifikral {

/// A film that a generator makes.
struct Film {
    int width = 0, height = 0;
    AVRational frameRate = {25, 1};
    long long frames = 0;
};

/// Lets a generator, ready with all its properties, make a film, or the part of it that the options ask for: these
/// frames are the same as in the whole film. `name` is told in what is printed.
void RenderFilm(AVBased::IVideoProc& generator, const Film& film, const RunOptions& options, const std::string& name);

}  // namespace Nifikral
