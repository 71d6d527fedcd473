#pragma once

#include <cstdint>
#include <span>

#include "dvd_effects/canvas/laying.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// What a pixel of a warp map says: coveragePanel inside the panel, 9 down to 0 in its soft border.
inline constexpr unsigned char coveragePanel = 10;

/// The planes that CondinateChange fills, of a panel as large as the layer that goes through it.
struct WarpPlanes {
    const unsigned char* coverage;
    const int *sourceColumns, *sourceRows;
    unsigned width, height;
};

/// A frame on which a menu is composed: the one place where anything is blended.
///
/// Where a layer covers a pixel with a of 255, the pixel becomes (pixel * (255 - a) + layer * a) / 255, to the nearest.
/// A chroma sample does the same with the sums over all luma positions that it serves; what the layer does not reach
/// counts as uncovered, and a position beyond the picture's odd edge as the last one before it. An alpha plane, and the
/// alpha of a packed frame, becomes a + alpha * (255 - a) / 255, and a pixel that is not opaque weighs by its alpha,
/// so that a layer keeps its own colours on a transparent frame. Anything outside the frame is left out, at any
/// 32-bit position; padding stays.
class Canvas {
 public:
    /// Whether frames of this format can be drawn on.
    static bool Takes(IRawVideoFrame& frame);

    /// `frame` is borrowed, and of a format that a canvas takes. With a watcher, which is borrowed too, layers are
    /// shown to it and not drawn; those that show nothing by their place or opacity are left out.
    Canvas(IRawVideoFrame& frame, InstructionSet set, const LayingWatcher* watcher = nullptr)
        : m_frame(frame), m_set(set), m_watcher(watcher) {}

    IRawVideoFrame& Frame() const { return m_frame; }
    unsigned Width() const;
    unsigned Height() const;

    /// Transparent black: packed 0; luma 16, chroma 128, alpha 0.
    void Clear();
    /// Puts a picture of the canvas's own format at (x, y), which is moved up and left to the chroma grid.
    void Copy(IRawVideoFrame& picture, unsigned x = 0, unsigned y = 0);
    /// Lays a layer with its top-left corner at (x, y). `opacity` scales its coverage.
    void Lay(const Layer& layer, std::int32_t x, std::int32_t y, std::uint8_t opacity = 255);
    /// Lays a layer through a warp map whose top-left corner is at (x, y). Coverage 10 of the map shows the layer as it
    /// is, 9 down to 0 let it fade in ten steps; a pixel that asks for a place outside the layer shows nothing.
    void LayWarped(const Layer& layer, const WarpPlanes& map, std::int32_t x, std::int32_t y,
                   std::uint8_t opacity = 255);

    /// Lays a layer with its corners at any four places: scaled, turned, in perspective, in parts of pixels. Colours
    /// are interpolated between neighbours, edges are smooth. Corners that are not finite, enclose nothing or are not
    /// convex show nothing. At whole pixels, unturned and in its own size, a layer comes out as from Lay. Nothing is
    /// drawn outside the window. What lies under covers may be left out: the caller lays something there that hides it.
    void LayTransformed(const Layer& layer, const Placement& placement, std::uint8_t opacity = 255,
                        const Box& window = everything, std::span<const Cover> covers = {});

 private:
    void Watch(const Layer& layer, FrameSize size, std::int32_t x, std::int32_t y, std::uint8_t opacity,
               const WarpPlanes* map) const;

    IRawVideoFrame& m_frame;
    InstructionSet m_set;
    const LayingWatcher* m_watcher;
};

}  // namespace AVBased
