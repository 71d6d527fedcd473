#include "host/catalogue/gallery_settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Nifikral {
namespace {

struct Row {
    const char* effect;
    /// "50%w" stands for half the picture's width, "50%h" for half its height, "50%s" for half its shorter side.
    const char* settings;
    int times = 1;  ///< how often, for an effect whose single pass hardly shows
};

constexpr Row rows[] = {
    {"simple_gauss_blur", "blur_count=12"},
    {"simple_laplacian_sharpen", "sharpen_count=1"},
    {"brightness_contrast", "brightness=10:contrast=30:saturation=15"},
    {"fadein", "FadeMin=80"},
    {"fadeout", "FadeMax=144"},
    {"directfadein", "FadeMin=80"},
    {"directfadeout", "FadeMax=144"},
    {"reverse", "mirror=1:vertical=1"},
    {"spherize", "spherize_x=50%w:spherize_y=50%h:spherize_r=45%s:spherize_scale=0.5"},
    {"magnifier", "magnifier_x=50%w:magnifier_y=50%h:magnifier_r=28%s:magnifier_scale=2"},
    {"rotate", "rotate_x=50%w:rotate_y=50%h:rotate_r=45%s:rotate_scale=4"},
    {"tensile",
     "tensile_horizontal=1:tensile_horizontal_x1=35%w:tensile_horizontal_x2=65%w:tensile_horizontal_scale=2"},
    {"emboss", "emboss_level=2"},
    {"mosaic", "mosaic_x1=30%w:mosaic_y1=25%h:mosaic_x2=70%w:mosaic_y2=75%h:mosaic_step=5"},
    {"mirage", "mirage_width=40:mirage_alpha=60"},
    {"popstyle", "popstyle_panels=1"},
    {"portrait", "portrait_strength=80:portrait_radius=12:portrait_glow=40"},
    {"dilate", "", 3},
    {"erode", "", 3},
    {"edgelight", "edgelight_level=3"},
    {"relief", "relief_angle=45"},
    {"videowall", "videowall_horiTiles=3:videowall_verTiles=3"},
    {"addnoise", "addnoise_strength=25"},
    {"spotlight",
     "spotlight_x=50%w:spotlight_y=50%h:spotlight_r=40%s:spotlight_brightness=50:spotlight_color=0xFFD060:"
     "spotlight_density=30"},
    {"radiate", "radiate_x=50%w:radiate_y=50%h:radiate_level=100"},
    {"tilereflect", "tilereflect_angle=30:tilereflect_size=16%s:tilereflect_curvature=8"},
    {"mirrorinvert", "mirrorinvert_amount=100"},
    {"oilpainting", "oilpainting_brushsize=4:oilpainting_coarseness=50"},
};

}  // namespace

GallerySettings SettingsForGallery(std::string_view effect, int width, int height) {
    const auto row = std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) { return effect == r.effect; });
    if (row == std::end(rows)) return {};
    std::string text = row->settings;
    for (std::size_t sign; (sign = text.find('%')) != std::string::npos;) {
        const std::size_t begin = text.rfind('=', sign) + 1;
        double percent = 0;
        std::from_chars(text.data() + begin, text.data() + sign, percent);
        const char unit = text.at(sign + 1);
        const int whole = unit == 'w' ? width : unit == 'h' ? height : std::min(width, height);
        // No effect takes a length of nothing.
        const long pixels = std::max(std::lround(percent / 100 * whole), 1L);
        text.replace(begin, sign + 2 - begin, std::to_string(pixels));
    }
    return {text, row->times};
}

}  // namespace Nifikral
