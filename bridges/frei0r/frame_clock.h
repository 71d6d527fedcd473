#pragma once

#include <optional>

namespace Nifikral::Frei0r {

/// What a host's time counts.
enum class TimeUnit { Automatic, Seconds, Milliseconds, Frames, Calls };

/// Turns the times that hosts pass into numbers of frames. By the interface they are seconds; some hosts pass
/// milliseconds, some jump about, and some pass nothing that is a time.
class FrameClock {
 public:
    /// The number of the frame at `time`. A time that is negative, not a number or centuries away counts as missing;
    /// such calls are counted. Automatic: times are seconds unless the first step between two of them is above 1, and
    /// seconds for good once a step of at most 1 was seen.
    int FrameAt(double time, double framesPerSecond, TimeUnit unit);

 private:
    TimeUnit Guessed(double time);

    long long m_calls = 0;
    std::optional<double> m_previous;
    TimeUnit m_guess = TimeUnit::Automatic;
    bool m_sure = false;
};

}  // namespace Nifikral::Frei0r
