#include "effects/geometry/VideoWallEffect.h"

#include <cmath>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "effects/base/fixed_point.h"
#include "effects/base/row_loops.h"
#include "effects/base/streaming_stores.h"
#include "effects/geometry/row_sampler.h"

namespace AVBased {
namespace {

constexpr Property<VideoWallSettings> videoWallProperties[] = {
    {"videowall_horiTiles", "3", &VideoWallSettings::horiTiles},
    {"videowall_verTiles", "3", &VideoWallSettings::verTiles},
};

// One axis of the wall: so many positions make a tile, and tile position i shows picture position i x step / 256.
struct TileAxis {
    unsigned size, tile, step;

    TileAxis(unsigned pictureSize, double tiles)
        : size(pictureSize),
          tile(TruncateToUint32((pictureSize << 8) / tiles) >> 8),
          step(TruncateToUint32(tiles * 256)) {}
    unsigned Shrunk(unsigned i) const { return i * step >> 8; }
};

// What the samples of one axis of a plane hold while positions are copied to positions: the sample that each showed at
// first. Shared samples make copies meet what earlier ones have left.
class Shown {
 public:
    explicit Shown(const SharedAxis& axis) : m_axis(axis), m_sample(axis.size) {
        std::iota(m_sample.begin(), m_sample.end(), 0u);
    }
    void Copy(unsigned position, unsigned from) {
        const unsigned sample = position >> m_axis.shift;
        if (sample < m_axis.size) m_sample[sample] = m_sample[Near(from)];
    }
    /// The sample nearest to the one that serves a position.
    unsigned Near(unsigned position) const { return std::min(position >> m_axis.shift, m_axis.size - 1); }
    void Shrink(const TileAxis& tiles) {
        for (unsigned i = 0; i < tiles.tile; ++i) Copy(i, tiles.Shrunk(i));
    }
    // Deliberate: after the first tile the count runs from 1 to the tile width, where position 0 has its copy.
    void RepeatAcross(const TileAxis& tiles) {
        for (unsigned x = tiles.tile, from = 0; x < tiles.size; ++x) {
            Copy(x, from);
            from = from == tiles.tile ? 1 : from + 1;
        }
    }
    void RepeatDown(const TileAxis& tiles) {
        for (unsigned y = tiles.tile, from = 0; y < tiles.size; ++y) {
            Copy(y, from);
            if (++from == tiles.tile) from = 0;
        }
    }
    const AxisMap& Map() const { return m_sample; }

 private:
    SharedAxis m_axis;
    AxisMap m_sample;
};

// Columns of a finished row of tiles as columns of the row that it is made from. Each of the `times` luma rows that
// share the row repeats the tile; `inPlace` each of them has shrunk it as well, otherwise the last has, from elsewhere.
AxisMap RowOfTiles(const SharedAxis& axis, const TileAxis& across, unsigned times, bool inPlace) {
    Shown shrunk(axis), repeated(axis);
    for (unsigned n = 0; n < times; ++n) {
        if (inPlace) shrunk.Shrink(across);
        repeated.RepeatAcross(across);
    }
    AxisMap map = shrunk.Map();
    if (!inPlace)
        for (unsigned i = 0; i < across.tile && i >> axis.shift < axis.size; ++i)
            map[i >> axis.shift] = shrunk.Near(across.Shrunk(i));
    AxisMap result = repeated.Map();
    for (unsigned& column : result) column = map[column];
    return result;
}

// Makes rows of tiles: samples the first tile, and whatever else no tile before it holds, then repeats.
template <class Sample>
class TileRow {
 public:
    TileRow(AxisMap map, unsigned tile, unsigned width, InstructionSet set)
        : m_tile(tile), m_width(width), m_sampler(Unrepeated(std::move(map), tile), width, set) {}

    void operator()(Sample* to, const Sample* from) const {
        m_sampler(to, from);
        for (unsigned x = m_sampler.size(); x < m_width; x += m_tile)
            std::copy_n(to + (x - m_tile), std::min(m_tile, m_width - x), to + x);
    }

 private:
    static AxisMap Unrepeated(AxisMap map, unsigned tile) {
        while (tile && map.size() > tile && map.back() == map[map.size() - 1 - tile]) map.pop_back();
        return map;
    }

    unsigned m_tile, m_width;
    RowSampler<Sample> m_sampler;
};

// Asks for a row that is read soon.
template <class Sample>
void Fetch(const Sample* row, unsigned width) {
    for (unsigned x = 0; x < width; x += cacheLine / sizeof(Sample)) __builtin_prefetch(row + x);
}

template <class Sample>
void BuildWall(const TileAxis& across, const TileAxis& down, const SharedAxis& columns, const SharedAxis& rows,
               const PlaneView<Sample>& plane, InstructionSet set) {
    if (columns.size == 0 || rows.size == 0) return;
    Shown shown(rows);
    // The row that the tile's row y shows.
    const auto sourceOf = [&](unsigned y) { return shown.Near(down.Shrunk(std::min(rows.Last(y), down.tile - 1))); };
    std::vector<Sample> own(columns.size);
    std::optional<TileRow<Sample>> tileRow;
    std::pair<unsigned, bool> kind{0, false};
    for (unsigned y = 0; across.tile && y < rows.size && rows.First(y) < down.tile; ++y) {
        const unsigned last = std::min(rows.Last(y), down.tile - 1);
        const unsigned source = sourceOf(y);
        if (y + 2 < rows.size) Fetch(plane.Row(sourceOf(y + 2)), columns.size);
        const std::pair needed{last - rows.First(y) + 1, source == y};
        if (!tileRow || kind != needed) {
            tileRow.emplace(RowOfTiles(columns, across, needed.first, needed.second), across.tile >> columns.shift,
                            columns.size, set);
            kind = needed;
        }
        if (source == y) std::copy_n(plane.Row(y), columns.size, own.begin());
        (*tileRow)(plane.Row(y), source == y ? own.data() : plane.Row(source));
    }
    shown.RepeatDown(down);
    const StreamingStores stores;
    for (unsigned y = 0; y < rows.size; ++y)
        if (shown.Map()[y] != y)
            stores.Copy(plane.data + std::size_t(y) * plane.pitch,
                        plane.data + std::size_t(shown.Map()[y]) * plane.pitch, columns.size * sizeof(Sample));
}

}  // namespace

CWallVideoImageEffect::CWallVideoImageEffect() : CSettingsEffect(effectNameVideoWall, videoWallProperties) {}

void CWallVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const double across = m_settings.horiTiles, down = m_settings.verTiles;
    if (!(across >= 1 && down >= 1 && std::isfinite(across) && std::isfinite(down))) return;
    ForEachPlane(*frame, Planes::Colours, [&](const auto& plane, const SharedAxis& columns, const SharedAxis& rows) {
        BuildWall({columns.lumaSize, across}, {rows.lumaSize, down}, columns, rows, plane, Instructions());
    });
}

}  // namespace AVBased
