#include "host/studio/folder_listing.h"

#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "host/base/natural_order.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/studio/studio_json.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

std::string Small(std::string text) {
    for (char& letter : text) letter = char(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

}  // namespace

std::string FileKind(const fs::path& path) {
    static const std::set<std::string> sounds = {".mp3", ".m4a", ".aac", ".wav", ".flac", ".ogg", ".opus", ".wma"};
    static const std::set<std::string> subtitles = {".srt", ".ass", ".ssa", ".vtt"};
    const std::string extension = Small(path.extension().string());
    if (IsPictureName(path)) return "picture";
    if (IsFilmName(path)) return "film";
    if (sounds.contains(extension)) return "sound";
    if (subtitles.contains(extension)) return "subtitles";
    return extension == ".json" ? "project" : extension == ".presets" ? "presets" : "other";
}

std::string ListFolder(const StudioFolder& folder, const std::string& path) {
    const HeldPath held = folder.Hold(folder.Existing(path));
    struct Entry {
        std::string name, kind;
        struct stat facts = {};
    };
    std::vector<Entry> entries;
    std::error_code error;
    for (fs::directory_iterator file(held.Path(), error), end; !error && file != end; file.increment(error)) {
        Entry entry{file->path().filename().string(), {}};
        if (entry.name.starts_with('.') || FirstInvalidByte(entry.name)) continue;
        if (stat(file->path().c_str(), &entry.facts) != 0) continue;
        entry.kind = S_ISDIR(entry.facts.st_mode) ? "folder" : S_ISREG(entry.facts.st_mode) ? FileKind(entry.name) : "";
        if (!entry.kind.empty()) entries.push_back(std::move(entry));
    }
    if (error)
        throw WebError(422, (path.empty() ? folder.Root().string() : path) + " cannot be read: " + error.message());
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        const bool first = a.kind == "folder", second = b.kind == "folder";
        return first != second ? first : ComesBefore(a.name, b.name);
    });
    Json list = Json::array();
    for (const Entry& entry : entries)
        list.push_back({{"name", entry.name},
                        {"path", path.empty() ? entry.name : path + "/" + entry.name},
                        {"kind", entry.kind},
                        {"bytes", entry.facts.st_size},
                        {"modified", entry.facts.st_mtim.tv_sec}});
    return JsonText({{"path", path}, {"entries", std::move(list)}});
}

std::string FolderState(const std::string& path) {
    struct stat facts = {};
    if (stat(path.c_str(), &facts) != 0) return "gone";
    return std::to_string(facts.st_mtim.tv_sec) + "." + std::to_string(facts.st_mtim.tv_nsec);
}

}  // namespace Nifikral
