#pragma once

#include <tbb/enumerable_thread_specific.h>

#include "host/media/media_source.h"
#include "host/media/picture_formats.h"
#include "host/media/reshape.h"
#include "host/run/effect_chain.h"

namespace Nifikral {

/// How pictures look between decoder and encoder.
struct PicturePath {
    unsigned effectFormat = 0;  ///< code of the layout that effects see
    PictureShape effectShape;
    Reshaper reshape;        ///< comes before all
    bool overBlack = false;  ///< what effects did to the alpha has to show in an output without alpha
};

/// The chain of effects, with the conversions before and behind it, for every thread that comes by. Threads: any.
class EffectWorkers {
 public:
    /// `module` and `effects` must outlive this object.
    EffectWorkers(const PicturePath& path, const PictureShape& sinkShape, const EffectModule& module,
                  const std::vector<PlacedEffect>& effects);

    /// Makes a picture as the sink takes it; `number` is its place in the input, from 0.
    void Process(FramePtr& frame, long long number);
    /// Seconds within the effects, of all threads together.
    double EffectSeconds() const;

 private:
    // What one thread needs for itself.
    struct Worker {
        Reshaper reshape;
        EffectChain chain;
        PictureConverter toEffects, toSink;
        double seconds = 0;
    };

    PicturePath m_path;
    bool m_hasEffects;
    tbb::enumerable_thread_specific<Worker> m_workers;
};

}  // namespace Nifikral
