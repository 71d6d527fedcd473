#pragma once

/// Numbers of twice the precision of double, by additions and multiplications of doubles alone: no fused operation, so
/// that every processor gives the same bits.
namespace AVBased {

/// The sum of its parts, of which `low` is at most half a unit in the last place of `high`. Results of the operators
/// are within 2^-100 of themselves, as long as no part overflows or becomes subnormal.
struct DoubleDouble {
    double high = 0, low = 0;

    constexpr DoubleDouble() = default;
    constexpr DoubleDouble(double value) : high(value) {}  // NOLINT(google-explicit-constructor): a double is one
    constexpr DoubleDouble(double highPart, double lowPart) : high(highPart), low(lowPart) {}

    /// The sum without an error.
    static constexpr DoubleDouble Sum(double a, double b) {
        const double sum = a + b, ofB = sum - a;
        return {sum, (a - (sum - ofB)) + (b - ofB)};
    }
    /// The product without an error.
    static constexpr DoubleDouble Product(double a, double b) {
        const double product = a * b;
        const DoubleDouble x = Halves(a), y = Halves(b);
        return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
    }
    constexpr DoubleDouble operator-() const { return {-high, -low}; }

 private:
    // The upper and the lower 26 bits.
    static constexpr DoubleDouble Halves(double a) {
        const double scaled = a * 134217729.0, upper = scaled - (scaled - a);
        return {upper, a - upper};
    }
};

constexpr DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble high = DoubleDouble::Sum(a.high, b.high), low = DoubleDouble::Sum(a.low, b.low);
    const DoubleDouble sum = DoubleDouble::Sum(high.high, high.low + low.high);
    return DoubleDouble::Sum(sum.high, sum.low + low.low);
}
constexpr DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) { return a + -b; }

constexpr DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble product = DoubleDouble::Product(a.high, b.high);
    return DoubleDouble::Sum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator/(const DoubleDouble& a, const DoubleDouble& b) {
    const double first = a.high / b.high;
    const DoubleDouble rest = a - b * first;
    const double second = rest.high / b.high, third = (rest - b * second).high / b.high;
    return DoubleDouble::Sum(first, second) + third;
}

}  // namespace AVBased
