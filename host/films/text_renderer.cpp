#include "host/films/text_renderer.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/films/cairo_handles.h"
#include "host/films/readable_shade.h"
#include "host/films/template_style.h"

namespace Nifikral {
namespace {

struct FreePango {
    void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
    void operator()(PangoLayoutIter* iterator) const { pango_layout_iter_free(iterator); }
    void operator()(PangoAttrList* attributes) const { pango_attr_list_unref(attributes); }
    void operator()(PangoLayout* layout) const { g_object_unref(layout); }
    void operator()(PangoContext* context) const { g_object_unref(context); }
};
template <class Object>
using Owner = std::unique_ptr<Object, FreePango>;

constexpr char usualFace[] = "Sans";
constexpr std::size_t excerptBytes = 40;

std::string Excerpt(const std::string& text) {
    std::string excerpt = text.substr(0, text.find('\n'));
    if (excerpt.size() > excerptBytes) {
        std::size_t end = excerptBytes;
        while (end > 0 && (static_cast<unsigned char>(excerpt[end]) & 0xC0) == 0x80) --end;
        excerpt = excerpt.substr(0, end) + "...";
    }
    return "the text \"" + excerpt + "\"";
}

std::string FamilyOf(PangoFont* font) {
    const Owner<PangoFontDescription> description(pango_font_describe(font));
    return pango_font_description_get_family(description.get());
}

bool SameName(const std::string& a, const std::string& b) { return g_ascii_strcasecmp(a.c_str(), b.c_str()) == 0; }

// Names that stand for whatever font the system prefers for them.
bool IsGeneric(const std::string& face) {
    for (const char* const name :
         {"sans", "sans-serif", "serif", "monospace", "mono", "cursive", "fantasy", "system-ui"})
        if (SameName(face, name)) return true;
    return false;
}

std::string Trimmed(const std::string& name) {
    const std::size_t begin = name.find_first_not_of(' ');
    return begin == std::string::npos ? "" : name.substr(begin, name.find_last_not_of(' ') + 1 - begin);
}

// A list of families without the blanks around its commas, and at least the usual one.
std::vector<std::string> FamiliesOf(const StyledText& text) {
    std::vector<std::string> families;
    std::istringstream stream(text.face);
    for (std::string name; std::getline(stream, name, ',');)
        if (name = Trimmed(name); !name.empty()) families.push_back(name);
    if (families.empty()) families.emplace_back(usualFace);
    return families;
}

bool IsInstalled(PangoContext* context, const std::string& face) {
    PangoFontFamily** families = nullptr;
    int count = 0;
    pango_context_list_families(context, &families, &count);
    const bool found = std::any_of(families, families + count, [&](PangoFontFamily* family) {
        return SameName(pango_font_family_get_name(family), face);
    });
    g_free(families);
    return found;
}

std::string CodePoint(gunichar character) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", unsigned(character));
    return text;
}

// The characters of a run, blanks left out, that its font has no glyph for (`unknown`), or all of them.
std::string Characters(const std::string& text, PangoLayoutRun* run, bool unknown) {
    std::set<gunichar> found;
    for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
        if (unknown && !(run->glyphs->glyphs[i].glyph & PANGO_GLYPH_UNKNOWN_FLAG)) continue;
        const char* const at = text.c_str() + run->item->offset + run->glyphs->log_clusters[i];
        const gunichar character = g_utf8_get_char(at);
        if (g_unichar_isgraph(character)) found.insert(character);
    }
    std::string names;
    for (const gunichar character : found) names.append(names.empty() ? "" : " ").append(CodePoint(character));
    return names;
}

