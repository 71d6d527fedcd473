#include "dvd_effects/canvas/layer.h"

#include <algorithm>
#include <utility>

#include "dvd_effects/canvas/byte_fractions.h"
#include "effects/base/row_loops.h"

namespace AVBased {

namespace {

// Luma and both chroma of full-range red, green and blue, in 1/256.
struct Matrix {
    std::int32_t luma[3], first[3], second[3];
};
constexpr Matrix bt601{{66, 129, 25}, {-38, -74, 112}, {112, -94, -18}};
constexpr Matrix bt709{{47, 157, 16}, {-26, -86, 112}, {112, -102, -10}};

}  // namespace

ColourMatrix MatrixOfRows(unsigned rows) {
    constexpr unsigned standardDefinitionRows = 576;
    return rows > standardDefinitionRows ? ColourMatrix::Bt709 : ColourMatrix::Bt601;
}

std::uint32_t PixelOf(LayerKind kind, Colour colour) {
    const std::uint32_t alpha = std::uint32_t(colour.alpha) << 24;
    if (kind.packed) return alpha | unsigned(colour.red) << 16 | unsigned(colour.green) << 8 | colour.blue;
    const Matrix& matrix = MatrixOfRows(kind.rows) == ColourMatrix::Bt709 ? bt709 : bt601;
    const auto component = [&](const std::int32_t(&weights)[3], std::int32_t base) {
        const std::int32_t sum = weights[0] * colour.red + weights[1] * colour.green + weights[2] * colour.blue;
        return std::uint32_t(base + ((sum + 128) >> 8));
    };
    return alpha | component(matrix.second, 128) << 16 | component(matrix.first, 128) << 8 | component(matrix.luma, 16);
}

bool IsOpaque(const Layer& layer) {
    const PackedView view = layer.View();
    std::uint32_t all = alphaMask;
    for (unsigned y = 0; y < view.height && all == alphaMask; ++y)
        for (unsigned x = 0; x < view.width; ++x) all &= LoadWord(view.Row(y) + x);
    return all == alphaMask;
}

Layer Cropped(const Layer& layer, unsigned x, unsigned y, FrameSize size) {
    Layer part(size.width, size.height);
    for (unsigned row = 0; row < size.height; ++row)
        std::copy_n(layer.View().Row(y + row) + x, size.width, part.View().Row(row));
    return part;
}

void MultiplyCoverage(const Layer& layer, const Layer& mask, std::int32_t x, std::int32_t y) {
    const PackedView to = layer.View(), by = mask.View();
    // What of the layer lies in the mask.
    const auto within = [](std::int32_t offset, unsigned size, unsigned maskSize) {
        const auto place = [&](std::int64_t at) { return unsigned(std::clamp<std::int64_t>(at - offset, 0, size)); };
        return std::pair{place(0), place(maskSize)};
    };
    const auto [left, right] = within(x, to.width, by.width);
    const auto [top, bottom] = within(y, to.height, by.height);
    const auto clear = [](Rgba32* from, const Rgba32* end) {
        for (; from < end; ++from) from->alpha = 0;
    };
    for (unsigned row = 0; row < to.height; ++row) {
        Rgba32* const pixels = to.Row(row);
        if (row < top || row >= bottom || left >= right) {
            clear(pixels, pixels + to.width);
            continue;
        }
        clear(pixels, pixels + left);
        clear(pixels + right, pixels + to.width);
        const Rgba32* const shown = by.Row(std::size_t(std::int64_t(y) + row)) + (std::int64_t(x) + left);
        for (unsigned column = left; column < right; ++column)
            if (const std::uint8_t covered = shown[column - left].alpha; covered != 255)
                pixels[column].alpha = std::uint8_t(ByteProduct(pixels[column].alpha, covered));
    }
}

void BrightnessToCoverage(const Layer& picture) {
    ForEachPixel(picture.View(), [](std::uint32_t pixel) {
        const std::uint32_t mean = (Blue(pixel) + Green(pixel) + Red(pixel)) / 3;
        return (pixel & ~alphaMask) | ByteProduct(mean, pixel >> 24) << 24;
    });
}

}  // namespace AVBased
