#include "bridges/common/bridged_effect.h"

#include <utility>

#include "TarvoBased/ITarvoException.h"
#include "host/base/errors.h"

namespace Nifikral {
namespace {

// Runs a call into the module; returns what it files.
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
    : m_module(module), m_name(name), m_effect(Made(module, name)), m_properties(Nifikral::Properties(*m_effect)) {}

std::optional<std::string> BridgedEffect::Set(const std::string& property, const std::string& text) {
    const auto [known, fresh] = m_texts.try_emplace(property, text);
    if (!fresh && known->second == text) return std::nullopt;
    known->second = text;
    return FiledBy(m_name + "'s " + property, [&] { m_effect->SetProperty(property.c_str(), text.c_str()); });
}

std::optional<std::string> BridgedEffect::Text(const std::string& property) const {
    const char* const text = m_texts.contains(property) ? m_effect->GetProperty(property.c_str(), nullptr) : nullptr;
    if (!text) return std::nullopt;
    return text;
}

void BridgedEffect::Renew() {
    const EffectPtr former = std::exchange(m_effect, Made(m_module, m_name));
    for (auto& [property, text] : m_texts) {
        // Not the text that was last set: the effect may have refused it.
        const char* const present = former->GetProperty(property.c_str(), nullptr);
        if (!present) continue;
        text = present;
        m_effect->SetProperty(property.c_str(), present);
    }
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