void ReportSubstitutions(PangoLayout* layout, const StyledText& text) {
    const std::vector<std::string> families = FamiliesOf(text);
    const std::string& face = families.front();
    const bool installed = IsInstalled(pango_layout_get_context(layout), face), generic = IsGeneric(face);
    std::string first;
    const Owner<PangoLayoutIter> iterator(pango_layout_get_iter(layout));
    do {
        PangoLayoutRun* const run = pango_layout_iter_get_run_readonly(iterator.get());
        if (!run) continue;
        const std::string all = Characters(text.text, run, false), missing = Characters(text.text, run, true);
        if (all.empty()) continue;
        const std::string used = FamilyOf(run->item->analysis.font);
        if (first.empty()) first = used;
        const std::string package = PackageOfTypeface(face);
        if (!missing.empty())
            PrintWarningOnce(face + missing, Excerpt(text.text) + ": no installed font has " + missing +
                                                 ", boxes are drawn instead; install a font for it");
        else if (!generic && !installed)
            PrintWarningOnce(face, Excerpt(text.text) + ": the font \"" + face + "\" is not installed, \"" + used +
                                       "\" is used instead; " +
                                       (package.empty() ? "fc-list : family lists what there is"
                                                        : "install the package " + package));
        else if (!SameName(used, generic ? first : face))
            PrintWarningOnce(face + used, Excerpt(text.text) + ": the font \"" + (generic ? first : face) +
                                              "\" lacks " + all + ", \"" + used + "\" is used instead");
    } while (pango_layout_iter_next_run(iterator.get()));
}

Owner<PangoLayout> MakeLayout(const StyledText& text) {
    const Owner<PangoContext> context(pango_font_map_create_context(pango_cairo_font_map_get_default()));
    // Glyphs keep their shape whatever their place, as moving text needs it.
    const CairoFontOptionsPtr options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options.get());

    Owner<PangoLayout> layout(pango_layout_new(context.get()));
    const Owner<PangoFontDescription> font(pango_font_description_new());
    pango_font_description_set_family(font.get(), text.face.empty() ? usualFace : text.face.c_str());
    pango_font_description_set_absolute_size(font.get(), double(text.size) * PANGO_SCALE);
    if (text.style.bold) pango_font_description_set_weight(font.get(), PANGO_WEIGHT_BOLD);
    if (text.style.italic) pango_font_description_set_style(font.get(), PANGO_STYLE_ITALIC);
    pango_layout_set_font_description(layout.get(), font.get());
    const Owner<PangoAttrList> attributes(pango_attr_list_new());
    if (text.style.underline)
        pango_attr_list_insert(attributes.get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
    if (text.style.spacing != 0) {
        const double spacing = double(text.style.spacing) * text.size * PANGO_SCALE / 1000;
        pango_attr_list_insert(attributes.get(), pango_attr_letter_spacing_new(int(spacing)));
    }
    pango_layout_set_attributes(layout.get(), attributes.get());
    pango_layout_set_alignment(layout.get(), text.style.align == TextAlign::Left     ? PANGO_ALIGN_LEFT
                                             : text.style.align == TextAlign::Center ? PANGO_ALIGN_CENTER
                                                                                     : PANGO_ALIGN_RIGHT);
    pango_layout_set_text(layout.get(), text.text.c_str(), int(text.text.size()));
    return layout;
}

struct Colour {
    std::uint8_t red, green, blue;
};

constexpr Colour black{0, 0, 0}, white{255, 255, 255};

void SetColour(cairo_t* context, Colour colour, double opacity = 1) {
    cairo_set_source_rgba(context, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0, opacity);
}

// Sizes of the decorations, in pixels, and the room that they take around the glyphs.
struct Decoration {
    explicit Decoration(const StyledText& text) {
        if (text.style.outline) outline = std::max(1.0, text.size / 18.0);
        if (text.style.shadow) {
            shift = std::max(1, text.size / 16);
            blur = text.size / 28;
        }
        if (text.style.halo) {
            // Full for as far as letters reach into what they are read against, and soft beyond.
            haloBlur = std::max(1, text.size / 11);
            halo = 3.0 + blurPasses * haloBlur;
        }
        if (text.style.plate) plate = std::max(2, text.size * 3 / 10);
    }
    int Before() const { return std::max(int(std::ceil(outline)) + std::max(0, blurPasses * blur - shift), OfHalo()); }
    int Behind() const { return std::max(int(std::ceil(outline)) + blurPasses * blur + shift, OfHalo()); }
    int OfHalo() const { return std::max(int(std::ceil(halo)) + blurPasses * haloBlur, plate); }

