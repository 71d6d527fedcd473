#include "host/run/time_window.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Nifikral {
namespace {

// The first frame that is not shown before a moment. A product such as 2.2 x 25 may come out a trifle too large.
long long FrameAt(const Moment& moment, double frameRate, long long frames) {
    constexpr double trifle = 1e-6;
    return (long long)std::ceil(moment.InFrames(frameRate, frames) - trifle);
}

}  // namespace

TimeWindow::TimeWindow(const std::string& text) : m_text(text) {
    // The dash between both ends: not one that opens a moment.
    const std::size_t dash = text.find('-', text.starts_with('-') ? 1 : 0);
    m_begin = ParseMoment(std::string_view(text).substr(0, dash));
    if (dash == std::string::npos) {
        if (m_begin.fromEnd || m_begin.inSeconds)
            throw std::invalid_argument("it has no end; give " + text + "- for what begins there");
        m_end = m_begin;
    } else if (dash + 1 < text.size()) {
        m_end = ParseMoment(std::string_view(text).substr(dash + 1));
    }
}

bool TimeWindow::CountsFromEnd() const { return m_begin.fromEnd || (m_end && m_end->fromEnd); }

FrameRange TimeWindow::Frames(double frameRate, long long frames) const {
    FrameRange range{std::max(0LL, FrameAt(m_begin, frameRate, frames)), FrameRange::noEnd};
    if (!m_end) return range;
    range.last = FrameAt(*m_end, frameRate, frames) - (m_end->inSeconds ? 1 : 0);
    return range;
}

}  // namespace Nifikral
