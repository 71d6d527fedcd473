#include "effects/geometry/Trans2D3D.h"

#include <cstring>
#include <optional>
#include <vector>

#include "effects/base/fixed_point.h"
#include "effects/base/shared_samples.h"

namespace AVBased {
namespace {

constexpr Property<Trans2D3DSettings> properties[] = {
    {"2D_3D_TransForm_strength", "25", &Trans2D3DSettings::strength},
    {"2D_3D_TransForm_output", "0", &Trans2D3DSettings::output},
    {"2D_3D_TransForm_swap", "0", &Trans2D3DSettings::swap},
};

constexpr unsigned cellSide = 16, step = 4;

// How far the left eye's view of each place is shifted to the right, in 256ths of a pixel.
class ShiftMap {
 public:
    // warmth(x, y) returns v - u of a pixel.
    template <class Warmth>
    ShiftMap(unsigned width, unsigned height, int strength, Warmth warmth)
        : m_columns((width + cellSide - 1) / cellSide),
          m_rows((height + cellSide - 1) / cellSide),
          m_shifts(std::size_t(m_columns) * m_rows),
          m_row(m_columns + 2) {
        std::vector<int> sums(m_columns);
        for (unsigned row = 0; row < m_rows; ++row) {
            const unsigned top = row * cellSide, bottom = std::min(top + cellSide, height);
            std::fill(sums.begin(), sums.end(), 0);
            for (unsigned y = top; y < bottom; y += step)
                for (unsigned x = 0; x < width; x += step) sums[x / cellSide] += warmth(x, y);
            const int place = int(255 * (2 * row + 1) / (2 * m_rows)), rows = int((bottom - top + step - 1) / step);
            for (unsigned column = 0; column < m_columns; ++column) {
                const int columns = int((std::min(cellSide, width - column * cellSide) + step - 1) / step);
                const int warm = sums[column] / (columns * rows);
                m_shifts[row * m_columns + column] = ClampToByte((place * 160 >> 8) + 48 + (warm * 3 >> 2)) * 256;
            }
        }
        for (unsigned pass = 0; pass < 2; ++pass) {
            for (unsigned row = 0; row < m_rows; ++row) Smooth(&m_shifts[row * m_columns], m_columns, 1);
            for (unsigned column = 0; column < m_columns; ++column) Smooth(&m_shifts[column], m_rows, m_columns);
        }
        const int screen = MiddleDepth();
        for (int& shift : m_shifts) shift = int(std::int64_t(shift - screen) * width * strength / 510000);
    }

    // Room for the shifts of a row of `width` samples, each of 2^shift columns.
    std::size_t ShiftCount(unsigned width, unsigned shift) const {
        return std::max(width, m_columns * cellSide >> shift) + 2 * cellSide;
    }
    // Fills the room, and returns where in it the first sample's shift stands. The shifts are in 256ths of a sample;
    // as many as a cell has may be read past the last.
    const int* ShiftsOf(unsigned y, unsigned shift, std::vector<int>& room) {
        const unsigned below = (y + cellSide / 2) / cellSide, part = (y + cellSide / 2) % cellSide;
        const int* const upper = &m_shifts[std::min(std::max(below, 1u) - 1, m_rows - 1) * std::size_t(m_columns)];
        const int* const lower = &m_shifts[std::min(below, m_rows - 1) * std::size_t(m_columns)];
        for (unsigned i = 0; i < m_columns; ++i)
            m_row[i + 1] = (upper[i] * int(cellSide - part) + lower[i] * int(part)) >> 4;
        m_row.front() = m_row[1];
        m_row.back() = m_row[m_columns];
        const unsigned count = cellSide >> shift;
        int* shifts = room.data();
        for (unsigned i = 0; i <= m_columns; ++i, shifts += count)
            for (unsigned k = 0; k < count; ++k)
                shifts[k] = (m_row[i] * int(cellSide) + (m_row[i + 1] - m_row[i]) * int(k << shift)) >> (4 + shift);
        return &room[count / 2];
    }

