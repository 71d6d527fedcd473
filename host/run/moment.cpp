#include "host/run/moment.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

namespace Nifikral {

double Moment::InFrames(double frameRate, long long frames) const {
    const double count = inSeconds ? amount * frameRate : amount;
    return fromEnd ? double(frames) - count : count;
}

Moment ParseMoment(std::string_view text) {
    const std::string whole(text);
    Moment moment;
    moment.fromEnd = text.starts_with('-');
    if (moment.fromEnd) text.remove_prefix(1);
    moment.inSeconds = text.ends_with('s');
    if (moment.inSeconds) text.remove_suffix(1);
    constexpr double longest = 1e12;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, moment.amount, std::chars_format::fixed);
    const bool whollyRead = error == std::errc() && rest == end && !text.empty();
    if (!whollyRead || !(moment.amount >= 0 && moment.amount < longest) ||
        (!moment.inSeconds && moment.amount != std::trunc(moment.amount)))
        throw std::invalid_argument("\"" + whole + "\" is no time, such as 50 for frames or 2.5s for seconds");
    return moment;
}

}  // namespace Nifikral
