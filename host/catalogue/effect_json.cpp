#include "host/catalogue/effect_json.h"

#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "host/catalogue/effect_search.h"

namespace Nifikral {
namespace {

using Json = nlohmann::ordered_json;

constexpr int documentVersion = 1;

constexpr std::pair<EffectTraits, const char*> traitNames[] = {{variesWithTime, "varies-with-time"},
                                                               {changesAlpha, "changes-alpha"},
                                                               {generator, "generator"},
                                                               {menu, "menu"},
                                                               {newEachFrame, "new-each-frame"},
                                                               {knowsRedFromBlue, "knows-red-from-blue"},
                                                               {idleAtDefaults, "idle-at-defaults"},
                                                               {fadesOut, "fades-out"}};

Json Number(double value) { return value == std::trunc(value) ? Json((long long)value) : Json(value); }

void AddRange(Json& json, const char* name, const ValueRange& range) {
    if (std::isfinite(range.low)) json[name]["minimum"] = Number(range.low);
    if (std::isfinite(range.high)) json[name]["maximum"] = Number(range.high);
}

Json ParameterJson(const EffectDetails& effect, const ParameterDetails& parameter) {
    const PropertyInfo& property = parameter.property;
    const ParameterInfo& info = parameter.info;
    const bool isText = property.type == PropertyType::Text;
    Json json = {{"name", property.name},
                 {"short", ShortName(effect.name, property.name)},
                 {"type", TypeName(property.type)},
                 {"kind", KindName(info.kind)}};
    json["default"] = isText ? Json(property.defaultText) : Number(std::strtod(property.defaultText.c_str(), nullptr));
    if (info.initial) json["initial"] = Number(*info.initial);
    if (!parameter.start.empty()) json["start"] = parameter.start;
    json["group"] = info.group;
    json["meaning"] = info.meaning;
    if (*info.unit) json["unit"] = info.unit;
    AddRange(json, "sensible", info.sensible);
    AddRange(json, "bearable", info.bearable);
    if (!isText) json["step"] = Number(info.step);
    for (const Choice& choice : info.choices)
        json["choices"].push_back({{"value", choice.value}, {"meaning", choice.meaning}});
    for (const char* const word : info.words) json["words"].push_back(word);
    if (*info.separator) json["separator"] = info.separator;
    json["keyframable"] = parameter.keyframable;
    return json;
}

Json DocumentOf(std::span<const EffectDetails> effects) {
    Json all = {{"version", documentVersion}, {"effects", Json::array()}};
    for (const EffectDetails& effect : effects) {
        Json json = {{"name", effect.name},       {"category", effect.info.category}, {"summary", effect.info.summary},
                     {"synonyms", Json::array()}, {"traits", Json::array()},          {"parameters", Json::array()}};
        for (const auto& [trait, name] : traitNames)
            if (effect.info.traits & trait) json["traits"].push_back(name);
        for (const std::string& synonym : Synonyms(effect.info)) json["synonyms"].push_back(synonym);
        if (!(effect.info.traits & generator))
            json["example"] = std::vector<std::string>(std::size_t(effect.info.times), ShownRequest(effect.info));
        for (const ParameterDetails& parameter : effect.parameters)
            json["parameters"].push_back(ParameterJson(effect, parameter));
        all["effects"].push_back(json);
    }
    return all;
}

}  // namespace

std::string EffectsAsJson(std::span<const EffectDetails> effects) { return DocumentOf(effects).dump(2) + "\n"; }

std::string EffectsAsJson(std::span<const EffectDetails> effects, std::span<const Preset> presets) {
    Json all = DocumentOf(effects);
    all["presets"] = Json::array();
    for (const Preset& preset : presets)
        all["presets"].push_back({{"name", preset.name}, {"meaning", preset.meaning}, {"requests", preset.requests}});
    return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Nifikral
