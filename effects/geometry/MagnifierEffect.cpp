#include "effects/geometry/MagnifierEffect.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "effects/base/fixed_point.h"
#include "effects/base/row_loops.h"
#include "effects/geometry/glass_blocks.h"
#include "effects/geometry/row_sampler.h"

namespace AVBased {
namespace {

constexpr Property<MagnifierSettings> magnifierProperties[] = {
    {"magnifier_r", "0", &MagnifierSettings::radius},
    {"magnifier_x", "0", &MagnifierSettings::x},
    {"magnifier_y", "0", &MagnifierSettings::y},
    {"magnifier_scale", "0", &MagnifierSettings::scale},
};

// Whether the glass is there at all. A factor that is no number passes.
bool IsVisible(const MagnifierSettings& s, unsigned width, unsigned height) {
    return !(s.x > width || s.y > height || s.scale <= 1.0 || s.radius > width / 2 || s.radius > height / 2);
}

enum class Mixing { Nearest, FourWeights, FourWeightsExchanged, TwoSteps };

// Where a position of an axis reads: a sample, and how far on towards the next one in 1/256.
struct Place {
    unsigned whole;
    std::uint8_t share;
};

// One axis of the rectangle around the glass: positions from begin on, and where each reads.
struct GlassAxis {
    std::uint32_t begin, count, offset, step;
    bool nearest;

    // `edge` is where a rectangle begins that the picture cuts off. Nearest positions step in 1/256, mixed ones in
    // 1/65536.
    GlassAxis(const MagnifierSettings& s, std::uint32_t centre, unsigned size, unsigned edge) {
        nearest = s.scale <= 2.0;
        const bool cut = centre < s.radius;
        begin = cut ? edge : centre - s.radius;
        count = cut ? centre + s.radius : std::min(2 * s.radius, size - begin);
        step = TruncateToUint32((nearest ? 256.0 : 65536.0) / s.scale);
        offset = (TruncateToUint32(count * s.scale) - count) * step >> 1;
    }
    unsigned End() const { return begin + count; }
    Place At(unsigned position) const {
        const std::uint32_t accumulator = (position - begin) * step;
        if (nearest) return {(accumulator >> 8) + (offset >> 8) + begin, 0};
        const std::uint32_t place = accumulator + offset + (begin << 16);
        return {place >> 16, std::uint8_t(place >> 8)};
    }
};

// The rows of a glass: which of their columns lie inside it.
struct Glass {
    const MagnifierSettings& settings;
    GlassAxis across, down;

    struct Chord {
        unsigned begin, end;
    };
    std::vector<Chord> chords = Chords();  // of all rows from down.begin on

    const Chord& At(unsigned y) const { return chords[y - down.begin]; }

 private:
    std::vector<Chord> Chords() const {
        std::vector<Chord> all;
        for (unsigned y = down.begin; y < down.End(); ++y) all.push_back(ChordOf(y));
        return all;
    }
    Chord ChordOf(unsigned y) const {
        const std::int64_t dy = std::int64_t(y) - settings.y, radius = settings.radius;
        const std::int64_t square = radius * radius - dy * dy;
        if (square <= 0) return {0, 0};
        auto reach = std::int64_t(std::sqrt(double(square)));  // the largest distance whose square lies below
        while (reach * reach >= square) --reach;
        while ((reach + 1) * (reach + 1) < square) ++reach;
        const std::int64_t begin = std::max<std::int64_t>(across.begin, settings.x - reach),
                           end = std::min<std::int64_t>(across.End(), settings.x + reach + 1);
        return begin < end ? Chord{unsigned(begin), unsigned(end)} : Chord{0, 0};
    }
};

std::uint8_t MixTwo(std::uint16_t a, std::uint16_t b, std::uint16_t share) {
    return std::uint8_t(std::uint16_t(std::uint16_t(a * std::uint16_t(256 - share)) + std::uint16_t(b * share)) >> 8);
}

// to = a and b mixed by each byte's share of b, in 1/256.
void MixColumns(std::uint8_t* __restrict to, const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
                const std::uint8_t* __restrict shares, unsigned count) {
    for (unsigned x = 0; x < count; ++x) to[x] = MixTwo(a[x], b[x], shares[x]);
}

// to = a and b mixed by one share of b.
void MixRows(std::uint8_t* __restrict to, const std::uint8_t* __restrict a, const std::uint8_t* __restrict b,
             unsigned share, unsigned count) {
    for (unsigned x = 0; x < count; ++x) to[x] = MixTwo(a[x], b[x], std::uint16_t(share));
}

// to = four neighbours mixed by the distances towards the right ones and the lower ones, in 1/256.
template <bool exchanged>
void MixFour(std::uint8_t* __restrict to, const std::uint8_t* __restrict own, const std::uint8_t* __restrict right,
             const std::uint8_t* __restrict below, const std::uint8_t* __restrict belowRight,
             const std::uint8_t* __restrict columnShares, unsigned rowShare, unsigned count) {
    const std::uint16_t fy = std::uint16_t(rowShare);
    for (unsigned x = 0; x < count; ++x) {
        const std::uint16_t fx = columnShares[x], both = std::uint16_t(fx * fy) >> 8;
        // Written in differences, the weights (1 - u - v + uv), (u - uv), (v - uv) and uv take a product less.
        const std::uint16_t toRight = std::uint16_t(right[x] - own[x]), toBelow = std::uint16_t(below[x] - own[x]),
                            turn = std::uint16_t(belowRight[x] - right[x] - toBelow);
        const auto sides = std::uint16_t(std::uint16_t(toRight * (exchanged ? fy : fx)) +
                                         std::uint16_t(toBelow * (exchanged ? fx : fy)));
        const auto sum = std::uint16_t(std::uint16_t(own[x] << 8) + sides + std::uint16_t(turn * both));
        to[x] = std::uint8_t(sum >> 8);
    }
}

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
            const Glass::Chord chord = m_glass.At(y);
            if (row >= m_down.size || chord.begin == chord.end) continue;
            // What a later row of the same samples will write again needs no writing now.
            Glass::Chord later{0, 0};
            for (unsigned next = y + 1; next <= m_down.Last(row) && next < m_glass.down.End(); ++next) {
                const Glass::Chord other = m_glass.At(next);
                if (other.end - other.begin > later.end - later.begin) later = other;
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
        if (m_mixing != Mixing::TwoSteps && m_mixing != Mixing::FourWeightsExchanged) return {};
        AxisMap columns;
        std::vector<std::uint8_t> shares;
        for (unsigned decider : m_deciders) {
            columns.push_back(ColumnAt(decider));
            shares.push_back(ShareAt(decider));
        }
        const auto order = m_mixing == Mixing::TwoSteps ? GlassBlocks::Order::RowByRow : GlassBlocks::Order::TwoRows;
        return GlassBlocks::Make(columns, shares, sizeof(Sample), order, m_set);
    }
    // None where blocks take the sampler's place.
    AxisMap SampledColumns(unsigned beyond) const {
        AxisMap map;
        if (!m_blocks)
            for (unsigned decider : m_deciders) map.push_back(ColumnAt(decider) + beyond);
        return map;
    }
    // A chord in samples of the rectangle.
    Glass::Chord Samples(const Glass::Chord& chord) const {
        if (chord.begin == chord.end) return {0, 0};
        const unsigned begin = (chord.begin >> m_across.shift) - m_begin,
                       end = ((chord.end - 1) >> m_across.shift) + 1 - m_begin;
        const unsigned count = unsigned(m_deciders.size());
        return {std::min(begin, count), std::min(end, count)};
    }

