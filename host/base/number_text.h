#pragma once

#include <string>

namespace Nifikral {

/// The shortest decimal that reads back as the same number: "0.1", "16384".
std::string NumberText(double value);

}  // namespace Nifikral
