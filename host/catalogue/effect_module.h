#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "avbase/IVideoProc.h"

namespace Nifikral {

struct FreeEffect {
    void operator()(AVBased::IVideoProc* effect) const { effect->Free(); }
};
using EffectPtr = std::unique_ptr<AVBased::IVideoProc, FreeEffect>;

/// Type codes of IAVProc::GetProperty.
enum class PropertyType { Text = 0, Real = 1, Int64 = 2, Int32 = 3, Int16 = 4 };

struct PropertyInfo {
    std::string name;
    PropertyType type;
    std::string defaultText;
};

/// The loaded module. Threads: any.
class EffectModule {
 public:
    /// Loads `path`, or when it is empty what FindModuleFile finds. `manager` opens files and texts for the generators
    /// and outlives every effect; without one, opening anything fails.
    explicit EffectModule(const std::string& path, AVBased::IAVManager* manager = nullptr);

    /// A new object; null for a name that the module does not know. Throws when the module knows it and fails.
    EffectPtr Create(const std::string& name) const;
    const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
    AVBased::IAVManager* m_manager;
    AVBased::CreateVideoProcFunction m_create;
};

/// What the module reports of an effect's properties, in its own order.
std::vector<PropertyInfo> Properties(AVBased::IVideoProc& effect);

/// The code of the calling thread's pending error, 0 when there is none.
int FiledCode();
/// The calling thread's pending error as words, and none left pending.
std::optional<std::string> TakeFiledMessage();
/// The same with the error's code.
std::optional<std::string> TakeModuleError();

}  // namespace Nifikral
