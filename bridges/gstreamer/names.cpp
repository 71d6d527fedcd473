#include "bridges/gstreamer/names.h"

#include <glib.h>

namespace Nifikral::Gst {

std::string Dashed(std::string_view name) {
    std::string dashed;
    bool afterLowerCase = false;
    for (const char c : name) {
        const bool separates = !g_ascii_isalnum(c), startsWord = afterLowerCase && g_ascii_isupper(c);
        if ((separates || startsWord) && !dashed.empty() && dashed.back() != '-') dashed += '-';
        if (!separates) dashed += g_ascii_tolower(c);
        afterLowerCase = g_ascii_islower(c);
    }
    while (dashed.ends_with('-')) dashed.pop_back();
    return dashed;
}

std::string ElementName(std::string_view effect) {
    constexpr std::string_view redundant = "EffectName";
    if (effect.starts_with(redundant)) effect.remove_prefix(redundant.size());
    std::string name(effect);
    for (char& c : name) c = g_ascii_tolower(c);
    return "nifikral-" + Dashed(name);
}

std::string PropertyName(std::string_view effect, std::string_view property) {
    const std::string prefix = std::string(effect) + '_';
    if (property.starts_with(prefix)) property.remove_prefix(prefix.size());
    return Dashed(property);
}

std::string TypeName(std::string_view dashed) {
    std::string name = "Gst";
    bool startsWord = true;
    for (const char c : dashed) {
        if (c != '-') name += startsWord ? g_ascii_toupper(c) : c;
        startsWord = c == '-';
    }
    return name;
}

std::string Capitalised(std::string_view phrase) {
    std::string text(phrase);
    if (!text.empty()) text.front() = g_ascii_toupper(text.front());
    return text;
}

}  // namespace Nifikral::Gst
