#pragma once

#include <cstdint>

#include "effects/base/instruction_sets.h"

/// The elementary functions that pictures depend on, which every C library rounds in its own way. These are made of
/// additions, multiplications, divisions and shifts alone, so every processor and every library gives the same bits.
namespace AVBased {

template <class Real>
struct SineAndCosine {
    Real sine, cosine;
    bool operator==(const SineAndCosine&) const = default;
};

/// Correctly rounded, for every angle; not a number where the angle is none or is infinite.
SineAndCosine<float> SineAndCosineOf(float angle);

/// The same for many angles.
void FillSinesAndCosines(const float* angles, unsigned count, float* sines, float* cosines, InstructionSet set);

/// Correctly rounded from a result of about 100 bits, for angles below 2^128.
SineAndCosine<double> SineAndCosineOf(double angle);

/// Correctly rounded from a result of about 90 bits, where it is a normal number. The base is not negative; 0, infinity
/// and not-a-number are taken as by std::pow.
double Power(double base, double exponent);

/// TruncateToInt32(Power(base, exponent) * factor) for a power of two, at less expense.
std::int32_t TruncatedPower(double base, double exponent, double factor);

}  // namespace AVBased
