#include "effects/geometry/block_gather.h"

#include <bit>
#include <cstring>

#include "effects/geometry/block_windows_avx2.h"

namespace AVBased {
namespace {

template <bool vectors, class Position>
void MoveEach(const Position* from, const std::uint8_t* source, const BlockPlace& to) {
#if defined(__x86_64__)
    if constexpr (vectors) return GatherEach(from, source, to);
#endif
    for (unsigned row = 0; row < blockRows; ++row) {
        std::uint8_t* const out = to.Row(row);
#pragma GCC unroll 8
        for (unsigned column = 0; column < blockColumns; ++column) out[column] = source[*from++];
    }
}

template <bool vectors>
void MoveBlock(const BlockPlan& plan, const SampleBlock& block, const std::uint8_t* source, std::uint8_t white,
               const BlockPlace& to) {
    const std::uint32_t* const data = &plan.data[block.data];
    const std::uint8_t* const first = source + block.base[0];
    switch (block.kind) {
#if defined(__x86_64__)
        case SampleBlock::Kind::Window:
            MoveWindows<true>(data, first, first, plan.pitch, to);
            break;
        case SampleBlock::Kind::Windows:
            MoveWindows<false>(data, first, source + block.base[1], plan.pitch, to);
            break;
#endif
        case SampleBlock::Kind::Near:
            MoveEach<vectors>(reinterpret_cast<const std::uint16_t*>(data), first, to);
            break;
        default:
            MoveEach<vectors>(data, source, to);
    }
    for (std::uint32_t bits = block.white; bits; bits &= bits - 1) {
        const unsigned bit = unsigned(std::countr_zero(bits));
        to.Row(bit / blockColumns)[bit % blockColumns] = white;
    }
}

// Rewrites the samples from `to` on, `rows` of them under each other. With vectors, gathers read the blocks whose
// samples lie further apart than a window.
template <bool vectors>
void MoveBand(const BlockPlan& plan, std::size_t band, const std::uint8_t* source, std::uint8_t white,
              const BlockPlace& to, unsigned rows) {
    const SampleBlock* const blocks = &plan.blocks[band * plan.bandBlocks];
    const Span span = plan.spans[band];
    const unsigned width = unsigned(plan.target.Width()), whole = rows == blockRows ? width / blockColumns : 0;
    unsigned b = span.begin;
    for (; b < std::min(span.end, whole); ++b)
        MoveBlock<vectors>(plan, blocks[b], source, white, {to.data + std::size_t(b) * blockColumns, to.pitch});
    for (; b < span.end; ++b) {
        std::uint8_t samples[blockSamples];
        MoveBlock<vectors>(plan, blocks[b], source, white, {samples, blockColumns});
        const unsigned x = b * blockColumns;
        for (unsigned row = 0; row < rows; ++row)
            std::memcpy(to.Row(row) + x, samples + row * blockColumns, std::min(blockColumns, width - x));
    }
}

}  // namespace

void GatherBlocks(const BlockPlan& plan, const ComponentView& plane, std::uint8_t white, InstructionSet set) {
    constexpr std::size_t readBeyond = 3;
    const auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(plan.pitch * plane.height + readBeyond);
    if (plan.source.xBegin < plan.source.xEnd)
        for (std::size_t y = plan.source.yBegin; y < plan.source.yEnd; ++y)
            std::memcpy(&copy[y * plan.pitch + plan.source.xBegin], plane.Row(y) + plan.source.xBegin,
                        plan.source.Width());
    const auto moveBand = set == InstructionSet::Avx2 ? variantsOf<MoveBand<hasAvx2Variants>>.For(set)
                                                      : variantsOf<MoveBand<false>>.For(set);
    for (std::size_t band = 0; band < plan.spans.size(); ++band) {
        const std::size_t y = plan.target.yBegin + band * blockRows;
        moveBand(plan, band, copy.get(), white, {plane.Row(y) + plan.target.xBegin, plane.pitch},
                 std::min(blockRows, unsigned(plan.target.yEnd - y)));
    }
}

}  // namespace AVBased
