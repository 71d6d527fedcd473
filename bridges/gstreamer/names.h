#pragma once

#include <string>
#include <string_view>

/// GStreamer's spelling of the module's names.
namespace Nifikral::Gst {

/// Lower case, words joined by dashes: "FadeMin" gives "fade-min".
std::string Dashed(std::string_view name);

/// "nifikral-" and the effect's name; capitals inside it join no words.
std::string ElementName(std::string_view effect);
/// The property's name without the effect's own prefix: "scale" for the "magnifier_scale" of "magnifier".
std::string PropertyName(std::string_view effect, std::string_view property);
/// The words of a dashed name in one: "GstNifikralSimpleGaussBlur".
std::string TypeName(std::string_view dashed);

/// A phrase as the beginning of a sentence.
std::string Capitalised(std::string_view phrase);

}  // namespace Nifikral::Gst
