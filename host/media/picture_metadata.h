#pragma once

#include <string>

namespace Nifikral {

/// Copies what a photograph says beside its pixels into a coded picture made of it: when, where and with what it was
/// taken and whose it is (EXIF, IPTC, XMP), and its colour profile. What is said of its turning and size becomes right
/// for the new picture, and its thumbnail, which shows the old one, stays behind. `from` is a file, `picture` a whole
/// coded file whose colours are RGB or YUV. Returns the names of what the new format does not hold, "" where all is
/// kept or there is nothing; a file that is no picture has nothing. Threads: any.
std::string CopyMetadata(const std::string& from, std::string& picture);

}  // namespace Nifikral
