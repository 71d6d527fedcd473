#include "effects/neighbourhood/PortraitEffect.h"

#include <numeric>
#include <vector>

#include "effects/base/shared_samples.h"
#include "effects/neighbourhood/pixel_tones.h"

namespace AVBased {
namespace {

constexpr Property<PortraitSettings> portraitProperties[] = {
    {"portrait_strength", "50", &PortraitSettings::strength},
    {"portrait_radius", "8", &PortraitSettings::radius},
    {"portrait_glow", "15", &PortraitSettings::glow},
};

// One number for each cell of 2 x 2 pixels.
struct CellPlane {
    unsigned width, height;
    std::vector<std::uint16_t> cells;

    CellPlane(unsigned cellColumns, unsigned cellRows)
        : width(cellColumns), height(cellRows), cells(std::size_t(width) * height) {}
    std::uint16_t* Row(unsigned y) { return &cells[std::size_t(y) * width]; }
    const std::uint16_t* Row(unsigned y) const { return &cells[std::size_t(y) * width]; }
};

void AddCells(std::uint32_t* __restrict sums, const std::uint16_t* __restrict cells, unsigned width) {
    for (unsigned x = 0; x < width; ++x) sums[x] += cells[x];
}
void ExchangeCells(std::uint32_t* __restrict sums, const std::uint16_t* __restrict in,
                   const std::uint16_t* __restrict out, unsigned width) {
    for (unsigned x = 0; x < width; ++x) sums[x] += std::uint32_t(in[x]) - out[x];
}

// The sums over the square of 2 x radius + 1 cells around each cell, a row at a time from the top. Beyond the edges the
// nearest cells serve.
class SquareSums {
 public:
    SquareSums(const CellPlane& plane, unsigned radius, InstructionSet set)
        : m_plane(plane),
          m_radius(radius),
          m_columns(plane.width + 2 * radius + 1),
          m_sums(plane.width),
          m_exchange(variantsOf<ExchangeCells>.For(set)) {
        for (unsigned i = 0; i <= 2 * radius; ++i)
            variantsOf<AddCells>.For(set)(&m_columns[radius], plane.Row(Nearest(i, radius)), plane.width);
    }
    const std::uint32_t* Next() {
        const unsigned width = m_plane.width, side = 2 * m_radius + 1;
        std::uint32_t* const columns = &m_columns[m_radius];
        std::fill_n(&m_columns[0], m_radius, columns[0]);
        std::fill_n(columns + width, m_radius + 1, columns[width - 1]);
        const std::uint32_t *const leaving = m_columns.data(), *const entering = leaving + side;
        std::uint32_t* const sums = m_sums.data();
        std::uint32_t sum = std::accumulate(leaving, entering, 0u);
        for (unsigned x = 0; x < width; ++x) {
            sums[x] = sum;
            sum += entering[x] - leaving[x];
        }
        m_exchange(columns, m_plane.Row(Nearest(m_row + m_radius + 1, 0)), m_plane.Row(Nearest(m_row, m_radius)),
                   width);
        ++m_row;
        return m_sums.data();
    }

 private:
    unsigned Nearest(unsigned down, unsigned up) const {
        return std::min(down - std::min(down, up), m_plane.height - 1);
    }

    const CellPlane& m_plane;
    unsigned m_radius, m_row = 0;
    std::vector<std::uint32_t> m_columns, m_sums;
    decltype(&ExchangeCells) m_exchange;
};

// How much of a cell's contrast goes, in 256ths, by the variance around it.
class Softness {
 public:
    explicit Softness(int strength) {
        const unsigned flat = unsigned(strength * strength * 5 / 100), square = flat * flat;
        for (unsigned variance = 0; variance < variances; ++variance)
            m_share[variance] = std::uint8_t(flat ? 255 * square / (variance * variance + square) : 0);
    }
    std::uint32_t operator()(std::uint32_t variance) const { return m_share[std::min(variance, variances - 1)]; }

