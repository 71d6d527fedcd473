#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/media/film_profile.h"
#include "host/media/media_sink.h"

namespace Nifikral {

/// Puts a film that is coded as video DVDs have it into another file without coding its pictures again; its sound and
/// subtitles are made as the options say. Returns where players can begin, in seconds, and nothing, with no output
/// left, where the pictures are not at a constant rate in short groups. Throws host errors.
std::optional<std::vector<double>> CopyTitle(const std::string& path, const OutputOptions& output,
                                             const FilmProfile& profile);

}  // namespace Nifikral
