#pragma once

#include <cstdint>

#include "host/standins/av_picture.h"
#include "host/standins/ffmpeg_formats.h"

namespace Nifikral {

/// Turns planar YUV pictures into packed 32-bit ones. libswscale scales the planes, which it does with vectors, up to
/// a full sample of each for every pixel; the colours, where it has only plain code for whole chroma, are made here.
/// Threads: one at a time.
class PackedScaler {
 public:
    /// Whether a conversion is of this kind.
    static bool Serves(const PictureShape& from, const PictureShape& to);

    /// `filter` is one of the SWS_ constants. Raises 10021010 when FFmpeg has no such scaler, 10021007 without memory.
    PackedScaler(const PictureShape& from, const PictureShape& to, int filter);

    /// False when libswscale fails.
    bool Scale(const std::uint8_t* const fromData[4], const int fromPitches[4], std::uint8_t* const toData[4],
               const int toPitches[4], int fromRows) const;

 private:
    // In 1/65536: what a step of luma adds to every colour, and a step of chroma to one.
    struct Colours {
        std::int32_t base, luma, redOfV, greenOfU, greenOfV, blueOfU;
    };
    static void MixRow(const Colours& colours, const std::uint8_t* y, const std::uint8_t* u, const std::uint8_t* v,
                       int width, std::uint8_t* to);

    AvPicturePtr m_planes;
    ScalerPtr m_scaler;
    Colours m_colours;
};

}  // namespace Nifikral
