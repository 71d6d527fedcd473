#pragma once

#include <cstddef>
#include <type_traits>

#include "effects/base/frame_views.h"

/// Loops over a plane that wait for memory as little as possible.
namespace AVBased {

inline constexpr unsigned cacheLine = 64;
/// How far ahead of the bytes in work the loops fetch. The hardware's own prefetcher stops at every 4 KiB page; asking
/// this early hides the start of the next one.
inline constexpr unsigned prefetchAhead = 4096;

inline void PrefetchToWrite(const void* address, std::ptrdiff_t ahead = prefetchAhead) {
    __builtin_prefetch(static_cast<const unsigned char*>(address) + ahead, 1);
}

inline void PrefetchToRead(const void* address, std::ptrdiff_t ahead) {
    __builtin_prefetch(static_cast<const unsigned char*>(address) + ahead, 0);
}

/// Calls work(samples, count) for stretches of every row of a plane, in no order: one cache line's samples at a time, a
/// constant count that becomes straight vector code, then the rest of the row. Four bands of the plane are walked side
/// by side, since a core keeps more lines in flight on four streams than on one.
template <class Sample, class Work>
void ForEachStretch(const PlaneView<Sample>& view, Work work) {
    constexpr unsigned lineSamples = cacheLine / sizeof(Sample), bands = 4;
    const auto rows = [&]<unsigned count>(unsigned y, std::size_t apart, std::integral_constant<unsigned, count>) {
        unsigned x = 0;
        for (; view.width - x >= lineSamples; x += lineSamples)
            for (unsigned band = 0; band < count; ++band) {
                Sample* const samples = view.Row(y + band * apart) + x;
                PrefetchToWrite(samples);
                work(samples, lineSamples);
            }
        for (unsigned band = 0; band < count; ++band) work(view.Row(y + band * apart) + x, view.width - x);
    };
    const unsigned bandRows = view.height / bands;
    for (unsigned y = 0; y < bandRows; ++y) rows(y, bandRows, std::integral_constant<unsigned, bands>{});
    for (unsigned y = bandRows * bands; y < view.height; ++y) rows(y, 0, std::integral_constant<unsigned, 1>{});
}

// "unroll 1" in the loops below: unrolled before it is vectorised, a stretch becomes a list of scalar steps, of which
// GCC finds only the simplest again.

/// Replaces every sample of a plane by change(sample); the padding stays.
template <class Change>
void ForEachSample(const ComponentView& view, Change change) {
    ForEachStretch(view, [change](std::uint8_t* samples, unsigned count) {
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) samples[i] = change(samples[i]);
    });
}

/// Replaces every pixel by change(word), where the word's bytes from low to high are blue, green, red, alpha.
/// Arithmetic on the fields of a struct of bytes would stay scalar; on words it becomes vector code.
template <class Change>
void ForEachPixel(const PackedView& view, Change change) {
    ForEachStretch(view, [change](Rgba32* pixels, unsigned count) {
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) StoreWord(pixels + i, change(LoadWord(pixels + i)));
    });
}

}  // namespace AVBased
