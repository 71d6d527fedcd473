#pragma once

#include "host/catalogue/effect_module.h"

namespace Nifikral::Python {

/// The module that belongs to the bridge, with what opens files and texts for its generators. Throws HostError where
/// there is none. Threads: any.
const EffectModule& TheModule();

}  // namespace Nifikral::Python
