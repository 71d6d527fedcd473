#include "effects/geometry/Rotate90XEffect.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/frame_views.h"
#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"
#include "effects/geometry/ReverseEffect.h"
#include "effects/geometry/axis_scaling.h"

namespace AVBased {
namespace {

constexpr Property<Rotate90XSettings> rotate90XProperties[] = {
    {"EffectNameRotate90X_turns", "1", &Rotate90XSettings::turns},
};

// Where the turned picture lies on an axis that is longer than the other one by longer / shorter, in whole groups of
// 2^shift positions.
Span Fit(std::uint64_t longer, std::uint64_t shorter, unsigned shift) {
    const std::uint64_t group = 1u << shift;
    const std::uint64_t groups = (2 * shorter * shorter + group * longer) / (2 * group * longer);
    const unsigned size = unsigned(std::min(std::max<std::uint64_t>(groups, 1) * group, longer));
    const unsigned begin = (unsigned(longer) - size) / 2 >> shift << shift;
    return {begin, begin + size};
}

// The same on a plane whose samples each serve 2^shift positions.
Span OnPlane(Span span, unsigned length, unsigned shift, unsigned planeSize) {
    if (span.Size() == length) return {0, planeSize};
    const unsigned begin = std::min(span.begin >> shift, planeSize - 1);
    return {begin, begin + std::clamp(span.Size() >> shift, 1u, planeSize - begin)};
}

template <unsigned taps>
void MixRows(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t pitch,
             const std::uint16_t* weights, unsigned bytes) {
    std::uint16_t w[taps];
    std::copy_n(weights, taps, w);
    for (unsigned x = 0; x < bytes; ++x) {
        std::uint16_t sum = 128;
        for (unsigned t = 0; t < taps; ++t)
            sum = std::uint16_t(sum + std::uint16_t(from[t * pitch + x] * std::uint32_t(w[t])));
        to[x] = std::uint8_t(sum >> 8);
    }
}

void MixManyRows(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t pitch,
                 const AxisScaling::Taps& taps, unsigned bytes) {
    constexpr unsigned most = 256;
    for (unsigned begin = 0; begin < bytes; begin += most) {
        const unsigned count = std::min(most, bytes - begin);
        std::uint16_t sums[most];
        std::fill_n(sums, count, std::uint16_t(128));
        for (unsigned t = 0; t < taps.count; ++t) {
            const std::uint8_t* const row = from + t * pitch + begin;
            const std::uint16_t weight = taps.weights[t];
            for (unsigned x = 0; x < count; ++x)
                sums[x] = std::uint16_t(sums[x] + std::uint16_t(row[x] * std::uint32_t(weight)));
        }
        for (unsigned x = 0; x < count; ++x) to[begin + x] = std::uint8_t(sums[x] >> 8);
    }
}

// One row out of those of a plane that are `pitch` bytes apart.
void ScaleRow(std::uint8_t* to, const std::uint8_t* plane, std::size_t pitch, const AxisScaling::Taps& taps,
              unsigned bytes) {
    const std::uint8_t* const from = plane + taps.first * pitch;
    switch (taps.count) {
        case 1:
            std::memcpy(to, from, bytes);
            break;
        case 2:
            MixRows<2>(to, from, pitch, taps.weights, bytes);
            break;
        case 3:
            MixRows<3>(to, from, pitch, taps.weights, bytes);
            break;
        case 4:
            MixRows<4>(to, from, pitch, taps.weights, bytes);
            break;
        default:
            MixManyRows(to, from, pitch, taps, bytes);
    }
}

constexpr unsigned vectorBytes = 16;
template <class Number>
using Vector [[gnu::vector_size(vectorBytes)]] = Number;
template <class Number>
constexpr unsigned lanes = vectorBytes / sizeof(Number);

// The lanes of one half of two vectors, taken in turn.
template <class Number, unsigned half, int... lane>
Vector<Number> Interleave(Vector<Number> a, Vector<Number> b, std::integer_sequence<int, lane...>) {
    constexpr int count = int(lanes<Number>), begin = int(half) * count / 2;
    return __builtin_shufflevector(a, b, (begin + lane / 2 + lane % 2 * count)...);
}

// Turns a square of as many rows as a vector has lanes about its diagonal.
template <class Number>
void Transpose(std::uint8_t* to, std::size_t toPitch, const std::uint8_t* from, std::size_t fromPitch) {
    constexpr unsigned count = lanes<Number>;
    constexpr std::make_integer_sequence<int, int(count)> all{};
    Vector<Number> rows[count], mixed[count];
    for (unsigned i = 0; i < count; ++i) std::memcpy(&rows[i], from + i * fromPitch, vectorBytes);
    for (unsigned round = 1; round < count; round *= 2) {
        for (unsigned i = 0; i < count / 2; ++i) {
            mixed[2 * i] = Interleave<Number, 0>(rows[i], rows[i + count / 2], all);
            mixed[2 * i + 1] = Interleave<Number, 1>(rows[i], rows[i + count / 2], all);
        }
        std::copy_n(mixed, count, rows);
    }
    for (unsigned i = 0; i < count; ++i) std::memcpy(to + i * toPitch, &rows[i], vectorBytes);
}

std::size_t WholeLines(std::size_t bytes) { return (bytes + cacheLine - 1) / cacheLine * cacheLine; }

constexpr unsigned stripeLines = 16;

// What turning a plane needs beside it: how its rows become columns and its columns rows, some scaled rows, and all of
// them turned.
struct Turn {
    Span across, down;
    bool clockwise;
    AxisScaling rows, columns;
    std::size_t linePitch, turnedPitch;
    std::vector<std::uint8_t> lines;
    std::unique_ptr<std::uint8_t[]> turned;

