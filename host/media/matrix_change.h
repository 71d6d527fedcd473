#pragma once

#include "host/media/ffmpeg_handles.h"
#include "host/standins/ffmpeg_formats.h"

namespace Nifikral {

/// Rewrites pictures that one matrix codes as another codes the same colours. Planes of 8 bits, luma first and then two
/// of chroma, change in place; libswscale would go through RGB, which takes many times as long. Threads: any number.
class MatrixChange {
 public:
    /// Both as MatrixCoefficients returns them.
    MatrixChange(const int* from, const int* to, bool fullRange);

    static bool Takes(AVPixelFormat format);
    void Apply(AVFrame& frame) const;

 private:
    // What a sample gets of each chroma sample beside it.
    struct Shares {
        std::int16_t u, v;  // of 1 << bits
        int Of(std::int16_t du, std::int16_t dv) const { return (u * du + v * dv + (1 << (bits - 1))) >> bits; }
    };
    static constexpr int bits = 14;

    Shares m_luma{}, m_u{}, m_v{};
};

}  // namespace Nifikral
