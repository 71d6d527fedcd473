#pragma once

#include <span>

#include "effects/base/effect_table.h"

namespace AVBased {

/// Every menu, slide and title generator in the order in which names are compared, after the frame effects.
std::span<const EffectEntry> GeneratorTable();

}  // namespace AVBased
