#pragma once

#include <cstdint>

/// Time and places as fixed-point numbers: 16 bits behind the point.
namespace AVBased {

inline constexpr std::int64_t fixedOne = 1 << 16;

/// done / whole, from 0 to fixedOne; `whole` is above 0 and both are below 2^47.
constexpr std::int64_t Share(std::int64_t done, std::int64_t whole) { return done * fixedOne / whole; }

/// Starts and ends gently: 3t^2 - 2t^3, for t from 0 to fixedOne.
constexpr std::int64_t Ease(std::int64_t t) { return t * t * (3 * fixedOne - 2 * t) >> 32; }

/// From a to b as t goes from 0 to fixedOne.
constexpr std::int64_t Between(std::int64_t a, std::int64_t b, std::int64_t t) { return a + (b - a) * t / fixedOne; }

}  // namespace AVBased
