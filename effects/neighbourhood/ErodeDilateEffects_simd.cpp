#include "effects/neighbourhood/ErodeDilateEffects.h"
#include "effects/base/vector_rows.h"

#if defined(__x86_64__)

#pragma GCC push_options
#pragma GCC target("avx2,bmi,bmi2,lzcnt,popcnt")

namespace AVBased {
namespace {

struct Least {
    static __m256i Of(__m256i a, __m256i b) { return _mm256_min_epu8(a, b); }
};
struct Greatest {
    static __m256i Of(__m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
};

template <class Extreme, unsigned step, ExtremeRow plain>
void FilterRow(unsigned char* row, const unsigned char* second, const unsigned char* third, unsigned bytes,
               std::ptrdiff_t ahead) {
    if (bytes < vectorBytes) return plain(row, second, third, bytes, ahead);
    const auto column = [=](unsigned x) {
        return Extreme::Of(Extreme::Of(LoadVector(second + x), LoadVector(third + x)), LoadVector(row + x));
    };
    ForEachVector(row, bytes, ahead, [=](unsigned x) {
        const __m256i extreme = Extreme::Of(Extreme::Of(column(x), column(x + step)), column(x + 2 * step));
        if constexpr (step == 1)
            return extreme;
        else
            return OnColours(LoadVector(row + x), extreme);
    });
}

}  // namespace

constinit const ExtremeRows leastRows{{LeastComponentRow, FilterRow<Least, 1, LeastComponentRow>},
                                      {LeastRgba32Row, FilterRow<Least, 4, LeastRgba32Row>}};
constinit const ExtremeRows greatestRows{{GreatestComponentRow, FilterRow<Greatest, 1, GreatestComponentRow>},
                                         {GreatestRgba32Row, FilterRow<Greatest, 4, GreatestRgba32Row>}};

}  // namespace AVBased

#pragma GCC pop_options

#else

namespace AVBased {

constinit const ExtremeRows leastRows{{LeastComponentRow, LeastComponentRow}, {LeastRgba32Row, LeastRgba32Row}};
constinit const ExtremeRows greatestRows{{GreatestComponentRow, GreatestComponentRow},
                                         {GreatestRgba32Row, GreatestRgba32Row}};

}  // namespace AVBased

#endif
