#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral plan
void AddPlan(CommandLine& line);
/// nifikral concat
void AddConcat(CommandLine& line);

}  // namespace Nifikral
