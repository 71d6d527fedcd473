#pragma once

#include <string>
#include <vector>

namespace Nifikral {

/// The names that a misspelt one may have meant, nearest first; none when all are far off.
std::vector<std::string> NearestNames(const std::string& name, const std::vector<std::string>& candidates);

/// "; did you mean a or b?", or "" when there is nothing near.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace Nifikral
