#pragma once

#include "effects/base/settings_effect.h"
#include "effects/geometry/row_sampler.h"

namespace AVBased {

inline constexpr char effectNameTensile[] = "tensile";

/// A band of one axis, its end exclusive, and how much longer it becomes.
struct TensileBand {
    std::uint32_t begin = 0, end = 0;
    double scale = 0;
};

/// For each column the one that it shows: the band grows about its middle and both sides are compressed. Empty when
/// the band asks for nothing that can be done.
AxisMap TensileColumns(const TensileBand& band, unsigned width);
/// For each row above the band's end the one that it shows: the band grows upwards only, and what is above it is
/// compressed. Empty as above.
AxisMap TensileRows(const TensileBand& band, unsigned height);

struct TensileSettings {
    std::uint32_t vertical = 0, verticalY1 = 0, verticalY2 = 0;
    double verticalScale = 0;
    std::uint32_t horizontal = 0, horizontalX1 = 0, horizontalX2 = 0;
    double horizontalScale = 0;
};
/// A band of columns, of rows or both stretched, the rest squeezed so that the picture keeps its size.
class CTensileVideoImageEffect : public CSettingsEffect<TensileSettings> {
 public:
    CTensileVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
};

}  // namespace AVBased
