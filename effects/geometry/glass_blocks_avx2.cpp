#include "effects/geometry/glass_blocks_avx2.h"

#include <algorithm>
#include <cstring>

#include "effects/base/vector_rows_avx2.h"

namespace AVBased {
namespace {

constexpr unsigned halfBytes = 16, blockBytes = vectorBytes, pairBytes = vectorBytes;

}  // namespace

std::optional<GlassBlocks> GlassBlocks::Make(const std::vector<unsigned>& columns,
                                             const std::vector<std::uint8_t>& shares, unsigned sampleBytes,
                                             Order order) {
    if (columns.empty()) return {};
    GlassBlocks blocks;
    const std::size_t halfSamples = halfBytes / sampleBytes;
    for (std::size_t half = 0; half % 2 != 0 || half * halfSamples < columns.size(); ++half) {
        // The last column fills the last block.
        const auto at = [&](std::size_t i) { return std::min(half * halfSamples + i, columns.size() - 1); };
        unsigned base = columns[at(0)];
        for (std::size_t i = 1; i < halfSamples; ++i) base = std::min(base, columns[at(i)]);
        blocks.m_bases.push_back(base * sampleBytes);
        for (std::size_t i = 0; i < halfSamples; ++i) {
            const unsigned share = shares[at(i)], own = (columns[at(i)] - base) * sampleBytes;
            if (own + 2 * sampleBytes > halfBytes) return {};
            // A weight of 256 fits no byte: half of a pair of equal bytes takes one of it.
            const unsigned other = order == Order::RowByRow && share == 0 ? own : own + sampleBytes;
            const unsigned weight = std::max(share, 1u), pair = 256 - weight + (weight << 8);
            for (unsigned byte = 0; byte < sampleBytes; ++byte) {
                blocks.m_picks.push_back(std::uint8_t(own + byte));
                blocks.m_picks.push_back(std::uint8_t(other + byte));
                blocks.m_shares.push_back(std::uint16_t(order == Order::RowByRow ? pair : share));
            }
        }
    }
    return blocks;
}

}  // namespace AVBased

NIFIKRAL_BEGIN_AVX2

namespace AVBased {
namespace {

// Writes the bytes of a block at `first` that lie in [begin, end).
void StorePart(std::uint8_t* to, std::size_t first, std::size_t begin, std::size_t end, __m256i block) {
    std::uint8_t bytes[blockBytes];
    StoreVector(bytes, block);
    const std::size_t from = std::max(first, begin), until = std::min(first + blockBytes, end);
    std::memcpy(to + from, bytes + (from - first), until - from);
}

__m256i Pairs(const std::uint8_t* from, __m256i picks) {
    const __m128i near = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    return Less128(_mm256_shuffle_epi8(_mm256_broadcastsi128_si256(near), picks));
}

// The upper bytes of the sums of two halves.
__m256i UpperBytes(__m256i left, __m256i right) {
    const __m256i packed = _mm256_packs_epi16(_mm256_srai_epi16(left, 8), _mm256_srai_epi16(right, 8));
    return _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0));
}

// Pairs whose second byte is the first one again.
__m256i Alone(__m256i picks) {
    return _mm256_shuffle_epi8(
        picks, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14)));
}

}  // namespace

void GlassBlocks::MixColumns(std::uint8_t* to, const std::uint8_t* row) const {
    const std::uint32_t* const bases = m_bases.data();
    const std::uint8_t* const picks = m_picks.data();
    const std::uint16_t* const weights = m_shares.data();
    const auto mixed = [=](std::size_t half) {
        return _mm256_maddubs_epi16(LoadVector(weights + half * halfBytes),
                                    Pairs(row + bases[half], LoadVector(picks + half * pairBytes)));
    };
    const std::size_t halves = m_bases.size();
    for (std::size_t half = 0; half < halves; half += 2)
        StoreVector(to + half * halfBytes, UpperBytes(mixed(half), mixed(half + 1)));
}

void GlassBlocks::MixRows(std::uint8_t* to, const std::uint8_t* a, const std::uint8_t* b, unsigned share,
                          std::size_t begin, std::size_t end) {
    if (share == 0) {
        share = 1;
        b = a;
    }
    const __m256i weights = _mm256_set1_epi16(std::int16_t(256 - share + (share << 8)));
    const auto mixed = [=](std::size_t x) {
        const __m256i first = LoadVector(a + x), second = LoadVector(b + x);
        const __m256i low = _mm256_maddubs_epi16(weights, _mm256_unpacklo_epi8(first, second)),
                      high = _mm256_maddubs_epi16(weights, _mm256_unpackhi_epi8(first, second));
        return Less128(_mm256_packs_epi16(_mm256_srai_epi16(low, 8), _mm256_srai_epi16(high, 8)));
    };
    std::size_t x = begin;
    for (; x + blockBytes <= end; x += blockBytes) StoreVector(to + x, mixed(x));
    if (x < end) StorePart(to, x, x, end, mixed(x));
}

void GlassBlocks::MixFour(std::uint8_t* to, const std::uint8_t* row, const std::uint8_t* below, unsigned share,
                          std::size_t begin, std::size_t end) const {
    // As above, a weight of 256 becomes 255 and a 1 for the right one, which is the same one then.
    const bool alone = share == 0;
    const unsigned weight = std::max(share, 1u);
    const __m256i fy = _mm256_set1_epi16(std::int16_t(weight)),
                  all = _mm256_set1_epi16(std::int16_t(256 - weight + (weight << 8)));
    const std::uint32_t* const bases = m_bases.data();
    const std::uint8_t* const picks = m_picks.data();
    const std::uint16_t* const shares = m_shares.data();
    const auto mixedHalf = [=](std::size_t half) {
        // With c = fx fy / 256: fx - c for the one below and c for its right one; 256 - fx - fy + c and fy - c above.
        const __m256i fx = LoadVector(shares + half * halfBytes), product = _mm256_mullo_epi16(fx, fy);
        const __m256i lower =
            _mm256_sub_epi16(_mm256_add_epi16(fx, _mm256_and_si256(product, _mm256_set1_epi16(short(0xFF00)))),
                             _mm256_srli_epi16(product, 8));
        const __m256i upper = _mm256_sub_epi16(all, lower);
        __m256i pick = LoadVector(picks + half * pairBytes);
        if (alone) pick = Alone(pick);
        return _mm256_add_epi16(_mm256_maddubs_epi16(upper, Pairs(row + bases[half], pick)),
                                _mm256_maddubs_epi16(lower, Pairs(below + bases[half], pick)));
    };
    const auto mixed = [=](std::size_t x) {
        const std::size_t half = x / halfBytes;
        return Less128(UpperBytes(mixedHalf(half), mixedHalf(half + 1)));
    };
    const std::size_t first = begin / blockBytes * blockBytes, last = end / blockBytes * blockBytes;
    std::size_t x = first;
    if (first < begin) {
        StorePart(to, first, begin, end, mixed(first));
        x += blockBytes;
    }
    for (; x < last; x += blockBytes) StoreVector(to + x, mixed(x));
    if (x < end) StorePart(to, x, begin, end, mixed(x));
}

}  // namespace AVBased

NIFIKRAL_END_AVX2
