#pragma once

#include <string_view>

namespace Nifikral {

/// Whether a name comes before another as people count: numbers by their value ("img2" before "img10"), large and
/// small letters alike. A strict order: names that differ are never equal.
bool ComesBefore(std::string_view a, std::string_view b);

}  // namespace Nifikral
