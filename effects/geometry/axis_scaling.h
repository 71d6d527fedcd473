#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

/// An axis of a picture scaled to another number of samples with a tent filter, as wide as the coarser of the two
/// grids: interpolation where the picture grows, a weighted mean where it shrinks, a copy where it stays.
namespace AVBased {

class AxisScaling {
 public:
    /// The weights in 1/256, which sum up to 256, of the samples from `first` on. The first and the last are not 0.
    struct Taps {
        unsigned first, count;
        const std::uint16_t* weights;
    };

    AxisScaling(unsigned from, unsigned to) {
        for (unsigned i = 0; i < to; ++i) AddPlace(i, from, to);
    }
    Taps operator[](unsigned i) const {
        return {m_places[i].first, m_places[i].count, &m_weights[m_places[i].weights]};
    }

 private:
    struct Place {
        unsigned first, count;
        std::size_t weights;
    };

    // Distances in halves of 1/to of a source sample, so that all are whole numbers.
    void AddPlace(unsigned i, std::int64_t from, std::int64_t to) {
        const std::int64_t centre = (2 * std::int64_t(i) + 1) * from, reach = 2 * std::max(from, to);
        const auto weight = [&](std::int64_t j) { return reach - std::abs((2 * j + 1) * to - centre); };
        std::int64_t first = std::max<std::int64_t>(0, (centre - reach) / (2 * to) - 1);
        while (weight(first) <= 0) ++first;
        std::int64_t end = first, total = 0;
        for (; end < from && weight(end) > 0; ++end) total += weight(end);
        const std::size_t weights = m_weights.size();
        std::int64_t sum = 0, before = 0;
        for (std::int64_t j = first; j < end; ++j) {
            sum += weight(j);
            const std::int64_t rounded = (256 * sum + total / 2) / total;
            m_weights.push_back(std::uint16_t(rounded - before));
            before = rounded;
        }
        // What was rounded to nothing at the ends does not count: a sample that has all the weight stands alone.
        while (m_weights.back() == 0) m_weights.pop_back();
        const auto begin = m_weights.begin() + std::ptrdiff_t(weights);
        const auto some = std::find_if(begin, m_weights.end(), [](std::uint16_t w) { return w > 0; });
        first += some - begin;
        m_weights.erase(begin, some);
        m_places.push_back({unsigned(first), unsigned(m_weights.size() - weights), weights});
    }

    std::vector<Place> m_places;
    std::vector<std::uint16_t> m_weights;
};

}  // namespace AVBased
