#include "dvd_effects/generator_table.h"

#include "dvd_effects/CCommon.h"
#include "dvd_effects/CSlides.h"

namespace AVBased {

namespace {

constexpr EffectEntry generatorTable[] = {
    {effectSlideName, Create<CSlides>},
    {effectMenuCommonName, Create<CCommon>},
};

}  // namespace

std::span<const EffectEntry> GeneratorTable() { return generatorTable; }

}  // namespace AVBased
