#pragma once

#include <algorithm>
#include <cstring>

#include "dvd_effects/byte_fractions.h"
#include "effects/frame_views.h"

/// The arithmetic of the canvas, for every frame layout. What is laid comes from a sampler, which says colour and
/// coverage for a stretch of a frame's row: straight from a layer, through a map, turned or bent.
namespace AVBased::Blending {

/// Columns worked on at a time: a multiple of every chroma block, small enough for a few rows to stay in the cache.
inline constexpr unsigned tileColumns = 256;

/// What a sampler says of a stretch of a row: coverages of 0 to 255, and each colour times the coverage.
struct TileRow {
    std::uint16_t colour[3][tileColumns], coverage[tileColumns];

    /// Entries from `at` on: pixel(i) is the colour of the i-th, covered(i, pixel) how much of the frame it covers.
    template <class Pixel, class Covered>
    void SetPixels(unsigned at, unsigned count, Pixel pixel, Covered covered) {
        std::uint16_t *const first = colour[0] + at, *const second = colour[1] + at, *const third = colour[2] + at;
        std::uint16_t* const coverages = coverage + at;
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t word = pixel(i), by = covered(i, word);
            first[i] = std::uint16_t(Blue(word) * by);
            second[i] = std::uint16_t(Green(word) * by);
            third[i] = std::uint16_t(Red(word) * by);
            coverages[i] = std::uint16_t(by);
        }
    }
    template <class Work>
    void ForEachPart(Work work) {
        for (auto& part : colour) work(part);
        work(coverage);
    }
    void Uncover(unsigned begin, unsigned end) {
        ForEachPart([&](std::uint16_t* part) { std::fill(part + begin, part + end, std::uint16_t(0)); });
    }
    /// Entries from `begin` on repeat the one before them.
    void Extend(unsigned begin, unsigned end) {
        ForEachPart([&](std::uint16_t* part) { std::fill(part + begin, part + end, part[begin - 1]); });
    }
};

/// A rectangle of a frame, within it.
struct Box {
    unsigned left = 0, top = 0, right = 0, bottom = 0;

    bool IsEmpty() const { return left >= right || top >= bottom; }
    /// The part of a rectangle that lies on a frame.
    static Box Clip(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, unsigned frameWidth,
                    unsigned frameHeight) {
        const auto within = [](std::int64_t value, unsigned end) {
            return unsigned(std::clamp<std::int64_t>(value, 0, end));
        };
        return {within(x, frameWidth), within(y, frameHeight), within(x + width, frameWidth),
                within(y + height, frameHeight)};
    }
};

/// A sample under `covered` of `full`, where all that is over it sums up to `over`.
template <unsigned shift>
std::uint8_t BlendOpaque(std::uint32_t under, std::uint32_t over, std::uint32_t covered) {
    constexpr std::uint32_t full = 255u << shift;
    // The power of two first, 255 then: exact, and 16 bits are enough for the second division.
    const std::uint32_t n = (under * (full - covered) + over + full / 2) >> shift;
    return std::uint8_t((n + 1 + (n >> 8)) >> 8);
}

/// The same where what is under it weighs `weight` in all, out of 255 for each coverage of 255.
inline std::uint8_t BlendTransparent(std::uint32_t under, std::uint32_t over, std::uint32_t covered,
                                     std::uint32_t weight) {
    const std::uint32_t whole = 255 * covered + weight;
    return std::uint8_t(whole ? (255 * over + under * weight + whole / 2) / whole : under);
}

inline std::uint8_t BlendAlpha(std::uint32_t alpha, std::uint32_t covered) {
    return std::uint8_t(covered + ByteProduct(alpha, 255 - covered));
}

inline void BlendPixels(Rgba32* pixels, unsigned count, const TileRow& row) {
    std::uint32_t alphas = alphaMask;
    for (unsigned i = 0; i < count; ++i) alphas &= LoadWord(pixels + i);
    if (alphas == alphaMask) {
#pragma GCC unroll 1
        for (unsigned i = 0; i < count; ++i) {
            const std::uint32_t pixel = LoadWord(pixels + i), uncovered = 255u - row.coverage[i];
            StoreWord(pixels + i, WithAlphaOf(pixel, Over255(Blue(pixel) * uncovered + row.colour[0][i]),
                                              Over255(Green(pixel) * uncovered + row.colour[1][i]),
                                              Over255(Red(pixel) * uncovered + row.colour[2][i])));
        }
        return;
    }
    for (unsigned i = 0; i < count; ++i) {
        Rgba32& pixel = pixels[i];
        const std::uint32_t covered = row.coverage[i], weight = pixel.alpha * (255 - covered);
        pixel.blue = BlendTransparent(pixel.blue, row.colour[0][i], covered, weight);
        pixel.green = BlendTransparent(pixel.green, row.colour[1][i], covered, weight);
        pixel.red = BlendTransparent(pixel.red, row.colour[2][i], covered, weight);
        pixel.alpha = BlendAlpha(pixel.alpha, covered);
    }
}

