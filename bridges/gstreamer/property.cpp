#include "bridges/gstreamer/property.h"

#include <gst/gst.h>

#include <algorithm>
#include <string_view>

#include "bridges/gstreamer/names.h"

namespace Nifikral::Gst {
namespace {

constexpr auto flags =
    GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_CONTROLLABLE | GST_PARAM_MUTABLE_PLAYING);

// GObject keeps the texts of a class for ever.
const char* Kept(const std::string& text) { return g_intern_string(text.c_str()); }

// What both the property's type and the effect can bear, narrowed to what makes sense: a control source moves over it.
// The default belongs to it in any case.
ValueRange RangeOf(const ParameterInfo& info, ValueRange type, double defaultValue) {
    const double low = std::max({info.sensible.low, info.bearable.low, type.low});
    const double high = std::min({info.sensible.high, info.bearable.high, type.high});
    return {std::min(low, defaultValue), std::max(high, defaultValue)};
}

ValueRange TypeRange(PropertyType type) {
    switch (type) {
        case PropertyType::Int16:
            return {G_MININT16, G_MAXINT16};
        case PropertyType::Int32:
            return {G_MININT32, G_MAXINT32};
        default:
            return {-G_MAXDOUBLE, G_MAXDOUBLE};
    }
}

GType EnumOf(const std::string& name, const ParameterInfo& info) {
    // The values belong to the type, which is never unregistered.
    auto* const values = g_new0(GEnumValue, info.choices.size() + 1);
    for (std::size_t i = 0; i < info.choices.size(); ++i) {
        const Choice& choice = info.choices[i];
        values[i] = {choice.value, Kept(Capitalised(choice.meaning)), Kept(Dashed(choice.meaning))};
    }
    return g_enum_register_static(name.c_str(), values);
}

std::string BlurbOf(const ParameterInfo& info) {
    const std::string blurb = Capitalised(info.meaning);
    const std::string unit = info.kind == Kind::Colour ? "0xRRGGBB" : info.unit;
    return unit.empty() ? blurb : blurb + " (" + unit + ")";
}

}  // namespace

bool IsNumber(const PropertyInfo& property) {
    return property.type != PropertyType::Text && property.type != PropertyType::Int64;
}

GParamSpec* SpecOf(const EffectInfo& effect, const PropertyInfo& property) {
    constexpr ParameterInfo unknown{"", "", ""};
    const ParameterInfo* const row = FindParameter(effect.name, property.name);
    const ParameterInfo& info = row ? *row : unknown;
    const std::string plainName = PropertyName(effect.name, property.name);
    const char* const name = Kept(plainName);
    const char* const nick = Kept(Capitalised(plainName));
    const char* const blurb = Kept(BlurbOf(info));
    const double initial = info.initial.value_or(g_ascii_strtod(property.defaultText.c_str(), nullptr));
    if (info.kind == Kind::Switch) return g_param_spec_boolean(name, nick, blurb, initial != 0, flags);
    if (info.kind == Kind::Choice) {
        const GType type = EnumOf(TypeName(ElementName(effect.name) + "-" + plainName), info);
        return g_param_spec_enum(name, nick, blurb, type, int(initial), flags);
    }
    const auto [low, high] = RangeOf(info, TypeRange(property.type), initial);
    if (property.type == PropertyType::Real) return g_param_spec_double(name, nick, blurb, low, high, initial, flags);
    if (info.kind == Kind::Colour)
        return g_param_spec_uint(name, nick, blurb, unsigned(low), unsigned(high), unsigned(initial), flags);
    return g_param_spec_int(name, nick, blurb, int(low), int(high), int(initial), flags);
}

GParamSpec* DurationSpec() {
    return g_param_spec_int("duration", "Duration", "Length of the effect (frames); 0: the length of the stream", 0,
                            G_MAXINT, 0, GParamFlags(flags & ~GST_PARAM_CONTROLLABLE));
}

std::string TextOf(const GValue& value) {
    switch (G_TYPE_FUNDAMENTAL(G_VALUE_TYPE(&value))) {
        case G_TYPE_BOOLEAN:
            return g_value_get_boolean(&value) ? "1" : "0";
        case G_TYPE_ENUM:
            return std::to_string(g_value_get_enum(&value));
        case G_TYPE_UINT:
            return std::to_string(g_value_get_uint(&value));
        case G_TYPE_DOUBLE: {
            char text[G_ASCII_DTOSTR_BUF_SIZE];
            return g_ascii_dtostr(text, sizeof text, g_value_get_double(&value));
        }
        default:
            return std::to_string(g_value_get_int(&value));
    }
}

void SetFromText(GValue& value, const std::string& text) {
    const gint64 whole = g_ascii_strtoll(text.c_str(), nullptr, 10);
    switch (G_TYPE_FUNDAMENTAL(G_VALUE_TYPE(&value))) {
        case G_TYPE_BOOLEAN:
            return g_value_set_boolean(&value, whole != 0);
        case G_TYPE_ENUM:
            return g_value_set_enum(&value, int(whole));
        case G_TYPE_UINT:
            return g_value_set_uint(&value, unsigned(whole));
        case G_TYPE_DOUBLE:
            return g_value_set_double(&value, g_ascii_strtod(text.c_str(), nullptr));
        default:
            return g_value_set_int(&value, int(whole));
    }
}

}  // namespace Nifikral::Gst
