#pragma once

#include "effects/geometry/mirage_rows.h"

namespace AVBased {

/// BlendRows for AVX2; of bytes and of pixels.
template <class Sample>
void BlendRowsAvx2(const Overlay<Sample>& overlay, RowsInWork<Sample> rows);

}  // namespace AVBased
