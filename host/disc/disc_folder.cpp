#include "host/disc/disc_folder.h"

#include <algorithm>

#include "host/base/errors.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

// The folder's name without a slash behind it.
fs::path FolderName(const std::string& output) {
    const fs::path path(output);
    return path.has_filename() ? path : path.parent_path();
}

}  // namespace

void CheckDiscFolder(const std::string& output, const std::vector<std::string_view>& parts, const std::string& kind,
                     bool overwrite) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(output, error)) {
        const std::string name = entry.path().filename().string();
        if (std::find(parts.begin(), parts.end(), name) == parts.end())
            throw HostError(ExitCode::Output,
                            output + " holds " + name + ", which is no part of " + kind + "; name a new folder");
        if (!overwrite) throw HostError(ExitCode::Output, output + " holds a disc already; -y overwrites it");
    }
    const fs::path name = FolderName(output);
    const fs::path parent = name.has_parent_path() ? name.parent_path() : fs::path(".");
    if (!fs::is_directory(parent, error))
        throw HostError(ExitCode::Output,
                        output + ": the folder " + parent.string() + " does not exist; make it first (mkdir -p)");
}

std::string WorkFolder(std::string output) {
    while (output.size() > 1 && output.ends_with('/')) output.pop_back();
    return output + ".work";
}

std::uintmax_t SizeOfFilesIn(const fs::path& folder) {
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder, error))
        if (const auto size = entry.file_size(error); !error) bytes += size;
    return bytes;
}

TemporaryFolder::TemporaryFolder(fs::path path) : m_path(std::move(path)) {
    std::error_code error;
    fs::remove_all(m_path, error);
    if (fs::create_directories(m_path, error); error) ThrowWriteError(m_path.string(), -error.value());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

fs::path FolderBeside(const std::string& output) { return FolderName(output).string() + ".nifikral.part"; }

void MoveFolder(const fs::path& from, const std::string& output) {
    const fs::path name = FolderName(output), old = from.string() + ".old";
    std::error_code error;
    if (fs::exists(name, error)) fs::rename(name, old, error);
    if (!error) fs::rename(from, name, error);
    if (error) ThrowWriteError(name.string(), -error.value());
    fs::remove_all(old, error);
}

}  // namespace Nifikral
