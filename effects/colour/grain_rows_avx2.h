#pragma once

#include "effects/colour/grain_rows.h"

/// Film grain for AVX2.
namespace AVBased {

void GrainSamplesAvx2(std::uint8_t* row, const std::uint8_t* tones, unsigned count, bool ofPixels,
                      const RowGrain& grain);
void GrainPixelsAvx2(Rgba32* row, unsigned width, const RowGrain& grain);

}  // namespace AVBased
