#include "dvd_effects/generator_table.h"

#include "dvd_effects/CCommon.h"

namespace AVBased {

namespace {

constexpr EffectEntry generatorTable[] = {
    {effectMenuCommonName, Create<CCommon>},
};

}  // namespace

std::span<const EffectEntry> GeneratorTable() { return generatorTable; }

}  // namespace AVBased
