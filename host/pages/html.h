#pragma once

#include <string>

namespace Nifikral {

/// A file's path as a link to it.
std::string Link(const std::string& path);
/// What a page of ours begins with, up to its body; `title` is HTML. `style` is its own beyond that of all pages.
std::string PageHead(const std::string& title, const std::string& style = "");

}  // namespace Nifikral