 private:
    static constexpr std::uint32_t variances = 4096;
    std::uint8_t m_share[variances];
};

// From 90 to 254 the nearer the colour is to that of skin.
std::uint16_t SkinWeight(int u, int v) {
    const int distance = std::abs(u - 108) + std::abs(v - 152);
    return std::uint16_t(90 + (std::clamp((52 - distance) * 8, 0, 255) * 165 >> 8));
}

void MeanTones(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower, unsigned width,
               std::uint16_t* __restrict tones, std::uint16_t* __restrict squares) {
    for (std::size_t i = 0; i < width / 2; ++i) {
        const auto tone = std::uint16_t((upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1] + 2) >> 2);
        tones[i] = tone;
        squares[i] = std::uint16_t(tone * tone);
    }
    if (width % 2 == 0) return;
    const auto tone = std::uint16_t((upper[width - 1] + lower[width - 1] + 1) >> 1);
    tones[width / 2] = tone;
    squares[width / 2] = std::uint16_t(tone * tone);
}

// Brings the sum over a square to the mean.
struct SquareMean {
    std::uint32_t reciprocal;
    explicit SquareMean(unsigned radius) {
        const unsigned cells = (2 * radius + 1) * (2 * radius + 1);
        reciprocal = ((1u << 24) + cells / 2) / cells;
    }
    std::uint32_t Times256(std::uint32_t sum) const { return std::uint32_t(std::uint64_t(sum) * reciprocal >> 16); }
    std::uint16_t Whole(std::uint32_t sum) const { return std::uint16_t(std::uint64_t(sum) * reciprocal >> 24); }
};

void SoftenCells(const std::uint32_t* __restrict sums, const std::uint32_t* __restrict squareSums, unsigned width,
                 const Softness& softness, SquareMean meanOf, std::uint16_t* __restrict share,
                 std::uint16_t* __restrict tone, std::uint16_t* __restrict light) {
    for (unsigned x = 0; x < width; ++x) {
        const std::uint32_t mean = meanOf.Times256(sums[x]), square = mean * mean >> 8,
                            meanSquare = meanOf.Times256(squareSums[x]);
        const std::uint32_t variance = (std::max(meanSquare, square) - square) >> 8;
        // Shadows, hair and pupils keep their contrast, which is small in numbers but not to the eye.
        const std::uint32_t lit = std::min(mean >> 7, 255u);
        const std::uint32_t goes = softness(variance) * share[x] * lit >> 16;  // until here the skin's weight
        share[x] = std::uint16_t(goes);
        tone[x] = std::uint16_t(goes * mean >> 8);
        light[x] = std::uint16_t(mean);
    }
}

void BlendRows(std::uint16_t* __restrict to, const std::uint16_t* __restrict near, const std::uint16_t* __restrict far,
               unsigned width) {
    for (unsigned x = 0; x < width; ++x) to[x] = std::uint16_t((3u * near[x] + far[x]) >> 2);
}

// What becomes of the pixels of a row of cells: the share of their tone that goes, the tone that comes for it, and the
// light around. One more cell stands at either end.
struct CellRow {
    std::vector<std::uint16_t> share, tone, light;

