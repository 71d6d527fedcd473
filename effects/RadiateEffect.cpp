#include "effects/RadiateEffect.h"

#include <array>
#include <vector>

#include "effects/fixed_point.h"
#include "effects/property_table.h"
#include "effects/shared_samples.h"

namespace AVBased {
namespace {

constexpr Property<RadiateSettings> radiateProperties[] = {
    {"radiate_x", "300", &RadiateSettings::x},
    {"radiate_y", "300", &RadiateSettings::y},
    {"radiate_level", "300", &RadiateSettings::level},
};

constexpr unsigned sampleCount = 16;

// Where on one axis the samples of every position lie: nothing of that depends on the other axis.
class SampleAxis {
 public:
    SampleAxis(const SharedAxis& axis, std::int32_t centre, std::int32_t level) : m_at(axis.size) {
        for (unsigned i = 0; i < axis.size; ++i) Walk(m_at[i], axis, axis.Last(i), centre, level);
    }
    const std::array<unsigned, sampleCount>& operator[](unsigned i) const { return m_at[i]; }
    unsigned size() const { return unsigned(m_at.size()); }

 private:
    static void Walk(std::array<unsigned, sampleCount>& at, const SharedAxis& axis, unsigned position,
                     std::int32_t centre, std::int32_t level) {
        const std::int32_t origin = std::int32_t(std::uint32_t(centre) << 8);
        std::int32_t distance = WrappingDifference(std::int32_t(position << 8), origin);
        for (unsigned& sample : at) {
            distance = WrappingDifference(distance, WrappingProduct(distance >> 4, level) >> 10);
            // Deliberate: one position beyond the exact point.
            const std::int32_t place = WrappingSum(WrappingSum(distance, origin), 256) >> 8 >> axis.shift;
            sample = unsigned(std::clamp(place, 0, std::int32_t(axis.size) - 1));
        }
    }

    std::vector<std::array<unsigned, sampleCount>> m_at;
};

// Deliberate: 17 values are summed and divided by 16. A bias below 0 that outweighs the sum wraps round to white.
std::uint32_t Mean(std::uint32_t sum, std::uint32_t bias) { return std::min((sum >> 4) + bias, 255u); }

void RadiateRgba32Effect(const SampleAxis& columns, const SampleAxis& rows, std::uint32_t bias, const PackedView& to,
                         const PackedView& from) {
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < columns.size(); ++x) {
            const Rgba32 own = from.Row(y)[x];
            std::uint32_t blue = own.blue, green = own.green, red = own.red;
            for (unsigned k = 0; k < sampleCount; ++k) {
                const Rgba32& sample = from.Row(rows[y][k])[columns[x][k]];
                blue += sample.blue;
                green += sample.green;
                red += sample.red;
            }
            to.Row(y)[x] = {std::uint8_t(Mean(blue, bias)), std::uint8_t(Mean(green, bias)),
                            std::uint8_t(Mean(red, bias)), own.alpha};
        }
}

void RadiateComponentEffect(const SampleAxis& columns, const SampleAxis& rows, std::uint32_t bias,
                            const ComponentView& to, const ComponentView& from) {
    for (unsigned y = 0; y < rows.size(); ++y)
        for (unsigned x = 0; x < columns.size(); ++x) {
            std::uint32_t sum = from.Row(y)[x];
            for (unsigned k = 0; k < sampleCount; ++k) sum += from.Row(rows[y][k])[columns[x][k]];
            to.Row(y)[x] = std::uint8_t(Mean(sum, bias));
        }
}

}  // namespace

CRadiateVideoImageEffect::CRadiateVideoImageEffect() : CBasedVideoImageEffect(effectNameRadiate) {
    DeclareProperties(*this, radiateProperties);
}

void CRadiateVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, radiateProperties, name, node);
}

void CRadiateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto [x, y, level] = m_settings;
    const std::uint32_t bias = std::uint32_t(level >> 3);
    const FrameCopy source(*frame);
    ForFrame(
        [&](const PackedView& to, const PackedView& from) {
            RadiateRgba32Effect({ColumnsOf(from), x, level}, {RowsOf(from), y, level}, bias, to, from);
        },
        [&](const PlanarView& to, const PlanarView& from) {
            for (unsigned p = 0; p < 3; ++p)
                RadiateComponentEffect({ColumnsOf(from, p), x, level}, {RowsOf(from, p), y, level},
                                       IsChroma(p) ? 0 : bias, to.plane[p], from.plane[p]);
        },
        *frame, *source);
}

}  // namespace AVBased