    template <class Sample>
    Turn(const PlaneView<Sample>& plane, Span acrossPlane, Span downPlane, bool turnsClockwise)
        : across(acrossPlane),
          down(downPlane),
          clockwise(turnsClockwise),
          rows(plane.height, across.Size()),
          columns(plane.width, down.Size()),
          linePitch(WholeLines(plane.width * sizeof(Sample))),
          turnedPitch(WholeLines(across.Size() * sizeof(Sample))),
          lines(linePitch * stripeLines),
          turned(new std::uint8_t[turnedPitch * (plane.width + std::size_t(vectorBytes))]) {}
};

template <class Sample>
void TurnPlane(const PlaneView<Sample>& plane, Sample black, Turn& turn) {
    using Number = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint8_t>;
    constexpr unsigned side = lanes<Number>;
    const Span across = turn.across, down = turn.down;
    std::uint8_t *const lines = turn.lines.data(), *const turned = turn.turned.get();
    for (unsigned begin = 0; begin < across.Size(); begin += stripeLines) {
        const unsigned count = std::min(stripeLines, across.Size() - begin);
        for (unsigned i = 0; i < count; ++i) {
            const unsigned column = begin + i;
            ScaleRow(lines + i * turn.linePitch, plane.data, plane.pitch,
                     turn.rows[turn.clockwise ? across.Size() - 1 - column : column], plane.width * sizeof(Sample));
        }
        for (unsigned x = 0; x < plane.width; x += side)
            for (unsigned i = 0; i < count; i += side)
                Transpose<Number>(turned + x * turn.turnedPitch + (begin + i) * sizeof(Sample), turn.turnedPitch,
                                  lines + i * turn.linePitch + x * sizeof(Sample), turn.linePitch);
    }
    for (unsigned y = 0; y < plane.height; ++y) {
        Sample* const row = plane.Row(y);
        if (y < down.begin || y >= down.end) {
            std::fill_n(row, plane.width, black);
            continue;
        }
        const unsigned line = y - down.begin;
        std::fill_n(row, across.begin, black);
        ScaleRow(reinterpret_cast<std::uint8_t*>(row + across.begin), turned, turn.turnedPitch,
                 turn.columns[turn.clockwise ? line : down.Size() - 1 - line], across.Size() * sizeof(Sample));
        std::fill_n(row + across.end, plane.width - across.end, black);
    }
}

}  // namespace

CRotate90X::CRotate90X() : CSettingsEffect(effectNameRotate90X, rotate90XProperties) {}

void CRotate90X::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const unsigned turns = unsigned(m_settings.turns) % 4;
    if (turns == 0) return;
    if (turns == 2) return ReverseFrame(*frame, true, true, Instructions());
    const bool clockwise = turns == 1;
    // Luma's shape decides for all planes.
    const auto turnPlane = [&]<class Sample>(const PlaneView<Sample>& plane, unsigned width, unsigned height,
                                             unsigned columnShift, unsigned rowShift, bool sharesSamples,
                                             Sample black) {
        if (plane.width == 0 || plane.height == 0 || width == 0 || height == 0) return;
        const Span across = width > height ? Fit(width, height, columnShift) : Span{0, width},
                   down = height > width ? Fit(height, width, rowShift) : Span{0, height};
        Turn turn(plane, OnPlane(across, width, sharesSamples ? columnShift : 0, plane.width),
                  OnPlane(down, height, sharesSamples ? rowShift : 0, plane.height), clockwise);
        variantsOf<TurnPlane<Sample>>.For(Instructions())(plane, black, turn);
    };
    ForFrame(
        [&](const PackedView& picture) {
            turnPlane(picture, picture.width, picture.height, 0, 0, false, Rgba32{0, 0, 0, 255});
        },
        [&](const PlanarView& picture) {
            constexpr std::uint8_t black[] = {16, 128, 128, 255};
            for (unsigned p = 0; p < picture.planes; ++p)
                turnPlane(picture.plane[p], picture.plane[0].width, picture.plane[0].height, picture.columnShift,
                          picture.rowShift, IsChroma(p), black[p]);
        },
        *frame);
}

}  // namespace AVBased
