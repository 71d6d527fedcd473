#include "effects/geometry/MirageEffect.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "effects/base/frame_copy.h"
#include "effects/base/row_loops.h"
#include "effects/geometry/row_sampler.h"

namespace AVBased {
namespace {

constexpr Property<MirageSettings> mirageProperties[] = {
    {"mirage_width", "10", &MirageSettings::width},
    {"mirage_alpha", "10", &MirageSettings::alpha},
};

// What each position of an axis shows of the picture enlarged by factor / 200 about its middle, in 16.16 steps.
AxisMap ZoomMap(std::uint32_t factor, unsigned size) {
    const std::uint32_t zoom = (factor << 16) / 200, step = 0xC80000 / factor;
    std::uint32_t position = ((zoom * size >> 16) - size) * step >> 1;
    AxisMap map(size);
    for (unsigned& shown : map) {
        shown = std::min(position >> 16, size - 1);
        position += step;
    }
    return map;
}

std::uint16_t Mix(std::uint16_t own, std::uint16_t enlarged, std::uint16_t weight) {
    return std::uint16_t(std::uint16_t(own * std::uint16_t(256 - weight)) + std::uint16_t(enlarged * weight)) >> 8;
}

constexpr unsigned together = 2;  // rows, since a core keeps more lines in flight on two streams

// A plane's enlarged copy.
template <class Sample>
struct Overlay {
    RowSampler<Sample> sampler;
    SharedAxis across;
    std::uint16_t weight;  // in 1/256
    Sample* room;          // for a row
    // Samples that all serve as many positions: only the last one may serve fewer.
    unsigned regular = across.Count(across.size - 1) == across.Count(0) ? across.size : across.size - 1;
    unsigned blocks = std::min(sampler.EasyBlocks(), regular / RowSampler<Sample>::blockSamples);
};

// A row, the one that it shows enlarged, which is another, and how many rows of luma it serves.
template <class Sample>
struct RowInWork {
    Sample* row;
    const Sample* from;
    std::ptrdiff_t ahead;  // from `from` to what is fetched
    unsigned lumaRows;
};
// At most as many as go together, which serve as many rows of luma each.
template <class Sample>
using RowsInWork = std::span<const RowInWork<Sample>>;

// Deliberate: alpha is the copy's.
void BlendSamples(Rgba32* row, const Rgba32* enlarged, unsigned count, std::uint16_t weight, unsigned) {
    for (unsigned x = 0; x < count; ++x) {
        const Rgba32 own = row[x], copy = enlarged[x];
        row[x] = {std::uint8_t(Mix(own.blue, copy.blue, weight)), std::uint8_t(Mix(own.green, copy.green, weight)),
                  std::uint8_t(Mix(own.red, copy.red, weight)), copy.alpha};
    }
}

// Deliberate: a sample is blended once for each luma position that it serves.
void BlendSamples(std::uint8_t* __restrict row, std::uint8_t* __restrict enlarged, unsigned count, std::uint16_t weight,
                  unsigned times) {
    for (unsigned n = 0; n < times; ++n)
        for (unsigned x = 0; x < count; ++x) enlarged[x] = std::uint8_t(Mix(row[x], enlarged[x], weight));
    std::copy_n(enlarged, count, row);
}

// Blends a row from x on.
template <class Sample>
void BlendRest(const Overlay<Sample>& overlay, const RowInWork<Sample>& work, unsigned x) {
    const unsigned size = overlay.across.size;
    if (x == size) return;
    overlay.sampler(overlay.room, work.from, x, size, work.ahead);
    for (unsigned end : {overlay.regular, size}) {
        if (x >= end) continue;
        const unsigned times = overlay.across.Count(x) * work.lumaRows;
        BlendSamples(work.row + x, overlay.room + x, end - x, overlay.weight, times);
        x = end;
    }
}

template <class Sample>
void BlendRows(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    for (const RowInWork<Sample>& work : rows) BlendRest(overlay, work, 0);
}

#if defined(__x86_64__)

// Mixes bytes with enlarged ones. Less 128, they fit the signed side of the products, and the weights, 51 to 205, the
// unsigned one. The sums of the two are then less by 128 x 256, and their upper bytes by 128 again.
class VectorMix {
 public:
    [[NIFIKRAL_AVX2]] explicit VectorMix(std::uint16_t weight)
        : m_weights(_mm256_set1_epi16(short(256 - weight + (weight << 8)))) {}

