#pragma once

#include <string>

#include "host/studio/studio_folder.h"

namespace Nifikral {

/// What a file is for a studio, by its name: "folder", "picture", "film", "sound", "project", "presets", "subtitles" or
/// "other".
std::string FileKind(const std::filesystem::path& path);

/// What lies in a folder, as JSON: folders first, in the order in which people count; without hidden files.
std::string ListFolder(const StudioFolder& folder, const std::string& path);

/// A text that changes when something in the folder does.
std::string FolderState(const std::string& path);

}  // namespace Nifikral
