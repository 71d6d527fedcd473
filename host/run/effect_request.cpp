#include "host/run/effect_request.h"

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/base/split_text.h"
#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_details.h"
#include "host/run/effect_check.h"

namespace Nifikral {
namespace {

const PropertyInfo* FindProperty(const std::vector<PropertyInfo>& properties, const std::string& effect,
                                 const std::string& name) {
    for (const PropertyInfo& property : properties)
        if (property.name == name) return &property;
    for (const PropertyInfo& property : properties)
        if (ShortName(effect, property.name) == name) return &property;
    return nullptr;
}

ParameterSetting ParseSetting(const std::string& effect, const std::vector<PropertyInfo>& properties,
                              const std::string& name, const std::string& value) {
    const PropertyInfo* const property = FindProperty(properties, effect, name);
    if (!property) {
        std::vector<std::string> names = regionOptions;
        for (const PropertyInfo& candidate : properties) {
            names.push_back(candidate.name);
            names.push_back(ShortName(effect, candidate.name));
        }
        throw HostError(ExitCode::Usage, effect + " has no parameter \"" + name + "\"" + DidYouMean(name, names) +
                                             " (nifikral info " + effect + " lists them)");
    }
    const ParameterInfo* const info = FindParameter(effect, property->name);
    try {
        return {property->name, ParameterValue(value, property->type, info ? *info : ParameterInfo{"", "", ""})};
    } catch (const std::invalid_argument& error) {
        throw HostError(ExitCode::Usage, effect + ": " + property->name + ": " + error.what());
    }
}

// Of an effect that does nothing at its defaults, those parameters that the request leaves out get the values at which
// it is shown. A switch does so only while nothing is set of any group with a switch, else that group's alone: who
// flips left to right does not mean top to bottom too.
void StartAsShown(EffectRequest& request, const std::vector<PropertyInfo>& properties) {
    const EffectInfo* const info = FindEffect(request.effect);
    if (!info || !(info->traits & idleAtDefaults)) return;
    std::set<std::string> touched, switched;  // groups, and those in which something is set that acts alone
    bool aims = false;                        // at a group that has such a thing
    for (const ParameterInfo& row : info->parameters) {
        if (!request.Sets(row.name)) continue;
        touched.insert(row.group);
        if (row.actsAlone) switched.insert(row.group);
    }
    for (const ParameterInfo& row : info->parameters) aims = aims || (row.actsAlone && touched.contains(row.group));
    for (const ParameterInfo& row : info->parameters) {
        if (request.Sets(row.name)) continue;
        const bool onlyThisGroup = touched.contains(row.group) && !switched.contains(row.group);
        const std::string value = !row.actsAlone || !aims ? ShownValue(*info, row.name)
                                  : onlyThisGroup         ? std::string("1")
                                                          : std::string();
        if (!value.empty()) request.settings.push_back(ParseSetting(request.effect, properties, row.name, value));
    }
}

}  // namespace

const std::vector<std::string> regionOptions = {"inside", "outside", "soft"};

bool EffectRequest::Sets(const std::string& property) const {
    return std::any_of(settings.begin(), settings.end(),
                       [&](const auto& setting) { return setting.property == property; });
}

bool EffectRequest::NeedsFrameCount() const {
    const EffectInfo* const info = FindEffect(effect);
    if (info && (info->traits & variesWithTime) && !Sets("duration")) return true;
    return std::any_of(regions.begin(), regions.end(), [](const auto& region) { return region.NeedsFrameCount(); }) ||
           std::any_of(settings.begin(), settings.end(),
                       [](const auto& setting) { return setting.value.NeedsFrameCount(); });
}

EffectRequest EffectRequest::Resized(const Scale& from, const Scale& to) const {
    EffectRequest result = *this;
    for (ParameterSetting& setting : result.settings) setting.value = setting.value.Resized(from, to);
    for (Region& region : result.regions) region = region.Resized(from, to);
    return result;
}

RequestParts::RequestParts(const std::string& text) {
    const std::vector<std::string> parts = Split(text, ':');
    // The name of a preset begins with the sign that parts a window from what stands before it.
    const std::size_t sign = parts.front().find('@', 1);
    head = parts.front().substr(0, sign);
    if (sign != std::string::npos) {
        window = parts.front().substr(sign + 1);
        if (window.empty()) throw HostError(ExitCode::Usage, "\"" + text + "\": there is no time behind the last @");
    }
    // A part without '=' belongs to the value before it: values may hold colons, as key points do.
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::size_t equals = parts[i].find('=');
        if (equals != std::string::npos)
            pairs.emplace_back(parts[i].substr(0, equals), parts[i].substr(equals + 1));
        else if (!pairs.empty())
            pairs.back().second += ":" + parts[i];
        else
            throw HostError(ExitCode::Usage, "\"" + parts[i] + "\" in \"" + text + "\" is not of the form name=value");
    }
}

std::optional<TimeWindow> ParseWindow(const RequestParts& parts) {
    if (parts.window.empty()) return std::nullopt;
    try {
        return TimeWindow(parts.window);
    } catch (const std::invalid_argument& error) {
        throw HostError(ExitCode::Usage, parts.head + "@" + parts.window + ": " + error.what() +
                                             " (give @BEGIN-END as @50-99, @2s-5s or @-1s-)");
    }
}

std::optional<Region> ParseRegion(RequestParts& parts) {
    std::map<std::string, std::string> given;
    std::erase_if(parts.pairs, [&](const auto& pair) {
        const bool isOption = std::find(regionOptions.begin(), regionOptions.end(), pair.first) != regionOptions.end();
        if (isOption) given[pair.first] = pair.second;
        return isOption;
    });
    if (given.empty()) return std::nullopt;
    try {
        if (given.contains("inside") == given.contains("outside"))
            throw std::invalid_argument(given.contains("inside") ? "inside and outside exclude each other"
                                                                 : "soft needs inside=AREA or outside=AREA");
        const bool outside = given.contains("outside");
        return Region(given[outside ? "outside" : "inside"], given["soft"], outside);
    } catch (const std::invalid_argument& error) {
        throw HostError(ExitCode::Usage, parts.head + ": " + error.what());
    }
}

EffectRequest ParseEffectRequest(const std::string& text, const EffectModule& module) {
    EffectRequest request = CheckedRequest(RequestParts(text), module);
    request.text = text;
    return request;
}

EffectRequest CheckedRequest(RequestParts parts, const EffectModule& module) {
    EffectRequest request{parts.head, {}};
    const EffectPtr effect = CreateKnown(module, request.effect);
    request.window = ParseWindow(parts);
    if (const std::optional<Region> region = ParseRegion(parts)) request.regions.push_back(*region);
    const std::vector<PropertyInfo> properties = Properties(*effect);
    for (const auto& [name, value] : parts.pairs) {
        const ParameterSetting setting = ParseSetting(request.effect, properties, name, value);
        // Tried now, so that a value that the effect itself refuses ends the command before it has begun.
        if (!setting.value.IsRelative()) RequireAcceptable(*effect, setting);
        request.settings.push_back(setting);
    }
    StartAsShown(request, properties);
    return request;
}

}  // namespace Nifikral
