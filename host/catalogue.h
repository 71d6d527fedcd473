#pragma once

#include <limits>
#include <span>
#include <string_view>

/// What the module cannot tell of its effects: meanings, units and sensible ranges. Names, types and defaults come from
/// the module itself.
namespace Nifikral {

struct Choice {
    int value;
    const char* meaning;
};

struct ValueRange {
    double low = -std::numeric_limits<double>::infinity(), high = std::numeric_limits<double>::infinity();

    bool Contains(double value) const { return value >= low && value <= high; }
};

struct ParameterInfo {
    const char* name;
    const char* meaning;
    const char* unit;
    ValueRange sensible = {};  ///< outside: the command warns
    std::span<const Choice> choices = {};
    ValueRange bearable = {};  ///< outside: the command refuses, since the run would not end
};

enum EffectTraits : unsigned {
    plain = 0,
    variesWithTime = 1,  ///< reads the position: the number of frames must be known
    changesAlpha = 2,    ///< shows in the alpha channel alone
    generator = 4,       ///< makes pictures of its own from what it opens through the host
    menu = 8,            ///< a generator with the properties of a menu
};

struct EffectInfo {
    const char* name;
    const char* summary;
    unsigned traits = plain;
    std::span<const ParameterInfo> parameters = {};
};

/// Every effect name that a module of this kind may know, in its own order.
std::span<const EffectInfo> Catalogue();
/// The catalogue's row, null for a name that is not in it.
const EffectInfo* FindEffect(std::string_view name);
/// The row of one parameter; "duration" belongs to every effect. Null for one that is not in the catalogue.
const ParameterInfo* FindParameter(std::string_view effect, std::string_view parameter);

}  // namespace Nifikral
