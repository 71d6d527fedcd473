#pragma once

#include <string>

#include "host/disc/disc_project.h"
#include "host/films/project_reader.h"

/// The project of a disc as a file.
namespace Nifikral {

/// Reads a project. What is wrong with it is filed in `faults`; the files that it names are not opened. Throws input
/// errors for a file that cannot be read and for one that a later version has written.
DiscProject ReadDiscProject(const std::string& path, Faults& faults);

/// The same of a project that was read already.
DiscProject ReadDiscProject(const Json& json, const std::string& path, Faults& faults);

/// The same project as the text of a file at `path`, whose folder relative names start at. All texts are UTF-8.
std::string DiscJson(const DiscProject& project, const std::string& path);

/// The keys of the file and what they take, one a line.
std::string DescribeDiscKeys();

/// Characters of a title, at most, and how many a text has.
inline constexpr std::size_t longestTitle = 100;
std::size_t CountCharacters(const std::string& text);

/// The fault of more films than a DVD holds, to stand behind "films".
std::string TooManyTitles(std::size_t count);

}  // namespace Nifikral
