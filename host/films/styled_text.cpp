#include "host/films/styled_text.h"

#include <algorithm>
#include <charconv>
#include <sstream>

#include "host/base/log.h"

namespace Nifikral {
namespace {

// Takes the front of `rest` up to `end`, and `end` too.
std::optional<std::string_view> TakeUpTo(std::string_view& rest, std::string_view end) {
    const std::size_t at = rest.find(end);
    if (at == std::string_view::npos) return std::nullopt;
    const std::string_view taken = rest.substr(0, at);
    rest.remove_prefix(at + end.size());
    return taken;
}

template <class Number>
bool ReadNumber(std::string_view text, int base, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

TextStyle ParseStyle(std::string_view words) {
    TextStyle style;
    const std::pair<const char*, bool*> known[] = {{"bold", &style.bold},           {"italic", &style.italic},
                                                   {"underline", &style.underline}, {"outline", &style.outline},
                                                   {"shadow", &style.shadow},       {"halo", &style.halo},
                                                   {"plate", &style.plate}};
    constexpr std::string_view spacing = "spacing=";
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) {
        bool found = word == "normal" || word == "regular" || word == "left";
        for (const auto& [name, align] : {std::pair("center", TextAlign::Center), {"right", TextAlign::Right}})
            if (word == name) style.align = align, found = true;
        if (word.starts_with(spacing) && ReadNumber(std::string_view(word).substr(spacing.size()), 10, style.spacing)) {
            style.spacing = std::clamp(style.spacing, leastSpacing, mostSpacing);
            found = true;
        }
        for (const auto& [name, flag] : known)
            if (word == name) *flag = found = true;
        if (!found)
            PrintWarningOnce("fontstyle " + word, "the font style \"" + word +
                                                      "\" is not known and left out; there are bold, italic, "
                                                      "underline, outline, shadow, halo and plate");
    }
    return style;
}

std::string WithLineFeeds(const std::string& text) {
    std::string lines;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool feed = text.compare(i, 2, "\\n") == 0;
        lines += feed ? '\n' : text[i];
        if (feed) ++i;
    }
    return lines;
}

std::optional<StyledText> ParseFontElement(std::string_view html) {
    constexpr std::string_view head = "<font color='#", tail = "</font>";
    if (!html.starts_with(head) || !html.ends_with(tail)) return std::nullopt;
    std::string_view rest = html.substr(head.size());
    const auto colour = TakeUpTo(rest, "' size='"), size = TakeUpTo(rest, "' face='"),
               face = TakeUpTo(rest, "' fontstyle='"), words = TakeUpTo(rest, "'>");
    StyledText result;
    std::uint32_t rgb = 0;
    if (!colour || !size || !face || !words || rest.size() < tail.size() || colour->size() != 6 ||
        !ReadNumber(*colour, 16, rgb) || !ReadNumber(*size, 10, result.size))
        return std::nullopt;
    result.red = std::uint8_t(rgb >> 16);
    result.green = std::uint8_t(rgb >> 8);
    result.blue = std::uint8_t(rgb);
    result.face = *face;
    result.text = rest.substr(0, rest.size() - tail.size());
    result.style = ParseStyle(*words);
    return result;
}

}  // namespace Nifikral
