#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/catalogue/catalogue.h"

namespace Nifikral {

/// The other words that people look for an effect by, one by one.
std::vector<std::string> Synonyms(const EffectInfo& effect);

/// Whether all words of a query begin words of a text, in any case: "gla ti" is in "glass tiles".
bool Mentions(const std::string& text, const std::string& query);
/// The same for an effect's name, category, summary and synonyms.
bool Mentions(const EffectInfo& effect, const std::string& query);

/// The effects on pictures that a query may mean, by their names: those that it names itself, else those that mention
/// it.
std::vector<std::string> EffectsFor(const std::string& query);

}  // namespace Nifikral
