#pragma once

#include <chrono>

namespace Nifikral {

/// One line on stderr, redrawn a few times a second, when stderr is a terminal and the run is not quiet.
class Progress {
 public:
    /// `total`: how many are to come, 0 when unknown; `what` one of them is.
    explicit Progress(long long total, const char* what = "frame");
    ~Progress();
    void Advance();

 private:
    using Clock = std::chrono::steady_clock;

    bool m_shown;
    const char* m_what;
    long long m_total, m_done = 0;
    Clock::time_point m_begin = Clock::now(), m_drawn = m_begin;
};

}  // namespace Nifikral
