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

EffectChain::EffectChain(const EffectModule& module, const std::vector<PlacedEffect>& effects) : m_module(module) {
    for (const PlacedEffect& placed : effects) m_links.push_back({&placed, Make(placed, 0)});
}

EffectPtr EffectChain::Make(const PlacedEffect& placed, long long position) const {
    EffectPtr effect = m_module.Create(placed.effect);
    if (!effect) throw HostError(ExitCode::Failed, "the effect " + placed.effect + " is gone");
    for (const ParameterSetting& setting : placed.settings)
        Set(*effect, setting.property, setting.value.At(position, placed.frameCount));
    return effect;
}

void EffectChain::Process(AVFrame& frame, unsigned formatCode, long long number) {
    TarvoBased::GetTarvoException()->Clear();
    for (Link& link : m_links) {
        const PlacedEffect& placed = *link.placed;
        if (number < placed.frames.first || number > placed.frames.last) continue;
        const long long position = number - placed.frames.first;
        if (!placed.regions.empty()) {
            if (!m_original) m_original = NewPicture(AVPixelFormat(frame.format), frame.width, frame.height);
            if (av_frame_copy(m_original.get(), &frame) < 0) throw std::bad_alloc();
        }
        Run(link, frame, formatCode, position);
        const int code = FiledCode();
        if (const std::optional<std::string> error = TakeModuleError())
            throw HostError(ExitCode::Failed,
                            placed.effect + " fails at frame " + std::to_string(number) + ": " + *error, code);
        for (const Region& region : placed.regions)
            Compose(frame, *m_original, *region.At(position, placed.frameCount));
    }
}

// An effect may treat its first picture otherwise than later ones, from tables that it keeps. The first frame that it
// works on gets a fresh object, any other one that has seen a picture; where values change over time, every frame gets
// a fresh one.
void EffectChain::Run(Link& link, AVFrame& frame, unsigned formatCode, long long position) const {
    FrameAdapter adapter(frame, formatCode, int(position));
    AVBased::ImagePostion record{0, 0, unsigned(frame.width), unsigned(frame.height)};
    const bool varies = link.placed->Varies();
    if (varies || (position == 0 && link.used)) link.effect = Make(*link.placed, position);
    if (!varies && position > 0 && !link.used) link.effect->ProcFrame(&record, int(position), &adapter);
    link.effect->Seek(unsigned(position));
    link.effect->ProcFrameInPlace(&record, int(position), &adapter);
    link.used = true;
}

}  // namespace Nifikral
