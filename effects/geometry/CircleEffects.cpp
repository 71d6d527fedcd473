#include "effects/geometry/CircleEffects.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numeric>
#include <vector>

#include "effects/base/correct_rounding.h"
#include "effects/base/fixed_point.h"

namespace AVBased {
namespace {

constexpr Property<CircleSettings> rotateProperties[] = {
    {"rotate_r", "0", &CircleSettings::radius},
    {"rotate_x", "0", &CircleSettings::x},
    {"rotate_y", "0", &CircleSettings::y},
    {"rotate_scale", "0", &CircleSettings::scale},
};

constexpr char spherizeScaleName[] = "spherize_scale";
constexpr Property<CircleSettings> spherizeProperties[] = {
    {"spherize_r", "0", &CircleSettings::radius},
    {"spherize_x", "0", &CircleSettings::x},
    {"spherize_y", "0", &CircleSettings::y},
    {spherizeScaleName, "0", &CircleSettings::scale},
};

// Up to these, squares of distances do not wrap around and single-precision numbers hold positions and distances, so
// that what depends on a pixel's distances from the centre alone is the same in all four quarters of the circle and on
// both sides of their diagonals.
constexpr unsigned maxExactPosition = 1 << 15, maxExactRadius = 1 << 16;

bool IsExact(const CircleSettings& circle, const Box& box) {
    return std::max(box.xEnd, box.yEnd) <= maxExactPosition && circle.radius < maxExactRadius;
}

unsigned Distance(unsigned a, unsigned b) { return a < b ? b - a : a - b; }
std::size_t DistancesIn(unsigned begin, unsigned end, unsigned centre) {
    return std::max(Distance(begin, centre), Distance(end, centre)) + std::size_t(1);
}

// How many of the first `count` distances are inside; after the first one that is not, none is.
template <class Inside>
unsigned CountWhile(unsigned count, Inside isInside) {
    unsigned begin = 0;
    while (begin < count) {
        const unsigned middle = begin + (count - begin) / 2;
        if (isInside(middle))
            begin = middle + 1;
        else
            count = middle;
    }
    return begin;
}

// The pixels of a row that are less than `inside` columns away from the centre.
struct Chord {
    std::size_t begin, middle, end;  // indices of the row; left of the middle are those left of the centre

    Chord(const SourceRow& row, unsigned centre, unsigned inside) {
        const auto index = [&](unsigned x) {
            return std::size_t(std::clamp(x, row.xBegin, row.xBegin + row.count) - row.xBegin);
        };
        begin = index(inside ? centre - std::min(centre, inside - 1) : centre);
        end = index(centre + inside);
        middle = std::clamp(index(centre), begin, end);
    }
};

// Makes the pixels beside the chord their own sources.
void KeepBeside(const Chord& chord, const SourceRow& row) {
    const auto keep = [&](std::size_t begin, std::size_t end) {
        std::iota(row.columns + begin, row.columns + end, row.xBegin + unsigned(begin));
        std::fill(row.rows + begin, row.rows + end, row.y);
    };
    keep(0, chord.begin);
    keep(chord.end, row.count);
}

// Calls pixel(i, distance, side) for the pixels of the chord, where the side is -1 or 1.
template <class Pixel>
void ForEachInside(const Chord& chord, const SourceRow& row, std::size_t centre, const Pixel& pixel) {
    const std::size_t toLeft = centre - row.xBegin;
    for (std::size_t i = chord.begin; i < chord.middle; ++i) pixel(i, toLeft - i, -1);
    for (std::size_t i = chord.middle; i < chord.end; ++i) pixel(i, i - toLeft, 1);
}

float DistanceFrom(std::int32_t dx, std::int32_t dy) {
    return float(std::sqrt(double(WrappingSum(WrappingProduct(dx, dx), WrappingProduct(dy, dy)))));
}

// Negated, since the distance in a huge picture may be no number.
bool IsOutside(const CircleSettings& circle, float distance) { return !(float(circle.radius) > distance); }

float TwistAt(const CircleSettings& circle, float distance, float nx, float ny) {
    const double twist = double(float(circle.radius) - distance) * circle.scale;
    return float(2 * (std::sqrt(double(nx * nx + ny * ny)) - 0.7) * (twist / double(circle.radius)));
}

// The angles of the pixels of a row from the centre's column on.
void FillTwists(const CircleSettings& circle, unsigned dy, unsigned count, float* angles) {
    const CircleSettings own = circle;
    const float radius = float(own.radius), ny = float(dy) / radius;
    for (std::int32_t dx = 0; dx < std::int32_t(count); ++dx)
        angles[dx] = TwistAt(own, DistanceFrom(dx, std::int32_t(dy)), float(dx) / radius, ny);
}

// What depends on a pixel's distances from the centre alone: for a quarter of the circle, row by row as they are asked
// for.
template <class Value>
class Quarter {
 public:
    struct Row {
        const Value* values;
        unsigned count;  // from the centre's column to the rim
    };

