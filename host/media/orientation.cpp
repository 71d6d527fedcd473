#include "host/media/orientation.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <cstring>
#include <sstream>
#include <string>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

// The matrix's upper left 2 x 2 part, which maps stored to shown coordinates:
// x' = acrossX * x + acrossY * y, y' = downX * x + downY * y.
struct Turn {
    std::int32_t acrossX = 1, downX = 0, acrossY = 0, downY = 1;
};

Turn ReadMatrix(const std::uint8_t* data) {
    std::int32_t matrix[9];
    std::memcpy(matrix, data, sizeof matrix);
    return {matrix[0], matrix[1], matrix[3], matrix[4]};
}

Turn FindTurn(const AVFrame& frame, const AVStream& stream) {
    constexpr std::size_t matrixBytes = 9 * sizeof(std::int32_t);
    if (const AVFrameSideData* const data = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX))
        if (data->size >= matrixBytes) return ReadMatrix(data->data);
    for (int i = 0; i < stream.nb_side_data; ++i)
        if (stream.side_data[i].type == AV_PKT_DATA_DISPLAYMATRIX && stream.side_data[i].size >= matrixBytes)
            return ReadMatrix(stream.side_data[i].data);
    return {};
}

// Quarter turns and mirrorings; in between, the picture stays as it is stored.
std::string Filters(const Turn& turn) {
    std::string filters;
    const auto add = [&](const char* filter) { filters.append(filters.empty() ? "" : ",").append(filter); };
    const bool upright = turn.acrossX && turn.downY && !turn.acrossY && !turn.downX;
    const bool lying = !turn.acrossX && !turn.downY && turn.acrossY && turn.downX;
    if (lying) add("transpose=cclock_flip");
    if ((upright && turn.acrossX < 0) || (lying && turn.acrossY < 0)) add("hflip");
    if ((upright && turn.downY < 0) || (lying && turn.downX < 0)) add("vflip");
    return filters;
}

}  // namespace

void Orientation::Prepare(const AVFrame& frame, const AVStream& stream) {
    const std::string filters = Filters(FindTurn(frame, stream));
    if (filters.empty()) return;
    m_graph = Require<decltype(m_graph)>(avfilter_graph_alloc());
    const AVRational pixel = frame.sample_aspect_ratio.num > 0 ? frame.sample_aspect_ratio : AVRational{1, 1};
    std::ostringstream source;
    source << "video_size=" << frame.width << "x" << frame.height << ":pix_fmt=" << frame.format
           << ":time_base=" << stream.time_base.num << "/" << stream.time_base.den << ":pixel_aspect=" << pixel.num
           << "/" << pixel.den;
    AVFilterInOut *inputs = avfilter_inout_alloc(), *outputs = avfilter_inout_alloc();
    int error = avfilter_graph_create_filter(&m_in, avfilter_get_by_name("buffer"), "in", source.str().c_str(), nullptr,
                                             m_graph.get());
    if (error >= 0)
        error = avfilter_graph_create_filter(&m_out, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                             m_graph.get());
    if (error >= 0 && inputs && outputs) {
        *outputs = {av_strdup("in"), m_in, 0, nullptr};
        *inputs = {av_strdup("out"), m_out, 0, nullptr};
        error = avfilter_graph_parse_ptr(m_graph.get(), filters.c_str(), &inputs, &outputs, nullptr);
    }
    if (error >= 0) error = avfilter_graph_config(m_graph.get(), nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (error < 0) throw HostError(ExitCode::Failed, "the picture cannot be turned upright: " + ErrorText(error));
}

void Orientation::Apply(FramePtr& frame) {
    if (!m_graph) return;
    FramePtr turned = NewFrame();
    av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    int error = av_buffersrc_add_frame(m_in, frame.get());
    if (error >= 0) error = av_buffersink_get_frame(m_out, turned.get());
    if (error < 0) throw HostError(ExitCode::Failed, "the picture cannot be turned upright: " + ErrorText(error));
    frame = std::move(turned);
}

}  // namespace Nifikral
