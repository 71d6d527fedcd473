#pragma once

#include <cairo.h>

#include <memory>
#include <new>

/// Owners for Cairo's objects.
namespace Nifikral {

struct FreeCairo {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, FreeCairo>;
using CairoPtr = std::unique_ptr<cairo_t, FreeCairo>;
using CairoPatternPtr = std::unique_ptr<cairo_pattern_t, FreeCairo>;
using CairoFontOptionsPtr = std::unique_ptr<cairo_font_options_t, FreeCairo>;

inline CairoSurfacePtr NewSurface(cairo_format_t format, int width, int height) {
    CairoSurfacePtr surface(cairo_image_surface_create(format, width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
    return surface;
}

/// Throws when what was drawn did not fit into the memory.
inline void CheckDrawn(cairo_t* context) {
    if (cairo_status(context) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
}

}  // namespace Nifikral
