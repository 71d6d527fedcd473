#include "effects/neighbourhood/MosaicEffect.h"

#include <optional>

#include "effects/base/frame_views.h"
#include "effects/base/row_loops.h"
#include "effects/base/streaming_stores.h"

namespace AVBased {
namespace {

constexpr Property<MosaicSettings> mosaicProperties[] = {
    {"mosaic_x1", "0", &MosaicSettings::x1},     {"mosaic_x2", "0", &MosaicSettings::x2},
    {"mosaic_y1", "0", &MosaicSettings::y1},     {"mosaic_y2", "0", &MosaicSettings::y2},
    {"mosaic_step", "0", &MosaicSettings::step},
};

// Where blocks start: at left, left + side and so on below right, and the same downwards. At least one does.
struct Blocks {
    std::size_t left, right, top, bottom, side;

    std::size_t LastStart() const { return left + (right - 1 - left) / side * side; }
    std::size_t BandEnd(std::size_t bandTop) const { return std::min(bandTop + side, bottom); }
};

std::optional<Blocks> CutIntoBlocks(const MosaicSettings& settings, unsigned width, unsigned height,
                                    unsigned leastStep) {
    if (std::max(settings.x1, settings.x2) > width || std::max(settings.y1, settings.y2) > height) return {};
    if (settings.step < leastStep) return {};
    // Deliberate: of the four limits only two are rounded, and a step of 32 starts again at single pixels.
    const std::uint32_t side = 1u << settings.step % 32, whole = ~(side - 1);
    const Blocks blocks{std::min(settings.x1, settings.x2), std::max(settings.x1, settings.x2) & whole,
                        std::min(settings.y1, settings.y2), std::max(settings.y1, settings.y2) & whole, side};
    if (blocks.left >= blocks.right || blocks.top >= blocks.bottom) return {};
    return blocks;
}

// Samples of the plane's memory from (x, y) on, over all the rows that follow.
template <class Sample>
std::size_t SamplesFrom(const PlaneView<Sample>& plane, std::size_t x, std::size_t y) {
    const std::size_t begin = y * plane.pitch + x * sizeof(Sample), end = plane.ByteCount();
    return begin < end ? (end - begin) / sizeof(Sample) : 0;
}

void PrefetchStretch(const unsigned char* begin, std::size_t size) {
    for (std::size_t at = 0; at < size; at += cacheLine) PrefetchToWrite(begin + at, 0);
}

// A word whose first byte in memory is 255, and every one `distance` bytes further.
template <class Word>
Word EveryByte(std::size_t distance) {
    unsigned char bytes[sizeof(Word)] = {};
    for (std::size_t i = 0; i < sizeof bytes; i += distance) bytes[i] = 255;
    return std::bit_cast<Word>(bytes);
}

// Repeats the first byte of each word of a row in the bytes under `mask`.
template <class Word>
void SpreadFirstBytes(unsigned char* row, std::size_t words, Word mask) {
    const Word factor = Word(~Word(0)) / 255 & mask;
    for (std::size_t i = 0; i < words; ++i, row += sizeof(Word)) {
        Word word;
        std::memcpy(&word, row, sizeof word);
        word = Word((word & ~mask) | row[0] * factor);
        std::memcpy(row, &word, sizeof word);
    }
}

// All blocks of one row but the last.
void SpreadRow(Rgba32* row, const Blocks& blocks, std::size_t last) {
    for (std::size_t x = blocks.left; x < last; x += blocks.side) std::fill_n(row + x, blocks.side, Rgba32(row[x]));
}
void SpreadRow(std::uint8_t* row, const Blocks& blocks, std::size_t last) {
    const std::size_t count = (last - blocks.left) / blocks.side;
    if (blocks.side == 4) return SpreadFirstBytes(row + blocks.left, count, EveryByte<std::uint32_t>(1));
    if (blocks.side == 8) return SpreadFirstBytes(row + blocks.left, count, EveryByte<std::uint64_t>(1));
    for (std::size_t x = blocks.left; x < last; x += blocks.side) std::memset(row + x, row[x], blocks.side);
}

template <class Sample>
void Pixelate(const PlaneView<Sample>& plane, const Blocks& blocks) {
    const std::size_t last = blocks.LastStart(), size = (last - blocks.left) * sizeof(Sample);
    const std::size_t part = (size + blocks.side - 1) / blocks.side;
    const StreamingStores stores;
    for (std::size_t bandTop = blocks.top; bandTop < blocks.bottom; bandTop += blocks.side) {
        Sample* const first = plane.Row(bandTop);
        SpreadRow(first, blocks, last);
        const Sample lastColour = first[last];
        for (std::size_t y = bandTop; y < blocks.BandEnd(bandTop); ++y) {
            Sample* const row = plane.Row(y);
            auto* const bytes = reinterpret_cast<unsigned char*>(row + blocks.left);
            if (row != first) stores.Copy(bytes, reinterpret_cast<const unsigned char*>(first + blocks.left), size);
            // A part of the row that the next band starts with.
            PrefetchStretch(bytes + (blocks.side - (y - bandTop)) * plane.pitch + (y - bandTop) * part, part);
            // Deliberate: the last block keeps its width even past the row's end, so it may change the start of the
            // next row, which that row then covers again from `left` on.
            std::fill_n(row + last, std::min(blocks.side, SamplesFrom(plane, last, y)), lastColour);
        }
    }
}

// Copies the bytes under `mask` of each word of a row.
template <class Word>
void MergeRow(unsigned char* row, const unsigned char* from, std::size_t size, Word mask) {
    const auto merge = [=](std::size_t at) {
        Word word, change;
        std::memcpy(&word, row + at, sizeof word);
        std::memcpy(&change, from + at, sizeof change);
        word = Word((word & ~mask) | (change & mask));
        std::memcpy(row + at, &word, sizeof word);
    };
    std::size_t at = 0;
    for (; at + cacheLine <= size; at += cacheLine) {
        PrefetchToWrite(row + at);
        for (std::size_t k = 0; k < cacheLine; k += sizeof(Word)) merge(at + k);
    }
    for (; at < size; at += sizeof(Word)) merge(at);
}

// One chroma plane. Deliberate: only one sample for every fourth luma position is written, which leaves stripes where
// chroma is denser than that.
class ChromaBlocks {
 public:
    // `plane` may have another pitch than its owner reports; it has `bytes` bytes all the same.
    ChromaBlocks(const ComponentView& plane, std::size_t bytes, unsigned columnShift, const Blocks& blocks)
        : m_plane(plane), m_bytes(bytes), m_columnShift(columnShift), m_blocks(blocks) {}

