#pragma once

#include <string>
#include <string_view>

namespace Nifikral {

/// The two letters of a language (ISO 639-1), as discs and pages want them, for what films have: "deu", "ger", "de" and
/// "de-AT" are "de". Empty for a language that has none and for what is no language.
std::string LanguageCode(std::string_view tag);

}  // namespace Nifikral
