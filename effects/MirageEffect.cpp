#include "effects/MirageEffect.h"

#include <algorithm>
#include <optional>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "effects/property_table.h"
#include "effects/row_sampler.h"

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

// Blends a row with its enlarged copy, whose weight is in 1/256. Deliberate: alpha is the copy's.
void BlendPixels(Rgba32* row, const Rgba32* enlarged, unsigned count, std::uint16_t weight) {
    for (unsigned x = 0; x < count; ++x) {
        const Rgba32 own = row[x], copy = enlarged[x];
        row[x] = {std::uint8_t(Mix(own.blue, copy.blue, weight)), std::uint8_t(Mix(own.green, copy.green, weight)),
                  std::uint8_t(Mix(own.red, copy.red, weight)), copy.alpha};
    }
}

#if defined(__x86_64__)

// Pairs of bytes, each times its weight, in 1/256.
[[NIFIKRAL_AVX2]] inline __m256i MixPairs(__m256i pairs, __m256i weights) {
    return _mm256_srai_epi16(_mm256_maddubs_epi16(weights, pairs), 8);
}

[[NIFIKRAL_AVX2]] void BlendPixelsAvx2(Rgba32* row, const Rgba32* enlarged, unsigned count, std::uint16_t weight) {
    // Bytes less 128 fit the signed side of the products, and the weights, 51 to 205, the unsigned one. The sums are
    // then less by 128 x 256, and the bytes by 128 again.
    const __m256i middle = _mm256_set1_epi8(-128), alpha = _mm256_set1_epi32(int(alphaMask)),
                  weights = _mm256_set1_epi16(short(256 - weight + (weight << 8)));
    unsigned x = 0;
    for (; x + 8 <= count; x += 8) {
        auto* const at = reinterpret_cast<__m256i*>(row + x);
        const __m256i copy = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(enlarged + x));
        const __m256i own = _mm256_xor_si256(_mm256_loadu_si256(at), middle), other = _mm256_xor_si256(copy, middle);
        const __m256i mixed = _mm256_packs_epi16(MixPairs(_mm256_unpacklo_epi8(own, other), weights),
                                                 MixPairs(_mm256_unpackhi_epi8(own, other), weights));
        _mm256_storeu_si256(at, _mm256_blendv_epi8(_mm256_xor_si256(mixed, middle), copy, alpha));
    }
    BlendPixels(row + x, enlarged + x, count - x, weight);
}

constexpr Variants<void(Rgba32*, const Rgba32*, unsigned, std::uint16_t)> blendPixels{BlendPixels, BlendPixelsAvx2};

#else

constexpr auto blendPixels = variantsOf<BlendPixels>;

#endif

// The same for bytes, `times` over; 0 stands for the number given at run time.
template <unsigned times>
void BlendBytes(std::uint8_t* __restrict row, const std::uint8_t* __restrict enlarged, unsigned count,
                std::uint16_t weight, unsigned timesGiven) {
    for (unsigned x = 0; x < count; ++x) {
        std::uint16_t mixed = enlarged[x];
        for (unsigned n = 0; n < (times ? times : timesGiven); ++n) mixed = Mix(row[x], mixed, weight);
        row[x] = std::uint8_t(mixed);
    }
}

struct Blend {
    std::uint16_t weight;
    InstructionSet set;

    void operator()(Rgba32* row, const Rgba32* enlarged, unsigned count, unsigned) const {
        blendPixels.For(set)(row, enlarged, count, weight);
    }
    void operator()(std::uint8_t* row, const std::uint8_t* enlarged, unsigned count, unsigned times) const {
        const auto& blend = times == 1    ? variantsOf<BlendBytes<1>>
                            : times == 2  ? variantsOf<BlendBytes<2>>
                            : times == 4  ? variantsOf<BlendBytes<4>>
                            : times == 16 ? variantsOf<BlendBytes<16>>
                                          : variantsOf<BlendBytes<0>>;
        blend.For(set)(row, enlarged, count, weight, times);
    }
};

// Lays the enlarged copy over one plane, reading from `from`: the plane itself, or a copy of it. Deliberate: a sample
// is blended once for each luma position that it serves.
template <class Sample>
void MiragePlane(const AxisMap& lumaColumns, const AxisMap& lumaRows, const SharedAxis& across, const SharedAxis& down,
                 const PlaneView<Sample>& plane, const PlaneView<Sample>& from, const Blend& blend) {
    const RowSampler<Sample> sampler(SharedMap(lumaColumns, across), across.size, blend.set);
    const AxisMap rows = SharedMap(lumaRows, down);
    std::vector<Sample> enlarged(across.size);
    // Only the last sample may serve fewer positions than the others.
    const unsigned last = across.size - 1, regular = across.Count(last) == across.Count(0) ? across.size : last;
    ForEachRowInPlace(rows, [&](unsigned y, int direction) {
        sampler(enlarged.data(), from.Row(rows[y]), 2 * direction * std::ptrdiff_t(from.pitch));
        blend(plane.Row(y), enlarged.data(), regular, across.Count(0) * down.Count(y));
        if (regular < across.size)
            blend(plane.Row(y) + last, enlarged.data() + last, 1, across.Count(last) * down.Count(y));
    });
}

}  // namespace

CMirageVideoImageEffect::CMirageVideoImageEffect() : CBasedVideoImageEffect(effectNameMirage) {
    DeclareProperties(*this, mirageProperties);
}

void CMirageVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, mirageProperties, name, node);
}

void CMirageVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint32_t factor = m_settings.width + 200;
    if (m_settings.alpha > 100 || factor == 0) return;
    const Blend blend{std::uint16_t(((m_settings.alpha + 40) << 7) / 100), Instructions()};
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
                MiragePlane(columns, rows, ColumnsOf(picture), RowsOf(picture), picture, ViewPacked(from), blend);
            });
        },
        [&](const PlanarView& picture) {
            run(picture.plane[0].width, picture.plane[0].height,
                [&](const AxisMap& columns, const AxisMap& rows, IRawVideoFrame& from) {
                    for (unsigned p = 0; p < 3; ++p) {
                        const SharedAxis across = ColumnsOf(picture, p), down = RowsOf(picture, p);
                        if (across.size && down.size)
                            MiragePlane(columns, rows, across, down, picture.plane[p], ViewPlane<std::uint8_t>(from, p),
                                        blend);
                    }
                });
        },
        *frame);
}

}  // namespace AVBased
