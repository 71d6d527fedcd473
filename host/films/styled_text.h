#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Nifikral {

enum class TextAlign { Left, Center, Right };

struct TextStyle {
    bool bold = false, italic = false, underline = false, outline = false, shadow = false;
    bool halo = false;                  ///< a soft shade around the letters that keeps them readable over anything
    bool plate = false;                 ///< a shade with round corners behind the text, that does the same
    TextAlign align = TextAlign::Left;  ///< of lines of different length
    int spacing = 0;                    ///< between letters, in thousandths of the size
};

/// A text and how it looks.
struct StyledText {
    std::string text;  ///< UTF-8, lines apart by line feeds
    std::string face;  ///< font families, the first one that is installed counts; empty: the usual one
    TextStyle style;
    int size = 0;  ///< of the font, in pixels
    std::uint8_t red = 0, green = 0, blue = 0;
};

/// Between letters, as every style may have it.
inline constexpr int leastSpacing = -200, mostSpacing = 1000;

/// The style that blank-separated words name, "center", "right" and "spacing=N" among them. A word that names none is
/// reported once and left out.
TextStyle ParseStyle(std::string_view words);

/// A text from the command line, in which \\n begins a new line.
std::string WithLineFeeds(const std::string& text);

/// Reads <font color='#rrggbb' size='pixels' face='family' fontstyle='words'>text</font>, the text as written up to the
/// last </font>. Nothing for a text of another form.
std::optional<StyledText> ParseFontElement(std::string_view html);

}  // namespace Nifikral
