#pragma once

#include <string>
#include <vector>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_module.h"
#include "host/media/picture_formats.h"

namespace Nifikral {

/// Writes the first picture of a file, upright and over black, its longer side at most that long. Returns its shape.
PictureShape WriteReduced(const std::string& from, const std::string& to, int longestSide);

/// How a frame effect is shown.
struct EffectShow {
    std::vector<std::vector<std::string>> stills;  ///< the requests of each: of a fade three moments, else one
    std::vector<std::string> film;                 ///< where it moves
    const char* extension;                         ///< of the stills: a format that holds alpha where they have some
};
/// On a photograph of this size, at settings at which it shows, as often as it needs.
EffectShow ShowOf(const EffectInfo& info, int width, int height);

/// Puts effects on a picture or film.
void MakePicture(const std::string& from, const std::vector<std::string>& requests, const std::string& to,
                 const EffectModule& module);
/// Makes a short film of a photograph of this shape, which stands still, its longer side at most `longestSide`.
void WriteStandstill(const std::string& from, PictureShape shape, int longestSide, const std::string& to,
                     const EffectModule& module);

/// The command that does what these requests ask for, as a shell reads it.
std::string ApplyCommand(const std::string& from, const std::string& to, const std::vector<std::string>& requests);

}  // namespace Nifikral
