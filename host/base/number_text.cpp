#include "host/base/number_text.h"

#include <charconv>
#include <cmath>

namespace Nifikral {

std::string NumberText(double value) {
    constexpr double longWinded = 1e15;
    char text[64];
    const auto format = std::abs(value) < longWinded ? std::chars_format::fixed : std::chars_format::general;
    const std::to_chars_result end = std::to_chars(std::begin(text), std::end(text), value, format);
    // A tiny number has more digits behind its point than there is room.
    if (end.ec != std::errc()) return {std::begin(text), std::to_chars(std::begin(text), std::end(text), value).ptr};
    return {std::begin(text), end.ptr};
}

}  // namespace Nifikral
