#pragma once

#include <algorithm>
#include <array>

#include "host/catalogue/catalogue.h"

/// The parameters of every effect, an array for each list of properties, in the order in which a form shows them.
namespace Nifikral::ParameterRows {

inline constexpr double largestSide = 16384;

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
// The four below change the row behind them: what the effect can bear, what it works with until a value is set, up to
// which share of the picture's shorter side a length does anything, and that it acts alone.
constexpr ParameterInfo Bearing(ValueRange bearable, ParameterInfo row) {
    row.bearable = bearable;
    return row;
}
constexpr ParameterInfo Until(double initial, ParameterInfo row) {
    row.initial = initial;
    return row;
}
constexpr ParameterInfo UpTo(double share, ParameterInfo row) {
    row.largestShare = share;
    return row;
}
constexpr ParameterInfo Alone(ParameterInfo row) {
    row.actsAlone = true;
    return row;
}
inline constexpr Choice offOn[] = {{0, "off"}, {1, "on"}};
constexpr ParameterInfo Switch(const char* name, const char* group, const char* meaning) {
    ParameterInfo row = Pick(name, group, meaning, offOn);
    row.kind = Kind::Switch;
    row.actsAlone = true;
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

inline constexpr ParameterInfo duration = {
    "duration",
    "Time",
    "length of the effect; the command sets it to the number of frames that it is shown in",
    "frames",
    {1, 1e9}};

inline constexpr ParameterInfo gaussBlur[] = {
    Bearing({0, 10000}, {"blur_count", "Strength", "how often the blur is applied to each frame", "passes", {0, 50}}),
};
inline constexpr ParameterInfo laplacianSharpen[] = {
    Bearing({0, 10000},
            {"sharpen_count", "Strength", "how often the sharpening is applied to each frame", "passes", {0, 10}}),
};
inline constexpr ParameterInfo brightnessContrast[] = {
    Alone({"brightness", "Tones", "shift towards white (up) or black (down)", "%", {-100, 100}}),
    Alone({"contrast", "Tones", "change of contrast about middle grey", "%", {-100, 100}}),
    Alone({"saturation",
           "Colours",
           "change of colourfulness; 0 leaves it, any other value near 0 doubles it",
           "%",
           {-100, 100}}),
};
inline constexpr ParameterInfo fade[] = {
    {"FadeMin", "Opacity", "lowest opacity that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "Opacity", "highest opacity that the fade may use", "1/256", {0, 256}},
};
inline constexpr ParameterInfo directFade[] = {
    {"FadeMin", "Level", "lowest level of the colours that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "Level", "highest level of the colours that the fade may use", "1/256", {0, 256}},
};
inline constexpr ParameterInfo transparency[] = {
    {"transparency_opacity", "Opacity", "opacity of the whole picture", "%", {0, 100}},
};
inline constexpr ParameterInfo reverse[] = {
    Switch("mirror", "Direction", "flip left to right"),
    Switch("vertical", "Direction", "flip top to bottom"),
};
inline constexpr ParameterInfo spherize[] = {
    Column("spherize_x", "Place", "column of the lens's centre"),
    Row("spherize_y", "Place", "row of the lens's centre"),
    Length("spherize_r", "Place", "radius of the lens"),
    {"spherize_scale", "Strength", "strength: above 0 bulges, below 0 pinches", "", {-4, 4}, 0.05},
};
inline constexpr ParameterInfo magnifier[] = {
    Column("magnifier_x", "Place", "column of the glass's centre"),
    Row("magnifier_y", "Place", "row of the glass's centre"),
    UpTo(0.5,
         Length("magnifier_r", "Place", "radius of the glass; nothing happens above half the picture's shorter side")),
    {"magnifier_scale", "Strength", "magnification; nothing happens up to 1", "times", {0, 16}, 0.1},
};
inline constexpr ParameterInfo rotate[] = {
    Column("rotate_x", "Place", "column of the swirl's centre"),
    Row("rotate_y", "Place", "row of the swirl's centre"),
    Length("rotate_r", "Place", "radius of the swirl"),
    {"rotate_scale", "Strength", "strength of the twist; its sign is the direction", "", {-20, 20}, 0.1},
};
inline constexpr ParameterInfo tensile[] = {
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
inline constexpr ParameterInfo emboss[] = {
    {"emboss_level", "Strength", "gain of the difference to the row above", "times", {0, 20}},
};
inline constexpr ParameterInfo mosaic[] = {
    Column("mosaic_x1", "Rectangle", "one side column of the rectangle"),
    Row("mosaic_y1", "Rectangle", "one side row of the rectangle"),
    Column("mosaic_x2", "Rectangle", "the opposite side column; beyond the picture nothing happens"),
    Row("mosaic_y2", "Rectangle", "the opposite side row; beyond the picture nothing happens"),
    {"mosaic_step", "Blocks", "side of the blocks as a power of two: 3 makes blocks of 8", "", {0, 10}},
};
inline constexpr ParameterInfo mirage[] = {
    {"mirage_width", "Second image", "enlargement of the second image", "1/200", {0, 200}},
    {"mirage_alpha", "Second image", "opacity of the second image; above 100 nothing happens", "%", {0, 100}},
};
inline constexpr ParameterInfo edgelight[] = {
    {"edgelight_level", "Strength", "gain of the edges; strong edges wrap around into bands", "times", {0, 20}},
};
inline constexpr ParameterInfo relief[] = {
    {"relief_angle", "Light", "direction of the light", "degrees", {-360, 360}},
};
inline constexpr ParameterInfo videowall[] = {
    {"videowall_horiTiles", "Tiles", "pictures across", "", {1, 64}},
    {"videowall_verTiles", "Tiles", "pictures down", "", {1, 64}},
};
inline constexpr ParameterInfo spotlight[] = {
    Column("spotlight_x", "Place", "column of the light's centre"),
    Row("spotlight_y", "Place", "row of the light's centre"),
    Until(200, Length("spotlight_r", "Place", "radius of the light", 2)),
    Until(50, {"spotlight_brightness", "Light", "brightness added in the core", "%", {0, 100}}),
    Until(0xFFFFFF, Colour("spotlight_color", "Light", "colour of the light")),
    Until(40, {"spotlight_density", "Light", "opacity of the colour in the core", "%", {0, 100}}),
};
inline constexpr ParameterInfo colorfilter[] = {
    Colour("colorfilter_color", "Glass", "colour of the glass"),
    {"colorfilter_density", "Glass", "how much of the light of other colours the glass absorbs", "%", {0, 100}},
};
inline constexpr Choice palettes[] = {{0, "sunset"}, {1, "comic"}, {2, "garden"}, {3, "lagoon"}};
inline constexpr ParameterInfo popstyle[] = {
    {"popstyle_colors", "Colours", "number of colours", "", {2, 5}},
    Pick("popstyle_palette", "Colours", "which colours, or those of the first panel", palettes),
    Switch("popstyle_panels", "Panels", "four panels in four palettes"),
};
inline constexpr ParameterInfo rotate90X[] = {
    {"EffectNameRotate90X_turns", "Direction", "clockwise quarter turns; below 0 the other way", "", {-3, 3}},
};
inline constexpr ParameterInfo radiate[] = {
    Column("radiate_x", "Place", "column of the rays' centre"),
    Row("radiate_y", "Place", "row of the rays' centre"),
    {"radiate_level", "Strength", "length of the rays; an eighth of it is added to every colour", "", {0, 1000}},
};
inline constexpr ParameterInfo tilereflect[] = {
    Bearing({-180, 180}, {"tilereflect_angle", "Tiles", "angle of the tiles", "degrees", {-180, 180}}),
    Bearing({1, std::numeric_limits<double>::infinity()},
            {"tilereflect_size", "Tiles", "size of the tiles", "pixels", {1, 2000}}),
    Until(8, {"tilereflect_curvature", "Lens", "strength of each tile's lens", "", {-100, 100}}),
};
inline constexpr ParameterInfo mirrorinvert[] = {
    {"mirrorinvert_amount", "Strength", "strength of the inversion", "%", {0, 1000}},
};
inline constexpr ParameterInfo oilpainting[] = {
    Bearing({0, 1000}, {"oilpainting_brushsize", "Brush", "radius of the brush", "pixels", {0, 20}}),
    Until(50, {"oilpainting_coarseness", "Paint", "number of brightness classes less one", "", {0, 255}}),
};
inline constexpr Choice stereoOutputs[] = {
    {0, "anaglyph for red-cyan glasses"}, {1, "side by side"}, {2, "top and bottom"}};
inline constexpr ParameterInfo trans2D3D[] = {
    {"2D_3D_TransForm_strength",
     "Depth",
     "shift between the eyes from the farthest to the nearest",
     "1/1000 of the width",
     {0, 100}},
    Pick("2D_3D_TransForm_output", "Views", "how the two views are shown", stereoOutputs),
    Switch("2D_3D_TransForm_swap", "Views", "exchange the eyes"),
};
inline constexpr ParameterInfo addnoise[] = {
    {"addnoise_strength", "Grain", "how far the grain goes in middle tones (standard deviation)", "levels", {0, 255}},
    Switch("addnoise_color", "Grain", "a grain of its own for each colour"),
    Seed("addnoise_seed", "another number, another grain"),
};
inline constexpr ParameterInfo atomize[] = {
    {"atomize_radius", "Spray", "how far a pixel may come from", "pixels", {0, 255}},
    Seed("atomize_seed", "another number, another spray"),
};
inline constexpr ParameterInfo stroke[] = {
    {"stroke_strength", "Pencil", "pressure of the pencil", "%", {0, 100}},
    {"stroke_color", "Pencil", "how much of the picture's colours stays", "%", {0, 100}},
};
inline constexpr ParameterInfo portrait[] = {
    {"portrait_strength",
     "Skin",
     "contrast that still counts as small: 50 smooths up to about 11 levels",
     "%",
     {0, 100}},
    {"portrait_radius", "Skin", "how far a pixel is smoothed over", "pixels", {1, 64}},
    {"portrait_glow", "Light", "light that bright parts shed around them", "%", {0, 100}},
};

// Lists as the module takes them: items joined by ";", texts by "\\".
inline constexpr ParameterInfo menuTemplate[] = {
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

// Those that arrange their pictures by themselves paint in a mood too.
inline constexpr Choice moods[] = {{0, "its own colours"}, {1, "light"}, {2, "dark"}};
inline constexpr auto arrangedTemplate = [] {
    std::array<ParameterInfo, std::size(menuTemplate) + 1> rows{};
    std::copy(std::begin(menuTemplate), std::end(menuTemplate), rows.begin());
    rows.back() = Pick("mood", "Colours", "the colours of what the template paints", moods);
    return rows;
}();

inline constexpr const char* transitions[] = {"crossfade", "push",     "wipe", "zoom",  "iris",
                                              "blinds",    "pageturn", "cut",  "random"};
inline constexpr const char* slideMotions[] = {"none",     "zoomin", "zoomout", "panleft",
                                               "panright", "panup",  "pandown", "random"};
inline constexpr const char* fits[] = {"pad", "crop", "blur"};
inline constexpr ParameterInfo slide[] = {
    Text("paths", "Pictures", "the pictures, in order, joined by \";\""),
    Text("films", "Pictures", "for each one: true for a film that plays meanwhile"),
    Word("fit", "Pictures", "what becomes of pictures of another shape", fits),
    Switch("loop", "Pictures", "whether the first picture follows the last one"),
    {"slideDuration", "Pictures", "how long a picture is alone", "frames", {0, 100000}},
    Text("slideDurations", "Pictures", "for each one: how long it is alone, if not as long as that", "frames"),
    {"transitionDuration", "Transitions", "how long it shares the frame with the next one", "frames", {0, 10000}},
    Word("transitions", "Transitions", "how one becomes the next, in turn", transitions, ";"),
    Word("motion", "Motion", "how pictures move, in turn", slideMotions, ";"),
    {"motionAmount", "Motion", "how much larger a moving picture gets", "%", {1, 100}},
    Seed("seed", "of the random choices"),
};

inline constexpr const char* fontStyles[] = {"bold", "italic", "underline", "outline", "shadow", "halo", "plate"};
inline constexpr const char* aligns[] = {"left", "center", "right"};
inline constexpr const char* valigns[] = {"top", "middle", "bottom"};
inline constexpr const char* titleMotions[] = {"none", "left", "right", "up", "down", "zoom"};
inline constexpr ParameterInfo title[] = {
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

}  // namespace Nifikral::ParameterRows
