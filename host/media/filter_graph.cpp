#include "host/media/filter_graph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <utility>

#include "host/base/errors.h"

namespace Nifikral {

FilterGraph::FilterGraph(AVMediaType type, const std::string& source, const std::string& filters, std::string purpose)
    : m_purpose(std::move(purpose)), m_graph(Require<decltype(m_graph)>(avfilter_graph_alloc())) {
    const bool sound = type == AVMEDIA_TYPE_AUDIO;
    AVFilterInOut *inputs = avfilter_inout_alloc(), *outputs = avfilter_inout_alloc();
    int error = inputs && outputs ? 0 : AVERROR(ENOMEM);
    if (error >= 0)
        error = avfilter_graph_create_filter(&m_in, avfilter_get_by_name(sound ? "abuffer" : "buffer"), "in",
                                             source.c_str(), nullptr, m_graph.get());
    if (error >= 0)
        error = avfilter_graph_create_filter(&m_out, avfilter_get_by_name(sound ? "abuffersink" : "buffersink"), "out",
                                             nullptr, nullptr, m_graph.get());
    if (error >= 0) {
        *outputs = {av_strdup("in"), m_in, 0, nullptr};
        *inputs = {av_strdup("out"), m_out, 0, nullptr};
        error = avfilter_graph_parse_ptr(m_graph.get(), filters.c_str(), &inputs, &outputs, nullptr);
    }
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (error >= 0) error = avfilter_graph_config(m_graph.get(), nullptr);
    Check(error);
}

void FilterGraph::Put(AVFrame& frame) { Check(av_buffersrc_add_frame(m_in, &frame)); }
void FilterGraph::End(std::int64_t time) { Check(av_buffersrc_close(m_in, time, 0)); }

FramePtr FilterGraph::Take() {
    FramePtr frame = NewFrame();
    const int error = av_buffersink_get_frame(m_out, frame.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return nullptr;
    Check(error);
    return frame;
}

void FilterGraph::Check(int error) const {
    if (error < 0) throw HostError(ExitCode::Failed, m_purpose + ": " + ErrorText(error));
}

}  // namespace Nifikral
