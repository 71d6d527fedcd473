#pragma once

#include <limits>
#include <string>

namespace Nifikral {

/// Frames of a run to take, counted from 0, both ends included.
struct FrameRange {
    static constexpr long long noEnd = std::numeric_limits<long long>::max();

    long long first = 0, last = noEnd;

    bool IsWhole() const { return first == 0 && last == noEnd; }
    /// Of a range with an end.
    long long Count() const { return last - first + 1; }
};

/// "A-B", of a range with an end.
std::string RangeText(const FrameRange& range);

/// For a run that asks for a range, and for a chunk of it, and whose input `name` has ended after `count` frames: warns
/// when the range goes on. Throws a usage error when it has not begun, or when the chunk goes on.
void ReportEnd(const FrameRange& range, const FrameRange& chunk, long long count, const std::string& name);

/// Reads "A-B", "A-" or "A"; "" means all. Throws a usage error for anything else.
FrameRange ParseRange(const std::string& text);

}  // namespace Nifikral
