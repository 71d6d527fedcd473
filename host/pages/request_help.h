#pragma once

namespace Nifikral {

/// What a request for an effect may say, a line for each thing: "  FORM: meaning".
extern const char requestHelp[];

}  // namespace Nifikral
