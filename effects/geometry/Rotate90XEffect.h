#pragma once

#include <cstdint>

#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameRotate90X[] = "EffectNameRotate90X";

struct Rotate90XSettings {
    std::int32_t turns = 1;
};
/// The picture turned clockwise by quarters, as many as wished, negative ones the other way, inside the frame's size
/// and with every plane, alpha included. Two quarters and turns of square planes are exact. Otherwise the turned
/// picture is scaled by the ratio of the shorter side to the longer, width and height rounded to whole chroma samples,
/// and stands in the middle of opaque black (luma 16, chroma 128). Pixels count as square. To scale S samples to D,
/// sample j weighs 2 max(S, D) - |(2 j + 1) D - (2 i + 1) S| in the sum for i where that is above 0; weights become
/// 256ths whose running sums are rounded. Rows are scaled first, then columns, each result rounded to a byte.
class CRotate90X : public CSettingsEffect<Rotate90XSettings> {
 public:
    CRotate90X();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
