#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// A disc as a folder that stands under its name only when it is complete.
namespace Nifikral {

/// Throws an output error when a disc could not be made there: in a folder that does not exist, in the place
/// of a folder that holds anything but `parts`, or of a disc when `overwrite` is not set. `kind` names the disc.
void CheckDiscFolder(const std::string& output, const std::vector<std::string_view>& parts, const std::string& kind,
                     bool overwrite);

/// Where the parts of a disc are kept, beside the output.
std::string WorkFolder(std::string output);

/// The bytes of all files in a folder, 0 where there is none.
std::uintmax_t SizeOfFilesIn(const std::filesystem::path& folder);

/// A folder, emptied at first, that goes away with this object. Throws output errors.
class TemporaryFolder {
 public:
    explicit TemporaryFolder(std::filesystem::path path);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

 private:
    std::filesystem::path m_path;
};

/// The path of a folder beside the output, from which MoveFolder can give it its name. It is the same for every run:
/// one that was killed leaves nothing that the next does not clear.
std::filesystem::path FolderBeside(const std::string& output);

/// Gives a folder the output's name, in the place of an older disc. Throws output errors.
void MoveFolder(const std::filesystem::path& from, const std::string& output);

}  // namespace Nifikral
