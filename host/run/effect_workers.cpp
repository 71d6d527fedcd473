#include "host/run/effect_workers.h"

#include "host/media/frame_adapter.h"
#include "host/run/pipeline.h"

namespace Nifikral {

EffectWorkers::EffectWorkers(const PicturePath& path, const PictureShape& sinkShape, const EffectModule& module,
                             const std::vector<EffectRequest>& requests, long long frameCount)
    : m_path(path), m_workers([=, &module, &requests] {
          return Worker{EffectChain(module, requests, frameCount), PictureConverter(path.effectShape),
                        PictureConverter(sinkShape)};
      }) {}

void EffectWorkers::Process(FramePtr& frame, long long position) {
    Worker& worker = m_workers.local();
    worker.toEffects.Convert(frame);
    {
        const Stopwatch watch(worker.seconds);
        PrepareForEffects(frame);
        worker.chain.Process(*frame, m_path.effectFormat, position);
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
