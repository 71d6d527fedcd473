#pragma once

#include <array>
#include <vector>

#include "effects/base/fixed_point.h"
#include "effects/base/shared_samples.h"

namespace AVBased {

inline constexpr unsigned radiateSamples = 16;

/// Where on one axis the samples of every position lie: nothing of that depends on the other axis.
class RadiateAxis {
 public:
    using Samples = std::array<unsigned, radiateSamples>;

    RadiateAxis(const SharedAxis& axis, std::int32_t centre, std::int32_t level) : m_at(axis.size) {
        for (unsigned i = 0; i < axis.size; ++i) Walk(m_at[i], axis, axis.Last(i), centre, level);
    }
    const Samples& operator[](std::size_t i) const { return m_at[i]; }
    unsigned size() const { return unsigned(m_at.size()); }

 private:
    static void Walk(Samples& at, const SharedAxis& axis, unsigned position, std::int32_t centre, std::int32_t level) {
        const std::int32_t origin = std::int32_t(std::uint32_t(centre) << 8);
        std::int32_t distance = WrappingDifference(std::int32_t(position << 8), origin);
        for (unsigned& sample : at) {
            distance = WrappingDifference(distance, WrappingProduct(distance >> 4, level) >> 10);
            // Deliberate: one position beyond the exact point.
            const std::int32_t place = WrappingSum(WrappingSum(distance, origin), 256) >> 8 >> axis.shift;
            sample = unsigned(std::clamp(place, 0, std::int32_t(axis.size) - 1));
        }
    }

    std::vector<Samples> m_at;
};

}  // namespace AVBased
