#include "bridges/frei0r/frame_clock.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Nifikral::Frei0r {
namespace {

// Hosts that have no time pass one before the start, or a mark for none that lies centuries away.
bool IsTime(double time) {
    constexpr double furthest = 1e10;
    return time >= 0 && time < furthest;
}

int Frame(double number) {
    constexpr double last = std::numeric_limits<int>::max();
    return int(std::lround(std::clamp(number, 0.0, last)));
}

}  // namespace

int FrameClock::FrameAt(double time, double framesPerSecond, TimeUnit unit) {
    if (unit == TimeUnit::Calls || !IsTime(time)) return Frame(double(m_calls++));
    if (unit == TimeUnit::Automatic) unit = Guessed(time);
    if (unit == TimeUnit::Frames) return Frame(time);
    const double seconds = unit == TimeUnit::Milliseconds ? time / 1000 : time;
    return Frame(seconds * framesPerSecond);
}

TimeUnit FrameClock::Guessed(double time) {
    // No film has frames as short as a millisecond, so a short step proves seconds. A long one may be a jump.
    const double step = m_previous ? time - *m_previous : 0;
    m_previous = time;
    if (step > 0 && step <= 1) {
        m_guess = TimeUnit::Seconds;
        m_sure = true;
    } else if (step > 1 && !m_sure) {
        m_guess = TimeUnit::Milliseconds;
    }
    return m_guess;
}

}  // namespace Nifikral::Frei0r
