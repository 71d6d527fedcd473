#pragma once

#include <string>
#include <vector>

namespace Nifikral {

/// The pictures that are meant: files as they are named, and from a folder those with a picture's extension in the
/// order in which people count. What else a folder holds is printed under -v. Throws input errors.
std::vector<std::string> FindPictures(const std::vector<std::string>& inputs);

/// Those that can be read, after a trial of all. The others are reported as warnings; when none is left, or any is
/// missing and `strict` is set, an input error is thrown.
std::vector<std::string> ReadablePictures(const std::vector<std::string>& pictures, bool strict);

}  // namespace Nifikral
