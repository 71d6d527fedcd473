#include "host/media/filter_graph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <utility>

#include "host/base/errors.h"
#include "host/base/lazy_library.h"

namespace Nifikral {
namespace {

// It brings more libraries than all the rest of FFmpeg.
struct Library {
    LazyLibrary library{"libavfilter.so." AV_STRINGIFY(LIBAVFILTER_VERSION_MAJOR)};
    Lazy<decltype(avfilter_get_by_name)> getByName{library, "avfilter_get_by_name"};
    Lazy<decltype(avfilter_graph_alloc)> allocate{library, "avfilter_graph_alloc"};
    Lazy<decltype(avfilter_graph_config)> configure{library, "avfilter_graph_config"};
    Lazy<decltype(avfilter_graph_create_filter)> createFilter{library, "avfilter_graph_create_filter"};
    Lazy<decltype(avfilter_graph_free)> free{library, "avfilter_graph_free"};
    Lazy<decltype(avfilter_graph_parse_ptr)> parse{library, "avfilter_graph_parse_ptr"};
    Lazy<decltype(avfilter_inout_alloc)> allocateEnds{library, "avfilter_inout_alloc"};
    Lazy<decltype(avfilter_inout_free)> freeEnds{library, "avfilter_inout_free"};
    Lazy<int(AVFilterContext*, AVFrame*)> get{library, "av_buffersink_get_frame"};
    Lazy<int(AVFilterContext*, AVFrame*)> add{library, "av_buffersrc_add_frame"};
    Lazy<decltype(av_buffersrc_close)> close{library, "av_buffersrc_close"};
};

const Library& Filters() {
    static const Library library;
    return library;
}

}  // namespace

void FilterGraph::Free::operator()(AVFilterGraph* graph) const { Filters().free(&graph); }

FilterGraph::FilterGraph(AVMediaType type, const std::string& source, const std::string& filters, std::string purpose)
    : m_purpose(std::move(purpose)), m_graph(Require<decltype(m_graph)>(Filters().allocate())) {
    const bool sound = type == AVMEDIA_TYPE_AUDIO;
    AVFilterInOut *inputs = Filters().allocateEnds(), *outputs = Filters().allocateEnds();
    int error = inputs && outputs ? 0 : AVERROR(ENOMEM);
    if (error >= 0)
        error = Filters().createFilter(&m_in, Filters().getByName(sound ? "abuffer" : "buffer"), "in", source.c_str(),
                                       nullptr, m_graph.get());
    if (error >= 0)
        error = Filters().createFilter(&m_out, Filters().getByName(sound ? "abuffersink" : "buffersink"), "out",
                                       nullptr, nullptr, m_graph.get());
    if (error >= 0) {
        *outputs = {av_strdup("in"), m_in, 0, nullptr};
        *inputs = {av_strdup("out"), m_out, 0, nullptr};
        error = Filters().parse(m_graph.get(), filters.c_str(), &inputs, &outputs, nullptr);
    }
    Filters().freeEnds(&inputs);
    Filters().freeEnds(&outputs);
    if (error >= 0) error = Filters().configure(m_graph.get(), nullptr);
    Check(error);
}

void FilterGraph::Put(AVFrame& frame) { Check(Filters().add(m_in, &frame)); }
void FilterGraph::End(std::int64_t time) { Check(Filters().close(m_in, time, 0)); }

FramePtr FilterGraph::Take() {
    FramePtr frame = NewFrame();
    const int error = Filters().get(m_out, frame.get());
    if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return nullptr;
    Check(error);
    return frame;
}

void FilterGraph::Check(int error) const {
    if (error < 0) throw HostError(ExitCode::Failed, m_purpose + ": " + ErrorText(error));
}

}  // namespace Nifikral
