#include "effects/VideoWallEffect.h"

#include <cmath>

#include "effects/coordinate_table.h"
#include "effects/fixed_point.h"
#include "effects/property_table.h"

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

// In place, in scan order. Chroma is shared: positions of an odd tile read samples that their neighbours have written.
template <class Place>
void BuildWall(const TileAxis& across, const TileAxis& down, Place place) {
    for (unsigned y = 0; y < down.tile; ++y)
        for (unsigned x = 0; x < across.tile; ++x) place(x, y, {across.Shrunk(x), down.Shrunk(y)});
    for (unsigned y = 0; y < down.tile; ++y)
        // Deliberate: after the first tile the count runs from 1 to the tile width, where column 0 has its copy.
        for (unsigned x = across.tile, from = 0; x < across.size; ++x) {
            place(x, y, {from, y});
            from = from == across.tile ? 1 : from + 1;
        }
    for (unsigned y = down.tile, from = 0; y < down.size; ++y) {
        for (unsigned x = 0; x < across.size; ++x) place(x, y, {x, from});
        if (++from == down.tile) from = 0;
    }
}

}  // namespace

CWallVideoImageEffect::CWallVideoImageEffect() : CBasedVideoImageEffect(effectNameVideoWall) {
    DeclareProperties(*this, videoWallProperties);
}

void CWallVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(m_settings, videoWallProperties, name, node);
}

void CWallVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const auto [across, down] = m_settings;
    if (!(across >= 1 && down >= 1 && std::isfinite(across) && std::isfinite(down))) return;
    ForFrame(
        [&](const PackedView& picture) {
            BuildWall({picture.width, across}, {picture.height, down}, PlacePacked{picture, picture});
        },
        [&](const PlanarView& picture) {
            BuildWall({picture.plane[0].width, across}, {picture.plane[0].height, down}, PlacePlanar{picture, picture});
        },
        *frame);
}

}  // namespace AVBased
