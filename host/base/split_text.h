#pragma once

#include <string>
#include <vector>

namespace Nifikral {

/// The parts of a text between separators. A backslash takes away a separator's meaning, for parts that hold it.
std::vector<std::string> Split(const std::string& text, char separator);

}  // namespace Nifikral
