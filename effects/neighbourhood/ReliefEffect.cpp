#include "effects/neighbourhood/ReliefEffect.h"

#include <algorithm>
#include <numbers>
#include <vector>

#include "effects/base/correct_rounding.h"
#include "effects/base/frame_views.h"
#include "effects/neighbourhood/ReliefEffect_avx2.h"

namespace AVBased {
namespace {

constexpr Property<ReliefSettings> properties[] = {
    {"relief_angle", "40", &ReliefSettings::angle},
};

// A row in work, byte by byte with its neighbours, and the sums of the two rows that it completes and continues.
struct Lines {
    const std::uint8_t *left, *middle, *right;
    std::int16_t *above, *here;
};

// floor(sample x weight / 256) within 16 bits: half the weight fits a product, and an odd weight adds half the sample.
struct Weight {
    std::int16_t half, odd;  // odd: all bits set, or none

    Weight() = default;
    explicit Weight(std::int32_t weight) : half(std::int16_t(weight >> 1)), odd(std::int16_t(-(weight & 1))) {}
    std::int16_t Of(std::int16_t sample) const {
        const auto product = std::int16_t(sample * half), rest = std::int16_t((sample >> 1) & odd);
        return std::int16_t(std::int16_t(product + rest) >> 7);
    }
};
using Weights = std::array<Weight, 9>;

// Adds the shares of a row to the row above, to itself and to the row below, whose sums replace its own, and writes the
// row above.
void AddRow(const Lines& lines, unsigned bytes, const Weights& weights, std::uint8_t* finished) {
    const Weights k = weights;
    const std::uint8_t *const left = lines.left, *const middle = lines.middle, *const right = lines.right;
    std::int16_t *const above = lines.above, *const here = lines.here;
#pragma GCC ivdep  // the lines and the row share no memory
    for (unsigned x = 0; x < bytes; ++x) {
        const std::int16_t l = left[x], m = middle[x], r = right[x];
        const auto sum = std::int16_t(above[x] + k[6].Of(l) + k[7].Of(m) + k[8].Of(r));
        above[x] = std::int16_t(here[x] + k[3].Of(l) + k[4].Of(m) + k[5].Of(r));
        here[x] = std::int16_t(k[0].Of(l) + k[1].Of(m) + k[2].Of(r));
        const std::int16_t notBlack = sum < 0 ? 0 : sum;
        finished[x] = std::uint8_t(notBlack > 255 ? 255 : notBlack);
    }
}

// Filters a plane in one walk downwards and writes one row behind, so that it needs no copy of the frame: only the row
// in work as it came, with black at both ends for the terms that are missing there, and two rows of sums. Calls
// finish(row, line) for each row written, with the row in work.
template <class Sample, class Finish>
void Relief(const PlaneView<Sample>& plane, const ReliefKernel& kernel, Finish finish) {
    constexpr unsigned step = sizeof(Sample);
    const unsigned bytes = plane.width * step;
    if (bytes == 0 || plane.height == 0) return;
    std::vector<std::uint8_t> line(bytes + 2 * step);
    std::vector<std::int16_t> sums(std::size_t(bytes) * 2);
    const Lines lines{line.data(), line.data() + step, line.data() + 2 * step, sums.data(), sums.data() + bytes};
    Weights weights;
    std::transform(kernel.begin(), kernel.end(), weights.begin(), [](std::int32_t weight) { return Weight(weight); });

    const ComponentView rows{plane.data, bytes, plane.pitch, plane.height};
    for (unsigned y = 0; y < rows.height; ++y) {
        std::copy_n(rows.Row(y), bytes, line.data() + step);
        // Above the first row there is none: that row itself, safe in the line by now, is written twice.
        const unsigned above = y == 0 ? 0 : y - 1;
        AddRow(lines, bytes, weights, rows.Row(above));
        finish(plane.Row(above), lines.middle);
    }
    const std::vector<std::uint8_t> black(line.size());
    AddRow({black.data(), black.data(), black.data(), lines.above, lines.here}, bytes, weights,
           rows.Row(rows.height - 1));
    finish(plane.Row(rows.height - 1), lines.middle);
}

void ReliefRgba32Effect(PackedView picture, const ReliefKernel& kernel) {
    // Deliberate: the fourth byte is that of the last neighbour, below and to the right.
    Relief(picture, kernel, [width = picture.width](Rgba32* row, const std::uint8_t* line) {
        const auto* const pixels = reinterpret_cast<const Rgba32*>(line);
        for (unsigned x = 0; x < width; ++x) row[x].alpha = pixels[std::min(x + 1, width - 1)].alpha;
    });
}

void ReliefComponentEffect(ComponentView plane, const ReliefKernel& kernel) {
    Relief(plane, kernel, [](std::uint8_t*, const std::uint8_t*) {});
}

}  // namespace

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CSettingsEffect(effectNameRelief, properties), m_kernel(Kernel(m_settings.angle)) {}

ReliefKernel CReliefVideoImageEffect::Kernel(std::int32_t angle) {
    constexpr double pi = std::numbers::pi;
    const double x = (double(angle) + double(angle)) * pi / 360;
    const auto weight = [x](double turn) { return std::int32_t(SineAndCosineOf(x + turn).cosine * 256); };
    return {weight(pi / 4),     weight(pi / 2),
            weight(3 * pi / 4),  //
            weight(0),          256,
            weight(pi),  //
            weight(-pi / 4),    weight(-pi / 2),
            weight(-3 * pi / 4)};
}

void CReliefVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(
        [this](const PackedView& picture) {
            variantsOf<ReliefRgba32Effect, ReliefRgba32EffectAvx2>.For(Instructions())(picture, m_kernel);
        },
        [this](const PlanarView& picture) {
            for (unsigned p = 0; p < 3; ++p)
                variantsOf<ReliefComponentEffect, ReliefComponentEffectAvx2>.For(Instructions())(picture.plane[p],
                                                                                                 m_kernel);
        },
        *frame);
}

}  // namespace AVBased
