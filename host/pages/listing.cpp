#include "host/pages/listing.h"

#include <cstring>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/catalogue/effect_details.h"
#include "host/catalogue/effect_json.h"
#include "host/catalogue/effect_search.h"
#include "host/catalogue/presets.h"
#include "host/films/menu_places.h"
#include "host/films/menu_project.h"

namespace Nifikral {
namespace {

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text.append(text.empty() ? "" : " ").append(word);
    return text;
}

std::vector<std::string> AllSynonyms() {
    std::set<std::string> all;
    for (const EffectInfo& effect : Catalogue())
        for (const std::string& synonym : Synonyms(effect)) all.insert(synonym);
    return {all.begin(), all.end()};
}

}  // namespace

std::string ListEffects(const EffectModule& module, const ListOptions& options) {
    const std::string query = Joined(options.words);
    std::vector<EffectDetails> effects;
    for (EffectDetails& effect : AllEffects(module))
        if (Mentions(effect.info, query) && !query.starts_with('@')) effects.push_back(std::move(effect));
    std::vector<Preset> presets = Presets(options.presets).All();
    std::erase_if(presets,
                  [&](const Preset& preset) { return !Mentions(preset.name + " preset " + preset.meaning, query); });
    if (options.json) return EffectsAsJson(effects, presets);
    std::map<std::string, std::ostringstream> lines;
    std::vector<std::string> categories;
    const auto add = [&](const std::string& category, const char* sign, const std::string& name,
                         const std::string& meaning) {
        if (!lines.contains(category)) categories.push_back(category);
        constexpr int column = 26;
        lines[category] << (options.names ? "" : "  ") << sign << std::left
                        << std::setw(options.names ? 0 : column - int(std::strlen(sign))) << name
                        << (options.names ? "" : meaning) << "\n";
    };
    for (const EffectDetails& effect : effects) add(effect.info.category, "", effect.name, effect.info.summary);
    for (const Preset& preset : presets) add("Presets", "@", preset.name, preset.meaning);
    if (categories.empty())
        throw HostError(ExitCode::Usage, "nothing is known by \"" + query + "\"" + DidYouMean(query, AllSynonyms()) +
                                             " (nifikral list shows all)");
    std::ostringstream text;
    for (const std::string& category : categories) {
        if (!options.names) text << (&category == &categories.front() ? "" : "\n") << category << "\n";
        text << lines[category].str();
    }
    return text.str();
}

std::string DescribeEffect(const EffectModule& module, const std::string& name, const ListOptions& options) {
    if (name.starts_with('@')) {
        const Presets presets(options.presets);
        const Preset& preset = presets.Find(name.substr(1));
        return name + ": " + preset.meaning + "\n  " + Joined(preset.requests) + "\nFrom " + preset.place + "\n";
    }
    const EffectDetails effect = DetailsOf(module, name);
    if (options.json) return EffectsAsJson({&effect, 1});
    std::string text = effect.name + ": " + effect.info.summary + "\n";
    for (const ParameterDetails& parameter : effect.parameters) {
        text += "  " + parameter.property.name + " (" + TypeAndDefault(parameter) + "): " + parameter.info.meaning;
        if (const std::string values = ValuesText(parameter.info); !values.empty()) text += "; " + values;
        text += "\n";
    }
    if (!(effect.info.traits & generator)) {
        text += "Example: nifikral apply IN OUT";
        for (int i = 0; i < effect.info.times; ++i) text.append(" ").append(ShownRequest(effect.info));
        text += "\nTimes, places and regions of every effect: nifikral apply --help\n";
    }
    if (effect.info.traits & menu) {
        text += PicturesRest(name, module) ? "buttons: on its pictures\n" : "buttons: a list of texts\n";
        text += "Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys();
    }
    return text;
}

}  // namespace Nifikral