    template <unsigned times>
    [[NIFIKRAL_AVX2]] __m256i Mixed(__m256i own, __m256i enlarged) const {
        const __m256i middle = _mm256_set1_epi8(-128);
        own = _mm256_xor_si256(own, middle);
        enlarged = _mm256_xor_si256(enlarged, middle);
        const __m256i low = MixedPairs<times>(_mm256_unpacklo_epi8(own, enlarged)),
                      high = MixedPairs<times>(_mm256_unpackhi_epi8(own, enlarged));
        return _mm256_xor_si256(_mm256_packs_epi16(low, high), middle);
    }

 private:
    // The upper byte of a sum is the enlarged half of the next pair.
    template <unsigned times>
    [[NIFIKRAL_AVX2]] __m256i MixedPairs(__m256i pairs) const {
        __m256i sums = _mm256_maddubs_epi16(m_weights, pairs);
#pragma GCC unroll 16
        for (unsigned n = 1; n < times; ++n)
            sums = _mm256_maddubs_epi16(m_weights, _mm256_blendv_epi8(pairs, sums, _mm256_set1_epi16(short(0xFF00))));
        return _mm256_srai_epi16(sums, 8);
    }

    __m256i m_weights;
};

template <unsigned times, class Sample>
struct BlockBlend {
    typename RowSampler<Sample>::Vectors enlarged;
    VectorMix mix;

