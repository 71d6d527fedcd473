#include "host/media/frame_range.h"

#include <charconv>

#include "host/base/errors.h"
#include "host/base/log.h"

namespace Nifikral {

std::string RangeText(const FrameRange& range) {
    return std::to_string(range.first) + "-" + std::to_string(range.last);
}

void ReportEnd(const FrameRange& range, const FrameRange& chunk, long long count, const std::string& name) {
    const std::string has = name + " has " + std::to_string(count) + " frames, 0 to " + std::to_string(count - 1);
    if (count <= range.first)
        throw HostError(ExitCode::Usage, "--frames lies past the end: " + has + "; choose among these");
    if (chunk.last != FrameRange::noEnd)
        throw HostError(ExitCode::Usage, "--chunk lies past the end: " + has + "; plan the chunks anew");
    if (range.last != FrameRange::noEnd) PrintWarning("--frames ends earlier: " + has);
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
