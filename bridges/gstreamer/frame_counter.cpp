#include "bridges/gstreamer/frame_counter.h"

#include <algorithm>

namespace Nifikral::Gst {
namespace {

std::optional<int> FramesIn(GstClockTime time, const GstVideoInfo& info) {
    const int rate = GST_VIDEO_INFO_FPS_N(&info), per = GST_VIDEO_INFO_FPS_D(&info);
    if (!GST_CLOCK_TIME_IS_VALID(time) || rate <= 0 || per <= 0) return std::nullopt;
    const guint64 frames = gst_util_uint64_scale_round(time, guint64(rate), guint64(per) * GST_SECOND);
    return int(std::min<guint64>(frames, G_MAXINT));
}

}  // namespace

GstClockTime StreamTime(const GstSegment& segment, GstClockTime time) {
    if (segment.format != GST_FORMAT_TIME || !GST_CLOCK_TIME_IS_VALID(time)) return GST_CLOCK_TIME_NONE;
    return gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, time);
}

int FrameCounter::Position(const GstBuffer& buffer, const GstSegment& segment, const GstVideoInfo& info) {
    const int position = FramesIn(StreamTime(segment, GST_BUFFER_PTS(&buffer)), info).value_or(m_next);
    m_next = position < G_MAXINT ? position + 1 : position;
    return position;
}

std::optional<int> FrameCounter::Length(GstPad* sink, const GstSegment& segment, const GstVideoInfo& info) {
    if (m_length) return m_length;
    gint64 duration = -1;
    if (gst_pad_peer_query_duration(sink, GST_FORMAT_TIME, &duration) && duration > 0)
        m_length = FramesIn(GstClockTime(duration), info);
    else
        m_length = FramesIn(StreamTime(segment, segment.stop), info);
    return m_length;
}

}  // namespace Nifikral::Gst
