#include "effects/ReliefEffect.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "effects/fixed_point.h"
#include "effects/frame_views.h"
#include "effects/property_table.h"

namespace AVBased {
namespace {

constexpr Property<CReliefVideoImageEffect::Settings> properties[] = {
    {"relief_angle", "40", &CReliefVideoImageEffect::Settings::angle},
};

// A row in work, byte by byte with its neighbours, and the sums of the two rows that it completes and continues.
struct Lines {
    const std::uint8_t *left, *middle, *right;
    std::int16_t *above, *here;
};

// Adds the shares of a row to the row above, to itself and to the row below, whose sums replace its own, and writes the
// row above. In 16 bits: of a sample times 128 by twice a weight, the high half is floor(sample x weight / 256).
void AddRow(const Lines& lines, unsigned bytes, const std::array<std::int16_t, 9>& weights2, std::uint8_t* finished) {
    const auto share = [](std::int16_t sample128, std::int16_t weight2) {
        return std::int16_t(sample128 * weight2 >> 16);
    };
    const std::array<std::int16_t, 9> k = weights2;
    std::int16_t* const __restrict above = lines.above;
    std::int16_t* const __restrict here = lines.here;
    std::uint8_t* const __restrict out = finished;
    for (unsigned x = 0; x < bytes; ++x) {
        const auto l = std::int16_t(lines.left[x] << 7), m = std::int16_t(lines.middle[x] << 7),
                   r = std::int16_t(lines.right[x] << 7);
        out[x] = ClampToByte(above[x] + share(l, k[6]) + share(m, k[7]) + share(r, k[8]));
        above[x] = std::int16_t(here[x] + share(l, k[3]) + share(m, k[4]) + share(r, k[5]));
        here[x] = std::int16_t(share(l, k[0]) + share(m, k[1]) + share(r, k[2]));
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
    std::array<std::int16_t, 9> weights2;
    for (unsigned i = 0; i < kernel.size(); ++i) weights2[i] = std::int16_t(2 * kernel[i]);

    const ComponentView rows{plane.data, bytes, plane.pitch, plane.height};
    for (unsigned y = 0; y < rows.height; ++y) {
        std::copy_n(rows.Row(y), bytes, line.data() + step);
        // Above the first row there is none: that row itself, safe in the line by now, is written twice.
        const unsigned above = y == 0 ? 0 : y - 1;
        AddRow(lines, bytes, weights2, rows.Row(above));
        finish(plane.Row(above), lines.middle);
    }
    const std::vector<std::uint8_t> black(line.size());
    AddRow({black.data(), black.data(), black.data(), lines.above, lines.here}, bytes, weights2,
           rows.Row(rows.height - 1));
    finish(plane.Row(rows.height - 1), lines.middle);
}

}  // namespace

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

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CBasedVideoImageEffect(effectNameRelief), m_kernel(Kernel(m_settings.angle)) {
    DeclareProperties(*this, properties);
}

ReliefKernel CReliefVideoImageEffect::Kernel(std::int32_t angle) {
    constexpr double pi = std::numbers::pi;
    const double x = (double(angle) + double(angle)) * pi / 360;
    const auto weight = [x](double turn) { return std::int32_t(std::cos(x + turn) * 256); };
    return {weight(pi / 4),     weight(pi / 2),
            weight(3 * pi / 4),  //
            weight(0),          256,
            weight(pi),  //
            weight(-pi / 4),    weight(-pi / 2),
            weight(-3 * pi / 4)};
}

void CReliefVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    if (StoreProperty(m_settings, properties, name, node)) m_kernel = Kernel(m_settings.angle);
}

void CReliefVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame([this](const PackedView& picture) { reliefRgba32Variants.For(Instructions())(picture, m_kernel); },
             [this](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p)
                     reliefComponentVariants.For(Instructions())(picture.plane[p], m_kernel);
             },
             *frame);
}

}  // namespace AVBased
