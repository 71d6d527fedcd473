#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral disc
void AddDisc(CommandLine& line);

}  // namespace Nifikral
