#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral menu
void AddMenu(CommandLine& line);
/// nifikral init
void AddInit(CommandLine& line);

}  // namespace Nifikral
