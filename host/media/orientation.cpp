#include "host/media/orientation.h"

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

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
    const AVRational pixel = frame.sample_aspect_ratio.num > 0 ? frame.sample_aspect_ratio : AVRational{1, 1};
    std::ostringstream source;
    source << "video_size=" << frame.width << "x" << frame.height << ":pix_fmt=" << frame.format
           << ":time_base=" << stream.time_base.num << "/" << stream.time_base.den << ":pixel_aspect=" << pixel.num
           << "/" << pixel.den;
    m_graph.emplace(AVMEDIA_TYPE_VIDEO, source.str(), filters, "the picture cannot be turned upright");
}

void Orientation::Apply(FramePtr& frame) {
    if (!m_graph) return;
    av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    m_graph->Put(*frame);
    frame = m_graph->Take();
}

}  // namespace Nifikral
