#pragma once

#include <string>
#include <vector>

#include "host/disc/disc_project.h"

/// Moments of a film that are found in its pictures. Both throw input errors for a film that cannot be read.
namespace Nifikral {

/// A second at which the film looks well for the `shown` seconds that follow: neither black nor blurred.
double FindThumbnail(const std::string& path, double seconds, double shown);

/// Parts of about five minutes that begin where the scene changes; none for a film that is hardly longer.
std::vector<DiscChapter> FindChapters(const std::string& path, double seconds);

/// Where parts of about five minutes begin in a film of pictures that change every `period` seconds.
std::vector<DiscChapter> ChaptersOfShow(double seconds, double period);

}  // namespace Nifikral
