#pragma once

#include <vector>

#include "effects/base/settings_effect.h"
#include "effects/colour/grain_rows.h"

namespace AVBased {

inline constexpr char effectNameAddNoise[] = "addnoise";

struct AddNoiseSettings {
    std::int32_t strength = 15;  ///< in levels; held within 0 to 255
    std::int32_t colour = 0;     ///< not 0: each colour has a grain of its own
    std::uint32_t seed = 0;
};

/// Film grain, strongest in the middle tones. It follows from the seed and the frame's position alone, so neighbouring
/// frames differ and each comes out the same again.
///
/// A seed fills two tables with random numbers of a bell-shaped distribution. Every stretch of a row takes its grain
/// from a place of its own in each, which the seed, the frame, the plane, the row and the stretch decide
/// (place_hash.h), and adds the two up: the millions of pairs of places do not come back within the time that an eye
/// compares.
///
/// A sample v becomes v + (weight x grain x gain + 2^14 >> 15), held within a byte. Its weight is half of 129 and the
/// lesser of v and 255 - v. The gain makes the strength the standard deviation in the middle tones, and half of it
/// black's and white's. The three colours of a packed pixel share one grain, or have one each when coloured; alpha is
/// kept. Planar luma has 24 28ths of it, coloured 16, and coloured chroma 16, 11, 8, 6 or 4 by the number of times that
/// it is halved, which is what the packed grain comes to in these planes; a chroma sample's weight is that of the first
/// luma sample which it covers, and plain grain leaves chroma as it is.
class CAddNoiseVideoImageEffect : public CSettingsEffect<AddNoiseSettings> {
 public:
    CAddNoiseVideoImageEffect();
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 private:
    GrainTables m_tables;
    std::vector<std::uint8_t> m_tones;  ///< that a row of chroma follows
};

}  // namespace AVBased
