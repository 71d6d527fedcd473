#include "host/base/colour_text.h"

extern "C" {
#include <libavutil/parseutils.h>
}

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>

#include "host/base/nearest_names.h"

namespace Nifikral {
namespace {

std::optional<std::uint32_t> ParseDigits(std::string digits, std::size_t count) {
    std::uint32_t colour = 0;
    const char* const end = digits.data() + digits.size();
    if (digits.size() != count || std::from_chars(digits.data(), end, colour, 16).ptr != end) return std::nullopt;
    return colour;
}

// Letters small, and grey in the spelling with an a.
std::string Plain(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return char(std::tolower(std::uint8_t(c))); });
    if (const std::size_t grey = name.find("grey"); grey != std::string::npos) name[grey + 2] = 'a';
    return name;
}

// FFmpeg knows the names of CSS but for the latest.
std::optional<std::uint32_t> FindName(const std::string& name) {
    const std::string wanted = Plain(name);
    if (wanted == "rebeccapurple") return 0x663399;
    const std::uint8_t* rgb = nullptr;
    for (int i = 0; const char* const known = av_get_known_color_name(i, &rgb); ++i)
        if (Plain(known) == wanted) return std::uint32_t(rgb[0]) << 16 | std::uint32_t(rgb[1]) << 8 | rgb[2];
    return std::nullopt;
}

}  // namespace

std::optional<std::uint32_t> ParseColour(const std::string& text) {
    if (text.starts_with("0x") || text.starts_with("0X")) return ParseDigits(text.substr(2), 6);
    if (!text.starts_with('#')) return FindName(text);
    if (const auto whole = ParseDigits(text.substr(1), 6)) return whole;
    const auto brief = ParseDigits(text.substr(1), 3);
    if (!brief) return std::nullopt;
    return ((*brief >> 8) * 0x11) << 16 | ((*brief >> 4 & 15) * 0x11) << 8 | (*brief & 15) * 0x11;
}

std::string ColourText(std::uint32_t colour) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06x", colour & 0xFFFFFFu);
    return text;
}

std::string ColourRemedy(const std::string& text) {
    std::vector<std::string> names;
    for (int i = 0; const char* const known = av_get_known_color_name(i, nullptr); ++i) names.push_back(Plain(known));
    return DidYouMean(text, names) + " (give a name such as red, #rgb, #rrggbb or 0xRRGGBB)";
}

}  // namespace Nifikral
