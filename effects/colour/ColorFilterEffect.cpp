#include "effects/colour/ColorFilterEffect.h"

#include <vector>

#include "effects/base/fixed_point.h"
#include "effects/base/row_loops.h"
#include "effects/colour/chroma_blocks.h"

namespace AVBased {
namespace {

constexpr Property<ColorFilterSettings> colorFilterProperties[] = {
    {"colorfilter_color", "16750899", &ColorFilterSettings::colour},
    {"colorfilter_density", "60", &ColorFilterSettings::density},
};

// How much light each channel lets through, in 1/256, the clearest one all of it.
struct Glass {
    std::int32_t red, green, blue;

    explicit Glass(const ColorFilterSettings& settings) {
        const std::int32_t density = std::clamp(settings.density, 0, 100);
        const auto part = [density](std::uint32_t channel) {
            return 256 - (255 - std::int32_t(channel)) * density * 256 / 25500;
        };
        red = part(Red(settings.colour));
        green = part(Green(settings.colour));
        blue = part(Blue(settings.colour));
        const std::int32_t clearest = std::max({red, green, blue});
        for (std::int32_t* const channel : {&red, &green, &blue}) *channel = clearest ? *channel * 256 / clearest : 256;
    }
};

// `light` is what the glass takes from the pixel's luma: it comes back as white.
void ColorFilterRgba32Effect(PackedView picture, const Glass& glass) {
    const auto red = std::uint32_t(glass.red), green = std::uint32_t(glass.green), blue = std::uint32_t(glass.blue);
    const std::uint32_t ofRed = 77 * (256 - red) >> 8, ofGreen = 150 * (256 - green) >> 8,
                        ofBlue = 29 * (256 - blue) >> 8;
    ForEachPixel(picture, [=](std::uint32_t p) {
        const std::uint32_t light = Blue(p) * ofBlue + Green(p) * ofGreen + Red(p) * ofRed;
        const auto filtered = [=](std::uint32_t colour, std::uint32_t part) {
            return std::min((colour * part + light) >> 8, 255u);
        };
        return WithAlphaOf(p, filtered(Blue(p), blue), filtered(Green(p), green), filtered(Red(p), red));
    });
}

// The glass as a matrix of chroma; luma stays. Own weights and those between chroma in 1/16384, luma's on chroma, whose
// samples are halved to fit 16 bits, in 1/32768. A grey glass has no weights but the own ones.
struct GlassMatrix {
    std::int16_t u, uOfV, uOfLuma, v, vOfU, vOfLuma;

    explicit GlassMatrix(const Glass& glass) {
        constexpr std::int32_t redShare = 19595, greenShare = 38470, blueShare = 7471;  // of luma, in 1/65536
        constexpr std::int32_t one = 65536;
        const auto [r, g, b] = glass;
        const auto weight = [](std::int32_t fraction) { return std::int16_t(fraction / 1024); };
        const auto halved = [](std::int64_t fraction, std::int32_t scale) {
            return std::int16_t(fraction * scale / (std::int64_t(one) * 512));
        };
        const std::int32_t mean = redShare * r + greenShare * g + blueShare * b;
        u = weight((one - blueShare) * b + blueShare * g);
        uOfV = weight(-15504 * (r - g));          // 0.299 x 1.402 / 1.772
        uOfLuma = halved(one * b - mean, 37828);  // 224 / 219 / 1.772
        v = weight((one - redShare) * r + redShare * g);
        vOfU = weight(-9443 * (b - g));           // 0.114 x 1.772 / 1.402
        vOfLuma = halved(one * r - mean, 47812);  // 224 / 219 / 1.402
    }
};

constexpr std::int32_t black = 16, neutral = 128;
// The fraction of the parts that are summed.
constexpr std::int32_t unit = 64, half = unit / 2;

// The upper half of a product, which stays in 16 bits.
std::int16_t Upper(std::int16_t a, std::int16_t b) { return std::int16_t(std::int32_t(a) * b >> 16); }

// A sum to which half a unit was added. All in 16 bits, which keeps vectors full.
std::uint8_t Whole(std::int16_t sum) {
    const auto whole = std::int16_t(sum >> 6);
    return std::uint8_t(whole < 0 ? 0 : whole > 255 ? 255 : whole);
}

// `sums` holds the luma of 2^logSamples pixels a sample.
void FilterChroma(std::uint8_t* __restrict u, std::uint8_t* __restrict v, const std::uint16_t* __restrict sums,
                  unsigned logSamples, unsigned count, const GlassMatrix& matrix) {
    const GlassMatrix m = matrix;  // a copy, which the stores below cannot change
    const auto toHalves = std::uint16_t(128 >> logSamples);
    for (unsigned x = 0; x < count; ++x) {
        const auto luma = std::int16_t(std::int16_t(sums[x] * std::uint32_t(toHalves)) - black * 128);
        const auto ofU = std::int16_t((u[x] - neutral) * 256), ofV = std::int16_t((v[x] - neutral) * 256);
        constexpr std::int32_t centre = neutral * unit + half;
        u[x] = Whole(std::int16_t(Upper(ofU, m.u) + Upper(ofV, m.uOfV) + Upper(luma, m.uOfLuma) + centre));
        v[x] = Whole(std::int16_t(Upper(ofV, m.v) + Upper(ofU, m.vOfU) + Upper(luma, m.vOfLuma) + centre));
    }
}

template <unsigned shift>
void ColorFilterComponentEffect(const PlanarView& picture, const GlassMatrix& matrix,
                                std::vector<std::uint16_t>& scratch) {
    const ComponentView &luma = picture.plane[0], &u = picture.plane[1], &v = picture.plane[2];
    const unsigned blocks = unsigned(scratch.size());
    const SharedAxis rows(luma.height, picture.rowShift, blocks ? std::min(u.height, v.height) : 0);
    std::uint16_t* const sums = scratch.data();
    for (unsigned row = 0; row < rows.size; ++row) {
        std::fill_n(sums, blocks, std::uint16_t(0));
        for (unsigned i = 0; i < 1u << picture.rowShift; ++i)
            AddBlocks<shift>(sums, luma.Row(std::min(rows.First(row) + i, luma.height - 1)), luma.width, blocks);
        FilterChroma(u.Row(row), v.Row(row), sums, shift + picture.rowShift, blocks, matrix);
    }
}

}  // namespace

CColorFilterEffect::CColorFilterEffect() : CSettingsEffect(effectNameColorFilter, colorFilterProperties) {}

void CColorFilterEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const Glass glass(m_settings);
    ForFrame([&](PackedView picture) { variantsOf<ColorFilterRgba32Effect>.For(Instructions())(picture, glass); },
             [&](const PlanarView& picture) {
                 const auto filter = WithConstantShift(picture.columnShift, [&](auto shift) {
                     return variantsOf<ColorFilterComponentEffect<shift>>.For(Instructions());
                 });
                 std::vector<std::uint16_t> scratch(std::min(ColumnsOf(picture, 1).size, ColumnsOf(picture, 2).size));
                 filter(picture, GlassMatrix(glass), scratch);
             },
             *frame);
}

}  // namespace AVBased
