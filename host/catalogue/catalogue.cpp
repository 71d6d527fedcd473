#include "host/catalogue/catalogue.h"

#include <algorithm>

#include "host/catalogue/parameter_rows.h"

namespace Nifikral {
namespace {

using namespace ParameterRows;

// Read by bridges/frei0r/CMakeLists.txt too: a brace, the name and the category open each row.
constexpr EffectInfo catalogue[] = {
    {"simple_gauss_blur", "Blur and edges", "a soft blur", "soften, smooth, defocus, gaussian, out of focus, hide",
     plain, gaussBlur, "count=12"},
    {"simple_laplacian_sharpen", "Blur and edges", "sharper contours", "sharpen, crisp, unsharp mask, detail, clarity",
     plain, laplacianSharpen, "count=1"},
    {"gray", "Colour", "shades of grey", "grey, greyscale, grayscale, black and white, monochrome, desaturate, noir",
     plain},
    {"flip_color", "Colour", "blue and red exchanged", "swap channels, false colours, channel swap, BGR, RGB", plain},
    {"invert", "Colour", "a negative", "negative, inverse, complement, reverse colours, x-ray", plain},
    {"aged_film", "Colour", "a sepia tone", "sepia, old photo, old film, vintage, antique, brown, nostalgia, retro",
     knowsRedFromBlue},
    {"brightness_contrast", "Colour", "brightness, contrast and saturation",
     "lighten, darken, levels, exposure, saturate, vivid, colour correction, tone, saturation", idleAtDefaults,
     brightnessContrast, "brightness=5:contrast=20:saturation=-40"},
    {"fadein", "Fades", "fades the picture in", "fade in, appear, alpha, opacity, dissolve",
     variesWithTime | changesAlpha, fade, "FadeMin=80"},
    {"fadeout", "Fades", "fades the picture out", "fade out, disappear, alpha, opacity, dissolve",
     variesWithTime | changesAlpha | fadesOut, fade, "FadeMax=144"},
    {"directfadein", "Fades", "fades the picture in from black", "fade in, fade from black, opening", variesWithTime,
     directFade, "FadeMin=80"},
    {"directfadeout", "Fades", "fades the picture out to black", "fade out, fade to black, ending, closing",
     variesWithTime | fadesOut, directFade, "FadeMax=144"},
    {"reverse", "Geometry", "flips the picture",
     "flip, mirror, upside down, horizontal flip, vertical flip, turn 180 degrees", idleAtDefaults, reverse,
     "mirror=1:vertical=1"},
    {"spherize", "Geometry", "a lens that bulges or pinches",
     "bulge, pinch, fisheye, fish-eye, lens, barrel, balloon, sphere, distort", idleAtDefaults, spherize,
     "x=50%:y=50%:r=48%:scale=0.6"},
    {"magnifier", "Geometry", "a magnifying glass", "magnify, zoom, loupe, magnifying glass, enlarge", idleAtDefaults,
     magnifier, "x=50%:y=50%:r=35%:scale=1.6"},
    {"rotate", "Geometry", "a swirl", "swirl, twirl, twist, vortex, whirl, spiral, distort", idleAtDefaults, rotate,
     "x=50%:y=50%:r=45%:scale=4"},
    {"tensile", "Geometry", "stretches a band of the picture", "stretch, squeeze, widen, liquid resize, distort",
     idleAtDefaults, tensile,
     "horizontal=1:horizontal_x1=35%:horizontal_x2=65%:horizontal_scale=2:vertical_y1=35%:vertical_y2=65%:vertical_"
     "scale=2"},
    {"emboss", "Blur and edges", "a raised grey surface lit from above", "bump, engrave, stamp, metal, raised", plain,
     emboss, "level=2"},
    {"mosaic", "Blur and edges", "hides a rectangle behind large blocks",
     "pixelate, pixelize, pixelise, censor, anonymise, blocks, hide a face, hide, privacy", idleAtDefaults, mosaic,
     "x1=0:y1=0:x2=100%:y2=100%:step=5"},
    {"portrait", "Blur and edges", "a flattering softness",
     "beauty, skin, smooth skin, soft focus, glow, dream, bloom, bilateral, denoise", knowsRedFromBlue, portrait,
     "strength=80:radius=12:glow=40"},
    {"mirage", "Geometry", "a soft double image", "ghost, double exposure, double vision, echo, drunk", plain, mirage,
     "width=40:alpha=60"},
    {"stroke", "Art", "a pencil drawing", "sketch, pencil, drawing, line art, cartoon, crayon", knowsRedFromBlue,
     stroke},
    {"transparency", "Fades", "makes the whole picture translucent", "opacity, alpha, translucent, see-through",
     changesAlpha, transparency},
    {"colorfilter", "Colour", "seen through a coloured glass",
     "tint, colorize, colourise, gel, warm, cold, colour cast", knowsRedFromBlue, colorfilter},
    {"atomize", "Art", "the picture as spray", "spray, scatter, spread, jitter, frosted glass, diffuse, dissolve",
     newEachFrame, atomize, "radius=12"},
    {"popstyle", "Colour", "pop art in a few flat colours",
     "pop art, posterize, posterise, poster, comic, screen print, palette", knowsRedFromBlue, popstyle, "panels=1"},
    {"dilate", "Blur and edges", "bright areas grow", "morphology, maximum, thicken, grow", plain, {}, "", 3},
    {"erode", "Blur and edges", "dark areas grow", "morphology, minimum, thin, shrink", plain, {}, "", 3},
    {"edgelight", "Blur and edges", "glowing edges", "neon, edges, edge detection, outline, glow, contour", plain,
     edgelight, "level=3"},
    {"relief", "Blur and edges", "a relief lit from a side", "bas-relief, bump, stone, engrave, raised", plain, relief,
     "angle=45"},
    {"videowall", "Geometry", "the picture repeated in tiles",
     "tile, tiles, repeat, grid, multiply, many copies, split screen", plain, videowall, "horiTiles=3:verTiles=3"},
    {"addnoise", "Art", "film grain", "noise, grain, film grain, analogue", newEachFrame | knowsRedFromBlue, addnoise,
     "strength=25"},
    {"spotlight", "Light", "a spot of coloured light", "light, lamp, torch, vignette, highlight, stage",
     knowsRedFromBlue, spotlight, "x=50%:y=45%:r=45%:brightness=20:color=0xFFC890:density=30"},
    {"radiate", "Light", "rays from a point", "god rays, light rays, sun rays, zoom blur, radial blur, sunbeams", plain,
     radiate, "x=50%:y=50%:level=100"},
    {"tilereflect", "Geometry", "seen through rotated glass tiles",
     "glass, glass blocks, tiles, refraction, kaleidoscope", plain, tilereflect, "angle=30:size=16%:curvature=8"},
    {"mirrorinvert", "Geometry", "turned inside out about the centre", "inside out, polar, inversion, distort, tunnel",
     plain, mirrorinvert, "amount=100"},
    {"oilpainting", "Art", "an oil painting", "oil, paint, painting, canvas, kuwahara, artistic, brush", plain,
     oilpainting, "brushsize=4:coarseness=50"},
    {"2D_3D_TransForm", "Geometry", "two views for the eyes out of one picture",
     "3D, stereo, anaglyph, red-cyan, side by side, depth, VR", knowsRedFromBlue, trans2D3D, "strength=50"},
    {"menu_fullscreen", "Menus", "one picture at a time fills the screen and dissolves into the next",
     "full screen, crossfade", generator | menu, arrangedTemplate},
    {"menu_layeredtitles", "Menus", "texts on translucent bands that slide over each other, soft pictures behind",
     "bands, titles, layers", generator | menu, arrangedTemplate},
    {"menu_memories", "Menus", "photographs that fall onto a table and lift off again", "photographs, table, album",
     generator | menu, arrangedTemplate},
    {"menu_oldage", "Menus", "oval portraits in an old film: sepia, dust and flicker",
     "old photo, sepia, vintage, nostalgia", generator | menu, arrangedTemplate},
    {"menu_resizingpanels", "Menus", "panels divide the screen, and each in turn becomes the large one",
     "split screen, panels", generator | menu, arrangedTemplate},
    {"menu_performance", "Menus", "three screens on a stage before a curtain of light", "stage, theatre, concert",
     generator | menu, arrangedTemplate},
    {"menu_babygirl", "Menus", "oval pictures float over pink clouds; hearts, bubbles and turning mobiles",
     "baby, child, pink, hearts", generator | menu, arrangedTemplate},
    {"menu_babyboy", "Menus", "round-cornered pictures float over light-blue clouds, where a toy train runs",
     "baby, child, blue, stars", generator | menu, arrangedTemplate},
    {"menu_rectangles", "Menus", "outlined rectangles with pictures cross the screen at different depth",
     "frames, modern", generator | menu, arrangedTemplate},
    {"menu_push", "Menus", "each picture pushes the one before it off the screen", "wipe, push", generator | menu,
     arrangedTemplate},
    {"menu_travel", "Menus", "photographs that travel a dashed route on a map, and a small plane",
     "map, holiday, route, journey", generator | menu, arrangedTemplate},
    {"menu_pets", "Menus", "pictures that hop in; paw prints chase a ball", "animals, dog, cat, paws", generator | menu,
     arrangedTemplate},
    {"menu_stacking", "Menus", "a pile of photographs that grows and is swept away", "pile, photographs",
     generator | menu, arrangedTemplate},
    {"menu_specialoccasion", "Menus", "pictures rise like balloons in a golden frame; confetti and sparkles",
     "wedding, birthday, party, celebration", generator | menu, arrangedTemplate},
    {"menu_vignette", "Menus", "one picture at a time in a soft oval, all of them small beside", "oval, classic",
     generator | menu, arrangedTemplate},
    {"menu_videowall", "Menus", "a wall of screens that breathes; each in turn covers its middle",
     "screens, television, grid", generator | menu, arrangedTemplate},
    {"slide", "Slideshow and titles", "a slideshow with transitions",
     "slideshow, photo album, ken burns, transitions, crossfade, dissolve, wipe", generator, slide},
    {"title", "Slideshow and titles", "styled lines that fade and move in and out",
     "text, caption, subtitle, credits, lower third, words", generator | variesWithTime, title},
    {"EffectNameRotate90X", "Geometry", "quarter turns inside the frame",
     "rotate 90 degrees, turn, quarter turn, portrait, landscape, orientation", plain, rotate90X},
    {"menu_festival", "Menus", "pictures swing on strings with lanterns, fireworks in a night sky behind",
     "party, celebration, fireworks, new year", generator | menu, arrangedTemplate},
    {"submenu_festival", "Menus", "a row of pictures on a line under fireworks, each lit in turn",
     "chapters, scenes, party", generator | menu, arrangedTemplate},
    {"instructionmenu_festival", "Menus", "a dark panel for texts under fireworks, beside a picture on strings",
     "help, credits, text page, party", generator | menu, arrangedTemplate},
    {"submenu_common", "Menus", "rows of pictures with strips for titles, each in turn in a projector's beam",
     "chapters, scenes, grid", generator | menu, arrangedTemplate},
    {"instructionmenu_common", "Menus", "a light panel for texts beside a picture in a projector's beam",
     "help, credits, text page", generator | menu, arrangedTemplate},
    {"menu_common", "Menus", "pictures that travel and fade over a background", "disc menu, DVD menu, fly in",
     generator | menu, menuTemplate},
    {"menu_memories2", "Menus", "an album whose photographs come forward in turn", "photo album, book",
     generator | menu, arrangedTemplate},
};

}  // namespace

std::span<const EffectInfo> Catalogue() { return catalogue; }

const EffectInfo* FindEffect(std::string_view name) {
    for (const EffectInfo& effect : catalogue)
        if (name == effect.name) return &effect;
    return nullptr;
}

std::string ShortName(std::string_view effect, std::string_view property) {
    if (property.starts_with(effect) && property.substr(effect.size()).starts_with('_'))
        return std::string(property.substr(effect.size() + 1));
    const std::size_t underscore = property.find('_');
    const bool named =
        underscore != std::string_view::npos && effect.find(property.substr(0, underscore)) != std::string_view::npos;
    return std::string(named ? property.substr(underscore + 1) : property);
}

std::string ShownValue(const EffectInfo& effect, std::string_view property) {
    const std::string name = ShortName(effect.name, property).append("=");
    std::string_view rest = effect.shown;
    while (!rest.empty()) {
        const std::string_view pair = rest.substr(0, rest.find(':'));
        if (pair.starts_with(name)) return std::string(pair.substr(name.size()));
        rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
    }
    return {};
}

std::string ShownRequest(const EffectInfo& effect) {
    std::string request = effect.name;
    if (*effect.shown) request.append(":").append(effect.shown);
    return request;
}

Measure MeasureOf(const ParameterInfo& parameter) {
    if (parameter.kind == Kind::Column) return Measure::Width;
    if (parameter.kind == Kind::Row) return Measure::Height;
    return parameter.unit == std::string_view("pixels") ? Measure::ShorterSide : Measure::None;
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
