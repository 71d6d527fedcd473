#pragma once

#include <span>

#include "effects/base/effect_table.h"

namespace AVBased {

/// Every frame effect in the order in which names are compared.
std::span<const EffectEntry> EffectTable();

/// What the exported function does, with the effect table followed by the rows of `generators`; see
/// CreateVideoProcFunction.
IVideoProc* CreateEffect(IAVManager* manager, const char* name, std::span<const EffectEntry> generators = {}) noexcept;

}  // namespace AVBased
