#pragma once

#include <cstddef>

namespace AVBased {

/// Replaces `bytes` bytes of a row by the extreme of a block: of the row itself and two more rows, each there, one
/// sample and two samples further. For planes of bytes, and for the colours of packed pixels. `ahead` is the distance
/// to what is needed next.
using ExtremeRow = void(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                        std::ptrdiff_t ahead);

/// The plain routines, which stand beside the effects and serve rows shorter than a vector too.
ExtremeRow LeastComponentRow, LeastRgba32Row, GreatestComponentRow, GreatestRgba32Row;
ExtremeRow LeastComponentRowAvx2, LeastRgba32RowAvx2, GreatestComponentRowAvx2, GreatestRgba32RowAvx2;

}  // namespace AVBased
