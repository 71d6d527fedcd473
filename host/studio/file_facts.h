#pragma once

#include <string>

#include "host/studio/preview_source.h"
#include "host/studio/studio_folder.h"

namespace Nifikral {

/// What is known of a picture, film or sound, as JSON. The sources keep what was opened: it is looked at next.
std::string FileFacts(const StudioFolder& folder, const std::string& path, PreviewSources& sources);

}  // namespace Nifikral
