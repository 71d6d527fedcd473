#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bridges/frei0r/interface.h"
#include "host/catalogue/catalogue.h"

namespace Nifikral::Frei0r {

/// What a parameter is for: a property of the effect, the time at which the effect stands, or how numbers are given.
enum class Role { Property, Duration, Begin, FrameRate, TimeUnit, TrueValues };

/// A parameter of a plug-in. Hosts keep numbers between 0 and 1, so 0 to 1 stands for a true range, unless the switch
/// TrueValues is on.
struct Parameter {
    const char* property = "";  ///< its name in the module, if it has one there
    Role role = Role::Property;
    ParameterType type = numberParameter;
    std::string name, explanation;
    ValueRange range = {0, 1};  ///< of a picture 1 x 1 where it grows with the picture
    bool growsWithWidth = false, growsWithHeight = false;
    std::optional<double> initial;  ///< a true value, where it is not the property's default

    /// Whether it is a share of the picture.
    bool IsShare() const { return growsWithWidth || growsWithHeight; }
    /// The true range on a picture of that size.
    ValueRange RangeOn(unsigned width, unsigned height) const;
};

/// The parameters of an effect in the catalogue's order, then those of its time, then how numbers are given.
std::vector<Parameter> ParametersOf(const EffectInfo& effect);

/// A true value as the nearest one between 0 and 1, and back.
double ToUnit(double value, const ValueRange& range);
double FromUnit(double unit, const ValueRange& range);

}  // namespace Nifikral::Frei0r
