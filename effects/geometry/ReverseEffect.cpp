#include "effects/geometry/ReverseEffect.h"

#include "effects/base/row_loops.h"
#include "effects/base/shared_samples.h"
#include "effects/geometry/sample_exchange.h"
#include "effects/geometry/sample_exchange_avx2.h"

namespace AVBased {
namespace {

constexpr Property<ReverseSettings> reverseProperties[] = {
    {"mirror", "0", &ReverseSettings::mirror},
    {"vertical", "0", &ReverseSettings::vertical},
};

// Exchanges pieces of two stretches that do not overlap, and fetches what both will be followed by: for each the same
// place so many bytes ahead.
template <class Sample>
struct Exchanger {
    // Short, so that fetches come evenly: bursts of them wait for each other.
    static constexpr unsigned pieceBytes = 2 * cacheLine, piece = pieceBytes / sizeof(Sample);
    InstructionSet set;

    // The piece that begins at a's sample i.
    void operator()(Sample* a, Sample* b, unsigned count, unsigned i, bool reversed, std::ptrdiff_t aheadOfA,
                    std::ptrdiff_t aheadOfB) const {
        const unsigned length = std::min(piece, count - i);
        Sample *const first = a + i, *const second = reversed ? b + (count - i - length) : b + i;
        for (unsigned line = 0; line < pieceBytes; line += cacheLine) {
            PrefetchToWrite(first, aheadOfA + line);
            PrefetchToWrite(second, aheadOfB + line);
        }
        const auto& exchange = reversed ? variantsOf<ExchangeReversed<Sample>, ExchangeReversedAvx2<Sample>>
                                        : variantsOf<Exchange<Sample>>;
        exchange.For(set)(first, second, length);
    }
};

// Mirrors `count` rows that lie `apart` rows from one another, side by side: a core keeps more lines in flight on more
// streams.
template <class Sample>
void MirrorRows(const PlaneView<Sample>& plane, unsigned y, unsigned count, unsigned apart, InstructionSet set) {
    const Exchanger<Sample> exchangePieces{set};
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(plane.pitch);
    const unsigned half = plane.width / 2;
    for (unsigned i = 0; i < half; i += exchangePieces.piece)
        for (unsigned n = 0; n < count; ++n) {
            Sample* const row = plane.Row(y + std::size_t(n) * apart);
            exchangePieces(row, row + (plane.width - half), half, i, true, twoRows, twoRows);
        }
}

template <class Sample>
void Reverse(const PlaneView<Sample>& plane, bool mirror, bool vertical, InstructionSet set) {
    if (!vertical) {
        constexpr unsigned bands = 4;
        const unsigned bandRows = plane.height / bands;
        for (unsigned y = 0; y < bandRows; ++y) MirrorRows(plane, y, bands, bandRows, set);
        for (unsigned y = bandRows * bands; y < plane.height; ++y) MirrorRows(plane, y, 1, 0, set);
        return;
    }
    const Exchanger<Sample> exchangePieces{set};
    const std::ptrdiff_t twoRows = 2 * std::ptrdiff_t(plane.pitch);
    for (unsigned y = 0; y < plane.height / 2; ++y)
        for (unsigned i = 0; i < plane.width; i += exchangePieces.piece)
            exchangePieces(plane.Row(y), plane.Row(plane.height - 1 - y), plane.width, i, mirror, twoRows, -twoRows);
    if (mirror && plane.height % 2) MirrorRows(plane, plane.height / 2, 1, 0, set);
}

}  // namespace

void ReverseFrame(IRawVideoFrame& frame, bool mirror, bool vertical, InstructionSet set) {
    ForEachPlane(frame, Planes::All, [&](const auto& plane) { Reverse(plane, mirror, vertical, set); });
}

CReverseVideoImageEffect::CReverseVideoImageEffect() : CSettingsEffect(effectNameReverse, reverseProperties) {}

void CReverseVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const bool mirror = m_settings.mirror == 1, vertical = m_settings.vertical == 1;
    if (mirror || vertical) ReverseFrame(*frame, mirror, vertical, Instructions());
}

}  // namespace AVBased
