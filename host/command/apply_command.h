#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral apply
void AddApply(CommandLine& line);

}  // namespace Nifikral
