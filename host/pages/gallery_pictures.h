#pragma once

#include <string>
#include <vector>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_module.h"
#include "host/media/picture_formats.h"

namespace Nifikral {

/// Writes the first picture of a file, upright and over black, its longer side at most that long. Returns its shape.
PictureShape WriteReduced(const std::string& from, const std::string& to, int longestSide);

/// Puts a frame effect on a photograph at settings at which it shows, as often as it needs. Returns the requests.
std::vector<std::string> ShowEffect(const EffectInfo& info, const std::string& photograph, const std::string& to,
                                    const EffectModule& module);

/// The command that does what these requests ask for, as a shell reads it.
std::string ApplyCommand(const std::string& from, const std::string& to, const std::vector<std::string>& requests);

}  // namespace Nifikral