    explicit CellRow(unsigned width) : share(width + 2), tone(width + 2), light(width + 2) {}
    void RepeatEnds() {
        for (auto* cells : {&share, &tone, &light}) {
            cells->front() = (*cells)[1];
            cells->back() = (*cells)[cells->size() - 2];
        }
    }
};

void MeanCells(const std::uint32_t* __restrict shares, const std::uint32_t* __restrict tones,
               const std::uint32_t* __restrict lights, unsigned width, SquareMean meanOf,
               std::uint16_t* __restrict share, std::uint16_t* __restrict tone, std::uint16_t* __restrict light) {
    for (unsigned x = 0; x < width; ++x) {
        share[x] = std::uint16_t(meanOf.Times256(shares[x]));
        tone[x] = meanOf.Whole(tones[x]);
        light[x] = meanOf.Whole(lights[x]);
    }
}

struct Light {
    int glow, white;
};

void SmoothTones(std::uint8_t* __restrict tones, unsigned width, const std::uint16_t* __restrict share,
                 const std::uint16_t* __restrict tone, const std::uint16_t* __restrict light, Light look) {
    const auto smooth = [=](std::size_t x, std::size_t cell, std::size_t beside) {
        const auto at = [=](const std::uint16_t* cells) { return int((3u * cells[cell] + cells[beside]) >> 2); };
        const int old = tones[x];
        const int smoothed = ClampToByte(old + ((at(tone) * 256 - at(share) * old + (1 << 15)) >> 16));
        // What is dark by itself takes little of the light around it.
        const int bright = at(light) >> 8, room = std::max(0, look.white - smoothed) * smoothed >> 4;
        tones[x] = std::uint8_t(smoothed + (room * (bright * bright * look.glow >> 8) >> 20));
    };
    for (std::size_t i = 0; i < width / 2; ++i) {
        smooth(2 * i, i + 1, i);
        smooth(2 * i + 1, i + 1, i + 2);
    }
    if (width % 2) smooth(width - 1, width / 2 + 1, width / 2);
}

// `read` returns a row's tones, which stay valid until two more rows have been read; `skin` fills a row of cells with
// the weights of their colours; `write` takes a row's tones to be changed.
template <class Read, class Skin, class Write>
void Soften(unsigned width, unsigned height, const PortraitSettings& settings, int white, InstructionSet set, Read read,
            Skin skin, Write write) {
    if (width == 0 || height == 0) return;
    const unsigned columns = (width + 1) / 2, rows = (height + 1) / 2;
    const unsigned radius = unsigned(std::clamp(settings.radius, 1, 64) + 1) / 2;
    const SquareMean meanOf(radius);
    CellPlane share(columns, rows), tone(columns, rows), light(columns, rows);
    {
        CellPlane tones(columns, rows), squares(columns, rows);
        for (unsigned y = 0; y < rows; ++y)
            variantsOf<MeanTones>.For(set)(read(2 * y, 0), read(std::min(2 * y + 1, height - 1), 1), width,
                                           tones.Row(y), squares.Row(y));
        const Softness softness(std::clamp(settings.strength, 0, 100));
        SquareSums sums(tones, radius, set), squareSums(squares, radius, set);
        for (unsigned y = 0; y < rows; ++y) {
            skin(y, share.Row(y));
            const std::uint32_t* const sum = sums.Next();
            variantsOf<SoftenCells>.For(set)(sum, squareSums.Next(), columns, softness, meanOf, share.Row(y),
                                             tone.Row(y), light.Row(y));
        }
    }
    SquareSums shares(share, radius, set), toneSums(tone, radius, set), lights(light, radius, set);
    CellRow before(columns), now(columns), blended(columns);
    const auto emit = [&](unsigned y, const CellRow& near, const CellRow& far) {
        const auto blend = variantsOf<BlendRows>.For(set);
        blend(blended.share.data(), near.share.data(), far.share.data(), columns + 2);
        blend(blended.tone.data(), near.tone.data(), far.tone.data(), columns + 2);
        blend(blended.light.data(), near.light.data(), far.light.data(), columns + 2);
        write(y, [&](std::uint8_t* row) {
            variantsOf<SmoothTones>.For(set)(row, width, blended.share.data(), blended.tone.data(),
                                             blended.light.data(),
                                             Light{std::clamp(settings.glow, 0, 100) * 256 / 100, white});
        });
    };
    for (unsigned y = 0; y < rows; ++y) {
        std::swap(before, now);
        const std::uint32_t *const a = shares.Next(), *const b = toneSums.Next(), *const c = lights.Next();
        variantsOf<MeanCells>.For(set)(a, b, c, columns, meanOf, &now.share[1], &now.tone[1], &now.light[1]);
        now.RepeatEnds();
        if (y == 0)
            emit(0, now, now);
        else {
            emit(2 * y - 1, before, now);
            emit(2 * y, now, before);
        }
    }
    if (height % 2 == 0) emit(height - 1, now, now);
}

}  // namespace

CPortraitVideoImageEffect::CPortraitVideoImageEffect() : CSettingsEffect(effectNamePortrait, portraitProperties) {}

void CPortraitVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFrame(
        [&](const PackedView& picture) {
            std::vector<std::uint8_t> tones[2];
            for (auto& row : tones) row.resize(picture.width);
            Soften(
                picture.width, picture.height, m_settings, 255, Instructions(),
                [&](unsigned y, unsigned slot) {
                    variantsOf<TonesOfPixels>.For(Instructions())(picture.Row(y), tones[slot].data(), picture.width);
                    return tones[slot].data();
                },
                [&](unsigned y, std::uint16_t* weights) {
                    const Rgba32* const row = picture.Row(2 * y);
                    for (unsigned x = 0; x < picture.width; x += 2) {
                        const int blue = row[x].blue, green = row[x].green, red = row[x].red;
                        weights[x / 2] = SkinWeight(128 + ((128 * blue - 85 * green - 43 * red) >> 8),
                                                    128 + ((128 * red - 107 * green - 21 * blue) >> 8));
                    }
                },
                [&](unsigned y, auto smooth) {
                    variantsOf<TonesOfPixels>.For(Instructions())(picture.Row(y), tones[0].data(), picture.width);
                    tones[1] = tones[0];
                    smooth(tones[1].data());
                    variantsOf<ChangeTones>.For(Instructions())(picture.Row(y), tones[1].data(), tones[0].data(),
                                                                picture.width, 256);
                });
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            Soften(
                luma.width, luma.height, m_settings, 235, Instructions(),
                [&](unsigned y, unsigned) { return luma.Row(y); },
                [&](unsigned y, std::uint16_t* weights) {
                    for (unsigned x = 0; x < luma.width; x += 2) {
                        const std::uint8_t *const u = picture.At(1, x, 2 * y), *const v = picture.At(2, x, 2 * y);
                        weights[x / 2] = u && v ? SkinWeight(*u, *v) : SkinWeight(128, 128);
                    }
                },
                [&](unsigned y, auto smooth) { smooth(luma.Row(y)); });
        },
        *frame);
}

}  // namespace AVBased
