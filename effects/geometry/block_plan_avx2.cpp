#include "effects/geometry/block_plan_avx2.h"

#include "effects/base/vector_rows_avx2.h"

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// Ranges of eight numbers by place, or of each half of eight in all its places.
struct Ranges {
    __m256i least, most;
};

Ranges Joined(const Ranges& a, const Ranges& b) {
    return {_mm256_min_epu32(a.least, b.least), _mm256_max_epu32(a.most, b.most)};
}
template <int order>
Ranges Shuffled(const Ranges& r) {
    return {_mm256_shuffle_epi32(r.least, order), _mm256_shuffle_epi32(r.most, order)};
}
Ranges Swapped(const Ranges& r) {
    return {_mm256_permute2x128_si256(r.least, r.least, 1), _mm256_permute2x128_si256(r.most, r.most, 1)};
}
Ranges OfHalves(const __m256i* rows) {
    Ranges range{rows[0], rows[0]};
    for (unsigned row = 1; row < blockRows; ++row) range = Joined(range, {rows[row], rows[row]});
    range = Joined(range, Shuffled<0x4E>(range));
    return Joined(range, Shuffled<0xB1>(range));
}
bool FitWindows(const Ranges& x, const Ranges& y) {
    static_assert((windowColumns & (windowColumns - 1)) == 0 && (windowRows & (windowRows - 1)) == 0);
    const __m256i tooWide = _mm256_and_si256(_mm256_sub_epi32(x.most, x.least), _mm256_set1_epi32(-int(windowColumns)));
    const __m256i tooHigh = _mm256_and_si256(_mm256_sub_epi32(y.most, y.least), _mm256_set1_epi32(-int(windowRows)));
    const __m256i beyond = _mm256_or_si256(tooWide, tooHigh);
    return _mm256_testz_si256(beyond, beyond);
}
std::uint32_t Least(__m256i numbers) {
    std::uint32_t all[8];
    StoreVector(all, numbers);
    return *std::min_element(all, all + 8);
}
std::uint32_t Most(__m256i numbers) {
    std::uint32_t all[8];
    StoreVector(all, numbers);
    return *std::max_element(all, all + 8);
}

}  // namespace

[[gnu::flatten]] Box PlanWindowsAvx2(const BlockBand& band, const CopiedPlane& plane, SampleBlock* blocks,
                                     std::uint32_t* data, std::size_t* used) {
    static_assert(blockRows == 4 && blockColumns == 8 && windowColumns == 16);
    // A window lies inside the plane, since all of it is loaded.
    const __m256i lastLeft = _mm256_set1_epi32(int(plane.width - windowColumns)),
                  lastTop = _mm256_set1_epi32(int(plane.height - windowRows));
    const __m256i pitch = _mm256_set1_epi32(int(plane.pitch)), none = _mm256_setzero_si256();
    Ranges bandX{_mm256_set1_epi32(-1), none}, bandY = bandX;
    std::size_t at = *used;
    for (unsigned b = 0; b < band.blocks; ++b) {
        __m256i x[blockRows], y[blockRows];
        for (unsigned row = 0; row < blockRows; ++row) {
            const std::size_t from = row * band.pitch + b * std::size_t(blockColumns);
            x[row] = LoadVector(band.columns + from);
            y[row] = LoadVector(band.rows + from);
        }
        Ranges rangeX = OfHalves(x), rangeY = OfHalves(y);
        bandX = Joined(bandX, rangeX);
        bandY = Joined(bandY, rangeY);
        SampleBlock& block = BeginBlock(blocks, b, at);
        if (!FitWindows(rangeX, rangeY)) {
            at += PlanByPositions(band, b, plane, block, data + at);
            continue;
        }
        const Ranges wholeX = Joined(rangeX, Swapped(rangeX)), wholeY = Joined(rangeY, Swapped(rangeY));
        block.kind = SampleBlock::Kind::Windows;
        if (FitWindows(wholeX, wholeY)) {
            block.kind = SampleBlock::Kind::Window;
            rangeX = wholeX;
            rangeY = wholeY;
        }
        const __m256i left = _mm256_min_epu32(rangeX.least, lastLeft), top = _mm256_min_epu32(rangeY.least, lastTop);
        const __m256i base = _mm256_add_epi32(_mm256_mullo_epi32(top, pitch), left);
        block.base[0] = std::uint32_t(_mm256_extract_epi32(base, 0));
        block.base[1] = std::uint32_t(_mm256_extract_epi32(base, 4));
        __m256i picks[blockRows];
        for (unsigned row = 0; row < blockRows; ++row)
            picks[row] =
                _mm256_add_epi32(_mm256_slli_epi32(_mm256_sub_epi32(y[row], top), 4), _mm256_sub_epi32(x[row], left));
        // Packing keeps to each half, as the block's data do.
        const __m256i upper = _mm256_packs_epi32(picks[0], picks[1]), lower = _mm256_packs_epi32(picks[2], picks[3]);
        StoreVector(data + at, _mm256_packus_epi16(upper, lower));
        at += blockSamples / sizeof(std::uint32_t);
    }
    *used = at;
    return {Least(bandX.least), Most(bandX.most) + 1, Least(bandY.least), Most(bandY.most) + 1};
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
