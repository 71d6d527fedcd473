#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Nifikral {

/// A colour as people write it, as 0xRRGGBB: a CSS name in any case, #rgb, #rrggbb or 0xRRGGBB. Nothing for any other
/// text.
std::optional<std::uint32_t> ParseColour(const std::string& text);
/// "#rrggbb".
std::string ColourText(std::uint32_t colour);
/// What to do about a text that is no colour: "did you mean red?" and the forms there are.
std::string ColourRemedy(const std::string& text);

}  // namespace Nifikral
