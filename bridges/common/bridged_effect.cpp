#include "bridges/common/bridged_effect.h"

#include "TarvoBased/ITarvoException.h"
#include "host/errors.h"

namespace Nifikral {
namespace {

// Runs a call into the module; answers what it files.
template <class Call>
std::optional<std::string> FiledBy(const std::string& effect, Call&& call) {
    TarvoBased::GetTarvoException()->Clear();
    call();
    const std::optional<std::string> error = TakeModuleError();
    if (!error) return std::nullopt;
    return effect + ": " + *error;
}

EffectPtr Made(const EffectModule& module, const std::string& name) {
    EffectPtr effect = module.Create(name);
    if (!effect) throw HostError(ExitCode::Failed, module.Path() + " knows no effect \"" + name + "\"");
    return effect;
}

}  // namespace

const BridgeModule& TheBridgeModule(AVBased::IAVManager* manager) {
    static const BridgeModule loaded = [&]() -> BridgeModule {
        try {
            return {EffectModule({}, manager), {}};
        } catch (const std::exception& error) {
            return {std::nullopt, error.what()};
        }
    }();
    return loaded;
}

BridgedEffect::BridgedEffect(const EffectModule& module, const std::string& name)
    : m_name(name), m_effect(Made(module, name)), m_properties(Nifikral::Properties(*m_effect)) {}

std::optional<std::string> BridgedEffect::Set(const std::string& property, const std::string& text) {
    const auto [known, fresh] = m_texts.try_emplace(property, text);
    if (!fresh && known->second == text) return std::nullopt;
    known->second = text;
    return FiledBy(m_name + "'s " + property, [&] { m_effect->SetProperty(property.c_str(), text.c_str()); });
}

std::optional<std::string> BridgedEffect::Process(AVBased::IRawVideoFrame& frame, int position) {
    AVBased::ImagePostion record;
    frame.GetDimension(&record.width, &record.height);
    return FiledBy(m_name, [&] { m_effect->ProcFrameInPlace(&record, position, &frame); });
}

std::optional<std::string> BridgedEffect::Seek(unsigned position) {
    return FiledBy(m_name, [&] { m_effect->Seek(position); });
}

}  // namespace Nifikral
