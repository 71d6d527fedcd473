#include "dvd_effects/canvas/painting.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/byte_fractions.h"
#include "effects/base/row_loops.h"

namespace AVBased {

namespace {

// a with `part` of 256 of b, byte by byte.
std::uint32_t Mix(std::uint32_t a, std::uint32_t b, std::uint32_t part) {
    std::uint32_t mixed = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
        mixed |= (((a >> shift & 255) * (256 - part) + (b >> shift & 255) * part + 128) >> 8) << shift;
    return mixed;
}

// Puts a pixel over another, its coverage multiplied by `part` of 255.
std::uint32_t Over(std::uint32_t below, std::uint32_t above, std::uint32_t part) {
    const std::uint32_t upper = ByteProduct(above >> 24, part), lower = ByteProduct(below >> 24, 255 - upper);
    const std::uint32_t covered = upper + lower;
    if (!upper) return below;
    std::uint32_t pixel = covered << 24;
    for (unsigned shift = 0; shift < 24; shift += 8)
        pixel |= ((above >> shift & 255) * upper + (below >> shift & 255) * lower + covered / 2) / covered << shift;
    return pixel;
}

// Multiplies the coverage of each pixel by shown(x, y) of its middle, from 0 to 1.
template <class Shown>
void Cut(const Layer& layer, Shown shown) {
    const PackedView view = layer.View();
    for (unsigned y = 0; y < view.height; ++y)
        for (unsigned x = 0; x < view.width; ++x) {
            Rgba32& pixel = view.Row(y)[x];
            pixel.alpha = std::uint8_t(ByteProduct(pixel.alpha, ByteOf(shown(x + 0.5, y + 0.5))));
        }
}

// The mean of 2 * radius + 1 neighbours along a line of `count` bytes that are `step` apart; beyond its ends are zeros.
void BoxBlur(std::uint8_t* line, std::size_t count, std::size_t step, unsigned radius, std::vector<std::uint8_t>& old) {
    old.assign(count + 2 * std::size_t(radius) + 1, 0);
    for (std::size_t i = 0; i < count; ++i) old[i + radius] = line[i * step];
    const std::uint32_t size = 2 * radius + 1;
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < size - 1; ++i) sum += old[i];
    for (std::size_t i = 0; i < count; ++i) {
        sum += old[i + size - 1];
        line[i * step] = std::uint8_t((sum + radius) / size);
        sum -= old[i];
    }
}

// Three boxes come near a Gaussian bell.
void Blur(std::vector<std::uint8_t>& plane, unsigned width, unsigned height, unsigned radius) {
    std::vector<std::uint8_t> old;
    for (unsigned box : {(radius + 2) / 3, (radius + 1) / 3, radius / 3}) {
        if (!box) continue;
        for (std::size_t y = 0; y < height; ++y) BoxBlur(&plane[y * width], width, 1, box, old);
        for (std::size_t x = 0; x < width; ++x) BoxBlur(&plane[x], height, width, box, old);
    }
}

// The sums of three rows of 128 times the levels, each with its weight of 256.
void MixRows(std::uint8_t* to, std::size_t count, const std::int16_t* above, const std::int16_t* middle,
             const std::int16_t* below, const std::int16_t* weights) {
    const std::int32_t first = weights[0], second = weights[1], third = weights[2];
    for (std::size_t i = 0; i < count; ++i)
        to[i] = std::uint8_t((first * above[i] + second * middle[i] + third * below[i] + 16384) >> 15);
}

}  // namespace

Layer PlainLayer(LayerKind kind, FrameSize size, Colour colour) {
    Layer layer(size.width, size.height);
    const std::uint32_t pixel = PixelOf(kind, colour);
    ForEachPixel(layer.View(), [=](std::uint32_t) { return pixel; });
    return layer;
}

