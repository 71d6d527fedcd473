#include "effects/geometry/magnifier_plane.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "effects/base/row_loops.h"
#include "effects/geometry/glass_blocks_avx2.h"
#include "effects/geometry/row_sampler.h"

namespace AVBased {
namespace {

// The part of a plane that a glass shows, kept while the plane is written. One column and row more serve as neighbours;
// at the plane's edge they repeat the last ones.
template <class Sample>
class ShownPart {
 public:
    // Columns and rows become relative to the part.
    ShownPart(const PlaneView<Sample>& plane, AxisMap& columns, AxisMap& rows) {
        const auto [left, right] = std::ranges::minmax(columns);
        const auto [top, bottom] = std::ranges::minmax(rows);
        m_width = right - left + 2;
        m_samples = std::make_unique_for_overwrite<Sample[]>(std::size_t(m_width) * (bottom - top + 2) +
                                                             GlassBlocks::readBeyond / sizeof(Sample));
        const unsigned inside = std::min(m_width, plane.width - left);
        Sample* to = m_samples.get();
        for (unsigned y = top; y <= bottom + 1; ++y) {
            const Sample* const from = plane.Row(std::min(y, plane.height - 1)) + left;
            to = std::copy_n(from, inside, to);
            to = std::fill_n(to, m_width - inside, from[inside - 1]);
        }
        for (unsigned& column : columns) column -= left;
        for (unsigned& row : rows) row -= top;
    }
    unsigned Width() const { return m_width; }
    const Sample* Row(unsigned y) const { return m_samples.get() + std::size_t(y) * m_width; }

 private:
    unsigned m_width;
    std::unique_ptr<Sample[]> m_samples;
};

// One plane under the glass. Of the luma positions that share a sample the last one inside decides.
template <class Sample>
class GlassPlane {
 public:
    GlassPlane(const Glass& glass, const SharedAxis& across, const SharedAxis& down, const PlaneView<Sample>& plane,
               Mixing mixing, InstructionSet set)
        : m_glass(glass),
          m_across(across),
          m_down(down),
          m_plane(plane),
          m_mixing(mixing),
          m_set(set),
          m_begin(glass.across.begin >> across.shift),
          m_deciders(Deciders(glass.across, across)),
          m_columns(Positions(glass.across, across)),
          m_rows(Positions(glass.down, down)),
          m_shown(plane, m_columns, m_rows),
          m_blocks(MakeBlocks()),
          m_sampler(SampledColumns(0), m_shown.Width(), set),
          m_rightSampler(SampledColumns(1), m_shown.Width(), set) {
        if (m_blocks || mixing == Mixing::Nearest) return;
        for (unsigned decider : m_deciders) m_shares.insert(m_shares.end(), sizeof(Sample), ShareAt(decider));
    }

    void Magnify() {
        for (unsigned y = m_glass.down.begin; y < m_glass.down.End(); ++y) {
            const unsigned row = y >> m_down.shift;
            const Span chord = m_glass.At(y);
            if (row >= m_down.size || chord.IsEmpty()) continue;
            // What a later row of the same samples will write again needs no writing now.
            Span later;
            for (unsigned next = y + 1; next <= m_down.Last(row) && next < m_glass.down.End(); ++next) {
                const Span other = m_glass.At(next);
                if (other.Size() > later.Size()) later = other;
            }
            const auto [begin, end] = Samples(chord);
            const auto [laterBegin, laterEnd] = Samples(later);
            if (laterBegin == laterEnd) {
                Write(y, row, begin, end, chord);
            } else {
                Write(y, row, begin, std::min(end, laterBegin), chord);
                Write(y, row, std::max(begin, laterEnd), end, chord);
            }
        }
    }

 private:
    static constexpr std::ptrdiff_t rowsAhead = 2;  // from the row in work to the row that is fetched

