#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Nifikral {

/// A file or folder that is held open: a link that is put in its place meanwhile changes nothing.
class HeldPath {
 public:
    explicit HeldPath(int descriptor) : m_descriptor(descriptor) {}
    HeldPath(HeldPath&& other) noexcept;
    HeldPath& operator=(HeldPath&&) = delete;
    HeldPath(const HeldPath&) = delete;
    HeldPath& operator=(const HeldPath&) = delete;
    ~HeldPath();

    bool IsOpen() const { return m_descriptor >= 0; }
    /// A path to just this one, within this program, for as long as it is held.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }
    /// Where it is.
    std::filesystem::path Place() const;

 private:
    int m_descriptor;
};

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
    /// The same for one that need not be there; its folder has to be.
    std::string Writable(const std::string& path) const;
    /// Throws WebError for a path of any form that is not there or leads out.
    void RequireWithin(const std::string& path) const { Hold(path); }

    /// Opens a file or folder and looks where it really is. Throws as RequireWithin.
    HeldPath Hold(const std::string& path) const;
    /// Writes a file whole or not at all, into the very folder that was looked at. Throws WebError and output errors.
    void Write(const std::string& path, const std::string& text) const;

 private:
    std::filesystem::path m_root;
    std::optional<HeldPath> m_held;  // the folder itself, wherever it is moved to
};

}  // namespace Nifikral