    static constexpr int blurPasses = 2;
    double outline = 0, halo = 0;
    int shift = 0, blur = 0, haloBlur = 0, plate = 0;
};

// Black around light text, white around dark.
Colour OutlineColour(const StyledText& text) {
    return 299 * text.red + 587 * text.green + 114 * text.blue >= 128000 ? black : white;
}

void StrokeGlyphs(cairo_t* context, PangoLayout* layout, double reach) {
    pango_cairo_layout_path(context, layout);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(context, 2 * reach);
    cairo_stroke(context);
    cairo_move_to(context, 0, 0);
}

void DrawGlyphs(cairo_t* context, PangoLayout* layout, const StyledText& text, double outline) {
    if (outline > 0) {
        SetColour(context, OutlineColour(text));
        StrokeGlyphs(context, layout, outline);
    }
    SetColour(context, {text.red, text.green, text.blue});
    pango_cairo_show_layout(context, layout);
}

// Wider than the lines by `room`, and hardly higher.
void DrawPlate(cairo_t* context, const PangoRectangle& lines, int room) {
    constexpr double quarter = 1.5707963267948966, higher = 0.25;
    const double left = lines.x - room, right = lines.x + lines.width + room;
    const double top = lines.y - higher * room, bottom = lines.y + lines.height + higher * room;
    const double radius = std::min<double>(room, (bottom - top) / 2);
    cairo_new_sub_path(context);
    cairo_arc(context, right - radius, top + radius, radius, -quarter, 0);
    cairo_arc(context, right - radius, bottom - radius, radius, 0, quarter);
    cairo_arc(context, left + radius, bottom - radius, radius, quarter, 2 * quarter);
    cairo_arc(context, left + radius, top + radius, radius, 2 * quarter, 3 * quarter);
    cairo_close_path(context);
    cairo_fill(context);
    cairo_move_to(context, 0, 0);
}

// The mean of 2 x radius + 1 neighbours; outside there is nothing.
void BlurLine(std::uint8_t* line, int length, std::ptrdiff_t step, int radius, std::uint8_t* copy) {
    for (int i = 0; i < length; ++i) copy[i] = line[i * step];
    int sum = 0;
    for (int i = -radius; i < length; ++i) {
        if (i + radius < length) sum += copy[i + radius];
        if (i - radius > 0) sum -= copy[i - radius - 1];
        if (i >= 0) line[i * step] = std::uint8_t(sum / (2 * radius + 1));
    }
}

void Blur(cairo_surface_t* mask, int radius) {
    cairo_surface_flush(mask);
    std::uint8_t* const data = cairo_image_surface_get_data(mask);
    const int width = cairo_image_surface_get_width(mask), height = cairo_image_surface_get_height(mask);
    const std::ptrdiff_t pitch = cairo_image_surface_get_stride(mask);
    std::vector<std::uint8_t> copy(std::size_t(std::max(width, height)));
    for (int pass = 0; pass < Decoration::blurPasses; ++pass) {
        for (int y = 0; y < height; ++y) BlurLine(data + y * pitch, width, 1, radius, copy.data());
        for (int x = 0; x < width; ++x) BlurLine(data + x, height, pitch, radius, copy.data());
    }
    cairo_surface_mark_dirty(mask);
}

