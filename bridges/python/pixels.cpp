#include "bridges/python/pixels.h"

#include <bit>
#include <cstring>
#include <utility>

namespace Nifikral::Python {
namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::ptrdiff_t bytesPerPixel = 4;

// Red and blue exchanged; `to` may be `from`.
void SwapRow(const std::uint8_t* from, std::ptrdiff_t width, std::uint8_t* to) {
    using Four [[gnu::vector_size(16)]] = std::uint32_t;
    const auto swapped = [](auto pixel) { return (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF); };
    const auto step = [&](auto pixel, std::ptrdiff_t x) {
        std::memcpy(&pixel, from + x * bytesPerPixel, sizeof pixel);
        pixel = swapped(pixel);
        std::memcpy(to + x * bytesPerPixel, &pixel, sizeof pixel);
    };
    std::ptrdiff_t x = 0;
    for (; x + 4 <= width; x += 4) step(Four{}, x);
    for (; x < width; ++x) step(std::uint32_t{}, x);
}

// Sixteen bytes that are put in another order at once, which the oldest x86-64 processors cannot.
using Sixteen [[gnu::vector_size(16)]] = std::uint8_t;
#ifdef __x86_64__
#define NIFIKRAL_SHUFFLING [[gnu::target("ssse3")]]
bool CanShuffle() { return __builtin_cpu_supports("ssse3"); }
#else
#define NIFIKRAL_SHUFFLING
constexpr bool CanShuffle() { return true; }
#endif

// Four pixels at a time, of three channels without gaps; returns how many are done. The sixteen bytes that hold them
// belong to the row: the last ones are left.
template <bool swaps>
NIFIKRAL_SHUFFLING std::ptrdiff_t FoursFromTriples(const std::uint8_t* from, std::ptrdiff_t width, std::uint8_t* to) {
    constexpr int b = swaps ? 2 : 0, r = 2 - b;
    const Sixteen opaque = ~Sixteen{};
    std::ptrdiff_t done = 0;
    for (; done + 6 <= width; done += 4) {
        Sixteen v;
        std::memcpy(&v, from + 3 * done, sizeof v);
        v = __builtin_shufflevector(v, opaque, b, 1, r, 16, 3 + b, 4, 3 + r, 16, 6 + b, 7, 6 + r, 16, 9 + b, 10, 9 + r,
                                    16);
        std::memcpy(to + bytesPerPixel * done, &v, sizeof v);
    }
    return done;
}

template <bool swaps>
NIFIKRAL_SHUFFLING std::ptrdiff_t FoursToTriples(const std::uint8_t* from, std::ptrdiff_t width, std::uint8_t* to) {
    constexpr int b = swaps ? 2 : 0, r = 2 - b;
    std::ptrdiff_t done = 0;
    for (; done + 6 <= width; done += 4) {
        Sixteen v;
        std::memcpy(&v, from + bytesPerPixel * done, sizeof v);
        v = __builtin_shufflevector(v, v, b, 1, r, 4 + b, 5, 4 + r, 8 + b, 9, 8 + r, 12 + b, 13, 12 + r, 3, 7, 11, 15);
        std::memcpy(to + 3 * done, &v, sizeof v);
    }
    return done;
}

template <bool swaps>
void RowFromTriples(const std::uint8_t* from, std::ptrdiff_t width, std::uint8_t* to) {
    for (std::ptrdiff_t x = CanShuffle() ? FoursFromTriples<swaps>(from, width, to) : 0; x < width; ++x) {
        const std::uint8_t* const in = from + 3 * x;
        std::uint8_t* const out = to + bytesPerPixel * x;
        out[0] = in[swaps ? 2 : 0];
        out[1] = in[1];
        out[2] = in[swaps ? 0 : 2];
        out[3] = 255;
    }
}

template <bool swaps>
void RowToTriples(const std::uint8_t* from, std::ptrdiff_t width, std::uint8_t* to) {
    for (std::ptrdiff_t x = CanShuffle() ? FoursToTriples<swaps>(from, width, to) : 0; x < width; ++x) {
        const std::uint8_t* const in = from + bytesPerPixel * x;
        std::uint8_t* const out = to + 3 * x;
        out[0] = in[swaps ? 2 : 0];
        out[1] = in[1];
        out[2] = in[swaps ? 0 : 2];
    }
}

// Weights of brightness, of which the sum is 256: what is grey stays as it is.
std::uint8_t Brightness(const std::uint8_t* pixel) {
    return std::uint8_t((29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2] + 128) >> 8);
}

}  // namespace

