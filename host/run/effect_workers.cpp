#include "host/run/effect_workers.h"

#include "host/media/frame_adapter.h"
#include "host/run/pipeline.h"

namespace Nifikral {

EffectWorkers::EffectWorkers(const PicturePath& path, const PictureShape& sinkShape, const EffectModule& module,
                             const std::vector<PlacedEffect>& effects)
    : m_path(path), m_hasEffects(!effects.empty()), m_workers([=, &module, &effects] {
          return Worker{path.reshape, EffectChain(module, effects), PictureConverter(path.effectShape),
                        PictureConverter(sinkShape)};
      }) {}

void EffectWorkers::Process(FramePtr& frame, long long number) {
    Worker& worker = m_workers.local();
    worker.reshape.Apply(frame);
    worker.toEffects.Convert(frame);
    // A picture that nothing is done to may stay the decoder's.
    if (!m_hasEffects) return worker.toSink.Convert(frame);
    {
        const Stopwatch watch(worker.seconds);
        PrepareForEffects(frame);
        worker.chain.Process(*frame, m_path.effectFormat, number);
    }
    if (m_path.overBlack) LayOverBlack(*frame);
    worker.toSink.Convert(frame);
}

double EffectWorkers::EffectSeconds() const {
    double sum = 0;
    for (const Worker& worker : m_workers) sum += worker.seconds;
    return sum;
}

}  // namespace Nifikral