void FillGradient(const Layer& layer, LayerKind kind, Colour top, Colour bottom) {
    const PackedView view = layer.View();
    const std::uint32_t from = PixelOf(kind, top), to = PixelOf(kind, bottom);
    for (unsigned y = 0; y < view.height; ++y) {
        const std::uint32_t pixel = Mix(from, to, view.height > 1 ? y * 256 / (view.height - 1) : 0);
        for (unsigned x = 0; x < view.width; ++x) StoreWord(view.Row(y) + x, pixel);
    }
}

void PaintOver(const Layer& layer, LayerKind kind, Colour colour, const std::function<double(double, double)>& shown) {
    constexpr unsigned places = 4;
    const PackedView view = layer.View();
    const std::uint32_t above = PixelOf(kind, colour);
    const auto along = [](unsigned pixel, unsigned place, unsigned size) {
        return (2 * (pixel + (place + 0.5) / places)) / size - 1;
    };
    for (unsigned y = 0; y < view.height; ++y)
        for (unsigned x = 0; x < view.width; ++x) {
            double sum = 0;
            for (unsigned j = 0; j < places; ++j)
                for (unsigned i = 0; i < places; ++i)
                    sum += std::clamp(shown(along(x, i, view.width), along(y, j, view.height)), 0.0, 1.0);
            StoreWord(view.Row(y) + x, Over(LoadWord(view.Row(y) + x), above, ByteOf(sum / (places * places))));
        }
}

Layer Glow(LayerKind kind, unsigned diameter, Colour colour) {
    Layer glow(diameter, diameter);
    PaintOver(glow, kind, colour, [](double x, double y) {
        const double left = std::max(0.0, 1 - x * x - y * y);
        return left * left * left;
    });
    return glow;
}

void RoundCorners(const Layer& layer, double radius) {
    const double halfWidth = layer.Width() / 2.0, halfHeight = layer.Height() / 2.0;
    const double r = std::clamp(radius, 0.0, std::min(halfWidth, halfHeight));
    Cut(layer, [=](double x, double y) {
        const double dx = std::abs(x - halfWidth) - (halfWidth - r), dy = std::abs(y - halfHeight) - (halfHeight - r);
        return dx > 0 && dy > 0 ? r - std::sqrt(dx * dx + dy * dy) + 0.5 : 1;
    });
}

void CutEllipse(const Layer& layer, double softness) {
    const double halfWidth = layer.Width() / 2.0, halfHeight = layer.Height() / 2.0;
    const double pixel = 1 / std::max(1.0, std::min(halfWidth, halfHeight));
    const double ramp = std::max(softness, pixel);
    Cut(layer, [=](double x, double y) {
        const double dx = (x - halfWidth) / halfWidth, dy = (y - halfHeight) / halfHeight;
        const double t = std::clamp((1 - std::sqrt(dx * dx + dy * dy)) / ramp, 0.0, 1.0);
        return t * t * (3 - 2 * t);
    });
}

void LayOver(const Layer& layer, const Layer& above, unsigned x, unsigned y) {
    const PackedView to = layer.View(), from = above.View();
    for (unsigned row = 0; row < from.height; ++row) {
        const Rgba32* const upper = from.Row(row);
        Rgba32* const lower = to.Row(std::size_t(y) + row) + x;
        for (unsigned column = 0; column < from.width;) {
            // Most pixels cover all or nothing, side by side.
            const std::uint8_t coverage = upper[column].alpha;
            unsigned end = column + 1;
            while (end < from.width && upper[end].alpha == coverage) ++end;
            if (coverage == 255) std::copy(upper + column, upper + end, lower + column);
            for (; column < end && coverage != 0 && coverage != 255; ++column)
                StoreWord(lower + column, Over(LoadWord(lower + column), LoadWord(upper + column), 255));
            column = end;
        }
    }
}

