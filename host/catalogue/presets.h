#pragma once

#include <string>
#include <vector>

namespace Nifikral {

/// A chain of effects under a name.
struct Preset {
    std::string name, meaning;
    std::vector<std::string> requests;
    std::string place;  ///< where it is written, as FILE:LINE
};

/// Those that come with the command, and the user's own, which replace others of the same name.
class Presets {
 public:
    /// Reads `file`, or when it is empty $XDG_CONFIG_HOME/nifikral/presets where there is one. Throws an input error
    /// for a file that cannot be read and a usage error that names the line for one that is not right.
    explicit Presets(const std::string& file);

    const std::vector<Preset>& All() const { return m_presets; }
    /// Throws a usage error for a name, without its @, that there is none of.
    const Preset& Find(const std::string& name) const;

 private:
    void Read(const std::string& text, const std::string& file);

    std::vector<Preset> m_presets;
};

/// The text of those that come with the command, as a file of one's own has it.
extern const char shippedPresets[];

}  // namespace Nifikral
