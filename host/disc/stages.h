#pragma once

#include <string>
#include <vector>

namespace Nifikral {

/// A part of a long work that is made by a run of this command of its own, into one file.
struct Stage {
    std::string name;                ///< as messages have it, such as "film 3"
    std::vector<std::string> words;  ///< of the command line, behind the program
    std::string key;                 ///< what the result is made from; one of another key is made again
    std::string result;              ///< the file that the run leaves, whole or not at all
    double weight = 1;               ///< seconds that it takes, about
    int passes = 1;                  ///< how often it counts its frames through
};

/// The part of a key that stands for a file: its name, size and time of change. For a folder, of all files in it.
std::string KeyOfFile(const std::string& path);

/// Whether the stage's result is there and made from the same.
bool IsMade(const Stage& stage);

/// Makes all stages that are not made yet, the longest first, some at once, with `program` (empty: this one). Prints
/// one progress over all, and what the runs print. When a run fails or this one is interrupted the others are ended,
/// and what is complete stays for the next time. `work` is the folder of the results; a second run on it is refused.
/// Throws the first failure, with its exit code.
void MakeStages(const std::vector<Stage>& stages, const std::string& work, const std::string& program = {});

}  // namespace Nifikral
