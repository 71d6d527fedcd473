#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <string>

#include "avbase/IAVProc.h"

namespace AVBased {

/// The base of every processing object: identity, typed text properties and named interfaces.
class CBaseAVProc : public IAVProc {
 public:
    enum PropertyType : std::int32_t { typeText = 0, typeReal = 1, typeInt64 = 2, typeInt32 = 3, typeInt16 = 4 };

    /// A property: its text as last given, its type code, and an 8-byte slot with the parsed value.
    struct PropertyNode {
        std::string text;
        std::int32_t type = typeText;
        unsigned char slot[8] = {};

        /// The slot's leading bytes read as T (const char* for text: the node's own text).
        template <class T>
        T Value() const {
            static_assert(sizeof(T) <= sizeof slot);
            T value;
            std::memcpy(&value, slot, sizeof value);
            return value;
        }
        template <class T>
        void SetValue(T value) {
            static_assert(sizeof(T) <= sizeof slot);
            std::memcpy(slot, &value, sizeof value);
        }
        /// Scans the text into the slot as the type says. Text without a leading number leaves the slot as it was.
        void Parse();
    };

    /// `type` and `subtype` as GetType() and GetSubType() return them; `name` must not be null and is copied.
    CBaseAVProc(const char* name, unsigned type, unsigned subtype);
    CBaseAVProc(const CBaseAVProc&) = delete;
    CBaseAVProc& operator=(const CBaseAVProc&) = delete;

    void* GetInterface(const char* name) override;
    void Free() override;
    unsigned GetType() override { return m_type; }
    unsigned GetSubType() override { return m_subtype; }
    const char* GetName() override { return m_name.c_str(); }
    bool SetProperty(const char* name, const char* value) override;
    const char* GetProperty(const char* name, int* type) override;
    TarvoBased::IStrings* GetPropertyNames() override;
    virtual ~CBaseAVProc() = default;

    /// Called after the text of property `name` has changed; turns it into a value. An override calls its base first.
    /// One that throws refuses the value: the node is put back as it was.
    virtual void OnSetProperty(const std::string& name, PropertyNode& node);

    /// Declares a property with its default as text and as value; the parser does not run. A name declared before
    /// stays.
    void AddProperty(const std::string& name, const PropertyNode& node);
    /// Registers a borrowed pointer into this object. A name registered before stays.
    void AddInterface(const std::string& name, void* pointer);

 protected:
    /// The declared property `name`; raises 10021005 for an unknown one.
    PropertyNode& RequireProperty(const std::string& name, int line);

 private:
    unsigned m_type, m_subtype;
    std::string m_name;
    std::map<std::string, PropertyNode> m_properties;
    std::map<std::string, void*> m_interfaces;
};

}  // namespace AVBased
