#include "host/catalogue/effect_details.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/base/number_text.h"
#include "host/catalogue/effect_search.h"

namespace Nifikral {
namespace {

EffectDetails Details(const std::string& name, AVBased::IVideoProc& effect) {
    const EffectInfo* const known = FindEffect(name);
    EffectDetails details{name, known ? *known : EffectInfo{"", "", ""}, {}};
    for (PropertyInfo& property : Properties(effect)) {
        const ParameterInfo* const row = FindParameter(name, property.name);
        const ParameterInfo info = row ? *row : ParameterInfo{"", "", ""};
        const bool isStarted = (details.info.traits & idleAtDefaults) != 0;
        std::string start = isStarted ? ShownValue(details.info, property.name) : std::string();
        details.parameters.push_back(
            {std::move(property), info, row && IsKeyframable(details.info, *row), std::move(start)});
    }
    // A row's place in the catalogue; those that are not among the effect's own come last.
    const auto place = [&](const ParameterDetails& parameter) {
        const std::span<const ParameterInfo> rows = details.info.parameters;
        return std::find_if(rows.begin(), rows.end(),
                            [&](const ParameterInfo& row) { return parameter.property.name == row.name; }) -
               rows.begin();
    };
    std::ranges::stable_sort(details.parameters, {}, place);
    return details;
}

std::vector<std::string> KnownEffects(const EffectModule& module) {
    std::vector<std::string> names;
    for (const EffectInfo& effect : Catalogue())
        if (module.Create(effect.name)) names.emplace_back(effect.name);
    return names;
}

std::string ColourText(double value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%06lX", std::lround(value));
    return text;
}

}  // namespace

std::vector<EffectDetails> AllEffects(const EffectModule& module) {
    std::vector<EffectDetails> all;
    for (const EffectInfo& info : Catalogue())
        if (const EffectPtr effect = module.Create(info.name)) all.push_back(Details(info.name, *effect));
    return all;
}

EffectPtr CreateKnown(const EffectModule& module, const std::string& name) {
    EffectPtr effect = module.Create(name);
    if (!effect) {
        std::string meant = DidYouMean(name, KnownEffects(module));
        for (const std::string& found : meant.empty() ? EffectsFor(name) : std::vector<std::string>())
            meant.append(meant.empty() ? "; did you mean " : " or ").append(found);
        if (!meant.empty() && !meant.ends_with('?')) meant += '?';
        throw HostError(ExitCode::Usage, "there is no effect \"" + name + "\"" + meant + " (nifikral list shows all)");
    }
    return effect;
}

EffectDetails DetailsOf(const EffectModule& module, const std::string& name) {
    return Details(name, *CreateKnown(module, name));
}

const char* TypeName(PropertyType type) {
    switch (type) {
        case PropertyType::Text:
            return "text";
        case PropertyType::Real:
            return "real";
        case PropertyType::Int64:
            return "int64";
        case PropertyType::Int32:
            return "int32";
        case PropertyType::Int16:
            return "int16";
    }
    return "unknown";
}

const char* KindName(Kind kind) {
    switch (kind) {
        case Kind::Number:
            return "number";
        case Kind::Column:
            return "column";
        case Kind::Row:
            return "row";
        case Kind::Length:
            return "length";
        case Kind::Switch:
            return "switch";
        case Kind::Choice:
            return "choice";
        case Kind::Word:
            return "word";
        case Kind::Colour:
            return "colour";
        case Kind::Seed:
            return "seed";
        case Kind::File:
            return "file";
        case Kind::Text:
            return "text";
    }
    return "unknown";
}

std::string RangeText(const ValueRange& range) {
    if (!std::isfinite(range.high)) return NumberText(range.low) + " or more";
    return NumberText(range.low) + " to " + NumberText(range.high);
}

std::string TypeAndDefault(const ParameterDetails& parameter) {
    const PropertyInfo& property = parameter.property;
    const bool isNumber = property.type != PropertyType::Text;
    const auto inWords = [&](double value) {
        return parameter.info.kind == Kind::Colour ? ColourText(value) : NumberText(value);
    };
    std::string text = TypeName(property.type) + std::string(", default ");
    if (property.defaultText.empty())
        text += "empty";
    else
        text += isNumber ? inWords(std::strtod(property.defaultText.c_str(), nullptr)) : property.defaultText;
    if (parameter.info.initial) text += ", works with " + inWords(*parameter.info.initial) + " until it is set";
    if (!parameter.start.empty()) text += ", started at " + parameter.start;
    return text;
}

std::string ValuesText(const ParameterInfo& info) {
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    const bool ranged = std::isfinite(info.sensible.low) && std::isfinite(info.sensible.high);
    const std::string unit = info.unit;
    if (!info.choices.empty()) {
        for (const Choice& choice : info.choices) add(std::to_string(choice.value) + " " + choice.meaning);
    } else if (info.kind == Kind::Colour) {
        add(ranged ? "0xRRGGBB" : "#rrggbb");
    } else if (ranged) {
        add(RangeText(info.sensible) + (unit.empty() ? "" : " ") + unit);
    } else if (!unit.empty()) {
        add("in " + unit);
    }
    for (const char* const word : info.words) add(word);
    if (info.separator == std::string_view(" ")) text = "any of " + text;
    if (info.separator == std::string_view(";")) text += ", one or several joined by \";\"";
    return text;
}

}  // namespace Nifikral