/// sample(x, y, count, row, at) fills `count` entries of `row` from entry `at` on for the pixels from (x, y) on.
template <class Sampler>
void Blend(const PackedView& frame, const Box& box, const Sampler& sample) {
    TileRow row;
    for (unsigned y = box.top; y < box.bottom; ++y)
        for (unsigned x = box.left; x < box.right; x += tileColumns) {
            const unsigned count = std::min(tileColumns, box.right - x);
            sample(x, y, count, row, 0);
            BlendPixels(frame.Row(y) + x, count, row);
        }
}

/// One tile of a planar frame: as many rows as a chroma sample serves.
template <unsigned columnShift, unsigned rowShift>
class PlanarTile {
 public:
    static constexpr unsigned blockColumns = 1u << columnShift, blockRows = 1u << rowShift;

    PlanarTile(const PlanarView& frame, const Box& box) : m_frame(frame), m_box(box) {}

    template <class Sampler>
    void Blend(unsigned left, unsigned top, const Sampler& sample) {
        m_left = left;
        m_top = top;
        const unsigned blocksEnd = (m_box.right + blockColumns - 1) / blockColumns * blockColumns;
        m_count = std::min(tileColumns, blocksEnd - left);
        m_begin = std::max(m_box.left, left) - left;
        m_end = std::min(m_box.right - left, m_count);
        for (unsigned r = 0; r < blockRows; ++r) Fill(r, sample);
        m_transparent = m_frame.HasAlpha() && !LoadAlpha();
        BlendLuma();
        for (unsigned p = 1; p < 3; ++p) BlendChroma(p);
        if (m_transparent) BlendAlphaPlane();
    }

 private:
    unsigned Width() const { return m_frame.plane[0].width; }
    unsigned Height() const { return m_frame.plane[0].height; }
    bool IsInBox(unsigned r) const { return m_top + r >= m_box.top && m_top + r < m_box.bottom; }
    // How many entries stand for pixels of the frame; the others repeat the last of these.
    unsigned OnFrame() const { return std::min(m_count, Width() - m_left); }

    template <class Sampler>
    void Fill(unsigned r, const Sampler& sample) {
        TileRow& row = m_rows[r];
        if (m_top + r >= Height()) {
            row = m_rows[Height() - 1 - m_top];
        } else if (!IsInBox(r)) {
            row.Uncover(0, m_count);
        } else {
            row.Uncover(0, m_begin);
            sample(m_left + m_begin, m_top + r, m_end - m_begin, row, m_begin);
            row.Uncover(m_end, m_count);
            if (OnFrame() < m_count) row.Extend(OnFrame(), m_count);
        }
    }

    // Takes the frame's alpha into m_alpha. True when all of it is opaque.
    bool LoadAlpha() {
        unsigned all = 255;
        for (unsigned r = 0; r < blockRows; ++r) {
            const std::uint8_t* const from = m_frame.plane[3].Row(std::min(m_top + r, Height() - 1)) + m_left;
            std::memcpy(m_alpha[r], from, OnFrame());
            std::memset(m_alpha[r] + OnFrame(), from[OnFrame() - 1], m_count - OnFrame());
            for (unsigned i = 0; i < m_count; ++i) all &= m_alpha[r][i];
        }
        return all == 255;
    }

