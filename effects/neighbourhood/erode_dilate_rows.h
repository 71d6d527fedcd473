#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "effects/base/frame_views.h"

namespace AVBased {

/// The extremes of bytes.
struct Least {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::min(a, b); }
};
struct Greatest {
    static std::uint8_t Of(std::uint8_t a, std::uint8_t b) { return std::max(a, b); }
};

/// Replaces `bytes` bytes of a row by the extreme of a block: of the row itself and two more rows, each there, one
/// sample and two samples further. For planes of bytes, and for the colours of packed pixels. `ahead` is the distance
/// to what is needed next.
using ExtremeRow = void(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
                        std::ptrdiff_t ahead);
template <class Extreme, class Sample>
void FilterRow(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
               std::ptrdiff_t /*ahead*/) {
    // The extremes of the three rows' columns, then of three neighbours in that line: a stretch at a time, written when
    // nothing to its left is needed any more.
    constexpr unsigned stretch = 512, step = sizeof(Sample);
    std::uint8_t columns[stretch + 2 * step];
    for (unsigned begin = 0; begin < bytes; begin += stretch) {
        const unsigned count = std::min(bytes - begin, stretch);
        std::uint8_t* const a = row + begin;
        const std::uint8_t *const b = second + begin, *const c = third + begin;
        for (unsigned i = 0; i < count + 2 * step; ++i) columns[i] = Extreme::Of(Extreme::Of(a[i], b[i]), c[i]);
        for (unsigned i = 0; i < count; ++i)
            columns[i] = Extreme::Of(Extreme::Of(columns[i], columns[i + step]), columns[i + 2 * step]);
        auto* const samples = reinterpret_cast<Sample*>(a);
        const auto* const extremes = reinterpret_cast<const Sample*>(columns);
        for (unsigned x = 0; x < count / step; ++x)
            if constexpr (step == 1)
                samples[x] = extremes[x];
            else
                StoreWord(samples + x, (LoadWord(samples + x) & alphaMask) | (LoadWord(extremes + x) & ~alphaMask));
    }
}

}  // namespace AVBased
