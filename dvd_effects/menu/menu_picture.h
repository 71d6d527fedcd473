#pragma once

#include <deque>

#include "dvd_effects/canvas/layer_maker.h"
#include "dvd_effects/menu/menu_records.h"

namespace AVBased {

/// What the frames of a menu have in common, and how they are worked on.
struct FrameKind {
    unsigned format = 0;
    FrameSize size;
    InstructionSet set = InstructionSet::Baseline;

    LayerKind Layers() const { return {format == formatRgba32, size.height}; }
    bool operator==(const FrameKind&) const = default;
};

/// A picture as it is drawn, and what makes it. Raises what LayerMaker raises.
struct MenuPicture {
    explicit MenuPicture(const FrameKind& kind);

    /// Makes the mask: a picture's brightness times its alpha.
    void MakeMask(IRawVideoFrame& frame, FrameSize size);
    /// Makes the layer, with the part of the mask that starts at a place of it; all of it without a mask.
    void Make(IRawVideoFrame& frame, FrameSize size, point_t inMask = {});
    /// Keeps the middle of a layer that is at least so large; of what is too high more from its upper end, where faces
    /// are.
    void CropTo(FrameSize box);
    /// Puts a layer, which is no larger, in the middle of a box before a blurred, darker enlargement of itself.
    void SetOnStage(FrameSize box);

    LayerKind kind;
    LayerMaker maker, maskMaker;
    InstructionSet set;
    Layer layer, mask;
    Layer spare;    // on a stage, memory for the next frame of a film
    FrameSize own;  // before it was finished
    bool isOpaque = false;
    point_t inBox;
    mutable std::deque<Layer> smaller;
};

}  // namespace AVBased