 private:
    // Each of `count` values `apart` from each other becomes the mean over those around it.
    static void Smooth(int* values, unsigned count, unsigned apart) {
        const int radius = int(std::max(1u, count / 8)), last = int(count) - 1;
        std::vector<int> before(count);
        for (unsigned i = 0; i < count; ++i) before[i] = values[std::size_t(i) * apart];
        const auto nearest = [&](int i) { return before[std::size_t(std::clamp(i, 0, last))]; };
        int sum = 0;
        for (int i = -radius; i <= radius; ++i) sum += nearest(i);
        for (int i = 0; i <= last; ++i) {
            values[std::size_t(i) * apart] = sum / (2 * radius + 1);
            sum += nearest(i + radius + 1) - nearest(i - radius);
        }
    }

    // Of the cells between the thirds.
    int MiddleDepth() const {
        std::int64_t sum = 0;
        for (unsigned row = m_rows / 3; row < m_rows - m_rows / 3; ++row)
            for (unsigned column = m_columns / 3; column < m_columns - m_columns / 3; ++column)
                sum += m_shifts[row * m_columns + column];
        const unsigned columns = m_columns - m_columns / 3 * 2, rows = m_rows - m_rows / 3 * 2;
        return int(sum / (std::int64_t(columns) * rows));
    }

    unsigned m_columns, m_rows;
    std::vector<int> m_shifts, m_row;
};

// How far the left eye's red lies from the right eye's, the more held back the farther: what an eye of its own sees as
// depth, two eyes see as a coloured fringe.
int HeldBack(int red) {
    const int small = std::clamp(red, -40, 40);
    return small + ((red - small) >> 2);
}

std::uint8_t Interpolated(std::uint8_t a, std::uint8_t b, std::uint32_t part) {
    return std::uint8_t(std::uint16_t(a * (256 - part) + b * part) >> 8);
}
// Two colours of a word at once.
std::uint32_t Interpolated(std::uint32_t a, std::uint32_t b, std::uint32_t part) {
    constexpr std::uint32_t even = 0xFF00FF;
    const std::uint32_t low = ((a & even) * (256 - part) + (b & even) * part) >> 8 & even;
    const std::uint32_t high = (a >> 8 & even) * (256 - part) + (b >> 8 & even) * part;
    return low | (high & ~even);
}
std::uint32_t Mean(std::uint32_t a, std::uint32_t b) { return (a | b) - ((a ^ b) >> 1 & 0x7F7F7F7F); }
std::uint8_t Mean(std::uint8_t a, std::uint8_t b) { return std::uint8_t((a + b + 1) >> 1); }

// What a view is made of: bytes, or the words of packed pixels.
std::uint8_t Load(const std::uint8_t* sample) { return *sample; }
std::uint32_t Load(const Rgba32* pixel) { return LoadWord(pixel); }
void Store(std::uint8_t* sample, std::uint8_t value) { *sample = value; }
void Store(Rgba32* pixel, std::uint32_t value) { StoreWord(pixel, value); }
template <class Sample>
using ValueOf = decltype(Load(static_cast<const Sample*>(nullptr)));

// One eye's view of a row; `direction` -1 is the left eye's. Stretches whose samples all move by the same whole number
// are straight loops; "unroll 1" as in row_loops.h, and an array of their own, which nothing else can be part of.
template <class Sample>
void ViewRow(ValueOf<Sample>* __restrict view, const Sample* __restrict row, unsigned width,
             const int* __restrict shifts, int direction) {
    constexpr std::size_t stretch = 16;
    const int last = int(width) - 1;
    for (unsigned begin = 0; begin < width; begin += stretch) {
        const int* const moves = shifts + begin;
        const int whole = direction * moves[0] >> 8, first = int(begin) + whole;
        int others = 0;
#pragma GCC unroll 1
        for (std::size_t k = 0; k < stretch; ++k) others |= (direction * moves[k] >> 8) ^ whole;
        if (others == 0 && first >= 0 && first + int(stretch) <= last && begin + stretch <= width) {
            const Sample* const from = row + first;
            ValueOf<Sample> seen[stretch];
#pragma GCC unroll 1
            for (std::size_t k = 0; k < stretch; ++k)
                seen[k] = Interpolated(Load(from + k), Load(from + k + 1), std::uint32_t(direction * moves[k] & 255));
            std::memcpy(view + begin, seen, sizeof seen);
            continue;
        }
        for (unsigned x = begin; x < std::min(begin + unsigned(stretch), width); ++x) {
            const int place = std::clamp(int(x << 8) + direction * shifts[x], 0, last << 8);
            const int next = std::min((place >> 8) + 1, last);
            view[x] = Interpolated(Load(row + (place >> 8)), Load(row + next), std::uint32_t(place & 255));
        }
    }
}

template <class Value>
struct Views {
    std::vector<Value> left, right;
    explicit Views(unsigned width) : left(width), right(width) {}
};

// The shifts of a row of a plane, and the views that they make.
template <class Sample>
class Eyes {
 public:
    Eyes(ShiftMap& map, unsigned width, unsigned shift, bool swapped, InstructionSet set)
        : m_map(map),
          m_shifts(map.ShiftCount(width, shift)),
          m_shift(shift),
          m_leftDirection(swapped ? 1 : -1),
          m_view(variantsOf<ViewRow<Sample>>.For(set)) {}
    void Look(unsigned lumaRow, const Sample* row, unsigned width, Views<ValueOf<Sample>>& views) {
        const int* const shifts = m_map.ShiftsOf(lumaRow, m_shift, m_shifts);
        m_view(views.left.data(), row, width, shifts, m_leftDirection);
        m_view(views.right.data(), row, width, shifts, -m_leftDirection);
    }