    static AxisMap Positions(const GlassAxis& axis, const SharedAxis& shared) {
        AxisMap map(axis.count);
        for (unsigned i = 0; i < axis.count; ++i)
            map[i] = std::min(axis.At(axis.begin + i).whole >> shared.shift, shared.size - 1);
        return map;
    }
    // For each sample of the rectangle the last of its positions there.
    static AxisMap Deciders(const GlassAxis& axis, const SharedAxis& shared) {
        AxisMap map;
        for (unsigned i = axis.begin >> shared.shift; i < shared.size && shared.First(i) < axis.End(); ++i)
            map.push_back(std::min(shared.Last(i), axis.End() - 1));
        return map;
    }
    unsigned ColumnAt(unsigned position) const { return m_columns[position - m_glass.across.begin]; }
    std::uint8_t ShareAt(unsigned position) const { return m_glass.across.At(position).share; }
    std::optional<GlassBlocks> MakeBlocks() const {
        const bool serves = m_mixing == Mixing::TwoSteps || m_mixing == Mixing::FourWeightsExchanged;
        if constexpr (hasAvx2Variants)
            if (serves && m_set == InstructionSet::Avx2) {
                AxisMap columns;
                std::vector<std::uint8_t> shares;
                for (unsigned decider : m_deciders) {
                    columns.push_back(ColumnAt(decider));
                    shares.push_back(ShareAt(decider));
                }
                return GlassBlocks::Make(
                    columns, shares, sizeof(Sample),
                    m_mixing == Mixing::TwoSteps ? GlassBlocks::Order::RowByRow : GlassBlocks::Order::TwoRows);
            }
        return {};
    }
    // None where blocks take the sampler's place.
    AxisMap SampledColumns(unsigned beyond) const {
        AxisMap map;
        if (!m_blocks)
            for (unsigned decider : m_deciders) map.push_back(ColumnAt(decider) + beyond);
        return map;
    }
    // A chord in samples of the rectangle.
    Span Samples(Span chord) const {
        if (chord.IsEmpty()) return {};
        const unsigned begin = (chord.begin >> m_across.shift) - m_begin,
                       end = ((chord.end - 1) >> m_across.shift) + 1 - m_begin;
        const unsigned count = unsigned(m_deciders.size());
        return {std::min(begin, count), std::min(end, count)};
    }

    void Write(unsigned y, unsigned row, unsigned begin, unsigned end, Span chord) {
        if (begin >= end) return;
        Sample* const to = m_plane.Row(row) + m_begin;
        for (unsigned x = begin; x < end; x += cacheLine / sizeof(Sample))
            PrefetchToWrite(to + x, rowsAhead * std::ptrdiff_t(m_plane.pitch));
        const unsigned from = m_rows[y - m_glass.down.begin];
        const std::uint8_t share = m_glass.down.At(y).share;
        if (m_mixing == Mixing::Nearest) {
            m_sampler(to, m_shown.Row(from), begin, end);
        } else if (!WriteByBlocks(to, from, share, begin, end)) {
            const Line &upper = LineOf(from), &lower = LineOf(from + 1);
            Mix(to + begin, {&upper.own[begin], &upper.right[begin], &lower.own[begin], &lower.right[begin]},
                &m_shares[begin * sizeof(Sample)], share, end - begin);
        }
        // A chord that ends among the positions of its last sample leaves that one to its own last position.
        if (chord.end - 1 < m_deciders[end - 1]) {
            const unsigned column = ColumnAt(chord.end - 1);
            const Sample *const upper = m_shown.Row(from) + column, *const lower = m_shown.Row(from + 1) + column;
            const std::uint8_t columnShare[4] = {ShareAt(chord.end - 1)};
            if (m_mixing == Mixing::Nearest)
                to[end - 1] = *upper;
            else
                Mix(to + (end - 1), {upper, upper + 1, lower, lower + 1}, columnShare, share, 1);
        }
    }

    // False, with nothing done, where there are no blocks.
    bool WriteByBlocks(Sample* to, unsigned from, std::uint8_t share, std::size_t begin, std::size_t end) {
        if constexpr (hasAvx2Variants) {
            begin *= sizeof(Sample);
            end *= sizeof(Sample);
            if (m_blocks && m_mixing == Mixing::FourWeightsExchanged)
                m_blocks->MixFour(Bytes(to), Bytes(m_shown.Row(from)), Bytes(m_shown.Row(from + 1)), share, begin, end);
            else if (m_blocks)
                GlassBlocks::MixRows(Bytes(to), MixedLine(from), MixedLine(from + 1), share, begin, end);
        }
        return m_blocks.has_value();
    }

