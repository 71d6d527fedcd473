#pragma once

#include <cstdio>
#include <string>

namespace Nifikral::Frei0r {

/// The interface returns no errors, so they are printed on standard error.
inline void Report(const std::string& line) { std::fprintf(stderr, "nifikral: %s\n", line.c_str()); }

}  // namespace Nifikral::Frei0r