 private:
    ShiftMap& m_map;
    std::vector<int> m_shifts;
    unsigned m_shift;
    int m_leftDirection;
    decltype(&ViewRow<Sample>) m_view;
};

void JoinPixels(Rgba32* row, unsigned width, const std::uint32_t* __restrict left,
                const std::uint32_t* __restrict right) {
    for (unsigned x = 0; x < width; ++x) {
        const auto red = std::int32_t(Red(right[x]));
        const auto held = std::uint32_t(red + HeldBack(std::int32_t(Red(left[x])) - red));
        StoreWord(row + x, WithAlphaOf(LoadWord(row + x), Blue(right[x]), Green(right[x]), held));
    }
}

int RedOf(int luma, int v) { return HeldBack((298 * luma + 409 * v) >> 8); }

void JoinLuma(std::uint8_t* __restrict row, std::int16_t* __restrict differences, unsigned width,
              const std::uint8_t* __restrict left, const std::uint8_t* __restrict right,
              const std::int16_t* __restrict v) {
    for (unsigned x = 0; x < width; ++x) {
        differences[x] = std::int16_t(left[x] - right[x]);
        row[x] = ClampToByte(right[x] + (66 * RedOf(differences[x], v[x]) >> 8));
    }
}

// What sets the left eye's samples apart, under each of the luma positions that share them.
template <unsigned shift>
void Differences(std::int16_t* __restrict differences, unsigned width, const std::uint8_t* __restrict left,
                 const std::uint8_t* __restrict right) {
    for (std::size_t x = 0; x < width; ++x)
        for (unsigned k = 0; k < 1u << shift; ++k) differences[(x << shift) + k] = std::int16_t(left[x] - right[x]);
}

template <unsigned shift>
void JoinChroma(std::uint8_t* __restrict uRow, std::uint8_t* __restrict vRow, unsigned width,
                const std::uint8_t* __restrict u, const std::uint8_t* __restrict v,
                const std::int16_t* __restrict lumaDifferences, const std::int16_t* __restrict vDifferences) {
    for (std::size_t x = 0; x < width; ++x) {
        int sum = 0;
        for (unsigned k = 0; k < 1u << shift; ++k) sum += lumaDifferences[(x << shift) + k];
        const int red = RedOf(sum >> shift, vDifferences[x << shift]);
        uRow[x] = ClampToByte(u[x] - (38 * red >> 8));
        vRow[x] = ClampToByte(v[x] + (112 * red >> 8));
    }
}

void Anaglyph(const PackedView& picture, ShiftMap& map, bool swapped, InstructionSet set) {
    Eyes<Rgba32> eyes(map, picture.width, 0, swapped, set);
    Views<std::uint32_t> views(picture.width);
    for (unsigned y = 0; y < picture.height; ++y) {
        eyes.Look(y, picture.Row(y), picture.width, views);
        variantsOf<JoinPixels>.For(set)(picture.Row(y), picture.width, views.left.data(), views.right.data());
    }
}

template <unsigned shift>
void Anaglyph(const PlanarView& picture, ShiftMap& map, bool swapped, InstructionSet set) {
    const ComponentView &luma = picture.plane[0], &u = picture.plane[1], &v = picture.plane[2];
    const unsigned chromaWidth = std::min(ColumnsOf(picture, 1).size, ColumnsOf(picture, 2).size);
    const unsigned chromaHeight = chromaWidth ? std::min(u.height, v.height) : 0;
    Eyes<std::uint8_t> eyes(map, luma.width, 0, swapped, set), chromaEyes(map, chromaWidth, shift, swapped, set);
    Views<std::uint8_t> views(luma.width), uViews(chromaWidth), vViews(chromaWidth);
    // Beyond the picture the last difference continues, as far as the last chroma sample reaches or where there is
    // none.
    constexpr unsigned beyond = 4;
    std::vector<std::int16_t> lumaDifferences(luma.width + beyond), vDifferences(luma.width + beyond);
    for (unsigned y = 0; y < luma.height; ++y) {
        const unsigned row = y >> picture.rowShift;
        const bool firstOfRow = row << picture.rowShift == y && row < chromaHeight;
        if (firstOfRow) {
            chromaEyes.Look(y, u.Row(row), chromaWidth, uViews);
            chromaEyes.Look(y, v.Row(row), chromaWidth, vViews);
            variantsOf<Differences<shift>>.For(set)(vDifferences.data(), chromaWidth, vViews.left.data(),
                                                    vViews.right.data());
            const std::size_t end = std::size_t(chromaWidth) << shift;
            if (end < luma.width)
                std::fill(vDifferences.begin() + std::ptrdiff_t(end), vDifferences.end(), vDifferences[end - 1]);
        }
        eyes.Look(y, luma.Row(y), luma.width, views);
        variantsOf<JoinLuma>.For(set)(luma.Row(y), lumaDifferences.data(), luma.width, views.left.data(),
                                      views.right.data(), vDifferences.data());
        if (!firstOfRow) continue;
        std::fill_n(&lumaDifferences[luma.width], beyond, lumaDifferences[luma.width - 1]);
        variantsOf<JoinChroma<shift>>.For(set)(u.Row(row), v.Row(row), chromaWidth, uViews.right.data(),
                                               vViews.right.data(), lumaDifferences.data(), vDifferences.data());
    }
}

void Anaglyph(const PlanarView& picture, ShiftMap& map, bool swapped, InstructionSet set) {
    WithConstantShift(picture.columnShift, [&](auto shift) { Anaglyph<shift>(picture, map, swapped, set); });
}

// Half as wide: each sample the mean of two.
template <class Sample>
void Squeeze(Sample* to, unsigned count, const ValueOf<Sample>* __restrict view, unsigned width) {
    const unsigned pairs = std::min(count, width / 2);
    for (std::size_t x = 0; x < pairs; ++x) Store(to + x, Mean(view[2 * x], view[2 * x + 1]));
    if (pairs < count) Store(to + pairs, view[width - 1]);
}

template <class Sample>
void SideBySide(const PlaneView<Sample>& plane, unsigned columnShift, unsigned rowShift, ShiftMap& map, bool swapped,
                InstructionSet set) {
    Eyes<Sample> eyes(map, plane.width, columnShift, swapped, set);
    Views<ValueOf<Sample>> views(plane.width);
    const auto squeeze = variantsOf<Squeeze<Sample>>.For(set);
    for (unsigned y = 0; y < plane.height; ++y) {
        Sample* const row = plane.Row(y);
        eyes.Look(y << rowShift, row, plane.width, views);
        squeeze(row, plane.width / 2, views.left.data(), plane.width);
        squeeze(row + plane.width / 2, plane.width - plane.width / 2, views.right.data(), plane.width);
    }
}

template <class Sample>
void StoreMeans(Sample* to, const ValueOf<Sample>* __restrict a, const ValueOf<Sample>* __restrict b, unsigned width) {
    for (unsigned x = 0; x < width; ++x) Store(to + x, Mean(a[x], b[x]));
}

template <class Sample>
void TopAndBottom(const PlaneView<Sample>& plane, const PlaneView<Sample>& from, unsigned columnShift,
                  unsigned rowShift, ShiftMap& map, bool swapped, InstructionSet set) {
    if (from.width < plane.width || from.height < plane.height) return;
    Eyes<Sample> eyes(map, plane.width, columnShift, swapped, set);
    Views<ValueOf<Sample>> first(plane.width), second(plane.width);
    const auto means = variantsOf<StoreMeans<Sample>>.For(set);
    const unsigned half = plane.height / 2;
    for (unsigned y = 0; y < plane.height - half; ++y) {
        const unsigned upper = 2 * y, lower = std::min(2 * y + 1, plane.height - 1);
        eyes.Look(upper << rowShift, from.Row(upper), plane.width, first);
        eyes.Look(lower << rowShift, from.Row(lower), plane.width, second);
        if (y < half) means(plane.Row(y), first.left.data(), second.left.data(), plane.width);
        means(plane.Row(half + y), first.right.data(), second.right.data(), plane.width);
    }
}

}  // namespace

CTrans2D3D::CTrans2D3D() : CSettingsEffect(effectName2D3D, properties) {}

void CTrans2D3D::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const int strength = std::clamp(m_settings.strength, 0, 100);
    const bool swapped = m_settings.swap != 0;
    const InstructionSet set = Instructions();
    // Only this output reads rows that are written by then.
    std::optional<FrameCopy> copy;
    if (m_settings.output == Trans2D3DSettings::topAndBottom) copy.emplace(*frame);
    ForFrame(
        [&](const PackedView& picture) {
            if (picture.width == 0 || picture.height == 0) return;
            ShiftMap map(picture.width, picture.height, strength, [&](unsigned x, unsigned y) {
                const Rgba32& p = picture.Row(y)[x];
                return (171 * p.red - 22 * p.green - 149 * p.blue) >> 8;
            });
            if (m_settings.output == Trans2D3DSettings::anaglyph) Anaglyph(picture, map, swapped, set);
            if (m_settings.output == Trans2D3DSettings::sideBySide) SideBySide(picture, 0, 0, map, swapped, set);
            if (m_settings.output == Trans2D3DSettings::topAndBottom)
                TopAndBottom(picture, copy->Of(picture), 0, 0, map, swapped, set);
        },
        [&](const PlanarView& picture) {
            const ComponentView& luma = picture.plane[0];
            if (luma.width == 0 || luma.height == 0) return;
            ShiftMap map(luma.width, luma.height, strength, [&](unsigned x, unsigned y) {
                const std::uint8_t *const u = picture.At(1, x, y), *const v = picture.At(2, x, y);
                return u && v ? *v - *u : 0;
            });
            if (m_settings.output == Trans2D3DSettings::anaglyph) return Anaglyph(picture, map, swapped, set);
            for (unsigned p = 0; p < picture.planes; ++p) {
                const unsigned columnShift = ColumnsOf(picture, p).shift, rowShift = RowsOf(picture, p).shift;
                const ComponentView& plane = picture.plane[p];
                if (m_settings.output == Trans2D3DSettings::sideBySide)
                    SideBySide(plane, columnShift, rowShift, map, swapped, set);
                if (m_settings.output == Trans2D3DSettings::topAndBottom)
                    TopAndBottom(plane, copy->Of(plane, p), columnShift, rowShift, map, swapped, set);
            }
        },
        *frame);
}

}  // namespace AVBased
