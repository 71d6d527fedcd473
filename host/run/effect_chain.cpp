#include "host/run/effect_chain.h"

#include "TarvoBased/ITarvoException.h"
#include "host/base/errors.h"
#include "host/media/frame_adapter.h"

namespace Nifikral {
namespace {

void Set(AVBased::IVideoProc& effect, const std::string& name, const std::string& value) {
    if (!effect.SetProperty(name.c_str(), value.c_str()))
        throw HostError(ExitCode::Failed, std::string(effect.GetName()) + " refuses " + name + "=" + value + ": " +
                                              TakeModuleError().value_or("no reason given"));
}

}  // namespace

EffectChain::EffectChain(const EffectModule& module, const std::vector<EffectRequest>& requests, long long frameCount)
    : m_module(module), m_frameCount(frameCount) {
    for (const EffectRequest& request : requests) m_links.push_back({&request, Make(request, 0)});
}

EffectPtr EffectChain::Make(const EffectRequest& request, long long position) const {
    EffectPtr effect = m_module.Create(request.effect);
    if (!effect) throw HostError(ExitCode::Failed, "the effect " + request.effect + " is gone");
    if (m_frameCount > 0 && !request.Sets("duration")) Set(*effect, "duration", std::to_string(m_frameCount));
    for (const ParameterSetting& setting : request.settings)
        Set(*effect, setting.property, setting.value.At(position, m_frameCount));
    return effect;
}

void EffectChain::Process(AVFrame& frame, unsigned formatCode, long long position) {
    FrameAdapter adapter(frame, formatCode, int(position));
    AVBased::ImagePostion record{0, 0, unsigned(frame.width), unsigned(frame.height)};
    TarvoBased::GetTarvoException()->Clear();
    for (Link& link : m_links) {
        // An effect may treat its first picture otherwise than later ones, from tables that it keeps. The run's first
        // frame gets a fresh object, any other one that has seen a picture; where values change over time, every frame
        // gets a fresh one.
        const long long own = position - link.request->begin;
        if (own < 0) continue;
        const bool varies = link.request->Varies();
        if (varies || (own == 0 && link.used)) link.effect = Make(*link.request, own);
        if (!varies && own > 0 && !link.used) link.effect->ProcFrame(&record, int(own), &adapter);
        link.effect->Seek(unsigned(own));
        link.effect->ProcFrameInPlace(&record, int(own), &adapter);
        link.used = true;
        if (const std::optional<std::string> error = TakeModuleError())
            throw HostError(ExitCode::Failed, link.request->effect + " fails at frame " + std::to_string(position) +
                                                  " of the run: " + *error);
    }
}

}  // namespace Nifikral