    Quarter(std::size_t columns, std::size_t rows)
        : m_columns(columns),
          m_counts(rows, unknown),
          m_values(std::make_unique_for_overwrite<Value[]>(columns * rows)) {}

    // Calls fill(values), which returns how many there are, unless the row is known.
    template <class Fill>
    Row At(unsigned dy, const Fill& fill) {
        Value* const values = &m_values[dy * m_columns];
        if (m_counts[dy] == unknown) m_counts[dy] = fill(values);
        return {values, m_counts[dy]};
    }

 private:
    static constexpr unsigned unknown = UINT32_MAX;

    std::size_t m_columns;
    std::vector<unsigned> m_counts;  // for each row
    std::unique_ptr<Value[]> m_values;
};

struct Turns {
    const float *sines, *cosines;
    unsigned count;
};

// The turns of each row.
class QuarterTurns {
 public:
    QuarterTurns(const CircleSettings& circle, const Box& box, InstructionSet set)
        : m_circle(circle),
          m_set(set),
          m_angles(DistancesIn(box.xBegin, box.xEnd, circle.x)),
          m_quarter(2 * m_angles.size(), DistancesIn(box.yBegin, box.yEnd, circle.y)) {}

    Turns At(unsigned dy) {
        const auto isInside = [&](unsigned dx) {
            return !IsOutside(m_circle, DistanceFrom(std::int32_t(dx), std::int32_t(dy)));
        };
        const auto [values, count] = m_quarter.At(dy, [&](float* sines) {
            const unsigned inside = CountWhile(unsigned(m_angles.size()), isInside);
            variantsOf<FillTwists>.For(m_set)(m_circle, dy, inside, m_angles.data());
            FillSinesAndCosines(m_angles.data(), inside, sines, sines + m_angles.size(), m_set);
            return inside;
        });
        return {values, values + m_angles.size(), count};
    }

 private:
    CircleSettings m_circle;
    InstructionSet m_set;
    std::vector<float> m_angles;
    Quarter<float> m_quarter;
};

// No position in the reach of exact arithmetic comes near the limits of 32 bits; not-a-number becomes 0.
std::uint32_t TruncatedPosition(float position) { return std::uint32_t(std::int32_t(position > 0 ? position : 0)); }

void RotateRow(const CircleSettings& circle, const Turns& turns, const SourceRow& to) {
    const SourceRow row = to;
    const Turns turn = turns;
    const float radius = float(circle.radius), centreX = float(circle.x), centreY = float(circle.y);
    const float ny = (float(row.y) - centreY) / radius;
    const Chord chord(row, circle.x, turn.count);
    KeepBeside(chord, row);
    std::fill(row.stays, row.stays + chord.begin, true);
    std::fill(row.stays + chord.end, row.stays + row.count, true);
    ForEachInside(chord, row, circle.x, [&](std::size_t i, std::size_t dx, int side) {
        const float nx = float(std::int32_t(dx)) * float(side) / radius;
        row.columns[i] = TruncatedPosition(centreX + (nx * turn.cosines[dx] - ny * turn.sines[dx]) * radius);
        row.rows[i] = TruncatedPosition(centreY + (nx * turn.sines[dx] + ny * turn.cosines[dx]) * radius);
    });
}

std::int32_t FactorOf(const CircleSettings& circle, std::uint32_t distance2) {
    return TruncatedPower(std::sqrt(double(distance2)) / double(circle.radius), circle.scale, 256);
}

// Between exponents this small and 0, the powers of neighbouring squared distances may be rounded out of order.
constexpr double leastScale = 1e-3;

// The lens's factors over the squared distance: they only rise or only fall, so each fills one step.
class FactorSteps {
 public:
    FactorSteps(const CircleSettings& circle, std::uint32_t maxDistance2) {
        std::int32_t factor = FactorOf(circle, 0);
        for (std::uint32_t last = 0; last < maxDistance2; ++last) {
            std::uint32_t next = last;
            std::int32_t nextFactor = factor;
            const auto look = [&](std::uint32_t distance2) {
                const std::int32_t seen = FactorOf(circle, distance2);
                if (seen == factor) {
                    last = distance2;
                } else {
                    next = distance2;
                    nextFactor = seen;
                }
            };
            std::uint32_t ahead = 1;
            while (next <= last && last < maxDistance2) {
                look(last + std::min(ahead, maxDistance2 - last));
                ahead *= 2;
            }
            while (next > last + 1) look(last + (next - last) / 2);
            m_steps.push_back({last, factor});
            factor = nextFactor;
        }
        m_steps.push_back({UINT32_MAX, factor});
    }

