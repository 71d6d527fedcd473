#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral slideshow
void AddSlideshow(CommandLine& line);

}  // namespace Nifikral
