#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bridges/frei0r/interface.h"
#include "host/catalogue/catalogue.h"

namespace Nifikral::Frei0r {

/// What a parameter is for: a property of the effect, or the time at which the effect stands.
enum class Role { Property, Duration, Begin, FrameRate, TimeUnit };

/// A parameter of a plug-in. Hosts keep numbers between 0 and 1, so 0 to 1 stands for a true range.
struct Parameter {
    const char* property = "";  ///< its name in the module, if it has one there
    Role role = Role::Property;
    ParameterType type = numberParameter;
    std::string name, explanation;
    ValueRange range = {0, 1};  ///< of a picture 1 x 1 where it grows with the picture
    bool growsWithWidth = false, growsWithHeight = false;
    std::optional<double> initial;  ///< a true value, where it is not the property's default

    /// The true range on a picture of that size.
    ValueRange RangeOn(unsigned width, unsigned height) const;
};

/// The parameters of an effect in the catalogue's order, then those of its time.
std::vector<Parameter> ParametersOf(const EffectInfo& effect);

/// A true value as the nearest one between 0 and 1, and back.
double ToUnit(double value, const ValueRange& range);
double FromUnit(double unit, const ValueRange& range);

}  // namespace Nifikral::Frei0r
