#include "host/listing.h"

#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/catalogue.h"
#include "host/errors.h"
#include "host/menu_project.h"
#include "host/nearest_names.h"

namespace Nifikral {
namespace {

using Json = nlohmann::ordered_json;

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

Json Number(double value) { return value == std::trunc(value) ? Json((long long)value) : Json(value); }

Json ParameterJson(const PropertyInfo& property, const ParameterInfo* info) {
    Json json = {{"name", property.name}, {"type", TypeName(property.type)}, {"default", property.defaultText}};
    if (!info) return json;
    json["meaning"] = info->meaning;
    json["unit"] = info->unit;
    if (std::isfinite(info->sensible.low)) json["minimum"] = Number(info->sensible.low);
    if (std::isfinite(info->sensible.high)) json["maximum"] = Number(info->sensible.high);
    for (const Choice& choice : info->choices)
        json["choices"].push_back({{"value", choice.value}, {"meaning", choice.meaning}});
    return json;
}

Json EffectJson(AVBased::IVideoProc& effect, const EffectInfo& info) {
    Json json = {{"name", info.name}, {"summary", info.summary}, {"parameters", Json::array()}};
    for (const PropertyInfo& property : Properties(effect))
        json["parameters"].push_back(ParameterJson(property, FindParameter(info.name, property.name)));
    return json;
}

std::string EffectText(const Json& effect) {
    std::ostringstream text;
    text << effect["name"].get<std::string>() << ": " << effect["summary"].get<std::string>() << "\n";
    for (const Json& parameter : effect["parameters"]) {
        const std::string initial = parameter["default"];
        text << "  " << parameter["name"].get<std::string>() << " (" << parameter["type"].get<std::string>()
             << ", default " << (initial.empty() ? "empty" : initial) << ")";
        if (parameter.contains("meaning")) {
            const std::string unit = parameter["unit"];
            text << ": " << parameter["meaning"].get<std::string>();
            if (parameter.contains("minimum")) text << "; " << parameter["minimum"] << " to " << parameter["maximum"];
            if (!unit.empty()) text << (parameter.contains("minimum") ? " " : ", in ") << unit;
        }
        if (parameter.contains("choices"))
            for (const Json& choice : parameter["choices"])
                text << "; " << choice["value"] << " " << choice["meaning"].get<std::string>();
        text << "\n";
    }
    return text.str();
}

constexpr int jsonVersion = 1;

}  // namespace

std::string ListEffects(const EffectModule& module, bool json) {
    Json all = {{"version", jsonVersion}, {"effects", Json::array()}};
    std::ostringstream text;
    for (const EffectInfo& info : Catalogue()) {
        const EffectPtr effect = module.Create(info.name);
        if (!effect) continue;
        all["effects"].push_back(EffectJson(*effect, info));
        text << std::left << std::setw(26) << info.name << info.summary << "\n";
    }
    return json ? all.dump(2) + "\n" : text.str();
}

std::string DescribeEffect(const EffectModule& module, const std::string& name, bool json) {
    const EffectPtr effect = module.Create(name);
    if (!effect) {
        std::vector<std::string> names;
        for (const EffectInfo& info : Catalogue())
            if (module.Create(info.name)) names.emplace_back(info.name);
        throw HostError(ExitCode::Usage,
                        "there is no effect \"" + name + "\"" + DidYouMean(name, names) + " (nifikral list shows all)");
    }
    const EffectInfo* const info = FindEffect(name);
    Json description = EffectJson(*effect, info ? *info : EffectInfo{name.c_str(), "", ""});
    description["version"] = jsonVersion;
    if (json) return description.dump(2) + "\n";
    std::string text = EffectText(description);
    if (info && (info->traits & menu))
        text += "Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys();
    return text;
}

}  // namespace Nifikral
