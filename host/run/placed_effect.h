#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/media/frame_range.h"
#include "host/run/effect_request.h"

namespace Nifikral {

/// A request on a given input: times are frames, places and lengths are pixels.
struct PlacedEffect {
    std::string effect;
    std::vector<ParameterSetting> settings;
    FrameRange frames;         ///< of the input, in which it works; its positions count from the first
    long long frameCount = 0;  ///< how many these are, 0 when not known
    std::vector<Region> regions = {};

    bool Varies() const;
};

/// What effects are placed on.
struct Extent {
    Scale scale;
    AVPixelFormat format = AV_PIX_FMT_NONE;  ///< of the pictures that effects see
    FrameRange run;                          ///< in which effects without a window work
    long long estimatedFrames = 0;           ///< of the run, 0 when not known
    /// Counts the frames of a range that there are; 0 when that is impossible.
    std::function<long long(const FrameRange&)> count;
};

/// Places a chain. Frames are counted only where something depends on it. The duration, unless it is set, is what the
/// effect works in; a fade-out's is one frame less, so that nothing is left in the last one. Warns of what is hardly
/// meant; throws usage errors for what cannot be.
std::vector<PlacedEffect> PlaceEffects(const std::vector<EffectRequest>& requests, const EffectModule& module,
                                       const Extent& extent);

}  // namespace Nifikral