    // A row of samples and of their right neighbours, or in two steps already what lies between these.
    struct Line {
        unsigned row = ~0u;
        std::vector<Sample> own, right;
    };
    struct BlockLine {
        unsigned row = ~0u;
        std::vector<std::uint8_t> mixed;
    };
    const Line& LineOf(unsigned row) {
        Line& line = m_lines[row % 2];
        if (line.row == row) return line;
        const unsigned count = m_sampler.size();
        line.row = row;
        line.own.resize(count);
        line.right.resize(count);
        m_sampler(line.own.data(), m_shown.Row(row));
        m_rightSampler(line.right.data(), m_shown.Row(row));
        if (m_mixing == Mixing::TwoSteps) {
            m_mixed.resize(count);
            variantsOf<MixColumns>.For(m_set)(Bytes(m_mixed.data()), Bytes(line.own.data()), Bytes(line.right.data()),
                                              m_shares.data(), unsigned(count * sizeof(Sample)));
            line.own.swap(m_mixed);
        }
        return line;
    }

    // The same as the blocks mix it.
    const std::uint8_t* MixedLine(unsigned row) {
        BlockLine& line = m_blockLines[row % 2];
        if (line.row != row) {
            line.row = row;
            line.mixed.resize(m_blocks->LineBytes());
            m_blocks->MixColumns(line.mixed.data(), Bytes(m_shown.Row(row)));
        }
        return line.mixed.data();
    }

    struct Neighbours {
        const Sample *own, *right, *below, *belowRight;
    };
    void Mix(Sample* to, const Neighbours& n, const std::uint8_t* columnShares, std::uint8_t share, unsigned count) {
        const unsigned bytes = unsigned(count * sizeof(Sample));
        if (m_mixing == Mixing::TwoSteps)
            return variantsOf<MixRows>.For(m_set)(Bytes(to), Bytes(n.own), Bytes(n.below), share, bytes);
        const auto& mix = m_mixing == Mixing::FourWeights ? variantsOf<MixFour<false>> : variantsOf<MixFour<true>>;
        mix.For(m_set)(Bytes(to), Bytes(n.own), Bytes(n.right), Bytes(n.below), Bytes(n.belowRight), columnShares,
                       share, bytes);
    }
    static std::uint8_t* Bytes(Sample* samples) { return reinterpret_cast<std::uint8_t*>(samples); }
    static const std::uint8_t* Bytes(const Sample* samples) { return reinterpret_cast<const std::uint8_t*>(samples); }

    const Glass& m_glass;
    SharedAxis m_across, m_down;
    PlaneView<Sample> m_plane;
    Mixing m_mixing;
    InstructionSet m_set;
    unsigned m_begin;
    AxisMap m_deciders;
    AxisMap m_columns, m_rows;  // what the positions of the rectangle show
    ShownPart<Sample> m_shown;
    std::optional<GlassBlocks> m_blocks;
    RowSampler<Sample> m_sampler, m_rightSampler;
    std::vector<std::uint8_t> m_shares;
    Line m_lines[2];
    BlockLine m_blockLines[2];
    std::vector<Sample> m_mixed;
};

}  // namespace

template <class Sample>
void MagnifyPlane(const Glass& glass, const SharedAxis& across, const SharedAxis& down, const PlaneView<Sample>& plane,
                  Mixing mixing, InstructionSet set) {
    if (glass.across.count && glass.down.count && across.size && down.size)
        GlassPlane<Sample>(glass, across, down, plane, mixing, set).Magnify();
}
template void MagnifyPlane(const Glass&, const SharedAxis&, const SharedAxis&, const ComponentView&, Mixing,
                           InstructionSet);
template void MagnifyPlane(const Glass&, const SharedAxis&, const SharedAxis&, const PackedView&, Mixing,
                           InstructionSet);

}  // namespace AVBased