    // Deliberate throughout: what is under a layer is opaque but for the few menus that are composed on alpha planes,
    // so only the opaque way is written for vectors.
    void BlendLuma() {
        for (unsigned r = 0; r < blockRows; ++r) {
            if (!IsInBox(r)) continue;
            std::uint8_t* const to = m_frame.plane[0].Row(m_top + r) + m_left + m_begin;
            const std::uint16_t* const colours = m_rows[r].colour[0] + m_begin;
            const std::uint16_t* const coverages = m_rows[r].coverage + m_begin;
            const std::uint8_t* const alphas = m_alpha[r] + m_begin;
            const unsigned count = m_end - m_begin;
            if (m_transparent)
                for (unsigned i = 0; i < count; ++i)
                    to[i] = BlendTransparent(to[i], colours[i], coverages[i], alphas[i] * (255u - coverages[i]));
            else
#pragma GCC unroll 1
                for (unsigned i = 0; i < count; ++i)
                    to[i] = std::uint8_t(Over255(to[i] * (255u - coverages[i]) + colours[i]));
        }
    }

    void BlendChroma(unsigned p) {
        const ComponentView& plane = m_frame.plane[p];
        const unsigned left = m_left >> columnShift, y = m_top >> rowShift;
        if (y >= plane.height || left >= plane.width) return;
        const unsigned count = std::min(m_count >> columnShift, plane.width - left);
        std::uint8_t* const to = plane.Row(y) + left;
        // Down the block first, along it then: long straight loops.
        std::uint32_t over[tileColumns], covered[tileColumns];
        for (unsigned i = 0; i < m_count; ++i) {
            over[i] = covered[i] = 0;
            for (unsigned r = 0; r < blockRows; ++r) {
                over[i] += m_rows[r].colour[p][i];
                covered[i] += m_rows[r].coverage[i];
            }
        }
        const auto alongBlock = [](const std::uint32_t* sums, unsigned block) {
            std::uint32_t sum = 0;
            for (unsigned i = 0; i < blockColumns; ++i) sum += sums[block * blockColumns + i];
            return sum;
        };
        if (m_transparent)
            for (unsigned i = 0; i < count; ++i)
                to[i] = BlendTransparent(to[i], alongBlock(over, i), alongBlock(covered, i), WeightOfBlock(i));
        else
#pragma GCC unroll 1
            for (unsigned i = 0; i < count; ++i)
                to[i] = BlendOpaque<columnShift + rowShift>(to[i], alongBlock(over, i), alongBlock(covered, i));
    }

    std::uint32_t WeightOfBlock(unsigned block) const {
        std::uint32_t weight = 0;
        for (unsigned r = 0; r < blockRows; ++r)
            for (unsigned i = block * blockColumns; i < (block + 1) * blockColumns; ++i)
                weight += m_alpha[r][i] * (255u - m_rows[r].coverage[i]);
        return weight;
    }

    void BlendAlphaPlane() {
        for (unsigned r = 0; r < blockRows; ++r) {
            if (!IsInBox(r)) continue;
            std::uint8_t* const to = m_frame.plane[3].Row(m_top + r) + m_left;
            for (unsigned i = m_begin; i < m_end; ++i) to[i] = BlendAlpha(to[i], m_rows[r].coverage[i]);
        }
    }

    const PlanarView& m_frame;
    const Box& m_box;
    unsigned m_left = 0, m_top = 0;
    // Entries of the tile, and of those the ones in the box.
    unsigned m_count = 0, m_begin = 0, m_end = 0;
    bool m_transparent = false;
    TileRow m_rows[blockRows];
    std::uint8_t m_alpha[blockRows][tileColumns];
};

template <unsigned columnShift, unsigned rowShift, class Sampler>
void BlendTiles(const PlanarView& frame, const Box& box, const Sampler& sample) {
    PlanarTile<columnShift, rowShift> tile(frame, box);
    for (unsigned y = box.top >> rowShift << rowShift; y < box.bottom; y += 1u << rowShift)
        for (unsigned x = box.left >> columnShift << columnShift; x < box.right; x += tileColumns)
            tile.Blend(x, y, sample);
}

template <class Sampler>
void Blend(const PlanarView& frame, const Box& box, const Sampler& sample) {
    switch (frame.columnShift * 10 + frame.rowShift) {
        case 0:
            return BlendTiles<0, 0>(frame, box, sample);
        case 10:
            return BlendTiles<1, 0>(frame, box, sample);
        case 11:
            return BlendTiles<1, 1>(frame, box, sample);
        case 20:
            return BlendTiles<2, 0>(frame, box, sample);
        case 22:
            return BlendTiles<2, 2>(frame, box, sample);
        default:
            return;
    }
}

}  // namespace AVBased::Blending