    // For the pixels of a row from the centre's column on.
    void FillRow(std::uint32_t dy, unsigned count, std::int32_t* factors) const {
        const auto endsBefore = [](const Step& step, std::uint32_t distance2) { return step.last < distance2; };
        auto step = std::lower_bound(m_steps.begin(), m_steps.end(), dy * dy, endsBefore);
        for (std::uint32_t dx = 0; dx < count; ++dx) {
            const std::uint32_t distance2 = dx * dx + dy * dy;
            if (step->last < distance2) {
                // Usually the next step is the one; where many lie in between, leaps find it.
                std::ptrdiff_t leap = 1;
                const std::ptrdiff_t left = m_steps.end() - step;
                while (leap < left && step[leap].last < distance2) leap *= 2;
                step = std::lower_bound(step + leap / 2 + 1, step + std::min(leap + 1, left), distance2, endsBefore);
            }
            factors[dx] = step->factor;
        }
    }

 private:
    struct Step {
        std::uint32_t last;
        std::int32_t factor;
    };
    std::vector<Step> m_steps;
};

Source ScaledAbout(const CircleSettings& circle, std::int32_t dx, std::int32_t dy, std::int32_t factor) {
    return {circle.x + std::uint32_t(WrappingProduct(dx, factor) >> 8),
            circle.y + std::uint32_t(WrappingProduct(dy, factor) >> 8)};
}

// `count` factors from the centre's column to the rim.
void SpherizeRow(const CircleSettings& circle, const std::int32_t* factors, unsigned count, const SourceRow& to) {
    const SourceRow row = to;
    const CircleSettings own = circle;
    const Chord chord(row, own.x, count);
    KeepBeside(chord, row);
    ForEachInside(chord, row, own.x, [&](std::size_t i, std::size_t dx, int side) {
        const Source source = ScaledAbout(own, side * std::int32_t(dx), std::int32_t(row.y - own.y), factors[dx]);
        row.columns[i] = source.x;
        row.rows[i] = source.y;
    });
}

}  // namespace

std::optional<Box> CircleSettings::BoxIn(unsigned width, unsigned height) const {
    if (x > width || y > height) return std::nullopt;
    return Box{x > radius ? x - radius : 0, std::min(x + radius, width), y > radius ? y - radius : 0,
               std::min(y + radius, height)};
}

std::optional<Source> RotateMap::operator()(unsigned x, unsigned y) const {
    const float distance = DistanceFrom(std::int32_t(x - circle.x), std::int32_t(y - circle.y));
    if (IsOutside(circle, distance)) return std::nullopt;
    const float radius = float(circle.radius), centreX = float(circle.x), centreY = float(circle.y);
    const float nx = (float(x) - centreX) / radius, ny = (float(y) - centreY) / radius;
    const auto [sine, cosine] = SineAndCosineOf(TwistAt(circle, distance, nx, ny));
    return Source{TruncateToUint32(centreX + (nx * cosine - ny * sine) * radius),
                  TruncateToUint32(centreY + (nx * sine + ny * cosine) * radius)};
}

FillSourceRow RotateMap::Rows(const Box& box, InstructionSet set) const {
    if (!IsExact(circle, box)) return PixelByPixel(*this);
    return [circle = circle, turns = std::make_shared<QuarterTurns>(circle, box, set),
            fill = variantsOf<RotateRow>.For(set)](const SourceRow& row) {
        fill(circle, turns->At(Distance(row.y, circle.y)), row);
    };
}

std::optional<Source> SpherizeMap::operator()(unsigned x, unsigned y) const {
    const std::uint32_t dx = x - circle.x, dy = y - circle.y, distance2 = dx * dx + dy * dy;
    if (distance2 > circle.radius * circle.radius) return Source{x, y};
    return ScaledAbout(circle, std::int32_t(dx), std::int32_t(dy), FactorOf(circle, distance2));
}

FillSourceRow SpherizeMap::Rows(const Box& box, InstructionSet set) const {
    if (!IsExact(circle, box) || !(std::abs(circle.scale) >= leastScale)) return PixelByPixel(*this);
    const std::uint32_t radius2 = circle.radius * circle.radius;
    const auto columns = std::uint32_t(DistancesIn(box.xBegin, box.xEnd, circle.x)),
               rows = std::uint32_t(DistancesIn(box.yBegin, box.yEnd, circle.y));
    return [circle = circle, radius2, columns, factors = std::make_shared<Quarter<std::int32_t>>(columns, rows),
            steps = FactorSteps(circle, std::min(radius2, columns * columns + rows * rows)),
            fill = variantsOf<SpherizeRow>.For(set)](const SourceRow& row) {
        const unsigned dy = Distance(row.y, circle.y);
        const auto [values, count] = factors->At(dy, [&](std::int32_t* to) {
            const unsigned inside = CountWhile(columns, [&](unsigned dx) { return dx * dx + dy * dy <= radius2; });
            steps.FillRow(dy, inside, to);
            return inside;
        });
        fill(circle, values, count, row);
    };
}

CRotateVideoImageEffect::CRotateVideoImageEffect() : CTableEffect(effectNameRotate, rotateProperties) {}

void CRotateVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    const std::uint32_t radius = m_settings.radius;
    CTableEffect::OnSetProperty(name, node);
    const auto isNamed = [&](const Property<CircleSettings>& property) { return name == property.name; };
    // Deliberate: whichever property is set, its integer value is compared with the radius. Another centre or scale
    // that happens to equal it keeps the old table.
    if (std::ranges::any_of(rotateProperties, isNamed) && node.Value<std::uint32_t>() != radius)
        m_table.SetValid(false);
}

void CRotateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    using Effect = CRotateVideoImageEffect;
    Process(*this, *frame, &Effect::RotateRgba32Effect, &Effect::RotateComponentEffect,
            &Effect::ConverRotateRgba32Effect, &Effect::ConverRotateComponentEffect);
}

CSpherizeVideoImageEffect::CSpherizeVideoImageEffect() : CTableEffect(effectNameSpherize, spherizeProperties) {}

void CSpherizeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    const CircleSettings before = m_settings;
    CTableEffect::OnSetProperty(name, node);
    const auto moved = [&](auto member) { return m_settings.*member != before.*member; };
    // Deliberate: of a new scale only the integer that its slot begins with is compared, and with the old scale.
    if (name == spherizeScaleName
            ? double(node.Value<std::int32_t>()) != before.scale
            : moved(&CircleSettings::radius) || moved(&CircleSettings::x) || moved(&CircleSettings::y))
        m_table.SetValid(false);
}

void CSpherizeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    using Effect = CSpherizeVideoImageEffect;
    Process(*this, *frame, &Effect::SpherizeRgba32Effect, &Effect::SpherizeComponentEffect,
            &Effect::ConverSpherizeRgba32Effect, &Effect::ConverSpherizeComponentEffect);
}

}  // namespace AVBased
