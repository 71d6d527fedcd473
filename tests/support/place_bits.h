#pragma once

#include <cstdint>

namespace AVBased::Testing {

inline std::uint32_t Stirred(std::uint32_t bits) {
    bits = (bits ^ bits >> 16) * 0x7FEB352D;
    bits = (bits ^ bits >> 15) * 0x846CA68B;
    return bits ^ bits >> 16;
}

/// The random bits of a place in a plane of a frame, as judges of grain, spray and paper work them out.
inline std::uint32_t PlaceBits(unsigned seed, unsigned position, unsigned plane, unsigned x, unsigned y) {
    const std::uint32_t frame = Stirred(Stirred(seed) + position);
    return Stirred(Stirred(frame ^ Stirred(4 * y + plane)) + x * 0x9E3779B9);
}

}  // namespace AVBased::Testing
