#pragma once

#include "host/effect_chain.h"
#include "host/media_sink.h"
#include "host/media_source.h"
#include "host/progress.h"

namespace Nifikral {

/// How pictures look between decoder and encoder.
struct PicturePath {
    unsigned effectFormat = 0;  ///< code of the layout that effects see
    PictureShape effectShape;
    bool overBlack = false;  ///< what effects did to the alpha has to show in an output without alpha
};

/// Seconds of work in each stage, summed over all workers.
struct StageTimes {
    double decode = 0, effects = 0, encode = 0;
};

/// Decodes in order, runs the effects in parallel and encodes in order, with a bounded number of pictures in flight.
/// Throws the first error of any stage. Answers the times; `frames` counts the pictures.
StageTimes RunPipeline(MediaSource& source, MediaSink& sink, const PicturePath& path, const EffectModule& module,
                       const std::vector<EffectRequest>& requests, long long frameCount, int threads,
                       Progress& progress, long long& frames);

}  // namespace Nifikral
