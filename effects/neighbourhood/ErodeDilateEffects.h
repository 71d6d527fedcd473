#pragma once

#include <cstddef>

#include "effects/base/CBasedVideoEffect.h"

namespace AVBased {

inline constexpr char effectNameErode[] = "erode";
inline constexpr char effectNameDilate[] = "dilate";

/// Replaces `bytes` bytes of a row by the extreme of a block: of the row itself and two more rows, each there, one
/// sample and two samples further. `ahead` is the distance to what is needed next.
using ExtremeRow = void(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                        std::ptrdiff_t ahead);
/// The routines of one extreme, for planes of bytes and for the colours of packed pixels.
struct ExtremeRows {
    Variants<ExtremeRow> component, rgba32;
};
extern const ExtremeRows leastRows, greatestRows;

/// The plain routines.
ExtremeRow LeastComponentRow, LeastRgba32Row, GreatestComponentRow, GreatestRgba32Row;

/// Dark areas grow: each sample becomes the least of the 3x3 block below and to the right of it.
class CErodeVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CErodeVideoImageEffect() : CBasedVideoImageEffect(effectNameErode) {}
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

/// Bright areas grow: each sample becomes the greatest of the 3x3 block above and to the right of it.
class CDilateVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CDilateVideoImageEffect() : CBasedVideoImageEffect(effectNameDilate) {}
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
