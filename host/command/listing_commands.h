#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral list and nifikral info
void AddListings(CommandLine& line);

}  // namespace Nifikral