Layer Framed(const Layer& layer, LayerKind kind, unsigned width, Colour colour) {
    Layer framed = PlainLayer(kind, {layer.Width() + 2 * width, layer.Height() + 2 * width}, colour);
    const std::uint32_t ground = PixelOf(kind, colour);
    const PackedView from = layer.View(), to = framed.View();
    for (unsigned y = 0; y < from.height; ++y)
        for (unsigned x = 0; x < from.width; ++x) {
            const std::uint32_t pixel = LoadWord(from.Row(y) + x), alpha = pixel >> 24;
            const std::uint32_t mixed = Mix(ground, pixel | alphaMask, alpha + (alpha >> 7));
            StoreWord(to.Row(std::size_t(y) + width) + x + width, (mixed & ~alphaMask) | (ground & alphaMask));
        }
    return framed;
}

Layer ShadowOf(const Layer& layer, LayerKind kind, unsigned radius, Colour colour) {
    const PackedView from = layer.View();
    Layer shadow(from.width + 2 * radius, from.height + 2 * radius);
    const PackedView to = shadow.View();
    std::vector<std::uint8_t> shape(std::size_t(to.width) * to.height);
    for (unsigned y = 0; y < from.height; ++y)
        for (unsigned x = 0; x < from.width; ++x)
            shape[(std::size_t(y) + radius) * to.width + x + radius] = from.Row(y)[x].alpha;
    Blur(shape, to.width, to.height, radius);
    const std::uint32_t pixel = PixelOf(kind, colour);
    for (unsigned y = 0; y < to.height; ++y)
        for (unsigned x = 0; x < to.width; ++x)
            StoreWord(to.Row(y) + x,
                      (pixel & ~alphaMask) | ByteProduct(shape[std::size_t(y) * to.width + x], pixel >> 24) << 24);
    return shadow;
}

Layer Halved(const Layer& layer) {
    const PackedView from = layer.View();
    Layer half((from.width + 1) / 2, (from.height + 1) / 2);
    const PackedView to = half.View();
    for (unsigned y = 0; y < to.height; ++y)
        for (unsigned x = 0; x < to.width; ++x) {
            const unsigned right = std::min(2 * x + 1, from.width - 1), lower = std::min(2 * y + 1, from.height - 1);
            const std::uint32_t pixels[4] = {LoadWord(from.Row(2 * std::size_t(y)) + 2 * x),
                                             LoadWord(from.Row(2 * std::size_t(y)) + right),
                                             LoadWord(from.Row(lower) + 2 * x), LoadWord(from.Row(lower) + right)};
            if ((pixels[0] & pixels[1] & pixels[2] & pixels[3]) >= alphaMask) {
                // Two colours at a time.
                std::uint32_t even = 0x00020002, odd = 2;
                for (const std::uint32_t pixel : pixels) {
                    even += pixel & 0x00FF00FF;
                    odd += pixel >> 8 & 255;
                }
                StoreWord(to.Row(y) + x, alphaMask | (even >> 2 & 0x00FF00FF) | odd >> 2 << 8);
                continue;
            }
            std::uint32_t covered = 0, sums[3] = {};
            for (const std::uint32_t pixel : pixels) {
                covered += pixel >> 24;
                for (unsigned k = 0; k < 3; ++k) sums[k] += (pixel >> (8 * k) & 255) * (pixel >> 24);
            }
            std::uint32_t mean = (covered + 2) / 4 << 24;
            for (unsigned k = 0; covered && k < 3; ++k) mean |= (sums[k] + covered / 2) / covered << (8 * k);
            StoreWord(to.Row(y) + x, mean);
        }
    return half;
}

Layer Coarse(const Layer& layer, unsigned most) {
    const auto shorter = [](const Layer& of) { return std::min(of.Width(), of.Height()); };
    if (shorter(layer) <= most) return Cropped(layer, 0, 0, layer.Size());
    Layer coarse = Halved(layer);
    while (shorter(coarse) > most) coarse = Halved(coarse);
    return coarse;
}

