#include "dvd_effects/canvas/blending.h"

#include <cstring>

namespace AVBased::Blending {

namespace {

// In 16 bits throughout, of which the processor works on twice as many at once.
std::uint8_t BlendOpaqueSample(std::uint32_t under, std::uint16_t over, std::uint16_t covered) {
    const auto n = std::uint16_t(under * (255u - covered) + over + 128u);
    return std::uint8_t(std::uint16_t(n + (n >> 8)) >> 8);
}

// A sample under `covered` of 255 << shift, where all that is over it sums up to `over`.
template <unsigned shift>
std::uint8_t BlendOpaque(std::uint32_t under, std::uint32_t over, std::uint32_t covered) {
    constexpr std::uint32_t full = 255u << shift;
    // The power of two first, 255 then: exact, and 16 bits are enough for the second division.
    const std::uint32_t n = (under * (full - covered) + over + full / 2) >> shift;
    return std::uint8_t((n + 1 + (n >> 8)) >> 8);
}

// The same where what is under it weighs `weight` in all, out of 255 for each coverage of 255.
std::uint8_t BlendTransparent(std::uint32_t under, std::uint32_t over, std::uint32_t covered, std::uint32_t weight) {
    const std::uint32_t whole = 255 * covered + weight;
    return std::uint8_t(whole ? (255 * over + under * weight + whole / 2) / whole : under);
}

std::uint8_t BlendAlpha(std::uint32_t alpha, std::uint32_t covered) {
    return std::uint8_t(covered + ByteProduct(alpha, 255 - covered));
}

void BlendPixels(Rgba32* pixels, unsigned count, const TileRow& row) {
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

// The parts of a band of rows that no cover hides, in whole blocks of columns.
class VisibleParts {
 public:
    VisibleParts(Covers covers, Span all, unsigned top, unsigned rows, unsigned blockColumns) {
        // More of them would take longer to find than to draw.
        for (const Cover& cover : covers.first(std::min(covers.size(), mostHidden))) {
            // What hides both the first and the last row hides those between.
            const Span first = HiddenIn(top, cover, all), both = HiddenIn(top + rows - 1, cover, first);
            const Span hidden{(both.begin + blockColumns - 1) & ~(blockColumns - 1), both.end & ~(blockColumns - 1)};
            if (!hidden.IsEmpty()) Insert(hidden);
        }
    }

    template <class Draw>
    void ForEach(Span within, Draw draw) const {
        unsigned from = within.begin;
        for (unsigned i = 0; i < m_count && from < within.end; ++i) {
            if (m_hidden[i].begin > from) draw(Span{from, std::min(m_hidden[i].begin, within.end)});
            from = std::max(from, m_hidden[i].end);
        }
        if (from < within.end) draw(Span{from, within.end});
    }

 private:
    static Span HiddenIn(unsigned y, const Cover& cover, Span within) {
        for (const EdgeDistance& edge : cover.edges)
            within = WhereNotNegative(edge.At(within.begin + 0.5, y + 0.5) - 1, edge.a, within);
        return within;
    }
    void Insert(Span hidden) {
        unsigned at = m_count++;
        for (; at && m_hidden[at - 1].begin > hidden.begin; --at) m_hidden[at] = m_hidden[at - 1];
        m_hidden[at] = hidden;
    }

    static constexpr std::size_t mostHidden = 16;
    Span m_hidden[mostHidden];
    unsigned m_count = 0;
};

void BlendPacked(PackedView frame, Box box, SamplerRef sampler, Covers covers) {
    TileRow row;
    for (unsigned y = box.yBegin; y < box.yEnd; ++y) {
        const Span reach = sampler.Reach(y, {box.xBegin, box.xEnd});
        VisibleParts(covers, reach, y, 1, 1).ForEach(reach, [&](Span part) {
            for (unsigned x = part.begin; x < part.end; x += tileColumns) {
                const unsigned count = std::min(tileColumns, part.end - x);
                sampler.Fill(x, y, count, row, 0);
                BlendPixels(frame.Row(y) + x, count, row);
            }
        });
    }
}

// As many rows of a planar frame as a chroma sample serves, tile by tile.
template <unsigned columnShift, unsigned rowShift>
class PlanarBand {
 public:
    static constexpr unsigned blockColumns = 1u << columnShift, blockRows = 1u << rowShift;

    PlanarBand(const PlanarView& frame, const Box& box, const SamplerRef& sampler, Covers covers)
        : m_frame(frame), m_box(box), m_sampler(sampler), m_covers(covers) {}

    void Blend(unsigned top) {
        m_top = top;
        Span all{m_box.xEnd, 0};
        for (unsigned r = 0; r < blockRows; ++r) {
            m_reach[r] = IsInBox(r) ? m_sampler.Reach(top + r, {m_box.xBegin, m_box.xEnd}) : Span{};
            if (m_reach[r].IsEmpty()) continue;
            all = {std::min(all.begin, m_reach[r].begin), std::max(all.end, m_reach[r].end)};
        }
        all.begin &= ~(blockColumns - 1);
        VisibleParts(m_covers, all, top, blockRows, blockColumns).ForEach(all, [this](Span part) {
            for (unsigned x = part.begin; x < part.end; x += tileColumns) BlendTile(x, part.end);
        });
    }

 private:
    unsigned Width() const { return m_frame.plane[0].width; }
    unsigned Height() const { return m_frame.plane[0].height; }
    bool IsInBox(unsigned r) const { return m_top + r >= m_box.yBegin && m_top + r < m_box.yEnd; }
    // How many entries stand for pixels of the frame; the others repeat the last of these.
    unsigned OnFrame() const { return std::min(m_count, Width() - m_left); }

    void BlendTile(unsigned left, unsigned end) {
        m_left = left;
        m_count = std::min(tileColumns, (end + blockColumns - 1) / blockColumns * blockColumns - left);
        for (unsigned r = 0; r < blockRows; ++r) Fill(r);
        m_transparent = m_frame.HasAlpha() && !LoadAlpha();
        BlendLuma();
        AddCoverages();
        for (unsigned p = 1; p < 3; ++p) BlendChroma(p);
        if (m_transparent) BlendAlphaPlane();
    }

    // The entries of row r that show something.
    Span Shown(unsigned r) const {
        const Span shown = m_reach[r].Within({m_left, m_left + m_count});
        return shown.IsEmpty() ? Span{} : Span{shown.begin - m_left, shown.end - m_left};
    }

    void Fill(unsigned r) {
        TileRow& row = m_rows[r];
        if (m_top + r >= Height()) {
            row = m_rows[Height() - 1 - m_top];
            return;
        }
        const Span shown = Shown(r);
        if (!shown.IsEmpty())
            m_sampler.Fill(m_left + shown.begin, m_top + r, shown.end - shown.begin, row, shown.begin);
        row.Uncover(0, shown.begin);
        row.Uncover(shown.end, m_count);
        if (OnFrame() < m_count) row.Extend(OnFrame(), m_count);
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
            const Span shown = Shown(r);
            if (shown.IsEmpty()) continue;
            std::uint8_t* const to = m_frame.plane[0].Row(m_top + r) + m_left + shown.begin;
            const std::uint16_t* const colours = m_rows[r].colour[0] + shown.begin;
            const std::uint16_t* const coverages = m_rows[r].coverage + shown.begin;
            const std::uint8_t* const alphas = m_alpha[r] + shown.begin;
            const unsigned count = shown.end - shown.begin;
            if (m_transparent)
                for (unsigned i = 0; i < count; ++i)
                    to[i] = BlendTransparent(to[i], colours[i], coverages[i], alphas[i] * (255u - coverages[i]));
            else
#pragma GCC unroll 1
                for (unsigned i = 0; i < count; ++i) to[i] = BlendOpaqueSample(to[i], colours[i], coverages[i]);
        }
    }

    // What entries of a block's row sum up to. Two at a time: a vector of pairs is added without taking it apart.
    static std::uint32_t AlongBlock(const std::uint16_t* entries, unsigned block) {
        if constexpr (blockColumns == 1) {
            return entries[block];
        } else {
            std::uint32_t sum = 0;
            for (unsigned i = 0; i < blockColumns; i += 2) {
                std::uint32_t pair;
                std::memcpy(&pair, entries + block * blockColumns + i, sizeof pair);
                sum += (pair & 0xFFFF) + (pair >> 16);
            }
            return sum;
        }
    }

    void AddCoverages() {
#pragma GCC unroll 1
        for (unsigned i = 0; i < m_count >> columnShift; ++i) {
            std::uint32_t sum = 0;
            for (unsigned r = 0; r < blockRows; ++r) sum += AlongBlock(m_rows[r].coverage, i);
            m_covered[i] = sum;
        }
    }

    void BlendChroma(unsigned p) {
        const ComponentView& plane = m_frame.plane[p];
        const unsigned left = m_left >> columnShift, y = m_top >> rowShift;
        if (y >= plane.height || left >= plane.width) return;
        const unsigned count = std::min(m_count >> columnShift, plane.width - left);
        std::uint8_t* const to = plane.Row(y) + left;
        const auto over = [&](unsigned block) {
            std::uint32_t sum = 0;
            for (unsigned r = 0; r < blockRows; ++r) sum += AlongBlock(m_rows[r].colour[p], block);
            return sum;
        };
        if (m_transparent)
            for (unsigned i = 0; i < count; ++i)
                to[i] = BlendTransparent(to[i], over(i), m_covered[i], WeightOfBlock(i));
        else
#pragma GCC unroll 1
            for (unsigned i = 0; i < count; ++i)
                to[i] = BlendOpaque<columnShift + rowShift>(to[i], over(i), m_covered[i]);
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
            const Span shown = Shown(r);
            if (shown.IsEmpty()) continue;
            std::uint8_t* const to = m_frame.plane[3].Row(m_top + r) + m_left;
            for (unsigned i = shown.begin; i < shown.end; ++i) to[i] = BlendAlpha(to[i], m_rows[r].coverage[i]);
        }
    }

