#pragma once

namespace AVBased {

/// The vectorised rules on the first `bytes` bytes of a row: on all of them, or on the colours of pixels only. `above`,
/// the row above as it came, becomes the row as it came.
using EmbossRow = void(unsigned char* row, unsigned char* above, unsigned bytes, unsigned level);

/// The plain routines, which stand beside the effect and serve the ends of rows too.
EmbossRow EmbossGroups, EmbossPixels;
EmbossRow EmbossGroupsAvx2, EmbossPixelsAvx2;

}  // namespace AVBased
