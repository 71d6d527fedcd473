#pragma once

#include <algorithm>
#include <cstdint>

/// Motion that starts and ends gently and closes a loop. Times are parts of a whole: 0 is its begin, 1 its end. Plain
/// arithmetic throughout, so that every machine draws the same.
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
/// How far the turn of one of several has come at t of a loop in which each has one: up within the first `ramp` of its
/// turn, down within the same part of the next one's. Those of all sum up to 1; a single one is always at 1.
constexpr double InTurn(double t, unsigned index, unsigned count, double ramp) {
    if (count < 2) return 1;
    return Between(Wrapped(t - double(index) / count) * count, 0, 1 + ramp, ramp);
}
constexpr double Mixed(double a, double b, double part) { return a + (b - a) * part; }

/// A sine over turns: 0, up to 1 at a quarter, down to -1 at three quarters; within a thousandth of the true one.
constexpr double Wave(double turns) {
    const double t = 2 * Wrapped(turns + 0.5) - 1;
    const double arch = 4 * t * (1 - (t < 0 ? -t : t));
    return arch + 0.225 * (arch * (arch < 0 ? -arch : arch) - arch);
}

/// Whose turn it is when some take turns, and how much of the turn has gone by.
struct Turn {
    unsigned index = 0;
    double part = 0;
};
constexpr Turn TurnAt(double phase, unsigned count) {
    const double turns = phase * count, whole = WholePart(turns);
    return {count ? static_cast<unsigned>(whole) % count : 0, turns - whole};
}
/// How far it is the turn of `index`: 1 during its own one, but for the last `ramp` of that, where it passes to the
/// next. All shares are 1 together.
constexpr double ShareOf(unsigned index, const Turn& turn, unsigned count, double ramp) {
    const double passed = Passed(turn.part, 1 - ramp, 1);
    return (index == turn.index ? 1 - passed : 0) + (index == (turn.index + 1) % count ? passed : 0);
}

/// A number of 0 up to, but not, 1 that looks random and follows from two others.
constexpr double Scattered(unsigned seed, unsigned index) {
    unsigned hash = (seed * 0x9E3779B1u) ^ (index * 0x85EBCA6Bu + 0xC2B2AE35u);
    for (int i = 0; i < 2; ++i) hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    return double(hash >> 8) / (1 << 24);
}

}  // namespace AVBased
