#include "effects/geometry/ReverseEffect.h"

#include <cstring>
#include <type_traits>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "effects/base/frame_views.h"
#include "effects/base/row_loops.h"

namespace AVBased {
namespace {

constexpr Property<ReverseSettings> reverseProperties[] = {
    {"mirror", "0", &ReverseSettings::mirror},
    {"vertical", "0", &ReverseSettings::vertical},
};

// A sample as a number, which the compiler handles in vectors; a struct's fields it would take one by one.
template <class Sample>
using Number = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint8_t>;

template <class Sample>
void Swap(Sample* a, Sample* b) {
    Number<Sample> first, second;
    std::memcpy(&first, a, sizeof first);
    std::memcpy(&second, b, sizeof second);
    std::memcpy(static_cast<void*>(a), &second, sizeof second);
    std::memcpy(static_cast<void*>(b), &first, sizeof first);
}

template <class Sample>
void Exchange(Sample* __restrict a, Sample* __restrict b, unsigned count) {
    for (unsigned i = 0; i < count; ++i) Swap(a + i, b + i);
}

// The same, each stretch turned round on the way: a's first sample becomes b's last.
template <class Sample>
void ExchangeReversed(Sample* a, Sample* b, unsigned count) {
    for (unsigned i = 0; i < count; ++i) Swap(a + i, b + (count - 1 - i));
}

#if defined(__x86_64__)

[[NIFIKRAL_AVX2]] inline __m256i TurnRound(__m256i vector, const Rgba32*) {
    return _mm256_permutevar8x32_epi32(vector, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

[[NIFIKRAL_AVX2]] inline __m256i TurnRound(__m256i vector, const std::uint8_t*) {
    const __m256i lanes =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    return _mm256_permute4x64_epi64(_mm256_shuffle_epi8(vector, lanes), _MM_SHUFFLE(1, 0, 3, 2));
}

template <class Sample>
[[NIFIKRAL_AVX2]] void ExchangeReversedAvx2(Sample* a, Sample* b, unsigned count) {
    constexpr unsigned step = 32 / sizeof(Sample);
    unsigned i = 0;
    for (; i + step <= count; i += step) {
        auto *const first = reinterpret_cast<__m256i*>(a + i), *const second =
                                                                   reinterpret_cast<__m256i*>(b + (count - i - step));
        const __m256i turned = TurnRound(_mm256_loadu_si256(first), a);
        _mm256_storeu_si256(first, TurnRound(_mm256_loadu_si256(second), b));
        _mm256_storeu_si256(second, turned);
    }
    ExchangeReversed(a + i, b, count - i);
}

template <class Sample>
constexpr Variants<void(Sample*, Sample*, unsigned)> exchangeReversed{ExchangeReversed<Sample>,
                                                                      ExchangeReversedAvx2<Sample>};

#else

template <class Sample>
constexpr auto exchangeReversed = variantsOf<ExchangeReversed<Sample>>;

#endif

template <class Sample>
constexpr auto exchange = variantsOf<Exchange<Sample>>;

// Exchanges pieces of two stretches that do not overlap, and fetches what both will be followed by: for each the same
// place so many bytes ahead.
template <class Sample>
struct Exchanger {
    // Short, so that fetches come evenly: bursts of them wait for each other.
    static constexpr unsigned pieceBytes = 2 * cacheLine, piece = pieceBytes / sizeof(Sample);
    InstructionSet set;

    // The piece that begins at a's sample i.
    void operator()(Sample* a, Sample* b, unsigned count, unsigned i, bool reversed, std::ptrdiff_t aheadOfA,
                    std::ptrdiff_t aheadOfB) const {
        const unsigned length = std::min(piece, count - i);
        Sample *const first = a + i, *const second = reversed ? b + (count - i - length) : b + i;
        for (unsigned line = 0; line < pieceBytes; line += cacheLine) {
            PrefetchToWrite(first, aheadOfA + line);
            PrefetchToWrite(second, aheadOfB + line);
        }
        (reversed ? exchangeReversed<Sample> : exchange<Sample>).For(set)(first, second, length);
    }
};

// Mirrors `count` rows that lie `apart` rows from one another, side by side: a core keeps more lines in flight on more
// streams.
template <class Sample>
void MirrorRows(const PlaneView<Sample>& plane, unsigned y, unsigned count, unsigned apart, InstructionSet set) {
    const Exchanger<Sample> exchangePieces{set};
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(plane.pitch);
    const unsigned half = plane.width / 2;
    for (unsigned i = 0; i < half; i += exchangePieces.piece)
        for (unsigned n = 0; n < count; ++n) {
            Sample* const row = plane.Row(y + std::size_t(n) * apart);
            exchangePieces(row, row + (plane.width - half), half, i, true, twoRows, twoRows);
        }
}

template <class Sample>
void Reverse(const PlaneView<Sample>& plane, bool mirror, bool vertical, InstructionSet set) {
    if (!vertical) {
        constexpr unsigned bands = 4;
        const unsigned bandRows = plane.height / bands;
        for (unsigned y = 0; y < bandRows; ++y) MirrorRows(plane, y, bands, bandRows, set);
        for (unsigned y = bandRows * bands; y < plane.height; ++y) MirrorRows(plane, y, 1, 0, set);
        return;
    }
    const Exchanger<Sample> exchangePieces{set};
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(plane.pitch);
    for (unsigned y = 0; y < plane.height / 2; ++y)
        for (unsigned i = 0; i < plane.width; i += exchangePieces.piece)
            exchangePieces(plane.Row(y), plane.Row(plane.height - 1 - y), plane.width, i, mirror, twoRows, -twoRows);
    if (mirror && plane.height % 2) MirrorRows(plane, plane.height / 2, 1, 0, set);
}

}  // namespace

void ReverseFrame(IRawVideoFrame& frame, bool mirror, bool vertical, InstructionSet set) {
    ForFrame([&](const PackedView& picture) { Reverse(picture, mirror, vertical, set); },
             [&](const PlanarView& picture) {
                 for (unsigned p = 0; p < picture.planes; ++p) Reverse(picture.plane[p], mirror, vertical, set);
             },
             frame);
}

CReverseVideoImageEffect::CReverseVideoImageEffect() : CSettingsEffect(effectNameReverse, reverseProperties) {}

void CReverseVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const bool mirror = m_settings.mirror == 1, vertical = m_settings.vertical == 1;
    if (mirror || vertical) ReverseFrame(*frame, mirror, vertical, Instructions());
}

}  // namespace AVBased