    void FillRow(std::size_t y, std::size_t source) const {
        const std::size_t last = m_blocks.LastStart();
        if (m_blocks.side >= 4 && Position(last, y) <= m_bytes) {
            const std::size_t left = m_blocks.left >> m_columnShift;
            FillWholeBlocks(m_plane.Row(y) + left, m_plane.Row(source) + left, (last - m_blocks.left) >> m_columnShift);
            FillBlock(y, source, last);
        } else {
            for (std::size_t x = m_blocks.left; x <= last; x += m_blocks.side) FillBlock(y, source, x);
        }
    }

 private:
    std::size_t Position(std::size_t x, std::size_t y) const { return y * m_plane.pitch + (x >> m_columnShift); }

    void FillBlock(std::size_t y, std::size_t source, std::size_t start) const {
        const std::size_t from = Position(start, source), luma = std::min<std::size_t>(m_blocks.side, 4);
        if (from >= m_bytes) return;
        const std::uint8_t colour = m_plane.data[from];
        for (std::size_t x = start; x < start + m_blocks.side && Position(x, y) < m_bytes; x += luma)
            m_plane.data[Position(x, y)] = colour;
    }
    // `size` bytes, the first of a block at their start.
    void FillWholeBlocks(unsigned char* row, const unsigned char* first, std::size_t size) const {
        const std::size_t blockBytes = m_blocks.side >> m_columnShift, distance = std::size_t(4) >> m_columnShift;
        if (row == first) PrefetchStretch(row + prefetchAhead, size);
        if (row != first) {
            if (distance == 1) std::memcpy(row, first, size);
            if (distance == 2) MergeRow(row, first, size, EveryByte<std::uint16_t>(2));
            if (distance == 4) MergeRow(row, first, size, EveryByte<std::uint32_t>(4));
        } else if (blockBytes == 4) {
            SpreadFirstBytes(row, size / 4, EveryByte<std::uint32_t>(distance));
        } else if (blockBytes == 8) {
            SpreadFirstBytes(row, size / 8, EveryByte<std::uint64_t>(distance));
        } else {
            for (std::size_t start = 0; start < size; start += blockBytes)
                for (std::size_t x = distance; x < blockBytes; x += distance) row[start + x] = row[start];
        }
    }

    ComponentView m_plane;
    std::size_t m_bytes;
    unsigned m_columnShift;
    Blocks m_blocks;
};

void PixelateChroma(const ComponentView& plane, std::size_t bytes, unsigned columnShift, unsigned rowShift,
                    const Blocks& blocks) {
    const ChromaBlocks chroma(plane, bytes, columnShift, blocks);
    for (std::size_t bandTop = blocks.top; bandTop < blocks.bottom; bandTop += blocks.side)
        for (std::size_t y = bandTop >> rowShift; y <= (blocks.BandEnd(bandTop) - 1) >> rowShift; ++y)
            chroma.FillRow(y, bandTop >> rowShift);
}

void PixelatePacked(PackedView picture, const MosaicSettings& settings, unsigned leastStep) {
    if (const auto blocks = CutIntoBlocks(settings, picture.width, picture.height, leastStep))
        Pixelate(picture, *blocks);
}

void MosaicRgba32Effect(PackedView picture, const MosaicSettings& settings) { PixelatePacked(picture, settings, 1); }

// Deliberate: what writes several samples at a time leaves blocks of two alone.
void MosaicRgba32EffectMMX(PackedView picture, const MosaicSettings& settings) { PixelatePacked(picture, settings, 2); }

void MosaicComponentEffect(PlanarView picture, const MosaicSettings& settings) {
    const ComponentView &luma = picture.plane[0], &u = picture.plane[1], &v = picture.plane[2];
    const auto blocks = CutIntoBlocks(settings, luma.width, luma.height, 2);
    if (!blocks) return;
    Pixelate(luma, *blocks);
    PixelateChroma(u, u.ByteCount(), picture.columnShift, picture.rowShift, *blocks);
    PixelateChroma(WithPitchOf(u, v), v.ByteCount(), picture.columnShift, picture.rowShift, *blocks);
}

}  // namespace

CMosaicVideoImageEffect::CMosaicVideoImageEffect(unsigned cpuFeatures)
    : CSettingsEffect(effectNameMosaic, mosaicProperties),
      m_vectorised(cpuFeatures & (cpuFeatureMmx | cpuFeatureSse2)) {}

void CMosaicVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto packed = m_vectorised ? variantsOf<MosaicRgba32EffectMMX>.For(Instructions())
                                     : variantsOf<MosaicRgba32Effect>.For(Instructions());
    ForFrame([&](PackedView picture) { packed(picture, m_settings); },
             [&](PlanarView picture) { variantsOf<MosaicComponentEffect>.For(Instructions())(picture, m_settings); },
             *frame);
}

}  // namespace AVBased
