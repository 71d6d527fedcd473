#include "fuzz/target.h"

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/base/log.h"
#include "host/films/media_manager.h"
#include "host/run/effect_chain.h"
#include "host/run/placed_effect.h"

namespace Nifikral::Fuzzing {

const TemporaryFolder& Folder() {
    static const TemporaryFolder folder;
    return folder;
}

const EffectModule& Module() {
    static MediaManager manager;
    static const EffectModule module(NIFIKRAL_MODULE_FILE, &manager);
    return module;
}

void ApplyTo(const std::vector<EffectRequest>& requests, int width, int height, int frames) {
    const auto count = [frames](const FrameRange& range) {
        return std::min<long long>(range.last, frames - 1) - range.first + 1;
    };
    const Extent extent{{width, height, 25}, AV_PIX_FMT_BGRA, {}, frames, count};
    const std::vector<PlacedEffect> placed = PlaceEffects(requests, Module(), extent);
    EffectChain chain(Module(), placed);
    const FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, width, height);
    for (const int number : {0, 1, frames - 1}) chain.Process(*picture, AVBased::formatRgba32, number);
}

void BeQuiet() { SetVerbosity(Verbosity::Quiet); }

}  // namespace Nifikral::Fuzzing
