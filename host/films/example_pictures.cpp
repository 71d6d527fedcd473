#include "host/films/example_pictures.h"

#include <cmath>
#include <numbers>
#include <random>

#include "host/films/cairo_handles.h"

namespace Nifikral {
namespace {

constexpr double circle = 2 * std::numbers::pi;

struct Colour {
    double red, green, blue;
};

Colour Mix(Colour a, Colour b, double share) {
    const auto mix = [&](double x, double y) { return x + (y - x) * share; };
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

void SetColour(cairo_t* context, Colour colour, double opacity = 1) {
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, opacity);
}

void AddStop(const CairoPatternPtr& pattern, double at, Colour colour, double opacity = 1) {
    cairo_pattern_add_color_stop_rgba(pattern.get(), at, colour.red, colour.green, colour.blue, opacity);
}

enum class Ground { Hills, Forest, Water };

// A landscape on a canvas that is 1 high: the light in the sky, ridges that grow darker towards the viewer, the ground.
struct Landscape {
    const char* file;
    int width, height;
    Colour skyAbove, skyBelow, light;
    double lightX, lightY, lightRadius;
    Colour farRidge, nearRidge;
    double ridgeHeight;
    Ground ground;
    bool stars;
    unsigned seed;
};

constexpr Landscape landscapes[] = {
    {"background.png",
     1280,
     720,
     {.12, .14, .32},
     {.93, .55, .42},
     {1, .86, .62},
     1.3,
     .56,
     .07,
     {.56, .36, .47},
     {.09, .08, .18},
     .16,
     Ground::Hills,
     true,
     3},
    {"lake.png",
     640,
     360,
     {.30, .58, .86},
     {.86, .94, .97},
     {1, 1, .92},
     .45,
     .22,
     .06,
     {.52, .66, .80},
     {.13, .32, .34},
     .14,
     Ground::Water,
     false,
     11},
    {"desert.png",
     640,
     360,
     {.33, .62, .82},
     {.99, .86, .64},
     {1, .97, .80},
     1.35,
     .28,
     .08,
     {.90, .62, .40},
     {.62, .30, .14},
     .07,
     Ground::Hills,
     false,
     5},
    {"forest.png",
     640,
     360,
     {.62, .78, .84},
     {.93, .96, .86},
     {1, 1, .9},
     .9,
     .25,
     .07,
     {.55, .72, .62},
     {.05, .22, .13},
     .12,
     Ground::Forest,
     false,
     8},
    {"night.png",
     640,
     360,
     {.02, .03, .10},
     {.13, .20, .40},
     {.95, .96, 1},
     1.25,
     .24,
     .055,
     {.11, .16, .32},
     {.01, .02, .06},
     .15,
     Ground::Water,
     true,
     21},
};

// The same place by day, so bright that dark texts can be read on it, or by night.
Landscape InMood(Landscape scene, Mood mood) {
    struct Colours {
        Colour skyAbove, skyBelow, light, farRidge, nearRidge;
    };
    constexpr Colours day{{.70, .85, .95}, {.99, .97, .90}, {1, 1, .96}, {.84, .89, .93}, {.66, .75, .78}};
    constexpr Colours night{{.02, .03, .08}, {.15, .18, .30}, {.93, .95, 1}, {.16, .18, .29}, {.02, .02, .06}};
    if (mood == Mood::Own) return scene;
    const Colours& colours = mood == Mood::Light ? day : night;
    scene.skyAbove = colours.skyAbove;
    scene.skyBelow = colours.skyBelow;
    scene.light = colours.light;
    scene.farRidge = colours.farRidge;
    scene.nearRidge = colours.nearRidge;
    scene.stars = mood == Mood::Dark;
    return scene;
}

// Smooth ups and downs of about -1 to 1 along x.
class Ridge {
 public:
    Ridge(std::mt19937& random, double roughness) {
        double height = .6, frequency = 2;
        for (Wave& wave : m_waves) {
            wave = {height, frequency * (.8 + .4 * Unit(random)), circle * Unit(random)};
            height *= roughness;
            frequency *= 2.1;
        }
    }
    double At(double x) const {
        double sum = 0;
        for (const Wave& wave : m_waves) sum += wave.height * std::sin(wave.frequency * x + wave.phase);
        return sum;
    }
    static double Unit(std::mt19937& random) { return random() / 4294967296.0; }

