#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "avbase/IRawVideoFrame.h"
#include "host/catalogue/effect_module.h"

namespace Nifikral {

/// The module as a bridge has it: loaded once, or why it cannot be.
struct BridgeModule {
    std::optional<EffectModule> module;
    std::string error;  ///< a line for the user, where there is no module
};

/// The module that belongs to this bridge, loaded by the first call. `manager` (of the first call) opens what
/// generators ask for, as EffectModule has it. Threads: any.
const BridgeModule& TheBridgeModule(AVBased::IAVManager* manager = nullptr);

/// An effect as another program drives it. Threads: one at a time.
///
/// Each call takes the module's error and returns it as a line; nothing means success.
class BridgedEffect {
 public:
    /// `module` outlives this object. Throws HostError for a name that it does not know or cannot make.
    BridgedEffect(const EffectModule& module, const std::string& name);

    /// The effect's properties as they are when nothing is set.
    const std::vector<PropertyInfo>& Properties() const { return m_properties; }
    /// Sets a property, unless it was last set to the same text: programs set all of them before every frame, and an
    /// effect may have to rebuild its tables. A refused text is passed on once.
    std::optional<std::string> Set(const std::string& property, const std::string& text);
    /// What the effect made of the texts that the property was set to; none as long as it was not set.
    std::optional<std::string> Text(const std::string& property) const;
    /// Exchanges the object for a new one with the same settings: an effect may keep tables for the size of picture
    /// that it saw first. Throws HostError when the module cannot make one.
    void Renew();
    /// Changes `frame` in place. `position` as IVideoProc has it, usually the number of the frame.
    std::optional<std::string> Process(AVBased::IRawVideoFrame& frame, int position);
    /// Moves a generator to a frame.
    std::optional<std::string> Seek(unsigned position);

 private:
    const EffectModule& m_module;
    std::string m_name;
    EffectPtr m_effect;
    std::vector<PropertyInfo> m_properties;
    std::map<std::string, std::string> m_texts;  // as last set
};

}  // namespace Nifikral
