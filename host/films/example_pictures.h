#pragma once

#include <string>
#include <vector>

#include "host/films/template_style.h"

namespace Nifikral {

struct ExamplePicture {
    std::string file;  ///< its name, without a folder
    std::string png;   ///< what the file holds
};

/// The pictures of the example projects, drawn afresh: five landscapes, a balloon with alpha and a mask. The first one,
/// background.png, is enough for who has pictures; the mood is its own: evening, day or night.
std::vector<ExamplePicture> DrawExamplePictures(Mood mood = Mood::Own, bool firstAlone = false);

}  // namespace Nifikral
