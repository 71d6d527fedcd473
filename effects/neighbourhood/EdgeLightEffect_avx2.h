#pragma once

namespace AVBased {

/// Replaces `bytes` bytes of a row by the lengths of their gradients times `level`, modulo 256, plus `bias`. Right
/// neighbours are one sample further in the row, so that much past its end is read; lower ones are in the row `pitch`
/// below. The routine for packed pixels has no bias and keeps the fourth bytes.
using GradientRow = void(unsigned char* row, unsigned bytes, unsigned pitch, unsigned level, unsigned char bias);

/// The plain routines, which stand beside the effect and serve rows shorter than a vector too.
GradientRow GradientComponentRow, GradientRgba32Row;
GradientRow GradientComponentRowAvx2, GradientRgba32RowAvx2;

}  // namespace AVBased
