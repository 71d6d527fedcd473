#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral gallery
void AddGallery(CommandLine& line);
/// nifikral reference
void AddReference(CommandLine& line);
/// nifikral generate
void AddGenerate(CommandLine& line);

}  // namespace Nifikral
