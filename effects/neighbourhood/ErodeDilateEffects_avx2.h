#pragma once

#include "effects/neighbourhood/erode_dilate_rows.h"

namespace AVBased {

/// FilterRow for AVX2; of both extremes, bytes and pixels.
template <class Extreme, class Sample>
void FilterRowAvx2(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                   std::ptrdiff_t ahead);

}  // namespace AVBased
