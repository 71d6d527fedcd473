#pragma once

#include <optional>
#include <string>

#include "host/media/filter_graph.h"

namespace Nifikral {

/// How the pictures of an input are changed before anything else sees them, as asked for on the command line. Empty
/// texts leave them as they are.
struct Preparation {
    std::string crop;   ///< WxH+X+Y or WxH, of the upright picture; each a number of pixels or a share ("50%")
    std::string scale;  ///< WxH, W, xH or a share, of what is cropped
    std::string rate;   ///< frames a second

    bool IsAny() const { return !crop.empty() || !scale.empty() || !rate.empty(); }
};

/// Crops and scales pictures. A side that is not given follows from the other; for videos, which want it so, to an even
/// number. Where both are given and change the picture's shape, its pixels are no longer square, so that players show
/// it in its own. Interlaced pictures stay so. Threads: one at a time.
class Reshaper {
 public:
    /// For pictures like `first`, whose pixels have the shape `pixelAspect` (0/1: not known). Throws usage errors.
    Reshaper(const Preparation& preparation, const AVFrame& first, AVRational pixelAspect, bool evenSides);

    bool IsNeeded() const { return !m_filters.empty(); }
    AVRational PixelAspect() const { return m_pixelAspect; }
    void Apply(FramePtr& frame);

    /// The same for another thread.
    Reshaper(const Reshaper& other) : m_filters(other.m_filters), m_pixelAspect(other.m_pixelAspect) {}
    Reshaper& operator=(const Reshaper&) = delete;

 private:
    std::string m_filters;
    AVRational m_pixelAspect;
    std::optional<FilterGraph> m_graph;  // made for pictures of the format and size that come
    int m_format = -1, m_width = 0, m_height = 0;
};

}  // namespace Nifikral
