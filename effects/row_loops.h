#pragma once

#include <cstddef>

#include "effects/frame_views.h"

/// Loops over a plane that wait for memory as little as possible.
namespace AVBased {

inline constexpr unsigned cacheLine = 64;
/// How far ahead of the bytes in work the loops fetch. The hardware's own prefetcher stops at every 4 KiB page; asking
/// this early hides the start of the next one.
inline constexpr unsigned prefetchAhead = 4096;

inline void PrefetchToWrite(const void* address, std::ptrdiff_t ahead = prefetchAhead) {
    __builtin_prefetch(static_cast<const unsigned char*>(address) + ahead, 1);
}

/// Calls work(row, begin, end) for stretches of every row of a plane: one cache line's samples at a time, a constant
/// count that becomes straight vector code, then the rest of the row.
template <class Sample, class Work>
void ForEachStretch(const PlaneView<Sample>& view, Work work) {
    constexpr unsigned lineSamples = cacheLine / sizeof(Sample);
    for (unsigned y = 0; y < view.height; ++y) {
        Sample* const row = view.Row(y);
        unsigned x = 0;
        for (; x + lineSamples <= view.width; x += lineSamples) {
            PrefetchToWrite(row + x);
            work(row, x, x + lineSamples);
        }
        work(row, x, view.width);
    }
}

/// Replaces every sample of a plane by change(sample); the padding stays.
template <class Change>
void ForEachSample(const ComponentView& view, Change change) {
    ForEachStretch(view, [change](std::uint8_t* row, unsigned begin, unsigned end) {
        for (unsigned x = begin; x < end; ++x) row[x] = change(row[x]);
    });
}

/// Replaces every pixel by change(word), where the word's bytes from low to high are blue, green, red, alpha.
/// Arithmetic on the fields of a struct of bytes would stay scalar; on words it becomes vector code.
template <class Change>
void ForEachPixel(const PackedView& view, Change change) {
    ForEachStretch(view, [change](Rgba32* row, unsigned begin, unsigned end) {
        for (unsigned x = begin; x < end; ++x) StoreWord(row + x, change(LoadWord(row + x)));
    });
}

}  // namespace AVBased
