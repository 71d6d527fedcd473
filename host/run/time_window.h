#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/media/frame_range.h"
#include "host/run/moment.h"

namespace Nifikral {

/// The part of the input in which an effect works. Frames that are named belong to it, both ends included, as in
/// --frames; seconds end just before the frame at their end, so that 0s-2s and 2s-4s share none.
class TimeWindow {
 public:
    /// "50-99", "2s-5s", "-1s-" (the last second), "-25-" (the last 25 frames) or "50".
    /// Throws std::invalid_argument, saying what is wrong.
    explicit TimeWindow(const std::string& text);
    /// From a frame on.
    explicit TimeWindow(long long begin) : m_text(std::to_string(begin) + "-"), m_begin{double(begin), false, false} {}

    const std::string& Text() const { return m_text; }
    /// Whether one of its ends counts from the end of the input.
    bool CountsFromEnd() const;
    bool IsOpen() const { return !m_end; }
    /// Its frames in an input of so many, 0 when not known; behind an open end lies FrameRange::noEnd. Empty windows
    /// have a last frame before the first.
    FrameRange Frames(double frameRate, long long frames) const;

 private:
    std::string m_text;
    Moment m_begin;
    std::optional<Moment> m_end;
};

}  // namespace Nifikral
