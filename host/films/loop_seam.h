#pragma once

#include <vector>

#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// Dissolves the last frames of a film's loop into those that lead to it, so that its first frame follows its last one
/// as it follows the frame before it. Threads: one at a time.
class LoopSeam {
 public:
    /// The loop is the film's frames from `begin` to before `end`; none where it begins at 0.
    LoopSeam(long long begin, long long end, AVRational frameRate);
    /// How many frames of such a film's end are dissolved, into as many before the loop.
    static long long LengthOf(long long begin, long long end, AVRational frameRate);

    /// The first frame before the loop that its end is dissolved into.
    long long Lead() const { return m_begin - m_length; }
    /// Whether it has all of these, so that any frame behind them may come next.
    bool HasLead() const;

    /// Takes the film's frames as they are made for the module in a format of that code: those before the loop first.
    void Close(AVFrame& frame, unsigned formatCode, long long number);

 private:
    long long m_begin, m_end, m_length;
    std::vector<FramePtr> m_before;  // copies of the last frames before the loop; null: not taken yet
};

}  // namespace Nifikral
