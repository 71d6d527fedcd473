#pragma once

#include <vector>

#include "host/run/effect_request.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// One worker's objects for the chain of effects. Whatever worker takes a frame, its bytes are those that one object of
/// each effect would give that went through the run alone. Threads: one at a time.
class EffectChain {
 public:
    /// `requests` and `module` must outlive this object. `frameCount`: of the run, 0 when unknown.
    EffectChain(const EffectModule& module, const std::vector<EffectRequest>& requests, long long frameCount);

    /// Runs all effects on a picture in place; `position` is its place in the run, from 0.
    void Process(AVFrame& frame, unsigned formatCode, long long position);

 private:
    struct Link {
        const EffectRequest* request;
        EffectPtr effect;
        bool used = false;
    };

    EffectPtr Make(const EffectRequest& request, long long position) const;

    const EffectModule& m_module;
    long long m_frameCount;
    std::vector<Link> m_links;
};

}  // namespace Nifikral
