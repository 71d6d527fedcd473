#pragma once

#include <cstdint>

/// Bytes as fractions of 255.
namespace AVBased {

/// n / 255 to the nearest, for n up to 255 x 255.
constexpr std::uint32_t Over255(std::uint32_t n) {
    n += 128;
    return (n + (n >> 8)) >> 8;
}

/// The product of two fractions.
constexpr std::uint32_t ByteProduct(std::uint32_t a, std::uint32_t b) { return Over255(a * b); }

}  // namespace AVBased
