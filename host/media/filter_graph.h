#pragma once

#include <memory>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
}

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// A chain of FFmpeg's filters between one input and one output. Its faults are thrown as "`purpose`: reason" with the
/// code 1. Threads: one at a time.
class FilterGraph {
 public:
    /// `source` describes what comes in, as the filter "buffer" wants it for pictures and "abuffer" for sound.
    FilterGraph(AVMediaType type, const std::string& source, const std::string& filters, std::string purpose);

    /// The frame's content goes over to the graph.
    void Put(AVFrame& frame);
    /// Nothing comes behind; `time` is the last frame's end.
    void End(std::int64_t time);
    /// The next frame that is ready; null when there is none before more is put in.
    FramePtr Take();

 private:
    struct Free {
        void operator()(AVFilterGraph* graph) const;
    };
    void Check(int error) const;

    std::string m_purpose;
    std::unique_ptr<AVFilterGraph, Free> m_graph;
    AVFilterContext *m_in = nullptr, *m_out = nullptr;
};

}  // namespace Nifikral
