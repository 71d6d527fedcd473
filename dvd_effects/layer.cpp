#include "dvd_effects/layer.h"

#include <algorithm>

#include "dvd_effects/byte_fractions.h"
#include "effects/row_loops.h"

namespace AVBased {

void MultiplyCoverage(const Layer& layer, const Layer& mask, std::int32_t x, std::int32_t y) {
    const PackedView to = layer.View(), by = mask.View();
    for (unsigned row = 0; row < to.height; ++row)
        for (unsigned column = 0; column < to.width; ++column) {
            const std::int64_t maskX = std::int64_t(x) + column, maskY = std::int64_t(y) + row;
            const bool inside = maskX >= 0 && maskY >= 0 && maskX < by.width && maskY < by.height;
            Rgba32& pixel = to.Row(row)[column];
            pixel.alpha = std::uint8_t(
                inside ? ByteProduct(pixel.alpha, by.Row(std::size_t(maskY))[std::size_t(maskX)].alpha) : 0);
        }
}

void BrightnessToCoverage(const Layer& picture) {
    ForEachPixel(picture.View(), [](std::uint32_t pixel) {
        const std::uint32_t mean = (Blue(pixel) + Green(pixel) + Red(pixel)) / 3;
        return (pixel & ~alphaMask) | ByteProduct(mean, pixel >> 24) << 24;
    });
}

}  // namespace AVBased
