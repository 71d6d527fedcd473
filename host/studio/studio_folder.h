#pragma once

#include <filesystem>
#include <string>

namespace Nifikral {

/// The folder that a studio works in, which is the program's current one: names within it are relative paths. Nothing
/// outside of it is read or written, links that lead out included. Threads: any.
class StudioFolder {
 public:
    /// Goes there. Throws an input error for one that cannot be entered.
    explicit StudioFolder(const std::string& path);

    const std::filesystem::path& Root() const { return m_root; }
    /// The path of a file or folder that is there, as the command takes it. Throws WebError for one that is not, or
    /// that is not within the folder.
    std::string Existing(const std::string& path) const;
    /// The same for a file alone.
    std::string File(const std::string& path) const;
    /// Throws WebError for a path of any form that is not there or leads out.
    void RequireWithin(const std::string& path) const;
    /// The same for one that need not be there; its folder has to be.
    std::string Writable(const std::string& path) const;

 private:
    bool Holds(const std::filesystem::path& whole) const;

    std::filesystem::path m_root;
};

}  // namespace Nifikral
