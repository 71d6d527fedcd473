#pragma once

#include "dvd_effects/canvas/animation.h"

/// How several pictures take turns: in a loop, each has one of equal length. A phase is a part of the loop.
namespace AVBased {

/// Whose turn it is, and how much of it has gone by.
struct Turn {
    unsigned index = 0, count = 0;
    double part = 0;

    unsigned Next() const { return (index + 1) % count; }
    unsigned Before() const { return (index + count - 1) % count; }
    /// How far it is the turn of another one, where each hands over to the next in the last `ramp` of its turn. The
    /// shares of all are 1 together.
    double ShareOf(unsigned other, double ramp) const {
        const double passed = Passed(part, 1 - ramp, 1);
        return (other == index ? 1 - passed : 0) + (other == (index + 1) % count ? passed : 0);
    }
};
/// After so many turns. Of none, it is the turn of 0.
constexpr Turn TurnAfter(double turns, unsigned count) {
    const double whole = WholePart(turns);
    return {count ? static_cast<unsigned>(whole) % count : 0, count, turns - whole};
}
constexpr Turn TurnAt(double phase, unsigned count) { return TurnAfter(phase * count, count); }

/// How far one has come forward that does so at the beginning of its turn and is back `length` turns later, each within
/// `ramp`. A single one is back when its turn ends.
constexpr double ForwardInTurn(double phase, unsigned index, unsigned count, double length, double ramp) {
    return Between(Wrapped(phase - double(index) / count) * count, 0, count > 1 ? length : 1, ramp);
}
/// The same for those that take over from one another, each in the first `ramp` of its turn: what all have come sums up
/// to 1. A single one stays at 1.
constexpr double InTurn(double phase, unsigned index, unsigned count, double ramp) {
    return count < 2 ? 1 : ForwardInTurn(phase, index, count, 1 + ramp, ramp);
}

}  // namespace AVBased
