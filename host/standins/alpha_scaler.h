#pragma once

#include <cstdint>

#include "host/standins/ffmpeg_formats.h"

namespace Nifikral {

/// Scales pictures with transparency so that what cannot be seen lends no colour to what can: the colours are weighted
/// by alpha, in 32 bits. Threads: one at a time.
class AlphaScaler {
 public:
    /// Whether a conversion needs this where the picture is not opaque: both sides have alpha and the size changes.
    static bool Serves(const PictureShape& from, const PictureShape& to);
    static bool IsOpaque(const PictureShape& shape, const std::uint8_t* const data[4], const int pitches[4]);

    /// `filter` is one of the SWS_ constants. Raises 10021010 when FFmpeg has no such scaler.
    AlphaScaler(const PictureShape& from, const PictureShape& to, int filter);

    void Scale(const std::uint8_t* const fromData[4], const int fromPitches[4], std::uint8_t* const toData[4],
               const int toPitches[4]) const;

 private:
    PictureShape m_packedFrom, m_packedTo;
    ScalerPtr m_pack, m_scale, m_unpack;
};

}  // namespace Nifikral
