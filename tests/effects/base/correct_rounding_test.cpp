#include "effects/base/correct_rounding.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "effects/base/fixed_point.h"

namespace AVBased::Testing {
namespace {

// A number of a precision of its own, and what it is when rounded once.
class Exact {
 public:
    explicit Exact(double value) {
        mpfr_init2(m_value, 400);
        mpfr_set_d(m_value, value, MPFR_RNDN);
    }
    ~Exact() { mpfr_clear(m_value); }
    Exact(const Exact&) = delete;
    Exact& operator=(const Exact&) = delete;

    Exact& Sine() { return mpfr_sin(m_value, m_value, MPFR_RNDN), *this; }
    Exact& Cosine() { return mpfr_cos(m_value, m_value, MPFR_RNDN), *this; }
    Exact& ToThe(double power) {
        const Exact exponent(power);
        return mpfr_pow(m_value, m_value, exponent.m_value, MPFR_RNDN), *this;
    }
    float Single() const { return mpfr_get_flt(m_value, MPFR_RNDN); }
    double Double() const { return mpfr_get_d(m_value, MPFR_RNDN); }

 private:
    mpfr_t m_value;
};

SineAndCosine<float> JudgedSingle(float angle) {
    return {Exact(angle).Sine().Single(), Exact(angle).Cosine().Single()};
}

void ExpectSines(const std::vector<float>& angles) {
    for (const InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        std::vector<float> sines(angles.size()), cosines(angles.size());
        FillSinesAndCosines(angles.data(), unsigned(angles.size()), sines.data(), cosines.data(), set);
        for (std::size_t i = 0; i < angles.size(); ++i) {
            const SineAndCosine<float> judged = JudgedSingle(angles[i]);
            ASSERT_EQ(std::bit_cast<std::uint32_t>(sines[i]), std::bit_cast<std::uint32_t>(judged.sine))
                << std::hexfloat << angles[i];
            ASSERT_EQ(cosines[i], judged.cosine) << std::hexfloat << angles[i];
        }
    }
}

// Those whose sines or cosines come closest to the middle between two numbers; the arguments of all 32 bits were
// searched. The last ones come closest to a multiple of a right angle, or are the largest.
constexpr float hardAngles[] = {0x1.33333p+13F,  0x1.20ffccp-7F,   0x1.e35bc6p+7F,  0x1p-12F,         0x1.8f219cp+5F,
                                0x1.a8872ap-11F, 0x1.e7061ep-2F,   0x1.515766p+12F, 0x1.9eab2ep-4F,   0x1.03b948p+21F,
                                0x1.cf9736p+19F, 0x1.6f1b7p+5F,    0x1.921fb6p+0F,  0x1.921fb6p+1F,   0x1.f37c8ap+95F,
                                0x1.887814p+51F, 0x1.fffffep+127F, 0x1p-149F,       0x1.fffffep-127F, 0x1p+22F,
                                0x1.000002p+22F};

TEST(CorrectRounding, SinglePrecisionSinesAndCosinesAreTheNearest) {
    std::vector<float> hard;
    for (const float angle : hardAngles) hard.insert(hard.end(), {angle, -angle});
    hard.push_back(-0.0F);
    // One by one, so that the doubtful ones do not send the others along with them.
    for (const float angle : hard) ExpectSines({angle});

    // The angles that occur in a swirl, more of them near 0.
    std::mt19937 random(7);
    std::vector<float> usual(20001), any(2000);
    for (std::size_t i = 0; i < usual.size(); ++i)
        usual[i] = std::ldexp(float(int(random() % 20000000) - 10000000), -int(i % 24));
    ExpectSines(usual);
    for (float& angle : any) angle = std::bit_cast<float>(std::uint32_t(random() % 0x7F800000 | (random() & 1) << 31));
    ExpectSines(any);
}

TEST(CorrectRounding, AnglesThatAreNoNumbersGiveNone) {
    for (const float angle : {std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_TRUE(std::isnan(SineAndCosineOf(angle).sine) && std::isnan(SineAndCosineOf(angle).cosine));
        EXPECT_TRUE(std::isnan(SineAndCosineOf(double(angle)).sine));
    }
}

TEST(CorrectRounding, DoublePrecisionSinesAndCosinesAreTheNearest) {
    std::mt19937_64 random(11);
    const auto expect = [](double angle) {
        const SineAndCosine<double> judged{Exact(angle).Sine().Double(), Exact(angle).Cosine().Double()};
        ASSERT_EQ(SineAndCosineOf(angle), judged) << std::hexfloat << angle;
    };
    constexpr double pi = 3.14159265358979323846;
    for (int degrees = -720; degrees <= 720; ++degrees) expect(degrees * pi / 180);
    for (const double angle : {0x1p+127, 0x1.fffffffffffffp+126, 0.5, 0x1.921fb54442d18p-1}) expect(angle);
    for (int i = 0; i < 5000; ++i) expect(std::ldexp(double(std::int64_t(random())), -int(random() % 100)));
}

TEST(CorrectRounding, PowersAreTheNearest) {
    std::mt19937 random(13);
    // A lens's ratios of distances, and exponents as they are written.
    for (int i = 0; i < 5000; ++i) {
        const unsigned radius = 1 + random() % 2000;
        const double base = std::sqrt(double(1 + random() % (radius * radius))) / radius;
        const double exponent = (int(random() % 2001) - 1000) / (i % 2 ? 100.0 : 8.0);
        const double judged = Exact(base).ToThe(exponent).Double();
        if (judged > 1e-290 && judged < 1e290) {
            ASSERT_EQ(Power(base, exponent), judged) << std::hexfloat << base << ' ' << exponent;
        }
        ASSERT_EQ(TruncatedPower(base, exponent, 256), TruncateToInt32(judged * 256)) << base << ' ' << exponent;
    }
}

// Where the quick result lies on the boundary between two integers.
TEST(CorrectRounding, TruncatedPowersOfExactOnesAreExact) {
    for (int n = 1; n <= 256; ++n) {
        EXPECT_EQ(TruncatedPower(n / 256.0, 1, 256), n);
        EXPECT_EQ(TruncatedPower(n / 256.0, -1, 256), 65536 / n);
        EXPECT_EQ(TruncatedPower(n / 16.0, 2, 256), n * n);
        EXPECT_EQ(TruncatedPower(n * n / 65536.0, 0.5, 256), n);
        EXPECT_EQ(TruncatedPower(std::nextafter(n / 256.0, 0), 1, 256), n - 1);
    }
    EXPECT_EQ(TruncatedPower(0.5, -200, 256), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(TruncatedPower(0.5, 1e300, 256), 0);
}

TEST(CorrectRounding, PowersOfLimitsAreThoseOfTheStandardLibrary) {
    constexpr double infinity = std::numeric_limits<double>::infinity(),
                     none = std::numeric_limits<double>::quiet_NaN();
    for (const double base : {0.0, 0.5, 1.0, 1.5, infinity, none})
        for (const double exponent : {0.0, 1.0, -1.0, 1e5, -1e5, 1e300, -1e300, infinity, -infinity, none}) {
            const double power = Power(base, exponent), judged = std::pow(base, exponent);
            EXPECT_TRUE(power == judged || (std::isnan(power) && std::isnan(judged))) << base << ' ' << exponent;
            EXPECT_EQ(TruncatedPower(base, exponent, 256), TruncateToInt32(judged * 256)) << base << ' ' << exponent;
        }
}

}  // namespace
}  // namespace AVBased::Testing
