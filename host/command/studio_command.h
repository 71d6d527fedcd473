#pragma once

#include "host/command/command_line.h"

namespace Nifikral {

/// Adds the subcommand that serves a page to choose effects, menus and slideshows by eye.
void AddStudio(CommandLine& line);

}  // namespace Nifikral
