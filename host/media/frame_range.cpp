#include "host/media/frame_range.h"

#include <charconv>

#include "host/base/errors.h"

namespace Nifikral {

std::string RangeText(const FrameRange& range) {
    return std::to_string(range.first) + "-" + std::to_string(range.last);
}

FrameRange ParseRange(const std::string& text) {
    FrameRange range;
    if (text.empty()) return range;
    const char* const end = text.data() + text.size();
    const auto [dash, firstError] = std::from_chars(text.data(), end, range.first);
    bool good = firstError == std::errc() && range.first >= 0;
    if (good && dash == end) {
        range.last = range.first;
    } else if (good && *dash == '-' && dash + 1 != end) {
        const auto [rest, lastError] = std::from_chars(dash + 1, end, range.last);
        good = lastError == std::errc() && rest == end && range.last >= range.first;
    } else {
        good = good && *dash == '-';
    }
    if (!good)
        throw HostError(ExitCode::Usage, "--frames " + text + " is no range; give A-B with A up to B, counted from 0");
    return range;
}

}  // namespace Nifikral
