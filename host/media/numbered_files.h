#pragma once

#include <string>
#include <vector>

/// Pictures in a file each, numbered by a pattern such as "in_%06d.png".
namespace Nifikral {

/// What to do where a number is missing.
enum class Gaps { Refuse, Skip, Repeat, Stop };

/// Of "skip", "repeat" and "stop"; nothing stands for Refuse. Throws a usage error otherwise.
Gaps ParseGaps(const std::string& text);

/// Whether the path stands for numbered files, and not for a file of that very name.
bool IsNumbered(const std::string& path);

/// The name of one of them. Throws a usage error for what is no pattern.
std::string NumberedPath(const std::string& pattern, long long number);

/// The numbers of those that exist, in order.
std::vector<long long> ExistingNumbers(const std::string& pattern);

/// Those that exist, in order, from the lowest number on; `wanted` are enough. Repeat has the file before a gap in
/// place of each that is missing. Throws input errors: where there is none, and with the missing numbers where Refuse
/// meets any.
std::vector<std::string> NumberedFiles(const std::string& pattern, Gaps gaps, long long wanted);

}  // namespace Nifikral