    void Write(unsigned y, unsigned row, unsigned begin, unsigned end, const Glass::Chord& chord) {
        if (begin >= end) return;
        Sample* const to = m_plane.Row(row) + m_begin;
        for (unsigned x = begin; x < end; x += cacheLine / sizeof(Sample))
            PrefetchToWrite(to + x, rowsAhead * std::ptrdiff_t(m_plane.pitch));
        const unsigned from = m_rows[y - m_glass.down.begin];
        const std::uint8_t share = m_glass.down.At(y).share;
        const std::size_t firstByte = begin * sizeof(Sample), endByte = end * sizeof(Sample);
        if (m_mixing == Mixing::Nearest) {
            m_sampler(to, m_shown.Row(from), begin, end);
        } else if (m_blocks && m_mixing == Mixing::FourWeightsExchanged) {
            m_blocks->MixFour(Bytes(to), Bytes(m_shown.Row(from)), Bytes(m_shown.Row(from + 1)), share, firstByte,
                              endByte);
        } else if (m_blocks) {
            GlassBlocks::MixRows(Bytes(to), MixedLine(from), MixedLine(from + 1), share, firstByte, endByte);
        } else {
            const Line &upper = LineOf(from), &lower = LineOf(from + 1);
            Mix(to + begin, {&upper.own[begin], &upper.right[begin], &lower.own[begin], &lower.right[begin]},
                &m_shares[firstByte], share, end - begin);
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
            line.mixed.resize(m_blocks->Room());
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

template <class Sample>
void MagnifyPlane(const Glass& glass, const SharedAxis& across, const SharedAxis& down, const PlaneView<Sample>& plane,
                  Mixing mixing, InstructionSet set) {
    if (glass.across.count && glass.down.count && across.size && down.size)
        GlassPlane<Sample>(glass, across, down, plane, mixing, set).Magnify();
}

}  // namespace

CMagnifierVideoImageEffect::CMagnifierVideoImageEffect(unsigned cpuFeatures)
    : CSettingsEffect(effectNameMagnifier, magnifierProperties), m_vectorised(HasVectorUnit(cpuFeatures)) {}

void CMagnifierVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const MagnifierSettings& s = m_settings;
    const bool nearest = s.scale <= 2.0;
    ForFrame(
        [&](const PackedView& picture) {
            if (!IsVisible(s, picture.width, picture.height)) return;
            // Deliberate: a glass cut by the left or upper edge begins at 1 when packed and mixed, so that column and
            // row 0 stay.
            const unsigned edge = nearest ? 0 : 1;
            const Mixing mixing = m_vectorised ? Mixing::TwoSteps : Mixing::FourWeights;
            const Glass glass{s, {s, s.x, picture.width, edge}, {s, s.y, picture.height, edge}};
            MagnifyPlane(glass, ColumnsOf(picture), RowsOf(picture), picture, nearest ? Mixing::Nearest : mixing,
                         Instructions());
        },
        [&](const PlanarView& picture) {
            const unsigned width = picture.plane[0].width, height = picture.plane[0].height;
            if (!IsVisible(s, width, height)) return;
            const Glass glass{s, {s, s.x, width, 0}, {s, s.y, height, 0}};
            // Deliberate: planar pictures have the fractions exchanged.
            const Mixing mixing = nearest ? Mixing::Nearest : Mixing::FourWeightsExchanged;
            for (unsigned p = 0; p < 3; ++p)
                MagnifyPlane(glass, ColumnsOf(picture, p), RowsOf(picture, p), picture.plane[p], mixing,
                             Instructions());
        },
        *frame);
}

}  // namespace AVBased
