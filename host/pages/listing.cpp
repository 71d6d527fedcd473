#include "host/pages/listing.h"

#include <iomanip>
#include <sstream>

#include "host/catalogue/effect_details.h"
#include "host/catalogue/effect_json.h"
#include "host/films/menu_project.h"

namespace Nifikral {

std::string ListEffects(const EffectModule& module, bool json) {
    const std::vector<EffectDetails> effects = AllEffects(module);
    if (json) return EffectsAsJson(effects);
    std::ostringstream text;
    for (const EffectDetails& effect : effects)
        text << std::left << std::setw(26) << effect.name << effect.info.summary << "\n";
    return text.str();
}

std::string DescribeEffect(const EffectModule& module, const std::string& name, bool json) {
    const EffectDetails effect = DetailsOf(module, name);
    if (json) return EffectsAsJson({&effect, 1});
    std::string text = effect.name + ": " + effect.info.summary + "\n";
    for (const ParameterDetails& parameter : effect.parameters) {
        text += "  " + parameter.property.name + " (" + TypeAndDefault(parameter) + "): " + parameter.info.meaning;
        if (const std::string values = ValuesText(parameter.info); !values.empty()) text += "; " + values;
        text += "\n";
    }
    if (effect.info.traits & menu)
        text += "Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys();
    return text;
}

}  // namespace Nifikral
