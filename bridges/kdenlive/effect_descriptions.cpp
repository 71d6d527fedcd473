#include "bridges/kdenlive/effect_descriptions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string_view>

#include "bridges/frei0r/frame_clock.h"
#include "bridges/frei0r/parameters.h"
#include "host/base/errors.h"
#include "host/base/markup.h"
#include "host/base/number_text.h"

namespace Nifikral::Kdenlive {
namespace {

using Frei0r::Parameter;
using Frei0r::Role;

constexpr double percent = 100;
// Kdenlive's usual picture, for lengths that are a share of its shorter side.
constexpr double widthByHeight = 16.0 / 9;

// What it starts with: as the effect is shown, else as it works by itself.
double Start(const EffectInfo& effect, const Parameter& parameter, const ParameterInfo* info,
             const std::vector<PropertyInfo>& properties) {
    const bool asShown = info && ((effect.traits & idleAtDefaults) || parameter.IsShare());
    const std::string shown = asShown ? ShownValue(effect, info->name) : "";
    const double value = std::strtod(shown.c_str(), nullptr);
    if (parameter.IsShare()) {
        const double share = value / percent / (MeasureOf(*info) == Measure::ShorterSide ? widthByHeight : 1);
        return std::round(share * 1000) / 1000;
    }
    if (!shown.empty()) return value;
    if (parameter.initial) return *parameter.initial;
    for (const PropertyInfo& property : properties)
        if (property.name == parameter.property) return std::strtod(property.defaultText.c_str(), nullptr);
    return 0;
}

std::string ColourText(double colour) {
    std::array<char, sizeof "#rrggbb"> text{};
    std::snprintf(text.data(), text.size(), "#%06x", unsigned(colour) & 0xFFFFFFU);
    return text.data();
}

std::string Suffix(std::string_view unit) {
    // Of units such as "1/256" the numerator goes without saying.
    if (unit.starts_with("1/")) return std::string(unit.substr(1));
    return unit.empty() ? "" : std::string(" ").append(unit);
}

int Decimals(double step) { return step >= 1 ? 0 : int(std::ceil(-std::log10(step))); }

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + Markup(value) + '"';
}
std::string Attribute(const char* name, double value) { return Attribute(name, NumberText(value)); }

std::string Capitalised(std::string text) {
    if (!text.empty()) text[0] = char(std::toupper(static_cast<unsigned char>(text[0])));
    std::ranges::replace(text, '_', ' ');
    return text;
}

std::string Choices(const ParameterInfo& info, double start) {
    std::string values, meanings;
    for (const Choice& choice : info.choices) {
        if (!values.empty()) values += ';', meanings += ',';
        values += std::to_string(choice.value);
        meanings += Markup(choice.meaning);
    }
    return " type=\"list\"" + Attribute("default", start) + Attribute("paramlist", values) + ">\n" +
           "        <paramlistdisplay>" + meanings + "</paramlistdisplay>\n";
}

std::string Number(const EffectInfo& effect, const Parameter& parameter, const ParameterInfo* info, double start) {
    const bool moves = info && parameter.role == Role::Property && IsKeyframable(effect, *info);
    std::string text = std::string(" type=\"") + (moves ? "animated" : "constant") + '"' + Attribute("default", start);
    if (parameter.IsShare())
        return text + Attribute("min", 0) + Attribute("max", percent) + Attribute("factor", percent) +
               Attribute("decimals", 1) + Attribute("suffix", "%") + ">\n";
    const char* const unit = info ? info->unit : parameter.role == Role::FrameRate ? "frames/s" : "frames";
    return text + Attribute("min", parameter.range.low) + Attribute("max", parameter.range.high) +
           Attribute("decimals", info ? Decimals(info->step) : 0) + (*unit ? Attribute("suffix", Suffix(unit)) : "") +
           ">\n";
}

// With a parameter that Kdenlive sets and does not show.
std::string Fixed(const Parameter& parameter, double value) {
    return "    <parameter" + Attribute("name", parameter.name) + " type=\"fixed\"" + Attribute("default", value) +
           "/>\n";
}

std::string Described(const EffectInfo& effect, const Parameter& parameter,
                      const std::vector<PropertyInfo>& properties) {
    if (parameter.role == Role::TrueValues) return Fixed(parameter, 1);
    if (parameter.role == Role::TimeUnit) return Fixed(parameter, double(Frei0r::TimeUnit::Seconds));
    const ParameterInfo* const info = *parameter.property ? FindParameter(effect.name, parameter.property) : nullptr;
    const double start = Start(effect, parameter, info, properties);
    std::string text = "    <parameter" + Attribute("name", parameter.name);
    if (parameter.type == Frei0r::switchParameter)
        text += " type=\"bool\"" + Attribute("default", start) + ">\n";
    else if (parameter.type == Frei0r::colourParameter)
        text += " type=\"color\"" + Attribute("default", ColourText(start)) + ">\n";
    else if (info && !info->choices.empty())
        text += Choices(*info, start);
    else
        text += Number(effect, parameter, parameter.role == Role::Property ? info : nullptr, start);
    text += "        <name>" + Markup(Capitalised(parameter.name)) + "</name>\n";
    const std::string comment = info && parameter.role == Role::Property ? info->meaning : "";
    if (!comment.empty()) text += "        <comment>" + Markup(Capitalised(comment)) + "</comment>\n";
    return text + "    </parameter>\n";
}

std::string DescriptionOf(const EffectInfo& effect, const EffectModule& module) {
    const EffectPtr object = module.Create(effect.name);
    const std::string id = std::string("frei0r.nifikral_") + effect.name;
    std::ostringstream text;
    // Kdenlive knows no groups but its own, and sorts by names.
    text << "<?xml version=\"1.0\"?>\n<!DOCTYPE kpartgui>\n<effect LC_NUMERIC=\"C\"" << Attribute("tag", id)
         << Attribute("id", id) << ">\n    <name>"
         << Markup(std::string("Nifikral ") + effect.category + ": " + Capitalised(effect.name) + " - " +
                   effect.summary)
         << "</name>\n"
         << "    <description>" << Markup(Capitalised(effect.summary)) << "</description>\n"
         << "    <author>Nifikral</author>\n";
    const std::vector<PropertyInfo> properties = object ? Properties(*object) : std::vector<PropertyInfo>();
    for (const Parameter& parameter : Frei0r::ParametersOf(effect)) text << Described(effect, parameter, properties);
    text << "</effect>\n";
    return text.str();
}

}  // namespace

void WriteEffectDescriptions(const std::filesystem::path& folder, const EffectModule& module) {
    std::filesystem::create_directories(folder);
    for (const EffectInfo& effect : Catalogue()) {
        if (effect.traits & generator) continue;
        const std::filesystem::path file = folder / (std::string("frei0r_nifikral_") + effect.name + ".xml");
        std::ofstream stream(file);
        stream << DescriptionOf(effect, module);
        if (!stream.flush()) throw HostError(ExitCode::Output, file.string() + " cannot be written");
    }
}

}  // namespace Nifikral::Kdenlive
