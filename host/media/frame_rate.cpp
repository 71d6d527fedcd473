#include "host/media/frame_rate.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

constexpr double lowest = 1, highest = 240;

}  // namespace

std::optional<AVRational> ParseFrameRate(const std::string& text) {
    const char *const begin = text.data(), *const end = begin + text.size();
    AVRational rate{0, 1};
    double number = 0;
    if (std::from_chars(begin, end, number).ptr == end && number >= lowest && number <= highest) {
        // Of low rates, the whole one is as near.
        const double whole = std::round(number), ntsc = whole * 1000 / 1001;
        const double tolerance = std::min(0.005, std::abs(number - whole));
        rate = std::abs(number - ntsc) < tolerance ? AVRational{int(whole) * 1000, 1001} : av_d2q(number, 100000);
    } else {
        const auto [slash, first] = std::from_chars(begin, end, rate.num);
        if (first != std::errc() || slash == end || *slash != '/') return std::nullopt;
        const auto [rest, second] = std::from_chars(slash + 1, end, rate.den);
        if (second != std::errc() || rest != end) return std::nullopt;
    }
    if (rate.num <= 0 || rate.den <= 0 || av_q2d(rate) < lowest || av_q2d(rate) > highest) return std::nullopt;
    return rate;
}

AVRational RequireFrameRate(const std::string& text) {
    const std::optional<AVRational> rate = ParseFrameRate(text);
    if (!rate) throw HostError(ExitCode::Usage, "--rate " + text + " is no frame rate; give " + frameRateForm);
    return *rate;
}

}  // namespace Nifikral
