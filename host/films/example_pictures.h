#pragma once

#include <string>
#include <vector>

namespace Nifikral {

struct ExamplePicture {
    std::string file;  ///< its name, without a folder
    std::string png;   ///< what the file holds
};

/// The pictures of the example projects, drawn afresh: five landscapes, a balloon with alpha and a mask. The first one,
/// background.png, is enough for who has pictures.
std::vector<ExamplePicture> DrawExamplePictures(bool firstAlone = false);

}  // namespace Nifikral
