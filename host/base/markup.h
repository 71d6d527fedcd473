#pragma once

#include <string>

namespace Nifikral {

/// Text as it stands between the tags, or in the quotes, of HTML and XML.
std::string Markup(const std::string& text);

}  // namespace Nifikral
