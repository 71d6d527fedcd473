#pragma once

#include <filesystem>
#include <string>

namespace Nifikral {

/// What to load when no file is named: $NIFIKRAL_MODULE, else the module that belongs to the program or shared object
/// that holds this function, else the bare name for the loader to search.
std::string FindModuleFile();
/// The module that belongs to a program or a bridge in `folder`, built or installed; empty when there is none.
std::filesystem::path ModuleBelongingTo(const std::filesystem::path& folder);

}  // namespace Nifikral
