#pragma once

#include <deque>
#include <vector>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

/// What pictures are set in, from the inside outwards.
struct MountStyle {
    struct Rim {
        unsigned width;
        Colour colour;
    };
    Colour ground;  ///< seen through a picture's transparent parts
    std::vector<Rim> rims;
    unsigned shadowRadius, shadowDrop;
    Colour shadow;
    void (*cut)(const Layer& layer) = nullptr;  ///< to the outline of the picture, and of its rims; none: as it is
};

/// Sets pictures in mounts of one style. Every frame of a video needs one, so that those made last are kept, one for
/// every size of picture.
class PictureMounts {
 public:
    /// Sets a picture in its mount, which makes it larger by the same on all sides.
    void Set(Layer& picture, LayerKind kind, const MountStyle& style);

 private:
    static constexpr std::size_t mostKept = 16;
    // The picture keeps the coverage of `shape`, in the middle of `frame`.
    struct Mount {
        LayerKind kind;
        FrameSize size;
        Layer frame, shape;
    };

    std::deque<Mount> m_made;
};

}  // namespace AVBased