void SpreadOver(const Layer& layer, const Layer& coarse, InstructionSet set) {
    // A place between patches takes from the nearest three, with weights that change smoothly from place to place.
    struct Taps {
        unsigned at[3];
        std::int16_t weights[3];
    };
    const auto taps = [&](unsigned length, unsigned across, double step) {
        std::vector<Taps> all(length);
        for (unsigned i = 0; i < length; ++i) {
            const double place = across / 2.0 + (i + 0.5 - length / 2.0) * step, nearest = double(unsigned(place));
            const double off = place - nearest;
            for (int k = 0; k < 3; ++k) all[i].at[k] = unsigned(std::clamp(int(nearest) + k - 1, 0, int(across) - 1));
            all[i].weights[0] = std::int16_t((1 - off) * (1 - off) * 128);
            all[i].weights[2] = std::int16_t(off * off * 128);
            all[i].weights[1] = std::int16_t(256 - all[i].weights[0] - all[i].weights[2]);
        }
        return all;
    };
    const PackedView from = coarse.View(), to = layer.View();
    if (!from.width || !from.height || !to.width || !to.height) return;
    const double step = std::min(double(from.width) / to.width, double(from.height) / to.height);
    const std::vector<Taps> columns = taps(to.width, from.width, step), rows = taps(to.height, from.height, step);
    const std::size_t bytes = std::size_t(to.width) * 4;
    std::vector<std::int16_t> wide(from.height * bytes);  // 128 times the levels
    for (unsigned y = 0; y < from.height; ++y)
        for (unsigned x = 0; x < to.width; ++x)
            for (unsigned c = 0; c < 4; ++c) {
                std::int32_t sum = 0;
                for (unsigned k = 0; k < 3; ++k)
                    sum += columns[x].weights[k] * (LoadWord(from.Row(y) + columns[x].at[k]) >> (8 * c) & 255);
                wide[y * bytes + x * 4 + c] = std::int16_t((sum + 1) >> 1);
            }
    const auto mix = variantsOf<MixRows>.For(set);
    for (unsigned y = 0; y < to.height; ++y) {
        const auto row = [&](unsigned k) { return wide.data() + rows[y].at[k] * bytes; };
        mix(reinterpret_cast<std::uint8_t*>(to.Row(y)), bytes, row(0), row(1), row(2), rows[y].weights);
    }
}

Layer Shaded(const Layer& layer, LayerKind kind, unsigned radius, unsigned drop, Colour colour) {
    const unsigned border = radius + drop;
    Layer shaded(layer.Width() + 2 * border, layer.Height() + 2 * border);
    LayOver(shaded, ShadowOf(layer, kind, radius, colour), drop, 2 * drop);
    LayOver(shaded, layer, border, border);
    return shaded;
}

void Tone(const Layer& layer, LayerKind kind, Colour white, unsigned part) {
    // A table of what each brightness becomes.
    std::uint32_t tones[256];
    for (unsigned i = 0; i < 256; ++i) {
        const auto scaled = [i](std::uint8_t channel) { return std::uint8_t(ByteProduct(channel, i)); };
        tones[i] = PixelOf(kind, {scaled(white.red), scaled(white.green), scaled(white.blue)});
    }
    ForEachPixel(layer.View(), [&](std::uint32_t pixel) {
        const std::uint32_t brightness = kind.packed
                                             ? (Red(pixel) * 77 + Green(pixel) * 150 + Blue(pixel) * 29 + 128) >> 8
                                             : std::clamp((std::int32_t(Blue(pixel)) - 16) * 298 + 128, 0, 65535) >> 8;
        return (Mix(pixel, tones[brightness], part) & ~alphaMask) | (pixel & alphaMask);
    });
}

void MixIn(const Layer& layer, LayerKind kind, Colour colour, unsigned part) {
    const std::uint32_t mixed = PixelOf(kind, colour);
    ForEachPixel(layer.View(),
                 [=](std::uint32_t pixel) { return (Mix(pixel, mixed, part) & ~alphaMask) | (pixel & alphaMask); });
}

}  // namespace AVBased
