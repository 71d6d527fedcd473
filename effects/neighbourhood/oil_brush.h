#pragma once

#include <cstdint>

namespace AVBased {

struct OilPaintingSettings {
    std::uint32_t radius = 3;       ///< the brush is a square of side 2 x radius + 1
    std::uint32_t coarseness = 50;  ///< intensity classes 0 to coarseness; the registered text says 3
};

/// The intensity class, or its rank where classes are more than 256 and so all different.
constexpr std::uint8_t OilClass(std::uint8_t level, std::uint32_t coarseness) {
    return coarseness > 255 ? level : std::uint8_t(coarseness * level >> 8);
}

}  // namespace AVBased
