#include "host/run/time_window.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Nifikral {
namespace {

// The first frame that is not shown before a moment. A product such as 2.2 x 25 may come out a trifle too large.
long long FrameAt(const Moment& moment, double frameRate, long long frames) {
    constexpr double trifle = 1e-6;
    return std::max(0LL, (long long)std::ceil(moment.InFrames(frameRate, frames) - trifle));
}

}  // namespace

TimeWindow::TimeWindow(const std::string& text) : m_text(text) {
    // The dash between both ends: not one that opens a moment, unless nothing but the end follows it.
    std::size_t dash = text.find('-', text.starts_with('-') ? 1 : 0);
    if (dash == std::string::npos && text.starts_with('-')) dash = 0;
    if (text.starts_with("--")) dash = 0;
    if (text.empty() || text == "-") throw std::invalid_argument("there is no time in it");
    m_begin = dash == 0 ? Moment{} : ParseMoment(std::string_view(text).substr(0, dash));
    if (dash == std::string::npos)
        m_end = m_begin;
    else if (dash + 1 < text.size())
        m_end = ParseMoment(std::string_view(text).substr(dash + 1));
    if (dash == std::string::npos && m_end->inSeconds)
        throw std::invalid_argument("a single time has no length; give " + text + "- or " + text + "-END");
}

bool TimeWindow::CountsFromEnd() const { return m_begin.fromEnd || (m_end && m_end->fromEnd); }

FrameRange TimeWindow::Frames(double frameRate, long long frames) const {
    FrameRange range{FrameAt(m_begin, frameRate, frames), FrameRange::noEnd};
    if (!m_end) return range;
    range.last = (long long)std::ceil(m_end->InFrames(frameRate, frames) - 1e-6) - (m_end->inSeconds ? 1 : 0);
    return range;
}

}  // namespace Nifikral
