#pragma once

#include <chrono>

namespace Nifikral {

/// How far a run has come is told on stderr.
enum class ProgressForm {
    Line,  ///< one line, redrawn a few times a second, when stderr is a terminal and the run is not quiet
    Json,  ///< a line for each picture, for programs
};
void SetProgressForm(ProgressForm form);

class Progress {
 public:
    /// `total`: how many are to come, 0 when unknown; `what` one of them is; `verb`: what is done to it.
    explicit Progress(long long total, const char* what = "frame", const char* verb = "");
    ~Progress();
    void Advance();

 private:
    using Clock = std::chrono::steady_clock;

    void Draw(double rate) const;
    void PrintJson(double rate) const;

    bool m_drawn;
    const char *m_what, *m_verb;
    long long m_total, m_done = 0;
    Clock::time_point m_begin = Clock::now(), m_lastDrawn = m_begin;
};

}  // namespace Nifikral
