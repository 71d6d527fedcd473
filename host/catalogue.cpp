#include "host/catalogue.h"

namespace Nifikral {
namespace {

constexpr Choice offOn[] = {{0, "off"}, {1, "on"}};

constexpr ParameterInfo duration = {
    "duration", "length of the effect; the command sets it to the number of frames", "frames", {1, 1e9}};

constexpr ParameterInfo gaussBlur[] = {
    {"blur_count", "how often the blur is applied to each frame", "passes", {0, 50}, {}, {0, 10000}},
};
constexpr ParameterInfo laplacianSharpen[] = {
    {"sharpen_count", "how often the sharpening is applied to each frame", "passes", {0, 10}, {}, {0, 10000}},
};
constexpr ParameterInfo brightnessContrast[] = {
    {"brightness", "shift towards white (up) or black (down)", "%", {-100, 100}},
    {"contrast", "change of contrast about middle grey", "%", {-100, 100}},
    {"saturation", "change of colourfulness; 0 leaves it, any other value near 0 doubles it", "%", {-100, 100}},
};
constexpr ParameterInfo fade[] = {
    {"FadeMin", "lowest opacity that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "highest opacity that the fade may use", "1/256", {0, 256}},
};
constexpr ParameterInfo directFade[] = {
    {"FadeMin", "lowest level of the colours that the fade may use", "1/256", {0, 256}},
    {"FadeMax", "highest level of the colours that the fade may use", "1/256", {0, 256}},
};
constexpr ParameterInfo transparency[] = {
    {"transparency_opacity", "opacity of the whole picture", "%", {0, 100}},
};
constexpr ParameterInfo reverse[] = {
    {"mirror", "flip left to right", "", {0, 1}, offOn},
    {"vertical", "flip top to bottom", "", {0, 1}, offOn},
};
constexpr ParameterInfo spherize[] = {
    {"spherize_r", "radius of the lens", "pixels", {0, 16384}},
    {"spherize_x", "column of the lens's centre", "pixels", {0, 16384}},
    {"spherize_y", "row of the lens's centre", "pixels", {0, 16384}},
    {"spherize_scale", "strength: above 0 bulges, below 0 pinches", "", {-4, 4}},
};
constexpr ParameterInfo magnifier[] = {
    {"magnifier_r", "radius of the glass", "pixels", {0, 8192}},
    {"magnifier_x", "column of the glass's centre", "pixels", {0, 16384}},
    {"magnifier_y", "row of the glass's centre", "pixels", {0, 16384}},
    {"magnifier_scale", "magnification; nothing happens up to 1", "times", {0, 16}},
};
constexpr ParameterInfo rotate[] = {
    {"rotate_r", "radius of the swirl", "pixels", {0, 16384}},
    {"rotate_x", "column of the swirl's centre", "pixels", {0, 16384}},
    {"rotate_y", "row of the swirl's centre", "pixels", {0, 16384}},
    {"rotate_scale", "strength of the twist; its sign is the direction", "", {-20, 20}},
};
constexpr ParameterInfo tensile[] = {
    {"tensile_vertical", "stretch a band of rows", "", {0, 1}, offOn},
    {"tensile_vertical_y1", "first row of the band", "pixels", {0, 16384}},
    {"tensile_vertical_y2", "row just below the band", "pixels", {0, 16384}},
    {"tensile_vertical_scale", "vertical stretch; nothing happens below 1", "times", {0, 16}},
    {"tensile_horizontal", "stretch a band of columns", "", {0, 1}, offOn},
    {"tensile_horizontal_x1", "first column of the band", "pixels", {0, 16384}},
    {"tensile_horizontal_x2", "column just right of the band", "pixels", {0, 16384}},
    {"tensile_horizontal_scale", "horizontal stretch; nothing happens below 1", "times", {0, 16}},
};
constexpr ParameterInfo emboss[] = {
    {"emboss_level", "gain of the difference to the row above", "times", {0, 20}},
};
constexpr ParameterInfo mosaic[] = {
    {"mosaic_x1", "one side column of the rectangle", "pixels", {0, 16384}},
    {"mosaic_y1", "one side row of the rectangle", "pixels", {0, 16384}},
    {"mosaic_x2", "the opposite side column; beyond the picture nothing happens", "pixels", {0, 16384}},
    {"mosaic_y2", "the opposite side row; beyond the picture nothing happens", "pixels", {0, 16384}},
    {"mosaic_step", "side of the blocks as a power of two: 3 makes blocks of 8", "", {0, 10}},
};
constexpr ParameterInfo mirage[] = {
    {"mirage_width", "enlargement of the second image", "1/200", {0, 200}},
    {"mirage_alpha", "opacity of the second image; above 100 nothing happens", "%", {0, 100}},
};
constexpr ParameterInfo edgelight[] = {
    {"edgelight_level", "gain of the edges; strong edges wrap around into bands", "times", {0, 20}},
};
constexpr ParameterInfo relief[] = {
    {"relief_angle", "direction of the light", "degrees", {-360, 360}},
};
constexpr ParameterInfo videowall[] = {
    {"videowall_horiTiles", "pictures across", "", {1, 64}},
    {"videowall_verTiles", "pictures down", "", {1, 64}},
};
constexpr ParameterInfo spotlight[] = {
    {"spotlight_x", "column of the light's centre", "pixels", {0, 16384}},
    {"spotlight_y", "row of the light's centre", "pixels", {0, 16384}},
    {"spotlight_r", "radius of the light", "pixels", {2, 16384}},
    {"spotlight_brightness", "brightness added in the core", "%", {0, 100}},
    {"spotlight_color", "colour of the light, 0xRRGGBB", "colour", {0, 0xFFFFFF}},
    {"spotlight_density", "opacity of the colour in the core", "%", {0, 100}},
};
constexpr ParameterInfo colorfilter[] = {
    {"colorfilter_color", "colour of the glass, 0xRRGGBB", "colour", {0, 0xFFFFFF}},
    {"colorfilter_density", "how much of the light of other colours the glass absorbs", "%", {0, 100}},
};
constexpr ParameterInfo popstyle[] = {
    {"popstyle_colors", "number of colours", "", {2, 5}},
    {"popstyle_palette", "which colours, or those of the first panel", "", {0, 3}},
    {"popstyle_panels", "four panels in four palettes", "", {0, 1}, offOn},
};
constexpr ParameterInfo rotate90X[] = {
    {"EffectNameRotate90X_turns", "clockwise quarter turns; below 0 the other way", "", {-3, 3}},
};
constexpr ParameterInfo radiate[] = {
    {"radiate_x", "column of the rays' centre", "pixels", {0, 16384}},
    {"radiate_y", "row of the rays' centre", "pixels", {0, 16384}},
    {"radiate_level", "length of the rays; an eighth of it is added to every colour", "", {0, 1000}},
};
constexpr ParameterInfo tilereflect[] = {
    {"tilereflect_angle", "angle of the tiles", "degrees", {-180, 180}},
    {"tilereflect_size", "size of the tiles", "pixels", {1, 2000}},
    {"tilereflect_curvature", "strength of each tile's lens", "", {-100, 100}},
};
constexpr ParameterInfo mirrorinvert[] = {
    {"mirrorinvert_amount", "strength of the inversion", "%", {0, 1000}},
};
constexpr ParameterInfo oilpainting[] = {
    {"oilpainting_brushsize", "radius of the brush", "pixels", {0, 20}, {}, {0, 1000}},
    {"oilpainting_coarseness", "number of brightness classes less one", "", {0, 255}, {}, {0, 1 << 20}},
};
constexpr Choice stereoOutputs[] = {{0, "anaglyph for red-cyan glasses"}, {1, "side by side"}, {2, "top and bottom"}};
constexpr ParameterInfo trans2D3D[] = {
    {"2D_3D_TransForm_strength",
     "shift between the eyes from the farthest to the nearest",
     "1/1000 of the width",
     {0, 100}},
    {"2D_3D_TransForm_output", "how the two views are shown", "", {0, 2}, stereoOutputs},
    {"2D_3D_TransForm_swap", "exchange the eyes", "", {0, 1}, offOn},
};
constexpr ParameterInfo addnoise[] = {
    {"addnoise_strength", "how far the grain goes in middle tones (standard deviation)", "levels", {0, 255}},
    {"addnoise_color", "a grain of its own for each colour", "", {0, 1}, offOn},
    {"addnoise_seed", "another number, another grain", "", {}},
};
constexpr ParameterInfo atomize[] = {
    {"atomize_radius", "how far a pixel may come from", "pixels", {0, 255}},
    {"atomize_seed", "another number, another spray", "", {}},
};
constexpr ParameterInfo stroke[] = {
    {"stroke_strength", "pressure of the pencil", "%", {0, 100}},
    {"stroke_color", "how much of the picture's colours stays", "%", {0, 100}},
};
constexpr ParameterInfo portrait[] = {
    {"portrait_strength", "contrast that still counts as small: 50 smooths up to about 15 levels", "%", {0, 100}},
    {"portrait_radius", "how far a pixel is smoothed over", "pixels", {1, 64}},
    {"portrait_glow", "light that bright parts shed around them", "%", {0, 100}},
};

// Lists as the module takes them: items joined by ";", texts by "\\".
constexpr ParameterInfo menuTemplate[] = {
    {"width", "width of the menu; 0: the frame's", "pixels", {0, 16384}},
    {"height", "height of the menu; 0: the frame's", "pixels", {0, 16384}},
    {"sourcePath", "background: a picture or a video", ""},
    {"backgroundMask", "picture that is white where the background shows", ""},
    {"textNumber", "how many texts there are", "", {0, 1000}},
    {"textInfos", "the texts, each with its font, colour, place and motion", ""},
    {"additionSourceNumber", "how many pictures and videos there are; set before their lists", "", {0, 4096}},
    {"isAdditionSourceImages", "for each one: true for a picture, false for a video", ""},
    {"additionSourcePaths", "for each one: its file", ""},
    {"additionSourceSizes", "for each one: width and height of the box that it fits into", "pixels"},
    {"maskPaths", "for each one: a picture that is white where it shows", ""},
    {"startPositions", "for each one: where its top-left corner starts, x and y", "pixels"},
    {"endPositions", "for each one: where it stops, x and y", "pixels"},
    {"moveFormulas", "for each one: slope and intercept of its way", ""},
    {"moveSpeeds", "for each one: how far it moves to the right", "pixels/frame"},
    {"startTrans", "for each one: opacity on the first frame", "1/255"},
    {"endTrans", "for each one: opacity at the end of its fade", "1/255"},
    {"fadeSpeeds", "for each one: how far its opacity changes", "1/255 a frame"},
};

constexpr ParameterInfo slide[] = {
    {"paths", "the pictures, in order, joined by \";\"", ""},
    {"slideDuration", "how long a picture is alone", "frames", {0, 100000}},
    {"transitionDuration", "how long it shares the frame with the next one", "frames", {0, 10000}},
    {"transitions", "crossfade, push, wipe, zoom, iris, blinds, pageturn, cut or random; repeated", ""},
    {"motion", "none, zoomin, zoomout, panleft, panright, panup, pandown or random; repeated", ""},
    {"motionAmount", "how much larger a moving picture gets", "%", {1, 100}},
    {"fit", "pictures of another shape: pad, crop or blur", ""},
    {"loop", "whether the first picture follows the last one", "", {0, 1}, offOn},
    {"seed", "of the random choices", ""},
};

constexpr ParameterInfo title[] = {
    {"text", "what it says, with line feeds between lines", ""},
    {"face", "font family", ""},
    {"fontstyle", "any of bold, italic, underline, outline, shadow", ""},
    {"size", "of the font; 0 for a twelfth of the frame's height", "pixels", {0, 1000}},
    {"color", "of the text, #rrggbb", ""},
    {"box", "where it stands: x;y;width;height; empty for the frame inside its margins", "pixels"},
    {"align", "of the lines in the box: left, center or right", ""},
    {"valign", "of the text in the box: top, middle or bottom", ""},
    {"inDuration", "how long it comes in", "frames", {0, 1000}},
    {"outDuration", "how long it leaves, at the end of the duration", "frames", {0, 1000}},
    {"inMotion", "how it comes: none, left, right, up, down or zoom", ""},
    {"outMotion", "how it leaves: none, left, right, up, down or zoom", ""},
    {"distance", "how far it moves; 0 for as far as the font is large", "pixels", {0, 16384}},
    {"lineDelay", "how much later than the one above each line comes and leaves", "frames", {0, 1000}},
};

constexpr EffectInfo catalogue[] = {
    {"simple_gauss_blur", "a soft blur", plain, gaussBlur},
    {"simple_laplacian_sharpen", "sharper contours", plain, laplacianSharpen},
    {"gray", "shades of grey"},
    {"flip_color", "blue and red exchanged"},
    {"invert", "a negative"},
    {"aged_film", "a sepia tone"},
    {"brightness_contrast", "brightness, contrast and saturation", plain, brightnessContrast},
    {"fadein", "fades the picture in", variesWithTime | changesAlpha, fade},
    {"fadeout", "fades the picture out", variesWithTime | changesAlpha, fade},
    {"directfadein", "fades the picture in from black", variesWithTime, directFade},
    {"directfadeout", "fades the picture out to black", variesWithTime, directFade},
    {"reverse", "flips the picture", plain, reverse},
    {"spherize", "a lens that bulges or pinches", plain, spherize},
    {"magnifier", "a magnifying glass", plain, magnifier},
    {"rotate", "a swirl", plain, rotate},
    {"tensile", "stretches a band of the picture", plain, tensile},
    {"emboss", "a raised grey surface lit from above", plain, emboss},
    {"mosaic", "hides a rectangle behind large blocks", plain, mosaic},
    {"portrait", "a flattering softness", plain, portrait},
    {"mirage", "a soft double image", plain, mirage},
    {"stroke", "a pencil drawing", plain, stroke},
    {"transparency", "makes the whole picture translucent", changesAlpha, transparency},
    {"colorfilter", "seen through a coloured glass", plain, colorfilter},
    {"atomize", "the picture as spray", plain, atomize},
    {"popstyle", "pop art in a few flat colours", plain, popstyle},
    {"dilate", "bright areas grow"},
    {"erode", "dark areas grow"},
    {"edgelight", "glowing edges", plain, edgelight},
    {"relief", "a relief lit from a side", plain, relief},
    {"videowall", "the picture repeated in tiles", plain, videowall},
    {"addnoise", "film grain", plain, addnoise},
    {"spotlight", "a spot of coloured light", plain, spotlight},
    {"radiate", "rays from a point", plain, radiate},
    {"tilereflect", "seen through rotated glass tiles", plain, tilereflect},
    {"mirrorinvert", "turned inside out about the centre", plain, mirrorinvert},
    {"oilpainting", "an oil painting", plain, oilpainting},
    {"2D_3D_TransForm", "two views for the eyes out of one picture", plain, trans2D3D},
    {"menu_fullscreen", "one picture at a time fills the screen and dissolves into the next", generator | menu,
     menuTemplate},
    {"menu_layeredtitles", "texts on translucent bands that slide over each other, soft pictures behind",
     generator | menu, menuTemplate},
    {"menu_memories", "photographs that fall onto a table and lift off again", generator | menu, menuTemplate},
    {"menu_oldage", "oval portraits in an old film: sepia, dust and flicker", generator | menu, menuTemplate},
    {"menu_resizingpanels", "panels divide the screen, and each in turn becomes the large one", generator | menu,
     menuTemplate},
    {"menu_performance", "three screens on a stage before a curtain of light", generator | menu, menuTemplate},
    {"menu_babygirl", "oval pictures float over pink clouds between bubbles and hearts", generator | menu,
     menuTemplate},
    {"menu_babyboy", "round-cornered pictures float over light-blue clouds between bubbles and stars", generator | menu,
     menuTemplate},
    {"menu_rectangles", "outlined rectangles with pictures cross the screen at different depth", generator | menu,
     menuTemplate},
    {"menu_push", "each picture pushes the one before it off the screen", generator | menu, menuTemplate},
    {"menu_travel", "photographs that travel a dashed route on a map", generator | menu, menuTemplate},
    {"menu_pets", "pictures that hop in, and paw prints that walk across", generator | menu, menuTemplate},
    {"menu_stacking", "a pile of photographs that grows and is swept away", generator | menu, menuTemplate},
    {"menu_specialoccasion", "pictures rise like balloons in a golden frame; confetti and sparkles", generator | menu,
     menuTemplate},
    {"menu_vignette", "one picture at a time in a soft oval, all of them small below", generator | menu, menuTemplate},
    {"menu_videowall", "a wall of screens that breathes; each in turn covers its middle", generator | menu,
     menuTemplate},
    {"slide", "a slideshow with transitions", generator, slide},
    {"title", "styled lines that fade and move in and out", generator | variesWithTime, title},
    {"EffectNameRotate90X", "quarter turns inside the frame", plain, rotate90X},
    {"menu_festival", "pictures swing on strings with lanterns, fireworks in a night sky behind", generator | menu,
     menuTemplate},
    {"submenu_festival", "a row of pictures on a line under fireworks, each lit in turn", generator | menu,
     menuTemplate},
    {"instructionmenu_festival", "a dark panel for texts under fireworks, beside a picture on strings",
     generator | menu, menuTemplate},
    {"submenu_common", "rows of pictures with strips for numbers and titles, each marked in turn", generator | menu,
     menuTemplate},
    {"instructionmenu_common", "a light panel for texts beside a picture", generator | menu, menuTemplate},
    {"menu_common", "pictures that travel and fade over a background", generator | menu, menuTemplate},
    {"menu_memories2", "an album whose photographs come forward in turn", generator | menu, menuTemplate},
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

}  // namespace Nifikral
