#pragma once

#include <string>

namespace Nifikral {

/// A word as a POSIX shell has to be given it to come out as `text`.
std::string ShellWord(const std::string& text);

}  // namespace Nifikral
