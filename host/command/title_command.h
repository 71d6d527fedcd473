#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// nifikral title
void AddTitle(CommandLine& line);

}  // namespace Nifikral
