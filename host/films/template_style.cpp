#include "host/films/template_style.h"

#include <algorithm>

namespace Nifikral {
namespace {

struct Typeface {
    const char *family, *package;
};
constexpr Typeface typefaces[] = {
    {"Quicksand", "fonts-quicksand"},
    {"Comfortaa", "fonts-comfortaa"},
    {"Yanone Kaffeesatz", "fonts-yanone-kaffeesatz"},
    {"Goudy Bookletter 1911", "fonts-goudybookletter"},
    {"Cabin", "fonts-cabin"},
    {"Dancing Script", "fonts-dancingscript"},
    {"EB Garamond", "fonts-ebgaramond"},
    {"League Spartan", "fonts-league-spartan"},
    {"DejaVu Sans", "fonts-dejavu-core"},
    {"DejaVu Serif", "fonts-dejavu-core"},
};

// Each with a family that is at hand where it is missing.
constexpr char soft[] = "Quicksand, DejaVu Sans";
constexpr char round[] = "Comfortaa, DejaVu Sans";
constexpr char condensed[] = "Yanone Kaffeesatz, DejaVu Sans Condensed, DejaVu Sans";
constexpr char bookish[] = "Goudy Bookletter 1911, DejaVu Serif";
constexpr char humanist[] = "Cabin, DejaVu Sans";
constexpr char script[] = "Dancing Script, DejaVu Serif";
constexpr char oldStyle[] = "EB Garamond, DejaVu Serif";
constexpr char geometric[] = "League Spartan, DejaVu Sans";

constexpr TextAlign left = TextAlign::Left, center = TextAlign::Center;

// A title, and a line below it, as most templates have them: above the pictures, in the middle or at the left.
constexpr std::array<int, 4> above = {60, 55, 880, 130}, belowTitle = {60, 190, 880, 58};

constexpr TypeStyle Caption(const char* face, const char* words, std::uint32_t colour) {
    return {face, words, 44, colour, 0, center, {}};
}

constexpr TemplateStyle styles[] = {
    // Over pictures that fill the frame: below, where a shade lies.
    {"menu_fullscreen",
     {humanist, "bold halo", 104, 0xFFFFFF, 0, left, {60, 745, 880, 130}},
     {humanist, "halo", 44, 0xE9F1F5, 10, left, {60, 872, 880, 58}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_push",
     {geometric, "bold", 80, 0x1B2A38, 0, left, {60, 812, 880, 84}},
     {humanist, "", 40, 0x33485C, 10, left, {60, 888, 880, 52}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_layeredtitles",
     {geometric, "bold", 84, 0xFFFFFF, 10, left, {95, 505, 810, 105}},
     {humanist, "bold", 56, 0xFFFFFF, 10, left, {200, 715, 600, 160}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_videowall",
     {geometric, "bold halo", 76, 0xFFFFFF, 10, left, {60, 50, 880, 86}},
     {humanist, "halo", 42, 0xD8E6FF, 10, left, {60, 134, 880, 54}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_resizingpanels",
     {geometric, "bold halo", 76, 0xFFFFFF, 10, left, {60, 50, 880, 86}},
     {humanist, "halo", 42, 0xFFE3B0, 10, left, {60, 134, 880, 54}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_performance",
     {geometric, "bold halo", 92, 0xFFFFFF, 60, center, above},
     {humanist, "halo", 42, 0xE6D6FF, 60, center, {60, 162, 880, 58}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"menu_rectangles",
     {geometric, "bold halo", 92, 0xF2FBFF, 0, left, above},
     {humanist, "halo", 44, 0xBFE9EE, 20, left, {60, 162, 880, 58}},
     Caption(humanist, "bold", 0xF2FBFF)},
    // Photographs on a table, in an album, on a cloth.
    {"menu_memories",
     {oldStyle, "italic halo", 122, 0xFFF2DA, 0, left, above},
     {oldStyle, "italic halo", 50, 0xF3DCB8, 10, left, belowTitle},
     Caption(oldStyle, "italic", 0x3A2A1C)},
    {"menu_memories2",
     {oldStyle, "italic halo", 118, 0xFFF4E0, 0, center, above},
     {oldStyle, "italic halo", 50, 0xF5E3C8, 10, center, belowTitle},
     Caption(oldStyle, "italic", 0x3A2A1C)},
    {"menu_stacking",
     {humanist, "bold halo", 104, 0xF6FBFC, 0, left, above},
     {humanist, "italic halo", 46, 0xD5E6EA, 10, left, belowTitle},
     Caption(humanist, "italic", 0x22323A)},
    {"menu_travel",
     {humanist, "bold halo", 104, 0x4A2612, 0, left, above},
     {humanist, "italic halo", 46, 0x4A2612, 10, left, belowTitle},
     Caption(humanist, "italic", 0x4A2612)},
    {"menu_oldage",
     {bookish, "halo", 112, 0xFFEBC8, 30, center, above},
     {bookish, "halo", 48, 0xFFEBC8, 30, center, belowTitle},
     Caption(bookish, "", 0xFFEBC8)},
    {"menu_pets",
     {round, "bold halo", 98, 0x5A3210, 0, center, above},
     {round, "bold halo", 42, 0x5A3210, 0, center, belowTitle},
     Caption(round, "bold", 0x5A3210)},
    {"menu_babygirl",
     {soft, "bold halo", 104, 0x8A1C54, 10, center, above},
     {soft, "bold halo", 46, 0x8A1C54, 10, center, belowTitle},
     Caption(soft, "bold", 0x8A1C54)},
    {"menu_babyboy",
     {soft, "bold halo", 104, 0x1B4680, 10, center, above},
     {soft, "bold halo", 46, 0x1B4680, 10, center, belowTitle},
     Caption(soft, "bold", 0x1B4680)},
    {"menu_festival",
     {condensed, "bold halo", 128, 0xFFDE8F, 30, center, above},
     {condensed, "halo", 56, 0xFFF3D6, 30, center, belowTitle},
     Caption(condensed, "bold", 0xFFDE8F)},
    {"submenu_festival",
     {condensed, "bold halo", 128, 0xFFDE8F, 30, center, above},
     {condensed, "halo", 56, 0xFFF3D6, 30, center, belowTitle},
     Caption(condensed, "bold", 0xFFDE8F)},
    {"instructionmenu_festival",
     {condensed, "bold", 128, 0xFFDE8F, 30, left, {440, 198, 470, 132}},
     {condensed, "", 74, 0xFFF3D6, 10, left, {440, 334, 470, 84}},
     Caption(condensed, "bold", 0xFFDE8F)},
    {"menu_specialoccasion",
     {script, "bold halo", 132, 0xFBE3A4, 0, center, {80, 70, 840, 138}},
     {oldStyle, "italic halo", 50, 0xFFF4E2, 20, center, {80, 205, 840, 60}},
     Caption(oldStyle, "italic", 0xFFF4E2)},
    {"menu_vignette",
     {oldStyle, "italic halo", 88, 0xFBEBD8, 20, center, {60, 50, 880, 112}},
     {oldStyle, "italic halo", 46, 0xE8CDB6, 30, center, {60, 152, 880, 54}},
     Caption(oldStyle, "italic", 0xFBEBD8)},
    {"submenu_common",
     {humanist, "bold halo", 88, 0xFFFFFF, 0, left, {70, 50, 860, 100}},
     {humanist, "halo", 42, 0xFFD79A, 10, left, {70, 146, 860, 50}},
     Caption(humanist, "bold", 0xFFFFFF)},
    {"instructionmenu_common",
     {humanist, "bold", 78, 0x1B3048, 0, left, {100, 170, 455, 98}},
     {humanist, "", 50, 0x27405C, 0, left, {100, 288, 455, 76}},
     Caption(humanist, "bold", 0x1B3048)},
    {"menu_common",
     {humanist, "bold halo", 108, 0xFFF6E4, 0, left, above},
     {humanist, "italic halo", 46, 0xFFE6C4, 10, left, belowTitle},
     Caption(humanist, "bold", 0xFFF6E4)},
};

}  // namespace

std::optional<Mood> FindMood(const std::string& name) {
    const auto* const found = std::ranges::find(moodNames, name);
    return found == std::end(moodNames) ? std::nullopt : std::optional(Mood(found - moodNames));
}

TemplateStyle StyleOf(const std::string& templateName, Mood mood) {
    const auto* const found =
        std::ranges::find_if(styles, [&](const TemplateStyle& style) { return templateName == style.templateName; });
    TemplateStyle style = found == std::end(styles) ? std::end(styles)[-1] : *found;
    if (mood == Mood::Own) return style;
    const bool isLight = mood == Mood::Light;
    style.title.colour = style.caption.colour = isLight ? 0x2E2622 : 0xFFF6E8;
    style.line.colour = isLight ? 0x43382F : 0xEADFD2;
    return style;
}

bool IsPlacedMenu(const std::string& templateName) { return templateName == "menu_common"; }
bool IsInstructionMenu(const std::string& templateName) { return templateName.starts_with("instructionmenu_"); }

std::string PackageOfTypeface(const std::string& family) {
    const auto* const found =
        std::ranges::find_if(typefaces, [&](const Typeface& typeface) { return family == typeface.family; });
    return found == std::end(typefaces) ? "" : found->package;
}

}  // namespace Nifikral
