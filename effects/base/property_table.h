#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

namespace AVBased {

/// A property of an effect or generator: its name, its registered default text, and what setting it does: it goes to a
/// member of the settings, or to a function that takes the settings and the value. The type code follows from these.
/// The text and the member's own initial value may differ on purpose.
template <class Settings>
struct Property {
    using Node = CBaseAVProc::PropertyNode;
    using SetNumber = void (*)(Settings&, std::int32_t);
    using SetText = void (*)(Settings&, const std::string&);

    const char* name;
    const char* defaultText;
    std::variant<std::int32_t Settings::*, std::uint32_t Settings::*, double Settings::*, SetNumber, SetText> target;

    std::int32_t Type() const {
        if (std::holds_alternative<SetText>(target)) return CBaseAVProc::typeText;
        return std::holds_alternative<double Settings::*>(target) ? CBaseAVProc::typeReal : CBaseAVProc::typeInt32;
    }
    /// The default as text and value.
    Node Default() const {
        Node node{defaultText, Type()};
        node.Parse();
        return node;
    }
    /// Stores the value of `node`. True when that changed the member, and after every call of a function.
    bool Store(Settings& settings, const Node& node) const {
        return std::visit([&](auto to) { return StoreIn(to, settings, node); }, target);
    }

 private:
    template <class Value>
    static bool StoreIn(Value Settings::*member, Settings& settings, const Node& node) {
        const Value before = settings.*member;
        settings.*member = node.Value<Value>();
        return !(settings.*member == before);
    }
    static bool StoreIn(SetNumber set, Settings& settings, const Node& node) {
        set(settings, node.Value<std::int32_t>());
        return true;
    }
    static bool StoreIn(SetText set, Settings& settings, const Node& node) {
        set(settings, node.text);
        return true;
    }
};

/// Declares every row of `table` with its default. Settings keep their initial members.
template <class Table>
void DeclareProperties(CBaseAVProc& object, const Table& table) {
    for (const auto& property : table) {
        CBaseAVProc::PropertyNode node = property.Default();
        object.AddProperty(property.name, node);
    }
}

/// Stores the value of `node` by the row called `name`. True when Property::Store is; false without such a row.
template <class Settings, class Table>
bool StoreProperty(Settings& settings, const Table& table, const std::string& name,
                   const CBaseAVProc::PropertyNode& node) {
    for (const Property<Settings>& property : table)
        if (name == property.name) return property.Store(settings, node);
    return false;
}

}  // namespace AVBased
