#pragma once

namespace Nifikral {

/// The program's version.
const char* Version();

}  // namespace Nifikral
