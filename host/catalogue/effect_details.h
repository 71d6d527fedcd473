#pragma once

#include <string>
#include <vector>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_module.h"

namespace Nifikral {

struct ParameterDetails {
    PropertyInfo property;
    ParameterInfo info;  ///< says nothing of a property that is not in the catalogue
    bool keyframable;
    std::string start;  ///< at which the command starts it, where that is not the default: "50%"
};

/// What the module and the catalogue say together.
struct EffectDetails {
    std::string name;
    EffectInfo info;                           ///< says nothing of an effect that is not in the catalogue
    std::vector<ParameterDetails> parameters;  ///< in the catalogue's order, the duration last
};

/// All effects of the catalogue that the module knows, in its order.
std::vector<EffectDetails> AllEffects(const EffectModule& module);
/// Both throw a usage error for a name that the module does not know.
EffectDetails DetailsOf(const EffectModule& module, const std::string& name);
EffectPtr CreateKnown(const EffectModule& module, const std::string& name);

const char* TypeName(PropertyType type);
const char* KindName(Kind kind);

/// "0 to 50".
std::string RangeText(const ValueRange& range);
/// "int32, default 250, works with 200 until it is set", or "int32, default 0, started at 50%".
std::string TypeAndDefault(const ParameterDetails& parameter);
/// Range, unit, choices or words: "0 to 50 passes".
std::string ValuesText(const ParameterInfo& info);

}  // namespace Nifikral
