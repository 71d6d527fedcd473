#pragma once

#include <chrono>
#include <string>

namespace Nifikral {

/// How far a run has come, on stderr.
enum class ProgressForm {
    Line,  ///< one line, redrawn a few times a second, when stderr is a terminal and the run is not quiet
    Json,  ///< a line for each picture, for programs
};
void SetProgressForm(ProgressForm form);

class Progress {
 public:
    /// `total`: how many are to come, 0 when unknown; `what` one of them is; `prefix` stands before it. Not
    /// `shown`: nothing is printed.
    explicit Progress(long long total, const char* what = "frame", std::string prefix = "", bool shown = true);
    ~Progress();
    void Advance();

 private:
    using Clock = std::chrono::steady_clock;

    void Draw(double rate) const;
    void PrintJson(double rate) const;

    bool m_shown, m_drawn;
    const char* m_what;
    std::string m_prefix;
    long long m_total, m_done = 0;
    Clock::time_point m_begin = Clock::now(), m_lastDrawn = m_begin;
};

/// How far a work of unlike parts has come: a share of the whole, and the time left.
class ShareProgress {
 public:
    ShareProgress();
    ~ShareProgress();
    /// From 0 to 1; goes no way back.
    void Show(double share);

 private:
    using Clock = std::chrono::steady_clock;

    bool m_drawn;
    double m_share = 0;
    Clock::time_point m_begin = Clock::now();
};

}  // namespace Nifikral
