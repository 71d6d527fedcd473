#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/base/place_hash.h"

/// Motion that starts and ends gently and closes a loop. Times are parts of a whole: 0 is its beginning, 1 its end.
/// Plain arithmetic throughout, so that every machine draws the same. Times and places of slides are fixed-point
/// numbers.
namespace AVBased {

/// The greatest whole number up to t.
constexpr double WholePart(double t) {
    const auto whole = static_cast<double>(static_cast<long long>(t));
    return whole > t ? whole - 1 : whole;
}
/// t without its whole part: 0 up to, but not, 1.
constexpr double Wrapped(double t) { return t - WholePart(t); }

/// The nearest whole number.
constexpr int Rounded(double t) { return static_cast<int>(WholePart(t + 0.5)); }
/// A share of 0 to 1 as one of 0 to 255; beyond, the nearer end.
constexpr std::uint8_t ByteOf(double share) {
    return static_cast<std::uint8_t>(Rounded(std::clamp(share, 0.0, 1.0) * 255));
}

/// From 0 to 1 with no speed at both ends; outside, the nearer end.
constexpr double Eased(double t) {
    t = std::clamp(t, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}
/// The eased part of the time from `begin` to `end` that has gone by at t.
constexpr double Passed(double t, double begin, double end) { return Eased((t - begin) / (end - begin)); }
/// Up within `ramp` from `begin` on, down within `ramp` before `end`: 0 outside, 1 between.
constexpr double Between(double t, double begin, double end, double ramp) {
    return Passed(t, begin, begin + ramp) - Passed(t, end - ramp, end);
}
constexpr double Mixed(double a, double b, double part) { return a + (b - a) * part; }

/// A sine over turns: 0, up to 1 at a quarter, down to -1 at three quarters; within a thousandth of the true one.
constexpr double Wave(double turns) {
    const double t = 2 * Wrapped(turns + 0.5) - 1;
    const double arch = 4 * t * (1 - (t < 0 ? -t : t));
    return arch + 0.225 * (arch * (arch < 0 ? -arch : arch) - arch);
}

/// From 0 to 1 at half a turn and back, with no speed at both ends.
constexpr double ThereAndBack(double turns) { return 0.5 - 0.5 * Wave(turns + 0.25); }

/// A number of 0 up to, but not, 1 that looks random and follows from two others.
constexpr double Scattered(unsigned seed, unsigned index) {
    std::uint32_t bits = (seed * 0x9E3779B1u) ^ (index * 0x85EBCA6Bu + 0xC2B2AE35u);
    for (int i = 0; i < 2; ++i) bits = MixStep(bits, 15, 0x2C1B3C6D);
    return double(bits >> 8) / (1 << 24);
}

/// 1 as a fixed-point number: 16 bits after the point.
inline constexpr std::int64_t fixedOne = 1 << 16;

/// done / whole, from 0 to fixedOne; `whole` is above 0 and both are below 2^47.
constexpr std::int64_t FixedShare(std::int64_t done, std::int64_t whole) { return done * fixedOne / whole; }
/// Eased, for t from 0 to fixedOne.
constexpr std::int64_t FixedEased(std::int64_t t) { return t * t * (3 * fixedOne - 2 * t) >> 32; }
/// Mixed, as `part` goes from 0 to fixedOne.
constexpr std::int64_t FixedMixed(std::int64_t a, std::int64_t b, std::int64_t part) {
    return a + (b - a) * part / fixedOne;
}

}  // namespace AVBased