// Cairo's pixels are multiplied by alpha. Transparent ones take the colour of the text's rim, so that none of another
// colour comes in where the picture is scaled.
FramePtr ToPicture(cairo_surface_t* surface, Colour rim) {
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface), height = cairo_image_surface_get_height(surface);
    FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, width, height);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* from =
            cairo_image_surface_get_data(surface) + std::ptrdiff_t(y) * cairo_image_surface_get_stride(surface);
        std::uint8_t* to = picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0];
        for (int x = 0; x < width; ++x, from += 4, to += 4) {
            std::uint32_t pixel;
            std::memcpy(&pixel, from, sizeof pixel);
            const std::uint32_t alpha = pixel >> 24;
            const auto plain = [&](int shift, std::uint8_t none) {
                return alpha ? std::uint8_t(((pixel >> shift & 255) * 255 + alpha / 2) / alpha) : none;
            };
            to[0] = plain(0, rim.blue);
            to[1] = plain(8, rim.green);
            to[2] = plain(16, rim.red);
            to[3] = std::uint8_t(alpha);
        }
    }
    return picture;
}

// A text's lines and ink, in the layout's pixels, and the picture that holds them with their decoration.
struct Bounds {
    Bounds(PangoLayout* layout, const Decoration& decoration) {
        PangoRectangle ink;
        pango_layout_get_pixel_extents(layout, &ink, &logical);
        const bool hasInk = ink.width > 0 && ink.height > 0;
        left = std::min(logical.x, hasInk ? ink.x : logical.x) - decoration.Before();
        top = std::min(logical.y, hasInk ? ink.y : logical.y) - decoration.Before();
        right = std::max(logical.x + logical.width, ink.x + ink.width) + decoration.Behind();
        bottom = std::max(logical.y + logical.height, ink.y + ink.height) + decoration.Behind();
    }
    // Of the lines, within the picture.
    int Left() const { return logical.x - left; }
    int Top() const { return logical.y - top; }

    PangoRectangle logical;
    int left, top, right, bottom;
};

std::string LinesOf(PangoLayout* layout, const std::string& text) {
    std::string lines;
    const int count = pango_layout_get_line_count(layout);
    for (int i = 0; i < count; ++i) {
        const PangoLayoutLine* const line = pango_layout_get_line_readonly(layout, i);
        const auto begin = std::size_t(line->start_index);
        lines.append(text, begin, std::size_t(line->length));
        if (i + 1 == count) break;
        const auto end = begin + std::size_t(line->length);
        const auto next = std::size_t(pango_layout_get_line_readonly(layout, i + 1)->start_index);
        if (next > end) {
            lines.append(text, end, next - end);
            continue;
        }
        lines.erase(lines.find_last_not_of(' ') + 1);
        lines += '\n';
    }
    return lines;
}

}  // namespace

std::optional<std::size_t> FirstInvalidByte(const std::string& text) {
    const char* end = nullptr;
    if (g_utf8_validate(text.data(), gssize(text.size()), &end)) return std::nullopt;
    return std::size_t(end - text.data());
}

void RequireUtf8(const char* what, const std::string& text) {
    const std::optional<std::size_t> at = FirstInvalidByte(text);
    if (!at) return;
    std::ostringstream line;
    line << what << " is no UTF-8 (byte " << *at + 1 << " is 0x" << std::hex << unsigned(std::uint8_t(text[*at]))
         << "); type it in a terminal that is set to UTF-8, or convert it with iconv -t UTF-8";
    throw HostError(ExitCode::Usage, line.str());
}

std::string ValidUtf8(const std::string& text) {
    char* const valid = g_utf8_make_valid(text.data(), gssize(text.size()));
    std::string copy = valid;
    g_free(valid);
    return copy;
}

void CheckText(const StyledText& text) {
    if (FirstInvalidByte(text.text) || FirstInvalidByte(text.face))
        throw std::runtime_error("a text is no UTF-8; save it as UTF-8");
    if (text.size < 1 || text.size > largestSide)
        throw std::runtime_error(Excerpt(text.text) + " has the font size " + std::to_string(text.size) +
                                 "; give 1 to " + std::to_string(largestSide));
}

