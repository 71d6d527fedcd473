#include "host/pages/documents.h"

#include <sstream>

#include "host/base/errors.h"
#include "host/catalogue/effect_json.h"
#include "host/catalogue/presets.h"
#include "host/pages/completion.h"
#include "host/pages/man_page.h"

namespace Nifikral {
namespace {

struct Knowledge {
    const CommandDescription& whole;
    std::span<const CommandDescription> commands;
    std::span<const EffectDetails> effects;
};
struct Document {
    const char* name;
    std::string (*make)(const Knowledge& all);
};
constexpr Document documents[] = {
    {"schema", [](const Knowledge&) { return std::string(effectsSchema); }},
    {"presets", [](const Knowledge&) { return std::string(shippedPresets); }},
    {"man", [](const Knowledge& all) { return CommandManPage(all.whole, all.commands); }},
    {"man-effects", [](const Knowledge& all) { return EffectsManPage(all.effects); }},
    {"bash", [](const Knowledge& all) { return BashCompletion(all.commands, all.effects); }},
    {"zsh", [](const Knowledge& all) { return ZshCompletion(all.commands, all.effects); }},
    {"fish", [](const Knowledge& all) { return FishCompletion(all.commands, all.effects); }},
};

}  // namespace

std::vector<std::string> DocumentNames() {
    std::vector<std::string> names;
    for (const Document& document : documents) names.emplace_back(document.name);
    return names;
}

std::string MakeDocument(const std::string& name, const CommandDescription& whole,
                         std::span<const CommandDescription> commands, std::span<const EffectDetails> effects) {
    std::ostringstream line;
    line << "there is no document \"" << name << "\"; choose one of";
    for (const Document& document : documents) {
        if (name == document.name) return document.make({whole, commands, effects});
        line << " " << document.name;
    }
    throw HostError(ExitCode::Usage, line.str());
}

}  // namespace Nifikral
