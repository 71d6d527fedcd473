#pragma once

#include <cstdint>

extern "C" {
#include <libavfilter/avfilter.h>
}

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// Turns pictures upright as their display matrix (or a photograph's orientation tag) says, so that an effect's
/// coordinates mean what the viewer sees. The picture itself is turned, the matrix is not carried on.
class Orientation {
 public:
    /// `frame` is the input's first; its own matrix goes before the stream's.
    void Prepare(const AVFrame& frame, const AVStream& stream);
    void Apply(FramePtr& frame);

 private:
    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    };

    std::unique_ptr<AVFilterGraph, FreeGraph> m_graph;
    AVFilterContext *m_in = nullptr, *m_out = nullptr;
};

}  // namespace Nifikral
