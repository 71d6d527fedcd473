#include "host/catalogue/catalogue.h"

#include "host/catalogue/parameter_rows.h"

namespace Nifikral {
namespace {

using namespace ParameterRows;

// Read by bridges/frei0r/CMakeLists.txt too: a brace, the name and the category open each row.
constexpr EffectInfo catalogue[] = {
    {"simple_gauss_blur", "Blur and edges", "a soft blur", plain, gaussBlur},
    {"simple_laplacian_sharpen", "Blur and edges", "sharper contours", plain, laplacianSharpen},
    {"gray", "Colour", "shades of grey"},
    {"flip_color", "Colour", "blue and red exchanged"},
    {"invert", "Colour", "a negative"},
    {"aged_film", "Colour", "a sepia tone", knowsRedFromBlue},
    {"brightness_contrast", "Colour", "brightness, contrast and saturation", plain, brightnessContrast},
    {"fadein", "Fades", "fades the picture in", variesWithTime | changesAlpha, fade},
    {"fadeout", "Fades", "fades the picture out", variesWithTime | changesAlpha, fade},
    {"directfadein", "Fades", "fades the picture in from black", variesWithTime, directFade},
    {"directfadeout", "Fades", "fades the picture out to black", variesWithTime, directFade},
    {"reverse", "Geometry", "flips the picture", plain, reverse},
    {"spherize", "Geometry", "a lens that bulges or pinches", plain, spherize},
    {"magnifier", "Geometry", "a magnifying glass", plain, magnifier},
    {"rotate", "Geometry", "a swirl", plain, rotate},
    {"tensile", "Geometry", "stretches a band of the picture", plain, tensile},
    {"emboss", "Blur and edges", "a raised grey surface lit from above", plain, emboss},
    {"mosaic", "Blur and edges", "hides a rectangle behind large blocks", plain, mosaic},
    {"portrait", "Blur and edges", "a flattering softness", knowsRedFromBlue, portrait},
    {"mirage", "Geometry", "a soft double image", plain, mirage},
    {"stroke", "Art", "a pencil drawing", knowsRedFromBlue, stroke},
    {"transparency", "Fades", "makes the whole picture translucent", changesAlpha, transparency},
    {"colorfilter", "Colour", "seen through a coloured glass", knowsRedFromBlue, colorfilter},
    {"atomize", "Art", "the picture as spray", newEachFrame, atomize},
    {"popstyle", "Colour", "pop art in a few flat colours", knowsRedFromBlue, popstyle},
    {"dilate", "Blur and edges", "bright areas grow"},
    {"erode", "Blur and edges", "dark areas grow"},
    {"edgelight", "Blur and edges", "glowing edges", plain, edgelight},
    {"relief", "Blur and edges", "a relief lit from a side", plain, relief},
    {"videowall", "Geometry", "the picture repeated in tiles", plain, videowall},
    {"addnoise", "Art", "film grain", newEachFrame | knowsRedFromBlue, addnoise},
    {"spotlight", "Light", "a spot of coloured light", knowsRedFromBlue, spotlight},
    {"radiate", "Light", "rays from a point", plain, radiate},
    {"tilereflect", "Geometry", "seen through rotated glass tiles", plain, tilereflect},
    {"mirrorinvert", "Geometry", "turned inside out about the centre", plain, mirrorinvert},
    {"oilpainting", "Art", "an oil painting", plain, oilpainting},
    {"2D_3D_TransForm", "Geometry", "two views for the eyes out of one picture", knowsRedFromBlue, trans2D3D},
    {"menu_fullscreen", "Menus", "one picture at a time fills the screen and dissolves into the next", generator | menu,
     menuTemplate},
    {"menu_layeredtitles", "Menus", "texts on translucent bands that slide over each other, soft pictures behind",
     generator | menu, menuTemplate},
    {"menu_memories", "Menus", "photographs that fall onto a table and lift off again", generator | menu, menuTemplate},
    {"menu_oldage", "Menus", "oval portraits in an old film: sepia, dust and flicker", generator | menu, menuTemplate},
    {"menu_resizingpanels", "Menus", "panels divide the screen, and each in turn becomes the large one",
     generator | menu, menuTemplate},
    {"menu_performance", "Menus", "three screens on a stage before a curtain of light", generator | menu, menuTemplate},
    {"menu_babygirl", "Menus", "oval pictures float over pink clouds between bubbles and hearts", generator | menu,
     menuTemplate},
    {"menu_babyboy", "Menus", "round-cornered pictures float over light-blue clouds between bubbles and stars",
     generator | menu, menuTemplate},
    {"menu_rectangles", "Menus", "outlined rectangles with pictures cross the screen at different depth",
     generator | menu, menuTemplate},
    {"menu_push", "Menus", "each picture pushes the one before it off the screen", generator | menu, menuTemplate},
    {"menu_travel", "Menus", "photographs that travel a dashed route on a map", generator | menu, menuTemplate},
    {"menu_pets", "Menus", "pictures that hop in, and paw prints that walk across", generator | menu, menuTemplate},
    {"menu_stacking", "Menus", "a pile of photographs that grows and is swept away", generator | menu, menuTemplate},
    {"menu_specialoccasion", "Menus", "pictures rise like balloons in a golden frame; confetti and sparkles",
     generator | menu, menuTemplate},
    {"menu_vignette", "Menus", "one picture at a time in a soft oval, all of them small below", generator | menu,
     menuTemplate},
    {"menu_videowall", "Menus", "a wall of screens that breathes; each in turn covers its middle", generator | menu,
     menuTemplate},
    {"slide", "Slideshow and titles", "a slideshow with transitions", generator, slide},
    {"title", "Slideshow and titles", "styled lines that fade and move in and out", generator | variesWithTime, title},
    {"EffectNameRotate90X", "Geometry", "quarter turns inside the frame", plain, rotate90X},
    {"menu_festival", "Menus", "pictures swing on strings with lanterns, fireworks in a night sky behind",
     generator | menu, menuTemplate},
    {"submenu_festival", "Menus", "a row of pictures on a line under fireworks, each lit in turn", generator | menu,
     menuTemplate},
    {"instructionmenu_festival", "Menus", "a dark panel for texts under fireworks, beside a picture on strings",
     generator | menu, menuTemplate},
    {"submenu_common", "Menus", "rows of pictures with strips for numbers and titles, each marked in turn",
     generator | menu, menuTemplate},
    {"instructionmenu_common", "Menus", "a light panel for texts beside a picture", generator | menu, menuTemplate},
    {"menu_common", "Menus", "pictures that travel and fade over a background", generator | menu, menuTemplate},
    {"menu_memories2", "Menus", "an album whose photographs come forward in turn", generator | menu, menuTemplate},
};

}  // namespace

std::span<const EffectInfo> Catalogue() { return catalogue; }

const EffectInfo* FindEffect(std::string_view name) {
    for (const EffectInfo& effect : catalogue)
        if (name == effect.name) return &effect;
    return nullptr;
}

const ParameterInfo* FindParameter(std::string_view effect, std::string_view parameter) {
    if (parameter == duration.name) return &duration;
    if (const EffectInfo* const info = FindEffect(effect))
        for (const ParameterInfo& row : info->parameters)
            if (parameter == row.name) return &row;
    return nullptr;
}

bool IsKeyframable(const EffectInfo& effect, const ParameterInfo& parameter) {
    const bool moves = parameter.kind == Kind::Number || parameter.kind == Kind::Column ||
                       parameter.kind == Kind::Row || parameter.kind == Kind::Length;
    return moves && !(effect.traits & generator) && parameter.name != std::string_view(duration.name);
}

}  // namespace Nifikral
