#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// The integer conversions that the picture arithmetic leans on, each defined for every argument.
namespace AVBased {

constexpr std::uint8_t ClampToByte(std::int32_t value) { return std::uint8_t(std::clamp(value, 0, 255)); }

/// Truncated towards zero. Values beyond 32 bits become the nearest limit, not-a-number becomes 0.
constexpr std::int32_t TruncateToInt32(double value) {
    constexpr double lowest = std::numeric_limits<std::int32_t>::min(),
                     highest = std::numeric_limits<std::int32_t>::max();
    if (value != value) return 0;
    return std::int32_t(std::clamp(value, lowest, highest));
}

/// Truncated; below 0 and not-a-number become 0, values beyond 32 bits the highest one.
constexpr std::uint32_t TruncateToUint32(double value) {
    if (!(value > 0)) return 0;
    return std::uint32_t(std::min<double>(value, std::numeric_limits<std::uint32_t>::max()));
}

// Arithmetic modulo 2^32.
constexpr std::int32_t WrappingSum(std::int32_t a, std::int32_t b) {
    return std::int32_t(std::uint32_t(a) + std::uint32_t(b));
}
constexpr std::int32_t WrappingDifference(std::int32_t a, std::int32_t b) {
    return std::int32_t(std::uint32_t(a) - std::uint32_t(b));
}
constexpr std::int32_t WrappingProduct(std::int32_t a, std::int32_t b) {
    return std::int32_t(std::uint32_t(a) * std::uint32_t(b));
}

}  // namespace AVBased
