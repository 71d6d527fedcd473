#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "host/films/styled_text.h"

namespace Nifikral {

/// How texts of one kind look and where they stand. All numbers are thousandths, of the height of the frame (of its
/// width where they go across), so that a menu looks alike in every size.
struct TypeStyle {
    const char* face;   ///< families, of which the first one that is installed counts
    const char* words;  ///< as "fontstyle" has them
    int size;
    std::uint32_t colour;  ///< 0xRRGGBB
    int spacing;           ///< between letters, of the size of the font
    TextAlign align;
    std::array<int, 4> box;  ///< left, top, width and height
};

/// What the texts of a template look like where a project says nothing of it.
struct TemplateStyle {
    const char* templateName;
    TypeStyle title;
    /// The second text; those after it stand below one another, each by the height of the box.
    TypeStyle line;
    /// The names of pictures and buttons; they have places of their own.
    TypeStyle caption;
};

/// The colours of what a template paints: the values of its property "mood".
enum class Mood { Own, Light, Dark };
/// Their names in a project, in that order.
inline constexpr const char* moodNames[] = {"own", "light", "dark"};
/// The one of a name; nothing for any other.
std::optional<Mood> FindMood(const std::string& name);

/// The style of a template, with texts that can be read on its background in that mood; that of menu_common for one
/// without.
TemplateStyle StyleOf(const std::string& templateName, Mood mood = Mood::Own);

/// Whether a template leaves it to its projects where pictures stand and what lies behind them.
bool IsPlacedMenu(const std::string& templateName);
/// Whether a template shows how to use a menu: its texts are lines below one another.
bool IsInstructionMenu(const std::string& templateName);

/// The Debian package that holds a typeface of the styles; empty for all other families.
std::string PackageOfTypeface(const std::string& family);

}  // namespace Nifikral