std::string BreakLines(const StyledText& text, int width, bool withinWords) {
    CheckText(text);
    const Owner<PangoLayout> layout = MakeLayout(text);
    const Decoration decoration(text);
    pango_layout_set_wrap(layout.get(), withinWords ? PANGO_WRAP_WORD_CHAR : PANGO_WRAP_WORD);
    const auto countAt = [&](int wide) {
        pango_layout_set_width(layout.get(), wide * PANGO_SCALE);
        return pango_layout_get_line_count(layout.get());
    };
    int widest = std::clamp(width - decoration.Before() - decoration.Behind(), 1, largestSide), tooNarrow = 0;
    const int fewest = countAt(widest);
    while (widest - tooNarrow > 1) {
        const int middle = (tooNarrow + widest) / 2;
        (countAt(middle) > fewest ? tooNarrow : widest) = middle;
    }
    countAt(widest);
    return LinesOf(layout.get(), text.text);
}

TextExtent MeasureText(const StyledText& text) {
    CheckText(text);
    const Bounds bounds(MakeLayout(text).get(), Decoration(text));
    return {bounds.Left(), bounds.Top(), bounds.logical.width, bounds.logical.height};
}

FramePtr RenderText(const StyledText& text) {
    CheckText(text);
    const Owner<PangoLayout> layout = MakeLayout(text);
    const Decoration decoration(text);
    const Bounds bounds(layout.get(), decoration);
    ReportSubstitutions(layout.get(), text);
    const int width = std::max(1, bounds.right - bounds.left), height = std::max(1, bounds.bottom - bounds.top);
    if (width > largestSide || height > largestSide)
        throw std::runtime_error(Excerpt(text.text) + " would be " + std::to_string(width) + "x" +
                                 std::to_string(height) + " pixels large; make it shorter or its font smaller");

    const auto draw = [&](cairo_format_t format, const auto& paint) {
        CairoSurfacePtr surface = NewSurface(format, width, height);
        const CairoPtr context(cairo_create(surface.get()));
        cairo_translate(context.get(), -bounds.left, -bounds.top);
        paint(context.get());
        CheckDrawn(context.get());
        return surface;
    };
    const auto glyphs = [&](cairo_t* context) { DrawGlyphs(context, layout.get(), text, decoration.outline); };
    const auto layMask = [&](cairo_t* context, const CairoSurfacePtr& mask, int blur, int shift) {
        if (blur > 0) Blur(mask.get(), blur);
        cairo_mask_surface(context, mask.get(), bounds.left + shift, bounds.top + shift);
        cairo_move_to(context, 0, 0);
    };
    const std::uint32_t shade = ShadeFor(text.red, text.green, text.blue);
    const Colour haloColour{std::uint8_t(shade >> 16), std::uint8_t(shade >> 8), std::uint8_t(shade)};
    const CairoSurfacePtr picture = draw(CAIRO_FORMAT_ARGB32, [&](cairo_t* context) {
        if (text.style.plate) {
            SetColour(context, haloColour, (shade >> 24) / 255.0);
            DrawPlate(context, bounds.logical, decoration.plate);
        }
        if (text.style.halo) {
            const auto strokes = [&](cairo_t* mask) { StrokeGlyphs(mask, layout.get(), decoration.halo); };
            SetColour(context, haloColour, (shade >> 24) / 255.0);
            layMask(context, draw(CAIRO_FORMAT_A8, strokes), decoration.haloBlur, 0);
        }
        if (text.style.shadow) {
            constexpr double darkness = 0.75;
            SetColour(context, black, darkness);
            layMask(context, draw(CAIRO_FORMAT_A8, glyphs), decoration.blur, decoration.shift);
        }
        glyphs(context);
    });
    const Colour rim = text.style.halo || text.style.plate ? haloColour
                       : text.style.shadow                 ? black
                       : text.style.outline                ? OutlineColour(text)
                                                           : Colour{text.red, text.green, text.blue};
    return ToPicture(picture.get(), rim);
}

}  // namespace Nifikral

#ifndef __has_feature  // which Clang has, and GCC has the name below
#define __has_feature(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
// fontconfig keeps its pointers as offsets, where the leak checker does not see them.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }
// What it suppresses it would otherwise print on stderr, among the command's own lines.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_options() { return "print_suppressions=0"; }
#endif
