#include "effects/geometry/Rotate90XEffect.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "effects/base/box.h"
#include "effects/base/frame_views.h"
#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"
#include "effects/base/streaming_stores.h"
#include "effects/geometry/ReverseEffect.h"
#include "effects/geometry/Rotate90XEffect_avx2.h"
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
void MixFewRows(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t pitch,
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
void MixRows(std::uint8_t* to, const std::uint8_t* from, std::size_t pitch, const AxisScaling::Taps& taps,
             unsigned bytes, std::ptrdiff_t) {
    if (taps.count == 1)
        std::memcpy(to, from, bytes);
    else if (taps.count == 2)
        MixFewRows<2>(to, from, pitch, taps.weights, bytes);
    else if (taps.count == 3)
        MixFewRows<3>(to, from, pitch, taps.weights, bytes);
    else if (taps.count == 4)
        MixFewRows<4>(to, from, pitch, taps.weights, bytes);
    else
        MixManyRows(to, from, pitch, taps, bytes);
}

void MixLines(std::uint8_t* to, std::ptrdiff_t step, const std::uint8_t* lines, const AxisScaling& scaling,
              unsigned begin, unsigned end) {
    for (unsigned i = begin; i < end; ++i) {
        const AxisScaling::Taps taps = scaling[i];
        MixRows(to + std::ptrdiff_t(i) * step, lines + taps.first * std::size_t(cacheLine), cacheLine, taps, cacheLine,
                0);
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

// The turned picture is made in stripes that are a cache line wide: what is turned and scaled at once stays in the
// nearer caches, and every line of the result is written whole.
template <class Sample>
constexpr unsigned stripeColumns = cacheLine / sizeof(Sample);

constexpr unsigned pieceBytes = 1024;  // of rows, turned and scaled while they are in the nearest cache
constexpr unsigned stripePitch = pieceBytes + vectorBytes;

// What turning a plane needs beside it: how its rows become columns and its columns rows, a piece of the rows of a
// stripe, these turned, and the result, stripe by stripe.
struct Turn {
    Span across, down;
    bool clockwise;
    AxisScaling rows, columns;
    std::vector<std::uint8_t> stripe;
    std::size_t stripeBytes;
    std::unique_ptr<std::uint8_t[]> turned, result;

    template <class Sample>
    Turn(const PlaneView<Sample>& plane, Span acrossPlane, Span downPlane, bool turnsClockwise)
        : across(acrossPlane),
          down(downPlane),
          clockwise(turnsClockwise),
          rows(plane.height, across.Size()),
          columns(plane.width, down.Size()),
          stripe(stripePitch * stripeColumns<Sample>),
          stripeBytes(down.Size() * std::size_t(cacheLine)),
          turned(new std::uint8_t[cacheLine * (plane.width + std::size_t(vectorBytes))]),
          result(new std::uint8_t[stripeBytes * ((across.Size() - 1) / stripeColumns<Sample> + 1)]) {}
};

template <class Sample>
void TransposeStripe(std::uint8_t* to, const std::uint8_t* from, std::size_t fromPitch, unsigned width) {
    using Number = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint8_t>;
    constexpr unsigned side = lanes<Number>;
    for (unsigned x = 0; x < width; x += side)
        for (unsigned i = 0; i < stripeColumns<Sample>; i += side)
            Transpose<Number>(to + x * std::size_t(cacheLine) + i * sizeof(Sample), cacheLine,
                              from + i * fromPitch + x * sizeof(Sample), fromPitch);
}

auto StripeTransposer(Rgba32, InstructionSet set) {
    return variantsOf<TransposeStripe<Rgba32>, TransposePixelsAvx2>.For(set);
}
auto StripeTransposer(std::uint8_t, InstructionSet set) { return variantsOf<TransposeStripe<std::uint8_t>>.For(set); }

// Replaces the plane by the result in the middle of black.
template <class Sample>
void WriteResult(const PlaneView<Sample>& plane, Sample black, const Turn& turn) {
    constexpr unsigned rowsAhead = 8;
    const StreamingStores stores;
    std::vector<Sample> line(plane.width, black);
    const auto write = [&](unsigned y) {
        stores.Copy(plane.Bytes(y), reinterpret_cast<const std::uint8_t*>(line.data()), plane.width * sizeof(Sample));
    };
    for (unsigned y = 0; y < turn.down.begin; ++y) write(y);
    for (unsigned y = turn.down.end; y < plane.height; ++y) write(y);
    for (unsigned y = turn.down.begin; y < turn.down.end; ++y) {
        const std::uint8_t* from = turn.result.get() + std::size_t(y - turn.down.begin) * cacheLine;
        unsigned x = turn.across.begin;
        for (; x + stripeColumns<Sample> <= turn.across.end; x += stripeColumns<Sample>, from += turn.stripeBytes) {
            PrefetchToRead(from, rowsAhead * cacheLine);
            std::memcpy(&line[x], from, cacheLine);
        }
        std::memcpy(line.data() + x, from, (turn.across.end - x) * sizeof(Sample));
        write(y);
    }
}

template <class Sample>
void TurnPlane(const PlaneView<Sample>& plane, Sample black, Turn& turn, InstructionSet set) {
    constexpr unsigned pieceColumns = pieceBytes / sizeof(Sample);
    const auto mixRows = variantsOf<MixRows, MixRowsAvx2>.For(set);
    const auto mixLines = variantsOf<MixLines, MixLinesAvx2>.For(set);
    const auto transpose = StripeTransposer(black, set);
    const unsigned width = turn.across.Size(), height = turn.down.Size();
    // The rows of the next line but one.
    const std::ptrdiff_t ahead = (turn.clockwise ? -4 : 4) * std::ptrdiff_t(plane.pitch);
    const std::ptrdiff_t step = (turn.clockwise ? 1 : -1) * std::ptrdiff_t(cacheLine);
    std::uint8_t *const stripe = turn.stripe.data(), *const turned = turn.turned.get(), *to = turn.result.get();
    if (!turn.clockwise) to += turn.stripeBytes - cacheLine;
    for (unsigned begin = 0; begin < width; begin += stripeColumns<Sample>, to += turn.stripeBytes) {
        const unsigned count = std::min(stripeColumns<Sample>, width - begin);
        for (unsigned x = 0, line = 0; x < plane.width; x += pieceColumns) {
            const unsigned columns = std::min(pieceColumns, plane.width - x);
            for (unsigned i = 0; i < count; ++i) {
                const AxisScaling::Taps taps = turn.rows[turn.clockwise ? width - 1 - begin - i : begin + i];
                mixRows(stripe + i * stripePitch, plane.Bytes(taps.first) + x * sizeof(Sample), plane.pitch, taps,
                        columns * sizeof(Sample), ahead);
            }
            transpose(turned + x * std::size_t(cacheLine), stripe, stripePitch, columns);
            const unsigned first = line;
            while (line < height && turn.columns[line].first + turn.columns[line].count <= x + columns) ++line;
            mixLines(to, step, turned, turn.columns, first, line);
        }
    }
    WriteResult(plane, black, turn);
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
        TurnPlane(plane, black, turn, Instructions());
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