    const PlanarView& m_frame;
    const Box& m_box;
    const SamplerRef& m_sampler;
    const Covers m_covers;
    unsigned m_left = 0, m_top = 0, m_count = 0;
    bool m_transparent = false;
    Span m_reach[blockRows];
    TileRow m_rows[blockRows];
    std::uint32_t m_covered[tileColumns];
    std::uint8_t m_alpha[blockRows][tileColumns];
};

template <unsigned columnShift, unsigned rowShift>
void BlendPlanar(PlanarView frame, Box box, SamplerRef sampler, Covers covers) {
    PlanarBand<columnShift, rowShift> band(frame, box, sampler, covers);
    for (unsigned y = box.yBegin >> rowShift << rowShift; y < box.yEnd; y += 1u << rowShift) band.Blend(y);
}

}  // namespace

void Blend(const PackedView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set) {
    variantsOf<BlendPacked>.For(set)(frame, box, sampler, covers);
}

void Blend(const PlanarView& frame, const Box& box, const SamplerRef& sampler, Covers covers, InstructionSet set) {
    switch (frame.columnShift * 10 + frame.rowShift) {
        case 0:
            return variantsOf<BlendPlanar<0, 0>>.For(set)(frame, box, sampler, covers);
        case 10:
            return variantsOf<BlendPlanar<1, 0>>.For(set)(frame, box, sampler, covers);
        case 11:
            return variantsOf<BlendPlanar<1, 1>>.For(set)(frame, box, sampler, covers);
        case 20:
            return variantsOf<BlendPlanar<2, 0>>.For(set)(frame, box, sampler, covers);
        case 22:
            return variantsOf<BlendPlanar<2, 2>>.For(set)(frame, box, sampler, covers);
        default:
            return;
    }
}

}  // namespace AVBased::Blending
