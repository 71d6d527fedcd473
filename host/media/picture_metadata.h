#pragma once

#include <string>

namespace Nifikral {

/// Copies what a photograph says beside its pixels into a coded picture made of it: when, where and with what it was
/// taken and whose it is (EXIF, IPTC, XMP), and its colour profile. What is said of its turning and size becomes right
/// for the new picture, and its thumbnail, which shows the old one, stays behind. `from` is a file, `picture` a whole
/// coded file whose colours are RGB or YUV. Returns the names of what the new format does not hold, "" where all is
/// kept or there is nothing; a file that is no picture has nothing. Threads: any.
std::string CopyMetadata(const std::string& from, std::string& picture);

/// What a photograph says of itself, each "" where it does not.
struct PhotographFacts {
    std::string date;  ///< when it was taken, as "2026-07-14 15:02:11"
    std::string description, place;
};

/// The facts of a file (EXIF, IPTC, XMP); none of one that is no picture. Threads: any.
PhotographFacts ReadPhotograph(const std::string& file);

}  // namespace Nifikral
