#pragma once

#include <span>

#include "effects/base/effect_table.h"

namespace AVBased {

/// Every frame effect in the order in which names are compared.
std::span<const EffectEntry> EffectTable();

/// What the exported function does, with the effect table and the rows of `generators` behind it; see
/// CreateVideoProcFunction.
IVideoProc* CreateEffect(IAVManager* manager, const char* name, std::span<const EffectEntry> generators = {}) noexcept;

}  // namespace AVBased
