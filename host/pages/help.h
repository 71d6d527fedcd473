#pragma once

#include <span>
#include <string>

#include "host/pages/command_description.h"

/// What --help prints, in lines of at most 80 columns.
namespace Nifikral {

/// Of the command without a subcommand: what there is, in groups, and where to read on.
std::string HelpOverview(const CommandDescription& whole, std::span<const CommandDescription> commands);
/// Of one subcommand.
std::string HelpOn(const CommandDescription& command);

}  // namespace Nifikral
