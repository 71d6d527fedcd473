#pragma once

#include <string>
#include <vector>

#include "host/disc/disc_project.h"

namespace Nifikral {

/// A disc of what lies in a folder and those within it: each film, and for each folder with pictures a slideshow, with
/// the sound file beside them as its music. Titles, chapters and thumbnails come from the files, the profile from most
/// of the material, the template from the number of films. Throws all faults at once.
DiscProject SurveyFolder(const std::string& folder);

struct DiscInitOptions {
    std::string folder;
    std::string output = "disc.json";
    bool overwrite = false;
};

/// Surveys a folder and writes the project. Returns what was found, in a line.
std::string WriteDiscProject(const DiscInitOptions& options);

}  // namespace Nifikral
