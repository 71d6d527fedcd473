#include "effects/base/correct_rounding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "effects/base/double_double.h"
#include "effects/base/fixed_point.h"

namespace AVBased {
namespace {

// Everywhere the same plan: a result in double precision decides, unless it lies so close to where rounded results
// change that its own error could carry it over. Then one of twice the precision does.

constexpr double infinity = std::numeric_limits<double>::infinity(),
                 notANumber = std::numeric_limits<double>::quiet_NaN();

// Added to a double below 2^51 and taken off again, it leaves the nearest integer, whose last bits are those of the
// sum.
constexpr double integerOffset = 0x1.8p+52;

// 2 / pi as a binary fraction.
constexpr std::uint32_t twoOverPi[] = {0xa2f9836e, 0x4e441529, 0xfc2757d1, 0xf534ddc0, 0xdb629599,
                                       0x3c439041, 0xfe5163ab, 0xdebbc561, 0xb7246e3a, 0x424dd2e0};

std::uint64_t BitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
double FromBits(std::uint64_t bits) { return std::bit_cast<double>(bits); }
double PowerOfTwo(int exponent) { return FromBits(std::uint64_t(exponent + 1023) << 52); }

// What is left of an angle after the nearest number of right angles, and that number modulo 4.
template <class Real>
struct Reduced {
    Real rest;
    std::uint64_t quarters;
};

// Multiplies by 2 / pi in integers, for angles from 1/2 to 2^128.
Reduced<DoubleDouble> Reduce(double angle) {
    constexpr unsigned limbs = 6, limbBits = 32;
    constexpr DoubleDouble halfPi{0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
    const std::uint64_t leadingBit = std::uint64_t(1) << 52, bits = BitsOf(std::abs(angle));
    const std::uint64_t mantissa = (bits & (leadingBit - 1)) | leadingBit;
    const int exponent = int(bits >> 52) - 1075;

    // Leading bits of 2 / pi that only make multiples of four right angles are left out.
    const unsigned skipped = unsigned(std::max(exponent - 2, 0)), surplus = unsigned(std::max(2 - exponent, 0));
    std::uint32_t product[limbs + 2] = {};  // the lowest one first
    for (unsigned i = 0; i < limbs; ++i) {
        const std::uint32_t* const from = twoOverPi + skipped / limbBits + (limbs - 1 - i);
        const std::uint64_t pair = std::uint64_t(from[0]) << limbBits | from[1];
        const std::uint64_t factor = std::uint32_t(pair >> (limbBits - skipped % limbBits));
        std::uint64_t carry = 0;
        for (unsigned half = 0; half < 2; ++half) {
            const std::uint64_t part = half ? mantissa >> limbBits : std::uint32_t(mantissa);
            carry += product[i + half] + factor * part;
            product[i + half] = std::uint32_t(carry);
            carry >>= limbBits;
        }
        product[i + 2] = std::uint32_t(carry);
    }
    std::uint32_t turns[limbs];  // the two bits on top count right angles
    for (unsigned i = 0; i < limbs; ++i) {
        const std::uint32_t* const from = product + surplus / limbBits + i;
        turns[i] = std::uint32_t((std::uint64_t(from[1]) << limbBits | from[0]) >> (surplus % limbBits));
    }
    std::uint32_t& top = turns[limbs - 1];
    const std::uint64_t quarters = (top + (1u << 29)) >> 30;
    const bool isBelow = top >> 29 & 1;
    if (isBelow)
        for (std::uint32_t& limb : turns) limb = ~limb;
    top &= (1u << 30) - 1;
    DoubleDouble rest;
    for (unsigned i = 0; i < limbs; ++i) rest = rest + double(turns[i]) * PowerOfTwo(int(limbBits * i) - 190);
    rest = rest * halfPi;
    const bool isNegative = std::signbit(angle);
    return {isNegative == isBelow ? rest : -rest, isNegative ? 0 - quarters : quarters};
}

// For angles that Cody and Waite's subtraction in three parts reduces: those where the first two products are exact.
constexpr float maxQuickAngle = 0x1p+22F;

Reduced<double> ReduceQuickly(double angle) {
    const double sum = angle * 0x1.45f306dc9c883p-1 + integerOffset, quarters = sum - integerOffset;
    const double rest =
        ((angle - quarters * 0x1.921fb54p+0) - quarters * 0x1.10b461p-30) - quarters * 0x1.a62633145c06ep-58;
    return {rest, BitsOf(sum)};
}

// After a number of right angles, sine and cosine change places and signs.
template <class Real>
SineAndCosine<Real> Turned(const SineAndCosine<Real>& of, std::uint64_t quarters) {
    const bool swaps = quarters & 1;
    const Real sine = swaps ? of.cosine : of.sine, cosine = swaps ? of.sine : of.cosine;
    return {quarters & 2 ? -sine : sine, (quarters + 1) & 2 ? -cosine : cosine};
}

// 1 / n!
constexpr auto inverseFactorials = [] {
    std::array<double, 17> inverses{};
    double factorial = 1;
    for (unsigned n = 1; n < inverses.size(); ++n) {
        factorial *= n;
        inverses[n] = 1 / factorial;
    }
    return inverses;
}();

// Of an angle up to an eighth of a turn. Within 2^-50 of themselves.
SineAndCosine<double> QuickSeries(double angle) {
    const double square = angle * angle;
    double sine = 0, cosine = 0;
    for (int n = 15; n > 0; n -= 2) sine = inverseFactorials[n] - square * sine;
    for (int n = 16; n > 0; n -= 2) cosine = inverseFactorials[n] - square * cosine;
    return {angle * sine, 1 - square * cosine};
}

// The same, within 2^-98 of themselves.
SineAndCosine<DoubleDouble> Series(const DoubleDouble& angle) {
    const DoubleDouble square = angle * angle;
    DoubleDouble sine = 1, cosine = 1;
    for (int n = 29; n > 1; n -= 2) sine = DoubleDouble(1) - square * sine / double(n * (n - 1));
    for (int n = 30; n > 1; n -= 2) cosine = DoubleDouble(1) - square * cosine / double(n * (n - 1));
    return {angle * sine, cosine};
}

// For finite angles up to 2^128.
SineAndCosine<DoubleDouble> AccurateSineAndCosine(double angle) {
    if (std::abs(angle) < 0.5) return Series(angle);
    const Reduced<DoubleDouble> reduced = Reduce(angle);
    return Turned(Series(reduced.rest), reduced.quarters);
}

// Rounding in two steps errs where the first one ends halfway between two results of the second. It never does when its
// last bit says that something was cut off.
float Rounded(const DoubleDouble& value) {
    const std::uint64_t bits = BitsOf(value.high);
    if (value.low == 0 || bits & 1) return float(value.high);
    return float(FromBits(std::signbit(value.low) == std::signbit(value.high) ? bits + 1 : bits - 1));
}

constexpr double quickError = 0x1p-48;

// Whether every value that `value` may stand for is rounded as it is; if so, `rounded` is set.
bool IsCertain(double value, float& rounded) {
    rounded = float(value * (1 - quickError));
    return rounded == float(value * (1 + quickError));
}

// Returns whether all the results are certain.
bool FillQuickly(const float* angles, unsigned count, float* sines, float* cosines) {
    std::uint32_t uncertain = 0;
#pragma GCC ivdep  // the rows share no memory
    for (unsigned i = 0; i < count; ++i) {
        const Reduced<double> angle = ReduceQuickly(angles[i]);
        const SineAndCosine<double> quick = Turned(QuickSeries(angle.rest), angle.quarters);
        uncertain |= !IsCertain(quick.sine, sines[i]);
        uncertain |= !IsCertain(quick.cosine, cosines[i]);
        uncertain |= !(std::abs(angles[i]) <= maxQuickAngle);
    }
    return uncertain == 0;
}

// A number above 0 as a power of two and a mantissa between the roots of 1/2 and 2.
struct Scaled {
    double mantissa;
    int exponent;

    explicit Scaled(double value) {
        mantissa = std::frexp(value, &exponent);
        if (mantissa < std::numbers::sqrt2 / 2) {
            mantissa *= 2;
            --exponent;
        }
    }
};

// Within 2^-48 of itself.
double QuickLogarithm(double value) {
    const Scaled scaled(value);
    const double ratio = (scaled.mantissa - 1) / (scaled.mantissa + 1), square = ratio * ratio;
    double sum = 0;
    for (int n = 17; n > 0; n -= 2) sum = 1.0 / n + square * sum;
    return scaled.exponent * std::numbers::ln2 + 2 * ratio * sum;
}

constexpr DoubleDouble ln2{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

DoubleDouble AccurateLogarithm(double value) {
    const Scaled scaled(value);
    const DoubleDouble ratio = DoubleDouble(scaled.mantissa - 1) / DoubleDouble::Sum(scaled.mantissa, 1);
    const DoubleDouble square = ratio * ratio;
    DoubleDouble sum;
    for (int n = 43; n > 0; n -= 2) sum = DoubleDouble(1) / double(n) + square * sum;
    return ln2 * double(scaled.exponent) + ratio * sum * 2.0;
}

double QuickExponential(double power) {
    const double exponent = power * std::numbers::log2e + integerOffset - integerOffset;
    const double rest = (power - exponent * 0x1.62e42fefa38p-1) - exponent * 0x1.ef35793c7673p-45;
    double sum = 0;
    for (unsigned n = 12; n > 0; --n) sum = inverseFactorials[n] + rest * sum;
    return std::ldexp(1 + rest * sum, int(exponent));
}

double AccurateExponential(const DoubleDouble& power) {
    const double exponent = power.high * std::numbers::log2e + integerOffset - integerOffset;
    const DoubleDouble rest = power - ln2 * exponent;
    DoubleDouble sum = 1.0;
    for (int n = 24; n > 0; --n) sum = DoubleDouble(1) + rest * sum / double(n);
    return std::ldexp(sum.high, int(exponent));
}

}  // namespace

SineAndCosine<float> SineAndCosineOf(float angle) {
    SineAndCosine<float> result{};
    if (FillQuickly(&angle, 1, &result.sine, &result.cosine)) return result;
    if (!std::isfinite(angle)) return {float(notANumber), float(notANumber)};
    const SineAndCosine<DoubleDouble> accurate = AccurateSineAndCosine(angle);
    return {Rounded(accurate.sine), Rounded(accurate.cosine)};
}

void FillSinesAndCosines(const float* angles, unsigned count, float* sines, float* cosines, InstructionSet set) {
    if (variantsOf<FillQuickly>.For(set)(angles, count, sines, cosines)) return;
    for (unsigned i = 0; i < count; ++i) {
        const SineAndCosine<float> exact = SineAndCosineOf(angles[i]);
        sines[i] = exact.sine;
        cosines[i] = exact.cosine;
    }
}

SineAndCosine<double> SineAndCosineOf(double angle) {
    if (!std::isfinite(angle)) return {notANumber, notANumber};
    const SineAndCosine<DoubleDouble> accurate = AccurateSineAndCosine(angle);
    return {accurate.sine.high, accurate.cosine.high};
}

double Power(double base, double exponent) {
    if (base == 1 || exponent == 0) return 1;
    if (std::isnan(base) || std::isnan(exponent)) return notANumber;
    const bool rises = exponent > 0;
    if (base == 0) return rises ? 0 : infinity;
    if (std::isinf(base)) return rises ? infinity : 0;
    const double rough = exponent * QuickLogarithm(base);
    if (!(std::abs(rough) < 800)) return rough > 0 ? infinity : 0;
    return AccurateExponential(AccurateLogarithm(base) * exponent);
}

std::int32_t TruncatedPower(double base, double exponent, double factor) {
    if (base > 0 && std::isfinite(base) && std::isfinite(exponent)) {
        // Within 2^-42 of itself: beyond 100 the results are truncated to the limits in any case.
        const double quick = QuickExponential(std::clamp(exponent * QuickLogarithm(base), -100.0, 100.0)) * factor;
        const std::int32_t truncated = TruncateToInt32(quick * (1 - 0x1p-40));
        if (truncated == TruncateToInt32(quick * (1 + 0x1p-40))) return truncated;
    }
    return TruncateToInt32(Power(base, exponent) * factor);
}

}  // namespace AVBased