 private:
    struct Wave {
        double height, frequency, phase;
    };
    Wave m_waves[6];
};

void PaintSky(cairo_t* context, const Landscape& scene, double aspect, std::mt19937& random) {
    const CairoPatternPtr sky(cairo_pattern_create_linear(0, 0, 0, .75));
    AddStop(sky, 0, scene.skyAbove);
    AddStop(sky, 1, scene.skyBelow);
    cairo_set_source(context, sky.get());
    cairo_paint(context);
    for (int i = 0; scene.stars && i < 220; ++i) {
        const double x = aspect * Ridge::Unit(random), y = .5 * Ridge::Unit(random), size = Ridge::Unit(random);
        SetColour(context, {1, 1, .95}, (.3 + .7 * size) * (1 - y / .5));
        cairo_arc(context, x, y, .0008 + .0018 * size * size, 0, circle);
        cairo_fill(context);
    }
    const CairoPatternPtr glow(cairo_pattern_create_radial(scene.lightX, scene.lightY, scene.lightRadius, scene.lightX,
                                                           scene.lightY, scene.lightRadius * 7));
    AddStop(glow, 0, scene.light, .55);
    AddStop(glow, .3, scene.light, .18);
    AddStop(glow, 1, scene.light, 0);
    cairo_set_source(context, glow.get());
    cairo_paint(context);
    SetColour(context, scene.light);
    cairo_arc(context, scene.lightX, scene.lightY, scene.lightRadius, 0, circle);
    cairo_fill(context);
}

void PaintClouds(cairo_t* context, const Landscape& scene, double aspect, std::mt19937& random) {
    for (int cloud = 0; cloud < 5; ++cloud) {
        const double x = aspect * Ridge::Unit(random), y = .08 + .3 * Ridge::Unit(random);
        for (int puff = 0; puff < 9; ++puff) {
            const double dx = .22 * (Ridge::Unit(random) - .5), radius = .03 + .05 * Ridge::Unit(random);
            cairo_save(context);
            cairo_translate(context, x + dx, y);
            cairo_scale(context, 2.2, .55);
            const CairoPatternPtr soft(cairo_pattern_create_radial(0, 0, 0, 0, 0, radius));
            AddStop(soft, 0, Mix(scene.skyBelow, {1, 1, 1}, .5), .28);
            AddStop(soft, 1, Mix(scene.skyBelow, {1, 1, 1}, .5), 0);
            cairo_set_source(context, soft.get());
            cairo_paint(context);
            cairo_restore(context);
        }
    }
}

void PaintRidges(cairo_t* context, const Landscape& scene, double aspect, std::mt19937& random) {
    constexpr int count = 5;
    const double bottom = scene.ground == Ground::Water ? .66 : .92;
    for (int i = 0; i < count; ++i) {
        const double share = double(i) / (count - 1), level = .52 + (bottom - .52) * share;
        const Ridge ridge(random, scene.ground == Ground::Hills && scene.ridgeHeight < .1 ? .3 : .48);
        const auto top = [&](double x) { return level - scene.ridgeHeight * (1 - .45 * share) * ridge.At(2 * x); };
        const Colour colour = Mix(scene.farRidge, scene.nearRidge, share);
        const CairoPatternPtr haze(cairo_pattern_create_linear(0, level - scene.ridgeHeight, 0, level + .25));
        AddStop(haze, 0, colour);
        AddStop(haze, 1, Mix(colour, scene.skyBelow, .45 * (1 - share)));
        cairo_set_source(context, haze.get());
        cairo_move_to(context, 0, 1);
        for (double x = 0; x <= aspect + .002; x += .002) cairo_line_to(context, x, top(x));
        cairo_line_to(context, aspect, 1);
        cairo_fill(context);
        if (scene.ground != Ground::Forest || i == 0) continue;
        SetColour(context, Mix(colour, {0, .05, .02}, .25));
        for (double x = 0; x < aspect; x += .012 + .02 * share * Ridge::Unit(random)) {
            const double height = (.03 + .09 * share) * (.6 + .4 * Ridge::Unit(random)), y = top(x) + .01;
            cairo_move_to(context, x - height * .2, y);
            cairo_line_to(context, x, y - height);
            cairo_line_to(context, x + height * .2, y);
            cairo_fill(context);
        }
    }
}

// Water mirrors the sky's colours, with glints under the light.
void PaintWater(cairo_t* context, const Landscape& scene, double aspect, std::mt19937& random) {
    constexpr double shore = .70;
    const CairoPatternPtr water(cairo_pattern_create_linear(0, shore, 0, 1));
    AddStop(water, 0, Mix(scene.skyBelow, scene.nearRidge, .25));
    AddStop(water, 1, Mix(scene.skyAbove, scene.nearRidge, .45));
    cairo_set_source(context, water.get());
    cairo_rectangle(context, 0, shore, aspect, 1 - shore);
    cairo_fill(context);
    for (int i = 0; i < 420; ++i) {
        const double depth = Ridge::Unit(random), y = shore + (1 - shore) * depth;
        const double spread = .05 + .5 * depth,
                     x = i % 3 ? scene.lightX + spread * (Ridge::Unit(random) - .5) : aspect * Ridge::Unit(random);
        SetColour(context, i % 3 ? scene.light : scene.skyBelow, (i % 3 ? .35 : .12) * (.3 + .7 * Ridge::Unit(random)));
        cairo_rectangle(context, x, y, .01 + .05 * depth * Ridge::Unit(random), .0015 + .003 * depth);
        cairo_fill(context);
    }
}

std::string ToPng(const CairoSurfacePtr& surface) {
    std::string png;
    const auto append = [](void* to, const unsigned char* bytes, unsigned count) {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
        return CAIRO_STATUS_SUCCESS;
    };
    if (cairo_surface_write_to_png_stream(surface.get(), append, &png) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    return png;
}

// Draws on a canvas that is 1 high and width / height wide.
template <class Paint>
std::string Draw(cairo_format_t format, int width, int height, Paint paint) {
    const CairoSurfacePtr surface = NewSurface(format, width, height);
    const CairoPtr context(cairo_create(surface.get()));
    cairo_scale(context.get(), height, height);
    paint(context.get(), double(width) / height);
    CheckDrawn(context.get());
    return ToPng(surface);
}

std::string DrawLandscape(const Landscape& scene) {
    return Draw(CAIRO_FORMAT_RGB24, scene.width, scene.height, [&](cairo_t* context, double aspect) {
        std::mt19937 random(scene.seed);
        PaintSky(context, scene, aspect, random);
        if (!scene.stars) PaintClouds(context, scene, aspect, random);
        PaintRidges(context, scene, aspect, random);
        if (scene.ground == Ground::Water) PaintWater(context, scene, aspect, random);
    });
}

std::string DrawBalloon() {
    return Draw(CAIRO_FORMAT_ARGB32, 160, 224, [](cairo_t* context, double aspect) {
        const double x = aspect / 2, y = .36, radius = .33;
        constexpr Colour stripes[] = {{.86, .20, .18}, {.98, .80, .30}};
        SetColour(context, {.35, .22, .12});
        cairo_set_line_width(context, .008);
        for (const double side : {-1.0, 1.0}) {
            cairo_move_to(context, x + side * .17, y + .27);
            cairo_line_to(context, x + side * .055, .86);
        }
        cairo_stroke(context);
        cairo_rectangle(context, x - .065, .85, .13, .1);
        cairo_fill(context);
        // The hull: an arc above, drawn together towards the basket, in stripes that grow narrow at the sides.
        cairo_arc(context, x, y, radius, std::numbers::pi, 0);
        cairo_curve_to(context, x + radius, y + .2, x + .14, y + .3, x + .08, y + .42);
        cairo_line_to(context, x - .08, y + .42);
        cairo_curve_to(context, x - .14, y + .3, x - radius, y + .2, x - radius, y);
        cairo_clip(context);
        for (int i = 0; i < 9; ++i) {
            const auto edge = [&](int n) { return x - radius * std::cos(std::numbers::pi * n / 9); };
            SetColour(context, stripes[i % 2]);
            cairo_rectangle(context, edge(i), 0, edge(i + 1) - edge(i) + .002, 1);
            cairo_fill(context);
        }
        const CairoPatternPtr shade(cairo_pattern_create_radial(x - .12, y - .14, .05, x, y, .45));
        AddStop(shade, 0, {1, 1, 1}, .45);
        AddStop(shade, .45, {1, 1, 1}, 0);
        AddStop(shade, .46, {0, 0, 0}, 0);
        AddStop(shade, 1, {0, 0, 0}, .45);
        cairo_set_source(context, shade.get());
        cairo_paint(context);
    });
}

// White with round corners on black.
std::string DrawMask() {
    return Draw(CAIRO_FORMAT_RGB24, 640, 360, [](cairo_t* context, double aspect) {
        constexpr double margin = .006, radius = .1, quarter = std::numbers::pi / 2;
        const double left = margin, right = aspect - margin, top = margin, bottom = 1 - margin;
        SetColour(context, {0, 0, 0});
        cairo_paint(context);
        SetColour(context, {1, 1, 1});
        cairo_arc(context, right - radius, top + radius, radius, -quarter, 0);
        cairo_arc(context, right - radius, bottom - radius, radius, 0, quarter);
        cairo_arc(context, left + radius, bottom - radius, radius, quarter, 2 * quarter);
        cairo_arc(context, left + radius, top + radius, radius, 2 * quarter, 3 * quarter);
        cairo_fill(context);
    });
}

}  // namespace

std::vector<ExamplePicture> DrawExamplePictures(Mood mood, bool firstAlone) {
    std::vector<ExamplePicture> pictures;
    for (const Landscape& scene : landscapes) {
        pictures.push_back({scene.file, DrawLandscape(pictures.empty() ? InMood(scene, mood) : scene)});
        if (firstAlone) return pictures;
    }
    pictures.push_back({"balloon.png", DrawBalloon()});
    pictures.push_back({"mask.png", DrawMask()});
    return pictures;
}

}  // namespace Nifikral
