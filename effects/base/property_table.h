#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

namespace AVBased {

/// A property of an effect: its name, its registered default text, and the member of the settings that it sets. The
/// type code follows from the member. The text and the member's own initial value may differ on purpose.
template <class Settings>
struct Property {
    const char* name;
    const char* defaultText;
    std::variant<std::int32_t Settings::*, std::uint32_t Settings::*, double Settings::*> member;

    std::int32_t Type() const {
        return std::holds_alternative<double Settings::*>(member) ? CBaseAVProc::typeReal : CBaseAVProc::typeInt32;
    }
};

/// Declares every row of `table` with its default as text and value. Settings keep their initial members.
template <class Table>
void DeclareProperties(CBaseAVProc& object, const Table& table) {
    for (const auto& property : table) {
        CBaseAVProc::PropertyNode node{property.defaultText, property.Type()};
        node.Parse();
        object.AddProperty(property.name, node);
    }
}

/// Copies the parsed value of `node` into the member of the row called `name`. True when that changed the member.
template <class Settings, class Table>
bool StoreProperty(Settings& settings, const Table& table, const std::string& name,
                   const CBaseAVProc::PropertyNode& node) {
    for (const Property<Settings>& property : table)
        if (name == property.name)
            return std::visit(
                [&]<class T>(T Settings::*member) {
                    const T before = settings.*member;
                    settings.*member = node.Value<T>();
                    return !(settings.*member == before);
                },
                property.member);
    return false;
}

}  // namespace AVBased
