#pragma once

#include <string>
#include <vector>

#include "host/films/project_reader.h"
#include "host/run/effect_request.h"
#include "host/studio/studio_folder.h"

/// Requests of effects as a page sends them.
namespace Nifikral {

/// A request's text, as the command takes it: from a text, or from its parts in an object. Throws WebError.
std::string EffectText(const Json& request);
/// Those of a list, without the ones that are switched off. Files that they name lie in the folder.
std::vector<std::string> EffectTexts(const Json& list, const StudioFolder& folder);
/// The parts of a chain, presets replaced by theirs: {"requests": [...]}. Throws usage errors.
Json PartsOfChain(const std::vector<std::string>& texts, const EffectModule& module);

}  // namespace Nifikral
