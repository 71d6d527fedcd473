#pragma once

#include <string>
#include <vector>

namespace Nifikral {

struct OptionDescription {
    std::vector<std::string> names;  ///< "-f", "--output-format"; none for a positional
    std::string value;               ///< what stands for the value: "FILE"; empty for a flag
    std::string meaning, range, defaultText;
    std::vector<std::string> words;  ///< that the value may be made of
    bool required = false, repeated = false;

    bool IsPositional() const { return names.empty(); }
    bool operator==(const OptionDescription&) const = default;
};

/// One subcommand, or the command as a whole, whose options are those that stand before a subcommand.
struct CommandDescription {
    std::string name, summary, footer;
    std::string group;                       ///< the heading that it stands under
    std::vector<OptionDescription> options;  ///< in the order of the help
    std::vector<std::string> usages;         ///< its ways of use, where they do not follow from the options
    std::vector<std::string> follows;        ///< the commands whose whole line stands behind its own options; or none
};

}  // namespace Nifikral
