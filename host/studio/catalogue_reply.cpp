#include "host/studio/catalogue_reply.h"

#include "host/catalogue/effect_json.h"
#include "host/films/slide_pictures.h"
#include "host/films/title.h"
#include "host/media/film_profile.h"
#include "host/studio/studio_json.h"

namespace Nifikral {
namespace {

Json Words(const char* effect, const char* parameter) {
    Json words = Json::array();
    if (const ParameterInfo* const info = FindParameter(effect, parameter))
        for (const char* const word : info->words) words.push_back(word);
    return words;
}

}  // namespace

std::string StudioCatalogue(const EffectModule& module) {
    const std::vector<EffectDetails> effects = AllEffects(module);
    Json all = Json::parse(EffectsAsJson(effects, Presets({}).All()));
    Json categories = Json::array(), templates = Json::array(), profiles = Json::array();
    for (const EffectDetails& effect : effects) {
        if (std::find(categories.begin(), categories.end(), effect.info.category) == categories.end())
            categories.push_back(effect.info.category);
        if (effect.info.traits & menu) templates.push_back(effect.name);
    }
    for (const std::string& name : ProfileNames()) {
        const FilmProfile& profile = *FindProfile(name);
        profiles.push_back({{"name", name},
                            {"width", profile.SquareWidth()},
                            {"height", profile.height},
                            {"rate", {profile.frameRate.num, profile.frameRate.den}}});
    }
    all["categories"] = std::move(categories);
    all["templates"] = std::move(templates);
    all["transitions"] = Words("slide", "transitions");
    all["motions"] = Words("slide", "motion");
    all["fits"] = Words("slide", "fit");
    all["orders"] = SlideOrders();
    all["titlePlaces"] = TitlePlaces();
    all["titleMotions"] = Words("title", "inMotion");
    all["profiles"] = std::move(profiles);
    all["easings"] = {"linear", "in", "out", "in-out", "hold"};
    return JsonText(all);
}

}  // namespace Nifikral