    [[NIFIKRAL_AVX2]] void operator()(const RowInWork<Sample>& work, std::size_t block) const {
        const std::size_t x = block * RowSampler<Sample>::blockSamples;
        PrefetchToRead(work.from + x, work.ahead);
        auto* const at = reinterpret_cast<__m256i*>(work.row + x);
        const __m256i copy = enlarged(block, work.from);
        __m256i mixed = mix.Mixed<times>(_mm256_loadu_si256(at), copy);
        if constexpr (sizeof(Sample) == 4) mixed = _mm256_blendv_epi8(mixed, copy, _mm256_set1_epi32(int(alphaMask)));
        _mm256_storeu_si256(at, mixed);
    }
};

template <unsigned times, class Sample>
[[NIFIKRAL_AVX2]] void BlendBlocks(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    const BlockBlend<times, Sample> blend{typename RowSampler<Sample>::Vectors(overlay.sampler),
                                          VectorMix(overlay.weight)};
    // Copies, which no store can change.
    const RowInWork<Sample> first = rows.front(), second = rows.back();
    const std::size_t blocks = overlay.blocks;
    if (rows.size() == together) {
        for (std::size_t b = 0; b < blocks; ++b) {
            blend(first, b);
            blend(second, b);
        }
    } else {
        for (std::size_t b = 0; b < blocks; ++b) blend(first, b);
    }
}

template <class Sample>
[[NIFIKRAL_AVX2]] void BlendRowsAvx2(const Overlay<Sample>& overlay, RowsInWork<Sample> rows) {
    const unsigned times = overlay.across.Count(0) * rows.front().lumaRows;
    unsigned done = overlay.blocks * RowSampler<Sample>::blockSamples;
    if (times == 1)
        BlendBlocks<1>(overlay, rows);
    else if (times == 2)
        BlendBlocks<2>(overlay, rows);
    else if (times == 4)
        BlendBlocks<4>(overlay, rows);
    else if (times == 16)
        BlendBlocks<16>(overlay, rows);
    else
        done = 0;
    for (const RowInWork<Sample>& work : rows) BlendRest(overlay, work, done);
}

template <class Sample>
constexpr Variants<void(const Overlay<Sample>&, RowsInWork<Sample>)> blendRows{BlendRows<Sample>,
                                                                               BlendRowsAvx2<Sample>};

#else

template <class Sample>
constexpr auto blendRows = variantsOf<BlendRows<Sample>>;

#endif

struct Blending {
    std::uint16_t weight;
    InstructionSet set;
};

// Lays the enlarged copy over one plane, reading from `from`: the plane itself, or a copy of it.
template <class Sample>
void MiragePlane(const AxisMap& lumaColumns, const AxisMap& lumaRows, const SharedAxis& across, const SharedAxis& down,
                 const PlaneView<Sample>& plane, const PlaneView<Sample>& from, const Blending& blending) {
    std::vector<Sample> room(across.size), own(across.size);
    const Overlay<Sample> overlay{
        {SharedMap(lumaColumns, across), across.size, blending.set}, across, blending.weight, room.data()};
    const auto blend = blendRows<Sample>.For(blending.set);
    const AxisMap rows = SharedMap(lumaRows, down);
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(from.pitch);
    const auto at = [&](unsigned y, std::ptrdiff_t ahead) {
        return RowInWork<Sample>{plane.Row(y), from.Row(rows[y]), ahead, down.Count(y)};
    };
    const auto one = [&](const RowInWork<Sample>& work) { blend(overlay, {&work, 1}); };

    const InPlaceOrder order(rows);
    for (std::size_t i = 0; i < std::max(order.up.size(), order.down.size()); ++i) {
        RowInWork<Sample> turn[together];
        unsigned count = 0;
        if (i < order.up.size()) turn[count++] = at(order.up[i], twoRows);
        if (i < order.down.size()) turn[count++] = at(order.down[i], -twoRows);
        if (turn[0].lumaRows == turn[count - 1].lumaRows)
            blend(overlay, {turn, count});
        else
            std::ranges::for_each(turn, one);
    }
    for (unsigned y : order.still) {
        RowInWork<Sample> work = at(y, twoRows);
        std::copy_n(work.from, across.size, own.data());
        work.from = own.data();
        one(work);
    }
}

}  // namespace

CMirageVideoImageEffect::CMirageVideoImageEffect() : CSettingsEffect(effectNameMirage, mirageProperties) {}

void CMirageVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint32_t factor = m_settings.width + 200;
    if (m_settings.alpha > 100 || factor == 0) return;
    const Blending blending{std::uint16_t(((m_settings.alpha + 40) << 7) / 100), Instructions()};
    // Runs lay(columns, rows, copy) with a copy of the frame only for a factor so large that its steps wrap round.
    const auto run = [&](unsigned width, unsigned height, auto lay) {
        if (width == 0 || height == 0) return;
        const AxisMap columns = ZoomMap(factor, width), rows = ZoomMap(factor, height);
        std::optional<FrameCopy> copy;
        if (!std::ranges::is_sorted(rows)) copy.emplace(*frame);
        lay(columns, rows, copy ? **copy : *frame);
    };
    ForFrame(
        [&](const PackedView& picture) {
            run(picture.width, picture.height, [&](const AxisMap& columns, const AxisMap& rows, IRawVideoFrame& from) {
                MiragePlane(columns, rows, ColumnsOf(picture), RowsOf(picture), picture, ViewPacked(from), blending);
            });
        },
        [&](const PlanarView& picture) {
            run(picture.plane[0].width, picture.plane[0].height,
                [&](const AxisMap& columns, const AxisMap& rows, IRawVideoFrame& from) {
                    for (unsigned p = 0; p < 3; ++p) {
                        const SharedAxis across = ColumnsOf(picture, p), down = RowsOf(picture, p);
                        if (across.size && down.size)
                            MiragePlane(columns, rows, across, down, picture.plane[p], ViewPlane<std::uint8_t>(from, p),
                                        blending);
                    }
                });
        },
        *frame);
}

}  // namespace AVBased
