#pragma once

#include <string_view>

namespace Nifikral {

/// The page that plays a disc in a browser, with `webPageMark` where the disc's description goes.
extern const std::string_view webPage;
inline constexpr std::string_view webPageMark = "DISC_DESCRIPTION";

}  // namespace Nifikral
