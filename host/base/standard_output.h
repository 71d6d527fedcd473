#pragma once

#include <string>

namespace Nifikral {

/// Prints what the command was asked for. Throws an output error when it does not get out whole; a reader that has
/// ended ends the program, as is usual in pipes.
void PrintResult(const std::string& text);

}  // namespace Nifikral
