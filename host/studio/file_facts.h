#pragma once

#include <string>

#include "host/studio/studio_folder.h"
#include "host/studio/web_message.h"

namespace Nifikral {

/// What is known of a picture, film or sound, as JSON.
std::string FileFacts(const StudioFolder& folder, const std::string& path);

/// A small picture of a picture or a film, which fits into a square. `at`: the second of a film; below 0: one that
/// shows more than its beginning.
WebReply Thumbnail(const StudioFolder& folder, const std::string& path, int size, double at);

}  // namespace Nifikral
