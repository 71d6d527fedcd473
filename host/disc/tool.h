#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Nifikral {

/// Another program, as a step of making a disc.
struct Tool {
    std::vector<std::string> words;        ///< its name and arguments
    std::string package;                   ///< the Debian package that has it
    std::string place = {};                ///< the folder that it writes into
    std::string input = {}, output = {};   ///< files for its stdin and stdout; empty: nothing
    std::function<void()> meanwhile = {};  ///< called a few times a second until it ends
};

/// Runs a program to its end and returns what it printed, stdout included unless that goes to a file. Throws an error
/// that names the program and its last line when it is missing or fails, and what ends an interrupted run.
std::string RunTool(const Tool& tool);

/// The first line of what a program printed that begins with one of these words; empty: none.
std::string FirstLineWith(const std::string& printed, const std::vector<std::string>& words);

}  // namespace Nifikral
