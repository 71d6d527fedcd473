#pragma once

#include <span>

#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/property_table.h"

namespace AVBased {

/// An effect whose properties fill a plain struct, as a table says that outlives the effect.
template <class Settings>
class CSettingsEffect : public CBasedVideoImageEffect {
 public:
    void OnSetProperty(const std::string& name, PropertyNode& node) override {
        CBasedVideoImageEffect::OnSetProperty(name, node);
        OnParsed(node);
        if (StoreProperty(m_settings, m_properties, name, node)) OnSettingsChanged();
    }

 protected:
    CSettingsEffect(const char* name, std::span<const Property<Settings>> properties)
        : CBasedVideoImageEffect(name), m_properties(properties) {
        DeclareProperties(*this, properties);
    }
    /// May change the value that a property was set to before it is stored; the host reads the changed one back.
    virtual void OnParsed(PropertyNode&) {}
    /// Called after a property has changed its member.
    virtual void OnSettingsChanged() {}

    Settings m_settings;

 private:
    std::span<const Property<Settings>> m_properties;
};

}  // namespace AVBased
