#include "host/catalogue/effect_module.h"

#include <dlfcn.h>

#include <new>

#include "TarvoBased/IStrings.h"
#include "TarvoBased/ITarvoException.h"
#include "TarvoBased/error_codes.h"
#include "host/base/errors.h"
#include "host/catalogue/module_file.h"

namespace Nifikral {
EffectModule::EffectModule(const std::string& path, AVBased::IAVManager* manager)
    : m_path(path.empty() ? FindModuleFile() : path), m_manager(manager) {
    // Never closed: effects may still live when this object goes.
    void* const handle = dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        throw HostError(ExitCode::Failed, "the effect module cannot be loaded (" + std::string(dlerror()) +
                                              "); name its file in $NIFIKRAL_MODULE");
    m_create = reinterpret_cast<AVBased::CreateVideoProcFunction>(dlsym(handle, AVBased::createVideoProcSymbol));
    if (!m_create)
        throw HostError(ExitCode::Failed,
                        m_path + " is no effect module: it does not export " + AVBased::createVideoProcSymbol);
}

EffectPtr EffectModule::Create(const std::string& name) const {
    TarvoBased::ITarvoException* const current = TarvoBased::GetTarvoException();
    current->Clear();
    EffectPtr effect(m_create(m_manager, name.c_str()));
    const int code = FiledCode();
    const std::optional<std::string> error = TakeModuleError();
    if (!effect && code != TarvoBased::errorNotFound)
        throw HostError(ExitCode::Failed,
                        "the effect " + name + " cannot be made: " + error.value_or("no reason given"), code);
    return effect;
}

std::vector<PropertyInfo> Properties(AVBased::IVideoProc& effect) {
    const auto release = [](TarvoBased::IStrings* list) { list->Free(); };
    const std::unique_ptr<TarvoBased::IStrings, decltype(release)> names(effect.GetPropertyNames(), release);
    // An effect that has none returns an empty list.
    if (!names) throw std::bad_alloc();
    std::vector<PropertyInfo> properties;
    for (int i = 0; i < names->GetCount(); ++i) {
        const std::string name = names->GetString(i)->GetStr();
        int type = 0;
        const char* const text = effect.GetProperty(name.c_str(), &type);
        properties.push_back({name, PropertyType(type), text ? text : ""});
    }
    return properties;
}

int FiledCode() { return TarvoBased::GetTarvoException()->GetExceptionCode(); }

std::optional<std::string> TakeFiledMessage() {
    TarvoBased::ITarvoException* const current = TarvoBased::GetTarvoException();
    if (current->GetExceptionCode() == TarvoBased::noError) return std::nullopt;
    const std::string text = current->GetExceptionMsg();
    current->Clear();
    return text;
}

std::optional<std::string> TakeModuleError() {
    const int code = FiledCode();
    std::optional<std::string> text = TakeFiledMessage();
    if (text) text->append(" (code " + std::to_string(code) + ")");
    return text;
}

}  // namespace Nifikral
