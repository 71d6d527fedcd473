#pragma once

#include <cstdio>
#include <string>

namespace Nifikral::Frei0r {

/// The interface answers no errors, so the user is told on standard error.
inline void Tell(const std::string& line) { std::fprintf(stderr, "nifikral: %s\n", line.c_str()); }

}  // namespace Nifikral::Frei0r
