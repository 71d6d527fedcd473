#include "effects/ReliefEffect.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "effects/fixed_point.h"
#include "effects/frame_views.h"
#include "effects/property_table.h"
#include "effects/row_loops.h"

namespace AVBased {
namespace {

constexpr Property<CReliefVideoImageEffect::Settings> properties[] = {
    {"relief_angle", "40", &CReliefVideoImageEffect::Settings::angle},
};

// In 16 bits: of a sample times 128 by twice a weight, the high half is floor(sample x weight / 256).
std::int16_t Share(std::int16_t sample128, std::int16_t weight2) { return std::int16_t(sample128 * weight2 >> 16); }

// Filters a plane in one walk downwards, writing one row behind. A row adds its shares to the row above, to itself and
// to the row below, so that only two unfinished rows of sums are kept, and the row in work as it came, with black at
// both ends for the terms that are missing there.
class ReliefRows {
 public:
    ReliefRows(const ReliefKernel& kernel, unsigned rowBytes, unsigned step)
        : m_bytes(rowBytes), m_step(step), m_line(rowBytes + 2 * step), m_above(rowBytes), m_here(rowBytes) {
        for (unsigned i = 0; i < kernel.size(); ++i) m_weights[i] = std::int16_t(2 * kernel[i]);
    }

    /// Takes the next row in and finishes the one above it.
    void Add(const std::uint8_t* row, std::uint8_t* finished) {
        std::copy_n(row, m_bytes, m_line.data() + m_step);
        const std::array<std::int16_t, 9> k = m_weights;
        const std::uint8_t* const left = m_line.data();
        const std::uint8_t* const middle = left + m_step;
        const std::uint8_t* const right = middle + m_step;
        std::int16_t* const __restrict above = m_above.data();
        std::int16_t* const __restrict here = m_here.data();
        std::uint8_t* const __restrict out = finished;
        for (unsigned x = 0; x < m_bytes; ++x) {
            const auto l = std::int16_t(left[x] << 7), m = std::int16_t(middle[x] << 7),
                       r = std::int16_t(right[x] << 7);
            out[x] = Clamp(std::int16_t(above[x] + Share(l, k[6]) + Share(m, k[7]) + Share(r, k[8])));
            above[x] = std::int16_t(here[x] + Share(l, k[3]) + Share(m, k[4]) + Share(r, k[5]));
            here[x] = std::int16_t(Share(l, k[0]) + Share(m, k[1]) + Share(r, k[2]));
        }
    }
    /// Finishes the last row.
    void Finish(std::uint8_t* finished) const {
        for (unsigned x = 0; x < m_bytes; ++x) finished[x] = Clamp(m_above[x]);
    }

    /// Gives each pixel of a finished row the fourth byte of the pixel to the right in the row in work.
    void MoveFourthBytes(Rgba32* finished) {
        const auto* const line = reinterpret_cast<Rgba32*>(m_line.data()) + 1;
        const unsigned width = m_bytes / sizeof(Rgba32);
        for (unsigned x = 0; x < width; ++x) {
            const Rgba32* const from = line + std::min(x + 1, width - 1);
            StoreWord(finished + x, (LoadWord(finished + x) & ~alphaMask) | (LoadWord(from) & alphaMask));
        }
    }

 private:
    static std::uint8_t Clamp(std::int16_t sum) { return std::uint8_t(std::clamp<std::int16_t>(sum, 0, 255)); }

    unsigned m_bytes, m_step;
    std::array<std::int16_t, 9> m_weights;
    std::vector<std::uint8_t> m_line;
    std::vector<std::int16_t> m_above, m_here;
};

// Calls work(rows, finished row) for each finished row of a plane. What the first row writes above itself goes to
// itself: it is kept elsewhere by then, and finished with the next.
template <class Sample, class Finished>
void Relief(const PlaneView<Sample>& plane, const ReliefKernel& kernel, Finished finished) {
    if (plane.width == 0 || plane.height == 0) return;
    ReliefRows rows(kernel, plane.width * unsigned(sizeof(Sample)), sizeof(Sample));
    const ComponentView bytes{plane.data, 0, plane.pitch, plane.height};
    for (unsigned y = 0; y < plane.height; ++y) {
        const unsigned above = y == 0 ? 0 : y - 1;
        rows.Add(bytes.Row(y), bytes.Row(above));
        finished(rows, plane.Row(above));
    }
    rows.Finish(bytes.Row(plane.height - 1));
    finished(rows, plane.Row(plane.height - 1));
}

void ReliefRgba32Effect(PackedView picture, const ReliefKernel& kernel) {
    // Deliberate: the fourth byte is that of the last neighbour, below and to the right.
    Relief(picture, kernel, [](ReliefRows& rows, Rgba32* row) { rows.MoveFourthBytes(row); });
}

void ReliefComponentEffect(ComponentView plane, const ReliefKernel& kernel) {
    Relief(plane, kernel, [](ReliefRows&, std::uint8_t*) {});
}

}  // namespace

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CBasedVideoImageEffect("relief"), m_kernel(Kernel(m_settings.angle)) {
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
    ForFrame([this](const PackedView& picture) { Pick<ReliefRgba32Effect>()(picture, m_kernel); },
             [this](const PlanarView& picture) {
                 for (unsigned p = 0; p < 3; ++p) Pick<ReliefComponentEffect>()(picture.plane[p], m_kernel);
             },
             *frame);
}

}  // namespace AVBased
