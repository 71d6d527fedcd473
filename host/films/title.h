#pragma once

#include <string>
#include <vector>

#include "host/run/apply.h"

namespace Nifikral {

struct TitleOptions {
    std::string text;                 ///< "\n" in it begins a new line
    std::string face, style, colour;  ///< the generator's own where empty
    int size = 0;                     ///< of the font, in pixels; 0: by the frame's height
    std::string place = "middle";     ///< "top-left" to "bottom-right"
    std::string inMotion, outMotion;  ///< the generator's own where empty
    double inSeconds = 0.8, outSeconds = 0.8, begin = 0;
    double seconds = 0;  ///< how long it shows; 0: to the end, and over a single picture the usual time
    std::vector<std::string> inputs;
    Preparation preparation;  ///< of the inputs' pictures
    RunOptions run;
};

/// What --place takes.
std::vector<std::string> TitlePlaces();

/// When a title comes and goes, in frames.
struct TitleTimes {
    long long begin = 0, length = 0, in = 0, out = 0;
};
/// Asks for the title as an effect. Throws usage errors.
EffectRequest TitleRequest(const TitleOptions& options, const TitleTimes& when);

/// Puts a title over a picture or a video. A single picture becomes a still, or a video as long as the title.
void PutTitle(const TitleOptions& options, const EffectModule& module);

}  // namespace Nifikral
