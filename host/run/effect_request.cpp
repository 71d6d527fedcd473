#include "host/run/effect_request.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_details.h"
#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/nearest_names.h"
#include "host/base/number_text.h"

namespace Nifikral {
namespace {

// A backslash takes away the separator's meaning, for texts that hold it.
std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == separator)
            parts.back() += text[++i];
        else if (text[i] == separator)
            parts.emplace_back();
        else
            parts.back() += text[i];
    }
    return parts;
}

// The whole text as a number; 0x and # start a number of base 16, so that colours can be written as such.
std::optional<double> ParseNumber(std::string text) {
    if (text.starts_with('#')) text = "0x" + text.substr(1);
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front()))) return std::nullopt;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number)) return std::nullopt;
    return number;
}

ValueRange TypeRange(PropertyType type) {
    switch (type) {
        case PropertyType::Int16:
            return {-32768, 32767};
        case PropertyType::Int32:
            return {-2147483648.0, 2147483647.0};
        case PropertyType::Int64:
            return {-9223372036854775808.0, 9223372036854774784.0};
        default:
            return {};
    }
}

double RequireNumber(const std::string& text, PropertyType type) {
    const std::optional<double> number = ParseNumber(text);
    if (!number) throw std::invalid_argument("\"" + text + "\" is no number");
    if (type != PropertyType::Real && *number != std::trunc(*number))
        throw std::invalid_argument("\"" + text + "\" is no whole number");
    if (!TypeRange(type).Contains(*number)) throw std::invalid_argument("\"" + text + "\" is out of range");
    return *number;
}

const PropertyInfo* FindProperty(const std::vector<PropertyInfo>& properties, const std::string& effect,
                                 const std::string& name) {
    for (const PropertyInfo& property : properties)
        if (property.name == name) return &property;
    for (const PropertyInfo& property : properties)
        if (ShortName(effect, property.name) == name) return &property;
    return nullptr;
}

// Refuses what the effect cannot bear and remarks on what is hardly meant.
void CheckAgainstCatalogue(const std::string& effect, const ParameterSetting& setting) {
    const ParameterInfo* const info = FindParameter(effect, setting.property);
    if (!info) return;
    std::optional<double> odd;
    const auto with = [&](double number) { return effect + ": " + setting.property + "=" + NumberText(number); };
    for (const double number : setting.value.Numbers()) {
        if (!info->bearable.Contains(number))
            throw HostError(ExitCode::Usage,
                            with(number) + " is more than the effect bears; use " + RangeText(info->bearable));
        if (!odd && !info->sensible.Contains(number)) odd = number;
    }
    if (odd) PrintWarning(with(*odd) + " lies outside the sensible range " + RangeText(info->sensible));
}

ParameterSetting ParseSetting(const std::string& effect, const std::vector<PropertyInfo>& properties,
                              const std::string& name, const std::string& value) {
    const PropertyInfo* const property = FindProperty(properties, effect, name);
    if (!property) {
        std::vector<std::string> names;
        for (const PropertyInfo& candidate : properties) names.push_back(candidate.name);
        throw HostError(ExitCode::Usage, effect + " has no parameter \"" + name + "\"" + DidYouMean(name, names) +
                                             " (nifikral info " + effect + " lists them)");
    }
    try {
        return {property->name, ParameterValue(value, property->type)};
    } catch (const std::invalid_argument& error) {
        throw HostError(ExitCode::Usage, effect + ": " + property->name + ": " + error.what() +
                                             "; give a number, A..B or @frame:value,...");
    }
}

}  // namespace

