#pragma once

#include <istream>
#include <string>

namespace Nifikral {

/// Reads all of a text that people write: a project, a list or presets. `name` is the file's, `kind` what it should be.
/// Throws HostError where it is longer than 16 MB, as another kind of file may be, or cannot be read on.
std::string ReadText(std::istream& stream, const std::string& name, const std::string& kind);

}  // namespace Nifikral
