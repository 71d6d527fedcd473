#include "effects/neighbourhood/BlurSharpenEffects_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// The sums of 32 samples: those of every second one from the first on, then those of the others.
struct Sums {
    __m256i even, odd;
};

Sums LoadSums(const RowSum* at) {
    const auto* const vectors = reinterpret_cast<const __m256i*>(at);
    return {_mm256_loadu_si256(vectors), _mm256_loadu_si256(vectors + 1)};
}

void StoreSums(RowSum* at, Sums sums) {
    auto* const vectors = reinterpret_cast<__m256i*>(at);
    _mm256_storeu_si256(vectors, sums.even);
    _mm256_storeu_si256(vectors + 1, sums.odd);
}

Sums Add(Sums a, Sums b) { return {_mm256_add_epi16(a.even, b.even), _mm256_add_epi16(a.odd, b.odd)}; }

// Of each two bytes of `bytes`, the first times `first` plus the second times `second`.
__m256i Weigh(__m256i bytes, int first, int second) {
    return _mm256_maddubs_epi16(bytes, _mm256_set1_epi16(short(second * 256 + first)));
}

template <class Kernel, std::size_t step>
struct VectorRows {
    static void Sum(RowSum* sums, const std::uint8_t* row, FilteredBytes filtered) {
        if (filtered.count < vectorBytes) return StoreSums(sums, SumsAt(Rest(row, filtered.count + 2 * step).bytes));
        const std::size_t last = filtered.count - vectorBytes;
        StoreSums(sums, SumsAt(row));
        StoreSums(sums + vectorBytes, SumsAt(row + last));
        sums += 2 * vectorBytes;
        for (std::size_t x = filtered.head; x <= last; x += vectorBytes, sums += vectorBytes)
            StoreSums(sums, SumsAt(row + x));
    }

    // Both ends of a row are vectors of their own, computed before any sample changes, so that those between may be
    // stored to whole vectors of memory.
    static void Filter(std::uint8_t* row, const std::uint8_t* below, RowSum* above, const RowSum* same,
                       FilteredBytes filtered) {
        std::uint8_t* const to = row + step;
        if (filtered.count < vectorBytes) {
            const Rest samples(row, filtered.count + step), samplesBelow(below, filtered.count + 2 * step);
            std::uint8_t result[vectorBytes];
            StoreVector(result, Filtered(samples.bytes, samplesBelow.bytes, above, same));
            std::copy_n(result, filtered.count, to);
            return;
        }
        const std::size_t last = filtered.count - vectorBytes;
        const __m256i begin = Filtered(row, below, above, same);
        const __m256i end = Filtered(row + last, below + last, above + vectorBytes, same + vectorBytes);
        above += 2 * vectorBytes - filtered.head;
        same += 2 * vectorBytes - filtered.head;
        std::size_t x = filtered.head;
        for (; x + cacheLine <= filtered.count; x += cacheLine) {
            PrefetchToWrite(below + x);
            for (std::size_t at : {x, x + vectorBytes})
                StoreVector(to + at, Filtered(row + at, below + at, above + at, same + at));
        }
        if (x <= last) StoreVector(to + x, Filtered(row + x, below + x, above + x, same + x));
        StoreVector(to, begin);
        StoreVector(to + last, end);
    }

 private:
    // A row too short for a vector, where a whole one may be read.
    struct Rest {
        std::uint8_t bytes[vectorBytes + 2 * step] = {};
        Rest(const std::uint8_t* from, std::size_t count) { std::copy_n(from, count, bytes); }
    };

    static Sums SumsAt(const std::uint8_t* row) {
        const __m256i left = LoadVector(row), centre = LoadVector(row + step), right = LoadVector(row + 2 * step);
        if constexpr (step == 1) {
            // The left of an even sample lies beside it, and so does that of an odd one, a byte further.
            return {_mm256_add_epi16(Weigh(left, 1, Kernel::centreWeight), Weigh(right, 1, 0)),
                    _mm256_add_epi16(Weigh(centre, 1, Kernel::centreWeight), _mm256_srli_epi16(right, 8))};
        } else {
            const __m256i evens = _mm256_set1_epi16(255);
            Sums outer{_mm256_add_epi16(_mm256_and_si256(left, evens), _mm256_and_si256(right, evens)),
                       _mm256_add_epi16(_mm256_srli_epi16(left, 8), _mm256_srli_epi16(right, 8))};
            return Add(outer, {Weigh(centre, Kernel::centreWeight, 0), Weigh(centre, 0, Kernel::centreWeight)});
        }
    }

    static __m256i Filtered(const std::uint8_t* row, const std::uint8_t* below, RowSum* above, const RowSum* same) {
        const Sums next = SumsAt(below), here = LoadSums(same);
        const Sums box = Add(Add(LoadSums(above), here), next);
        StoreSums(above, next);
        if constexpr (Kernel::sharpens) {
            const __m256i centre = LoadVector(row + step);
            const __m256i bytes = _mm256_packus_epi16(_mm256_sub_epi16(Weigh(centre, 10, 0), box.even),
                                                      _mm256_sub_epi16(Weigh(centre, 0, 10), box.odd));
            const __m256i merge = _mm256_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15,  //
                                                   0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15);
            return _mm256_shuffle_epi8(bytes, merge);
        } else {
            const Sums sum = Add(box, here);
            return _mm256_blendv_epi8(_mm256_srli_epi16(sum.even, 4), _mm256_slli_epi16(sum.odd, 4),
                                      _mm256_set1_epi16(short(0xFF00)));
        }
    }
};

}  // namespace

template <class Kernel, class Pixel>
void FilterPlaneAvx2(PlaneView<Pixel> plane) {
    FilterPlane<VectorRows, Kernel>(plane);
}
template void FilterPlaneAvx2<BlurKernel>(ComponentView plane);
template void FilterPlaneAvx2<BlurKernel>(PackedView picture);
template void FilterPlaneAvx2<SharpenKernel>(ComponentView plane);
template void FilterPlaneAvx2<SharpenKernel>(PackedView picture);

}  // namespace AVBased

NIFIKRAL_END_AVX2
