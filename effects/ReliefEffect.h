#pragma once

#include <array>

#include "effects/CBasedVideoEffect.h"

namespace AVBased {

/// The weights of a 3x3 block in 256ths, row by row.
using ReliefKernel = std::array<std::int32_t, 9>;

/// A row in work, byte by byte with its neighbours, and the sums of the two rows that it completes and continues.
struct ReliefLines {
    const unsigned char *left, *middle, *right;
    std::int16_t *above, *here;
    std::array<std::int16_t, 9> weights;  ///< in 512ths
};
/// Adds the shares of a row to the row above, to itself and to the row below, whose sums replace its own, and writes
/// `bytes` bytes of the row above. The routine for packed pixels takes their fourth bytes from the right neighbours.
using ReliefRow = void(const ReliefLines& lines, unsigned bytes, unsigned char* finished);
ReliefRow ReliefComponentRow, ReliefRgba32Row;
extern const Variants<ReliefRow> reliefComponentRows, reliefRgba32Rows;

/// A surface lit from an angle: each sample becomes a weighted sum of the 3x3 block around it.
class CReliefVideoImageEffect : public CBasedVideoImageEffect {
 public:
    CReliefVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    static ReliefKernel Kernel(std::int32_t angle);

    struct Settings {
        std::int32_t angle = 40;
    };

 private:
    Settings m_settings;
    ReliefKernel m_kernel;
};

}  // namespace AVBased
