#pragma once

#include <optional>

#include "host/media/filter_graph.h"

namespace Nifikral {

/// Turns pictures upright as their display matrix (or a photograph's orientation tag) says, so that an effect's
/// coordinates mean what the viewer sees. The picture itself is turned, the matrix is not carried on.
class Orientation {
 public:
    /// `frame` is the input's first; its own matrix goes before the stream's.
    void Prepare(const AVFrame& frame, const AVStream& stream);
    void Apply(FramePtr& frame);

 private:
    std::optional<FilterGraph> m_graph;
};

}  // namespace Nifikral