ParameterValue::ParameterValue(const std::string& text, PropertyType type) : m_type(type), m_text(text) {
    if (type == PropertyType::Text) return;
    if (text.starts_with('@')) {
        for (const std::string& point : Split(text.substr(1), ',')) {
            const std::size_t colon = point.find(':');
            if (colon == std::string::npos)
                throw std::invalid_argument("the key point \"" + point + "\" is not frame:value");
            const double frame = RequireNumber(point.substr(0, colon), PropertyType::Int64);
            if (frame < 0 || (!m_points.empty() && frame <= m_points.back().frame))
                throw std::invalid_argument("the frames of the key points in \"" + text + "\" do not ascend from 0");
            m_points.push_back({frame, RequireNumber(point.substr(colon + 1), type)});
        }
    } else if (const std::size_t dots = text.find(".."); dots != std::string::npos) {
        m_points = {{0, RequireNumber(text.substr(0, dots), type)}, {1, RequireNumber(text.substr(dots + 2), type)}};
        m_overRun = true;
    } else {
        m_points = {{0, RequireNumber(text, type)}};
    }
}

std::string ParameterValue::At(long long frame, long long frameCount) const {
    if (m_points.empty()) return m_text;
    const double scale = m_overRun ? double(std::max(frameCount - 1, 1LL)) : 1;
    const auto next = std::find_if(m_points.begin(), m_points.end(),
                                   [&](const Point& point) { return point.frame * scale > double(frame); });
    double value = 0;
    if (next == m_points.begin()) {
        value = next->value;
    } else if (next == m_points.end()) {
        value = m_points.back().value;
    } else {
        const Point& from = *(next - 1);
        const double begin = from.frame * scale, end = next->frame * scale;
        value = from.value + (next->value - from.value) * (double(frame) - begin) / (end - begin);
    }
    if (m_type == PropertyType::Real) return NumberText(value);
    return std::to_string(std::llround(value));
}

std::vector<double> ParameterValue::Numbers() const {
    std::vector<double> numbers;
    for (const Point& point : m_points) numbers.push_back(point.value);
    return numbers;
}

bool EffectRequest::Varies() const {
    return std::any_of(settings.begin(), settings.end(), [](const auto& setting) { return setting.value.Varies(); });
}

bool EffectRequest::Sets(const std::string& property) const {
    return std::any_of(settings.begin(), settings.end(),
                       [&](const auto& setting) { return setting.property == property; });
}

std::string ShortName(const std::string& effect, const std::string& property) {
    if (property.starts_with(effect + "_")) return property.substr(effect.size() + 1);
    const std::size_t underscore = property.find('_');
    const bool named =
        underscore != std::string::npos && effect.find(property.substr(0, underscore)) != std::string::npos;
    return named ? property.substr(underscore + 1) : property;
}

EffectRequest ParseEffectRequest(const std::string& text, const EffectModule& module) {
    const std::vector<std::string> parts = Split(text, ':');
    EffectRequest request{parts.front(), {}};
    const EffectPtr effect = CreateKnown(module, request.effect);
    const std::vector<PropertyInfo> properties = Properties(*effect);
    // A part without '=' belongs to the value before it: values may hold colons, as key points do.
    std::vector<std::pair<std::string, std::string>> pairs;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::size_t equals = parts[i].find('=');
        if (equals != std::string::npos)
            pairs.emplace_back(parts[i].substr(0, equals), parts[i].substr(equals + 1));
        else if (!pairs.empty())
            pairs.back().second += ":" + parts[i];
        else
            throw HostError(ExitCode::Usage, "\"" + parts[i] + "\" in \"" + text + "\" is not of the form name=value");
    }
    for (const auto& [name, value] : pairs) {
        const ParameterSetting setting = ParseSetting(request.effect, properties, name, value);
        CheckAgainstCatalogue(request.effect, setting);
        // Tried now, so that a value that the effect itself refuses ends the command before it has begun.
        if (!effect->SetProperty(setting.property.c_str(), setting.value.At(0, 1).c_str()))
            throw HostError(ExitCode::Usage, request.effect + " refuses " + setting.property + "=" + value + ": " +
                                                 TakeModuleError().value_or("no reason given") + "; nifikral info " +
                                                 request.effect + " tells its range");
        request.settings.push_back(setting);
    }
    return request;
}

}  // namespace Nifikral
