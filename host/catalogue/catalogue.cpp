#include "host/catalogue/catalogue.h"

namespace Nifikral {
namespace {

constexpr double largestSide = 16384;

constexpr ParameterInfo Column(const char* name, const char* group, const char* meaning) {
    return {name, group, meaning, "pixels", {0, largestSide}, 1, Kind::Column};
}
constexpr ParameterInfo Row(const char* name, const char* group, const char* meaning) {
    return {name, group, meaning, "pixels", {0, largestSide}, 1, Kind::Row};
}
constexpr ParameterInfo Length(const char* name, const char* group, const char* meaning, double least = 0) {
    return {name, group, meaning, "pixels", {least, largestSide}, 1, Kind::Length};
}
constexpr ParameterInfo Pick(const char* name, const char* group, const char* meaning,
                             std::span<const Choice> choices) {
    const ValueRange range{double(choices.front().value), double(choices.back().value)};
    return {name, group, meaning, "", range, 1, Kind::Choice, choices};
}
// The two below change the row behind them: what the effect can bear, and what it works with until a value is set.
constexpr ParameterInfo Bearing(ValueRange bearable, ParameterInfo row) {
    row.bearable = bearable;
    return row;
}
constexpr ParameterInfo Until(double initial, ParameterInfo row) {
    row.initial = initial;
    return row;
}
constexpr Choice offOn[] = {{0, "off"}, {1, "on"}};
constexpr ParameterInfo Switch(const char* name, const char* group, const char* meaning) {
    ParameterInfo row = Pick(name, group, meaning, offOn);
    row.kind = Kind::Switch;
    return row;
}
constexpr ParameterInfo Colour(const char* name, const char* group, const char* meaning) {
    return {name, group, meaning, "colour", {0, 0xFFFFFF}, 1, Kind::Colour};
}
constexpr ParameterInfo Seed(const char* name, const char* meaning) {
    return {name, "Random", meaning, "", {}, 1, Kind::Seed};
}
constexpr ParameterInfo Text(const char* name, const char* group, const char* meaning, const char* unit = "") {
    return {name, group, meaning, unit, {}, 0, Kind::Text};
}
constexpr ParameterInfo File(const char* name, const char* group, const char* meaning) {
    return {name, group, meaning, "", {}, 0, Kind::File};
}
constexpr ParameterInfo Word(const char* name, const char* group, const char* meaning,
                             std::span<const char* const> words, const char* separator = "") {
    return {name, group, meaning, "", {}, 0, Kind::Word, {}, words, separator};
}

constexpr ParameterInfo duration = {
    "duration", "Time", "length of the effect; the command sets it to the number of frames", "frames", {1, 1e9}};

constexpr ParameterInfo gaussBlur[] = {
    Bearing({0, 10000}, {"blur_count", "Strength", "how often the blur is applied to each frame", "passes", {0, 50}}),
};
constexpr ParameterInfo laplacianSharpen[] = {
    Bearing({0, 10000},
            {"sharpen_count", "Strength", "how often the sharpening is applied to each frame", "passes", {0, 10}}),
};
constexpr ParameterInfo brightnessContrast[] = {
    {"brightness", "Tones", "shift towards white (up) or black (down)", "%", {-100, 100}},
    {"contrast", "Tones", "change of contrast about middle grey", "%", {-100, 100}},
    {"saturation",
     "Colours",
     "change of colourfulness; 0 leaves it, any other value near 0 doubles it",
     "%",
     {-100, 100}},
};
constexpr ParameterInfo fade[] = {
    {"FadeMin", "Opacity", "lowest opacity that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "Opacity", "highest opacity that the fade may use", "1/256", {0, 256}},
};
constexpr ParameterInfo directFade[] = {
    {"FadeMin", "Level", "lowest level of the colours that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "Level", "highest level of the colours that the fade may use", "1/256", {0, 256}},
};
constexpr ParameterInfo transparency[] = {
    {"transparency_opacity", "Opacity", "opacity of the whole picture", "%", {0, 100}},
};
constexpr ParameterInfo reverse[] = {
    Switch("mirror", "Direction", "flip left to right"),
    Switch("vertical", "Direction", "flip top to bottom"),
};
constexpr ParameterInfo spherize[] = {
    Column("spherize_x", "Place", "column of the lens's centre"),
    Row("spherize_y", "Place", "row of the lens's centre"),
    Length("spherize_r", "Place", "radius of the lens"),
    {"spherize_scale", "Strength", "strength: above 0 bulges, below 0 pinches", "", {-4, 4}, 0.05},
};
constexpr ParameterInfo magnifier[] = {
    Column("magnifier_x", "Place", "column of the glass's centre"),
    Row("magnifier_y", "Place", "row of the glass's centre"),
    Length("magnifier_r", "Place", "radius of the glass; nothing happens above half the picture's shorter side"),
    {"magnifier_scale", "Strength", "magnification; nothing happens up to 1", "times", {0, 16}, 0.1},
};
constexpr ParameterInfo rotate[] = {
    Column("rotate_x", "Place", "column of the swirl's centre"),
    Row("rotate_y", "Place", "row of the swirl's centre"),
    Length("rotate_r", "Place", "radius of the swirl"),
    {"rotate_scale", "Strength", "strength of the twist; its sign is the direction", "", {-20, 20}, 0.1},
};
constexpr ParameterInfo tensile[] = {
    Switch("tensile_vertical", "Band of rows", "stretch a band of rows"),
    Row("tensile_vertical_y1", "Band of rows", "first row of the band"),
    Row("tensile_vertical_y2", "Band of rows", "row just below the band"),
    {"tensile_vertical_scale", "Band of rows", "vertical stretch; nothing happens below 1", "times", {0, 16}, 0.1},
    Switch("tensile_horizontal", "Band of columns", "stretch a band of columns"),
    Column("tensile_horizontal_x1", "Band of columns", "first column of the band"),
    Column("tensile_horizontal_x2", "Band of columns", "column just right of the band"),
    {"tensile_horizontal_scale",
     "Band of columns",
     "horizontal stretch; nothing happens below 1",
     "times",
     {0, 16},
     0.1},
};
constexpr ParameterInfo emboss[] = {
    {"emboss_level", "Strength", "gain of the difference to the row above", "times", {0, 20}},
};
constexpr ParameterInfo mosaic[] = {
    Column("mosaic_x1", "Rectangle", "one side column of the rectangle"),
    Row("mosaic_y1", "Rectangle", "one side row of the rectangle"),
    Column("mosaic_x2", "Rectangle", "the opposite side column; beyond the picture nothing happens"),
    Row("mosaic_y2", "Rectangle", "the opposite side row; beyond the picture nothing happens"),
    {"mosaic_step", "Blocks", "side of the blocks as a power of two: 3 makes blocks of 8", "", {0, 10}},
};
constexpr ParameterInfo mirage[] = {
    {"mirage_width", "Second image", "enlargement of the second image", "1/200", {0, 200}},
    {"mirage_alpha", "Second image", "opacity of the second image; above 100 nothing happens", "%", {0, 100}},
};
constexpr ParameterInfo edgelight[] = {
    {"edgelight_level", "Strength", "gain of the edges; strong edges wrap around into bands", "times", {0, 20}},
};
constexpr ParameterInfo relief[] = {
    {"relief_angle", "Light", "direction of the light", "degrees", {-360, 360}},
};
constexpr ParameterInfo videowall[] = {
    {"videowall_horiTiles", "Tiles", "pictures across", "", {1, 64}},
    {"videowall_verTiles", "Tiles", "pictures down", "", {1, 64}},
};
constexpr ParameterInfo spotlight[] = {
    Column("spotlight_x", "Place", "column of the light's centre"),
    Row("spotlight_y", "Place", "row of the light's centre"),
    Until(200, Length("spotlight_r", "Place", "radius of the light", 2)),
    Until(50, {"spotlight_brightness", "Light", "brightness added in the core", "%", {0, 100}}),
    Until(0xFFFFFF, Colour("spotlight_color", "Light", "colour of the light")),
    Until(40, {"spotlight_density", "Light", "opacity of the colour in the core", "%", {0, 100}}),
};
constexpr ParameterInfo colorfilter[] = {
    Colour("colorfilter_color", "Glass", "colour of the glass"),
    {"colorfilter_density", "Glass", "how much of the light of other colours the glass absorbs", "%", {0, 100}},
};
constexpr Choice palettes[] = {{0, "sunset"}, {1, "comic"}, {2, "garden"}, {3, "lagoon"}};
constexpr ParameterInfo popstyle[] = {
    {"popstyle_colors", "Colours", "number of colours", "", {2, 5}},
    Pick("popstyle_palette", "Colours", "which colours, or those of the first panel", palettes),
    Switch("popstyle_panels", "Panels", "four panels in four palettes"),
};
constexpr ParameterInfo rotate90X[] = {
    {"EffectNameRotate90X_turns", "Direction", "clockwise quarter turns; below 0 the other way", "", {-3, 3}},
};
constexpr ParameterInfo radiate[] = {
    Column("radiate_x", "Place", "column of the rays' centre"),
    Row("radiate_y", "Place", "row of the rays' centre"),
    {"radiate_level", "Strength", "length of the rays; an eighth of it is added to every colour", "", {0, 1000}},
};
constexpr ParameterInfo tilereflect[] = {
    Bearing({-180, 180}, {"tilereflect_angle", "Tiles", "angle of the tiles", "degrees", {-180, 180}}),
    {"tilereflect_size", "Tiles", "size of the tiles; 0 is refused", "pixels", {1, 2000}},
    Until(8, {"tilereflect_curvature", "Lens", "strength of each tile's lens", "", {-100, 100}}),
};
constexpr ParameterInfo mirrorinvert[] = {
    {"mirrorinvert_amount", "Strength", "strength of the inversion", "%", {0, 1000}},
};
constexpr ParameterInfo oilpainting[] = {
    Bearing({0, 1000}, {"oilpainting_brushsize", "Brush", "radius of the brush", "pixels", {0, 20}}),
    Until(50, {"oilpainting_coarseness", "Paint", "number of brightness classes less one", "", {0, 255}}),
};
constexpr Choice stereoOutputs[] = {{0, "anaglyph for red-cyan glasses"}, {1, "side by side"}, {2, "top and bottom"}};
constexpr ParameterInfo trans2D3D[] = {
    {"2D_3D_TransForm_strength",
     "Depth",
     "shift between the eyes from the farthest to the nearest",
     "1/1000 of the width",
     {0, 100}},
    Pick("2D_3D_TransForm_output", "Views", "how the two views are shown", stereoOutputs),
    Switch("2D_3D_TransForm_swap", "Views", "exchange the eyes"),
};
constexpr ParameterInfo addnoise[] = {
    {"addnoise_strength", "Grain", "how far the grain goes in middle tones (standard deviation)", "levels", {0, 255}},
    Switch("addnoise_color", "Grain", "a grain of its own for each colour"),
    Seed("addnoise_seed", "another number, another grain"),
};
constexpr ParameterInfo atomize[] = {
    {"atomize_radius", "Spray", "how far a pixel may come from", "pixels", {0, 255}},
    Seed("atomize_seed", "another number, another spray"),
};
constexpr ParameterInfo stroke[] = {
    {"stroke_strength", "Pencil", "pressure of the pencil", "%", {0, 100}},
    {"stroke_color", "Pencil", "how much of the picture's colours stays", "%", {0, 100}},
};
constexpr ParameterInfo portrait[] = {
    {"portrait_strength",
     "Skin",
     "contrast that still counts as small: 50 smooths up to about 15 levels",
     "%",
     {0, 100}},
    {"portrait_radius", "Skin", "how far a pixel is smoothed over", "pixels", {1, 64}},
    {"portrait_glow", "Light", "light that bright parts shed around them", "%", {0, 100}},
};

// Lists as the module takes them: items joined by ";", texts by "\\".
constexpr ParameterInfo menuTemplate[] = {
    Bearing({0, largestSide}, Length("width", "Size", "width of the menu; 0: the frame's")),
    Bearing({0, largestSide}, Length("height", "Size", "height of the menu; 0: the frame's")),
    File("sourcePath", "Background", "background: a picture or a video"),
    File("backgroundMask", "Background", "picture that is white where the background shows"),
    {"textNumber", "Texts", "how many texts there are", "", {0, 1000}},
    Text("textInfos", "Texts", "the texts, each with its font, colour, place and motion"),
    Bearing({0, 4096}, {"additionSourceNumber",
                        "Pictures",
                        "how many pictures and videos there are; set before their lists",
                        "",
                        {0, 4096}}),
    Text("isAdditionSourceImages", "Pictures", "for each one: true for a picture, false for a video"),
    Text("additionSourcePaths", "Pictures", "for each one: its file"),
    Text("additionSourceSizes", "Pictures", "for each one: width and height of the box that it fits into", "pixels"),
    Text("maskPaths", "Pictures", "for each one: a picture that is white where it shows"),
    Text("startPositions", "Motion", "for each one: where its top-left corner starts, x and y", "pixels"),
    Text("endPositions", "Motion", "for each one: where it stops, x and y", "pixels"),
    Text("moveFormulas", "Motion", "for each one: slope and intercept of its way"),
    Text("moveSpeeds", "Motion", "for each one: how far it moves to the right", "pixels/frame"),
    Text("startTrans", "Opacity", "for each one: opacity on the first frame", "1/255"),
    Text("endTrans", "Opacity", "for each one: opacity at the end of its fade", "1/255"),
    Text("fadeSpeeds", "Opacity", "for each one: how far its opacity changes", "1/255 a frame"),
};

constexpr const char* transitions[] = {"crossfade", "push",     "wipe", "zoom",  "iris",
                                       "blinds",    "pageturn", "cut",  "random"};
constexpr const char* slideMotions[] = {"none",     "zoomin", "zoomout", "panleft",
                                        "panright", "panup",  "pandown", "random"};
constexpr const char* fits[] = {"pad", "crop", "blur"};
constexpr ParameterInfo slide[] = {
    Text("paths", "Pictures", "the pictures, in order, joined by \";\""),
    Word("fit", "Pictures", "what becomes of pictures of another shape", fits),
    Switch("loop", "Pictures", "whether the first picture follows the last one"),
    {"slideDuration", "Pictures", "how long a picture is alone", "frames", {0, 100000}},
    {"transitionDuration", "Transitions", "how long it shares the frame with the next one", "frames", {0, 10000}},
    Word("transitions", "Transitions", "how one becomes the next, in turn", transitions, ";"),
    Word("motion", "Motion", "how pictures move, in turn", slideMotions, ";"),
    {"motionAmount", "Motion", "how much larger a moving picture gets", "%", {1, 100}},
    Seed("seed", "of the random choices"),
};

constexpr const char* fontStyles[] = {"bold", "italic", "underline", "outline", "shadow"};
constexpr const char* aligns[] = {"left", "center", "right"};
constexpr const char* valigns[] = {"top", "middle", "bottom"};
constexpr const char* titleMotions[] = {"none", "left", "right", "up", "down", "zoom"};
constexpr ParameterInfo title[] = {
    Text("text", "Text", "what it says, with line feeds between lines"),
    Text("face", "Text", "font family"),
    Word("fontstyle", "Text", "what is done to the letters", fontStyles, " "),
    {"size", "Text", "of the font; 0 for a twelfth of the frame's height", "pixels", {0, 1000}},
    {"color", "Text", "of the text", "colour", {}, 0, Kind::Colour},
    Text("box", "Place", "where it stands: x;y;width;height; empty for the frame inside its margins", "pixels"),
    Word("align", "Place", "of the lines in the box", aligns),
    Word("valign", "Place", "of the text in the box", valigns),
    {"inDuration", "Time", "how long it comes in", "frames", {0, 1000}},
    {"outDuration", "Time", "how long it leaves, at the end of the duration", "frames", {0, 1000}},
    {"lineDelay", "Time", "how much later than the one above each line comes and leaves", "frames", {0, 1000}},
    Word("inMotion", "Motion", "how it comes", titleMotions),
    Word("outMotion", "Motion", "how it leaves", titleMotions),
    Length("distance", "Motion", "how far it moves; 0 for as far as the font is large"),
};

constexpr EffectInfo catalogue[] = {
    {"simple_gauss_blur", "Blur and edges", "a soft blur", plain, gaussBlur},
    {"simple_laplacian_sharpen", "Blur and edges", "sharper contours", plain, laplacianSharpen},
    {"gray", "Colour", "shades of grey"},
    {"flip_color", "Colour", "blue and red exchanged"},
    {"invert", "Colour", "a negative"},
    {"aged_film", "Colour", "a sepia tone"},
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
    {"portrait", "Blur and edges", "a flattering softness", plain, portrait},
    {"mirage", "Geometry", "a soft double image", plain, mirage},
    {"stroke", "Art", "a pencil drawing", plain, stroke},
    {"transparency", "Fades", "makes the whole picture translucent", changesAlpha, transparency},
    {"colorfilter", "Colour", "seen through a coloured glass", plain, colorfilter},
    {"atomize", "Art", "the picture as spray", newEachFrame, atomize},
    {"popstyle", "Colour", "pop art in a few flat colours", plain, popstyle},
    {"dilate", "Blur and edges", "bright areas grow"},
    {"erode", "Blur and edges", "dark areas grow"},
    {"edgelight", "Blur and edges", "glowing edges", plain, edgelight},
    {"relief", "Blur and edges", "a relief lit from a side", plain, relief},
    {"videowall", "Geometry", "the picture repeated in tiles", plain, videowall},
    {"addnoise", "Art", "film grain", newEachFrame, addnoise},
    {"spotlight", "Light", "a spot of coloured light", plain, spotlight},
    {"radiate", "Light", "rays from a point", plain, radiate},
    {"tilereflect", "Geometry", "seen through rotated glass tiles", plain, tilereflect},
    {"mirrorinvert", "Geometry", "turned inside out about the centre", plain, mirrorinvert},
    {"oilpainting", "Art", "an oil painting", plain, oilpainting},
    {"2D_3D_TransForm", "Geometry", "two views for the eyes out of one picture", plain, trans2D3D},
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
