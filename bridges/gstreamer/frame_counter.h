#pragma once

#include <gst/video/video.h>

#include <optional>

namespace Nifikral::Gst {

/// A stream's time in frames, as effects count it. Threads: the one that the stream runs in.
class FrameCounter {
 public:
    void BeginSegment() { *this = {}; }
    /// Where the rate may have changed.
    void ForgetLength() { m_length.reset(); }

    /// The number of a frame, from its time in the stream. Where there is no time or no rate, frames are counted from
    /// the segment's first one.
    int Position(const GstBuffer& buffer, const GstSegment& segment, const GstVideoInfo& info);
    /// The number of frames in the stream, from what feeds `sink` or else from the segment; queried once. None where
    /// neither knows.
    std::optional<int> Length(GstPad* sink, const GstSegment& segment, const GstVideoInfo& info);

 private:
    int m_next = 0;
    std::optional<int> m_length;
};

/// A time of `segment` in the whole stream's time; GST_CLOCK_TIME_NONE where it has none.
GstClockTime StreamTime(const GstSegment& segment, GstClockTime time);

}  // namespace Nifikral::Gst