bool ArrayView::SameElementsAs(const ArrayView& other) const {
    return data == other.data && rowStep == other.rowStep && columnStep == other.columnStep &&
           (channels == 1 || channelStep == other.channelStep);
}

bool ArrayView::Meets(const ArrayView& other) const {
    const auto span = [](const ArrayView& view) {
        const std::uint8_t *low = view.data, *high = view.data + 1;
        for (const auto& [count, step] : {std::pair(view.height, view.rowStep), std::pair(view.width, view.columnStep),
                                          std::pair(view.channels, view.channelStep)})
            (step < 0 ? low : high) += (count - 1) * step;
        return std::pair(low, high);
    };
    const auto [low, high] = span(*this);
    const auto [otherLow, otherHigh] = span(other);
    return low < otherHigh && otherLow < high;
}

void ToBgra(const ArrayView& from, Order order, std::uint8_t* to) {
    const bool swaps = order == Order::Rgb, dense = from.columnStep == from.channels && from.channelStep == 1;
    for (std::ptrdiff_t y = 0; y < from.height; ++y) {
        const std::uint8_t* pixel = from.data + y * from.rowStep;
        std::uint8_t* out = to + y * from.width * bytesPerPixel;
        if (from.channels == 3 && dense) {
            (swaps ? RowFromTriples<true> : RowFromTriples<false>)(pixel, from.width, out);
        } else if (from.channels == 4 && dense) {
            if (swaps)
                SwapRow(pixel, from.width, out);
            else
                std::memcpy(out, pixel, std::size_t(from.width * bytesPerPixel));
        } else {
            const std::ptrdiff_t channel = from.channels == 1 ? 0 : from.channelStep;
            for (std::ptrdiff_t x = 0; x < from.width; ++x, pixel += from.columnStep, out += bytesPerPixel) {
                out[0] = pixel[swaps ? 2 * channel : 0];
                out[1] = pixel[channel];
                out[2] = pixel[swaps ? 0 : 2 * channel];
                out[3] = from.channels == 4 ? pixel[3 * channel] : 255;
            }
        }
    }
}

void FromBgra(const std::uint8_t* from, const ArrayView& to, Order order) {
    const bool swaps = order == Order::Rgb, dense = to.columnStep == to.channels && to.channelStep == 1;
    for (std::ptrdiff_t y = 0; y < to.height; ++y) {
        const std::uint8_t* pixel = from + y * to.width * bytesPerPixel;
        std::uint8_t* out = to.data + y * to.rowStep;
        if (to.channels == 3 && dense) {
            (swaps ? RowToTriples<true> : RowToTriples<false>)(pixel, to.width, out);
        } else if (to.channels == 4 && dense) {
            if (swaps)
                SwapRow(pixel, to.width, out);
            else
                std::memcpy(out, pixel, std::size_t(to.width * bytesPerPixel));
        } else {
            for (std::ptrdiff_t x = 0; x < to.width; ++x, pixel += bytesPerPixel, out += to.columnStep) {
                if (to.channels == 1) {
                    *out = Brightness(pixel);
                    continue;
                }
                out[0] = pixel[swaps ? 2 : 0];
                out[to.channelStep] = pixel[1];
                out[2 * to.channelStep] = pixel[swaps ? 0 : 2];
                if (to.channels == 4) out[3 * to.channelStep] = pixel[3];
            }
        }
    }
}

void CopyElements(const ArrayView& from, const ArrayView& to) {
    for (std::ptrdiff_t y = 0; y < from.height; ++y) {
        const std::uint8_t* in = from.data + y * from.rowStep;
        std::uint8_t* out = to.data + y * to.rowStep;
        if (from.columnStep == 1 && to.columnStep == 1) {
            std::memcpy(out, in, std::size_t(from.width));
        } else {
            for (std::ptrdiff_t x = 0; x < from.width; ++x, in += from.columnStep, out += to.columnStep) *out = *in;
        }
    }
}

}  // namespace Nifikral::Python
