#pragma once

#include <vector>

#include "host/media/ffmpeg_handles.h"
#include "host/run/placed_effect.h"

namespace Nifikral {

/// One worker's objects for the chain of effects. Whatever worker takes a frame, its bytes are those that one object of
/// each effect would give that went through the run alone. Threads: one at a time.
class EffectChain {
 public:
    /// `effects` and `module` must outlive this object.
    EffectChain(const EffectModule& module, const std::vector<PlacedEffect>& effects);

    /// Runs all effects on a picture in place; `number` is its place in the input, from 0.
    void Process(AVFrame& frame, unsigned formatCode, long long number);

 private:
    struct Link {
        const PlacedEffect* placed;
        EffectPtr effect;
        bool used = false;
    };

    EffectPtr Make(const PlacedEffect& placed, long long position) const;
    void Run(Link& link, AVFrame& frame, unsigned formatCode, long long position) const;

    const EffectModule& m_module;
    std::vector<Link> m_links;
    FramePtr m_original;  // of the picture under an effect that shows in a region
};

}  // namespace Nifikral
