#pragma once

namespace Nifikral {

/// From now on the feature word that the module reads; without this call it is the support library's own. For a program
/// of ours that exports its symbols: where another program loads the module, the word is not ours to define.
void OverrideCpuFeatures(unsigned features);

}  // namespace Nifikral
