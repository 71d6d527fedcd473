#pragma once

#include <string>
#include <string_view>

namespace Nifikral {

/// A place in time as it is asked for: "50" frames or "2.5s" seconds from the beginning, or with "-" before it from
/// the end.
struct Moment {
    double amount = 0;
    bool inSeconds = false, fromEnd = false;

    /// In frames from the beginning of `frames`, not rounded. `frames` may be 0 unless it counts from the end.
    double InFrames(double frameRate, long long frames) const;
};

/// Throws std::invalid_argument, saying what is wrong.
Moment ParseMoment(std::string_view text);

}  // namespace Nifikral
