#include "bridges/frei0r/parameters.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace Nifikral::Frei0r {
namespace {

// Of the numbers that a seed may be.
constexpr ValueRange seeds = {0, 1000};

Parameter OfTime(Role role, const char* name, const char* meaning, ValueRange range, double initial) {
    Parameter parameter;
    parameter.role = role;
    parameter.name = name;
    parameter.range = range;
    parameter.initial = initial;
    parameter.explanation = meaning;
    return parameter;
}

// "tensile_vertical_y1" is "vertical_y1" among the parameters of "tensile".
std::string_view WithoutPrefix(std::string_view property, std::string_view effect) {
    if (property.starts_with(effect) && property.substr(effect.size()).starts_with('_'))
        property.remove_prefix(effect.size() + 1);
    return property;
}

// " pixels", " times 1/256", or nothing.
std::string Spaced(std::string_view unit) {
    if (unit.empty()) return {};
    return (unit.starts_with("1/") ? " times " : " ") + std::string(unit);
}

std::string Explanation(const Nifikral::ParameterInfo& info, const Parameter& parameter) {
    std::ostringstream text;
    text << info.meaning;
    if (parameter.type != numberParameter) return text.str();
    if (!info.choices.empty()) {
        for (const Choice& choice : info.choices)
            text << (&choice == info.choices.data() ? ": " : ", ") << ToUnit(choice.value, parameter.range) << " "
                 << choice.meaning;
        return text.str();
    }
    text << "; 0 to 1 is ";
    if (parameter.IsShare())
        text << "0 to the picture's " << (parameter.growsWithWidth ? "width" : "height");
    else
        text << parameter.range.low << " to " << parameter.range.high << Spaced(info.unit);
    return text.str();
}

Parameter OfProperty(const EffectInfo& effect, const Nifikral::ParameterInfo& info) {
    Parameter parameter;
    parameter.property = info.name;
    parameter.name = WithoutPrefix(info.name, effect.name);
    parameter.growsWithHeight = info.kind == Kind::Row;
    parameter.growsWithWidth = info.kind == Kind::Column || info.kind == Kind::Length;
    if (info.kind == Kind::Seed)
        parameter.range = seeds;
    else if (!parameter.IsShare())
        parameter.range = info.sensible;
    if (info.kind == Kind::Switch) parameter.type = switchParameter;
    if (info.kind == Kind::Colour) parameter.type = colourParameter;
    parameter.initial = info.initial;
    parameter.explanation = Explanation(info, parameter);
    return parameter;
}

}  // namespace

ValueRange Parameter::RangeOn(unsigned width, unsigned height) const {
    const double side = growsWithWidth ? width : growsWithHeight ? height : 1;
    return {range.low * side, range.high * side};
}

std::vector<Parameter> ParametersOf(const EffectInfo& effect) {
    std::vector<Parameter> parameters;
    for (const Nifikral::ParameterInfo& info : effect.parameters) parameters.push_back(OfProperty(effect, info));
    if (effect.traits & variesWithTime) {
        Parameter length = OfTime(Role::Duration, "duration",
                                  "length of the effect; 0 to 1 is 0 to 10000 frames, 0.005 means 50", {0, 10000}, 50);
        length.property = "duration";
        parameters.push_back(length);
        parameters.push_back(OfTime(Role::Begin, "begin",
                                    "where it begins; 0 to 1 is frame 0 to 1000000, 0.00025 means frame 250",
                                    {0, 1000000}, 0));
    }
    if (effect.traits & (variesWithTime | newEachFrame)) {
        parameters.push_back(OfTime(Role::FrameRate, "fps",
                                    "frame rate; 0 to 1 is 0 to 1000 frames a second, 0.025 means 25", {0, 1000}, 25));
        parameters.push_back(OfTime(Role::TimeUnit, "time_unit",
                                    "what the program's time counts: 0 automatic, 0.25 seconds, 0.5 milliseconds, "
                                    "0.75 frames, 1 nothing (pictures are counted)",
                                    {0, 4}, 0));
    }
    if (std::ranges::any_of(parameters, [](const Parameter& parameter) {
            return parameter.type == numberParameter && !parameter.IsShare();
        })) {
        Parameter given = OfTime(Role::TrueValues, "true_values",
                                 "numbers are given as what 0 to 1 stands for; places and lengths stay shares of the "
                                 "picture",
                                 {0, 1}, 0);
        given.type = switchParameter;
        parameters.push_back(given);
    }
    return parameters;
}

double ToUnit(double value, const ValueRange& range) {
    const double length = range.high - range.low;
    return length > 0 ? std::clamp((value - range.low) / length, 0.0, 1.0) : 0;
}

double FromUnit(double unit, const ValueRange& range) {
    return range.low + std::clamp(unit, 0.0, 1.0) * (range.high - range.low);
}

}  // namespace Nifikral::Frei0r
