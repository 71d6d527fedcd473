#pragma once

#include "avbase/avbase.h"
#include "effects/base/settings_effect.h"

namespace AVBased {

inline constexpr char effectNameMosaic[] = "mosaic";

struct MosaicSettings {
    std::uint32_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;  ///< corners of a rectangle, in either order
    std::uint32_t step = 0;                        ///< the block side as a power of two
};
/// A rectangle cut into squares, each filled with the colour of its top-left pixel.
class CMosaicVideoImageEffect : public CSettingsEffect<MosaicSettings> {
 public:
    explicit CMosaicVideoImageEffect(unsigned cpuFeatures = AVBasedGetCPUFeatures());
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    bool m_vectorised;
};

}  // namespace AVBased
