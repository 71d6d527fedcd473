#include "host/studio/stored_text.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <sstream>
#include <utility>
#include <vector>

#include "host/base/errors.h"
#include "host/films/text_renderer.h"
#include "host/media/media_input.h"
#include "host/studio/studio_json.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t mostDrafts = 20;

std::string ReadText(const StudioFolder& folder, const std::string& path) {
    const HeldPath held = folder.Hold(folder.File(path));
    std::error_code error;
    if (!fs::is_regular_file(held.Path(), error) || fs::file_size(held.Path(), error) > mostBodyBytes)
        throw WebError(413, path + " is larger than 4 MB; edit it with another program");
    const std::vector<std::uint8_t> bytes = ReadWholeFile(held.Path());
    return {bytes.begin(), bytes.end()};
}

std::string TagOf(const std::string& text) {
    std::uint64_t hash = 14695981039346656037u;
    for (const char letter : text) hash = (hash ^ std::uint8_t(letter)) * 1099511628211u;
    std::ostringstream tag;
    tag << '"' << hash << '-' << text.size() << '"';
    return tag.str();
}

void RequireText(const std::string& path) {
    const std::string extension = fs::path(path).extension();
    if (extension != ".json" && extension != ".presets" && extension != ".txt")
        throw WebError(400, path + " is no text that the studio edits; name it .json, .presets or .txt");
}

// Two pages are not to write over one another between a look and a write.
std::mutex& Writing() {
    static std::mutex mutex;
    return mutex;
}

std::string DraftFolder() { return std::string(studioFolder) + "/drafts"; }

std::string DraftOf(const std::string& page) {
    const auto small = [](char letter) { return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9'); };
    if (page.size() < 4 || page.size() > 16 || !std::ranges::all_of(page, small))
        throw WebError(400, "\"page\" is not 4 to 16 small letters and digits");
    return DraftFolder() + "/" + page + ".json";
}

// The newest first.
std::vector<fs::path> DraftsByAge() {
    std::vector<std::pair<fs::file_time_type, fs::path>> found;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(DraftFolder(), error))
        if (entry.path().extension() == ".json" && entry.symlink_status(error).type() == fs::file_type::regular)
            found.emplace_back(entry.last_write_time(error), entry.path());
    std::ranges::sort(found, std::greater{});
    std::vector<fs::path> drafts;
    for (auto& [age, path] : found) drafts.push_back(std::move(path));
    return drafts;
}

}  // namespace

WebReply ReadStoredText(const StudioFolder& folder, const std::string& path) {
    RequireText(path);
    std::string text = ReadText(folder, path);
    const std::string tag = TagOf(text);
    return {200, "text/plain; charset=utf-8", std::move(text), {{"ETag", tag}}};
}

WebReply WriteStoredText(const StudioFolder& folder, const WebRequest& request) {
    const std::string path = request.Query("path");
    RequireText(path);
    const std::string own = folder.Writable(path);
    const Json body = ParseWebJson(request.body);
    if (!MemberOf(body, "text")) throw WebError(400, "\"text\" is missing");
    const std::string text = TextIn(body, "text");
    if (fs::path(path).extension() == ".json") ParseWebJson(text);
    const std::string match = request.Header("if-match"), none = request.Header("if-none-match");
    if (match.empty() == none.empty())
        throw WebError(428, "give If-Match with the tag that was read, or If-None-Match: * for a new file");
    const std::lock_guard lock(Writing());
    std::error_code error;
    const bool exists = fs::exists(own, error);
    if (match.empty() ? exists : !exists || TagOf(ReadText(folder, path)) != match)
        throw WebError(412, path + (exists ? " has changed meanwhile; read it again, or choose another name"
                                           : " is gone; save it under a name of its own"));
    folder.Write(path, text);
    const std::string tag = TagOf(text);
    return {200, "application/json", JsonText({{"etag", tag}}), {{"ETag", tag}}};
}

void RequireNoLink(const std::string& path) {
    std::error_code error;
    for (const std::string& folder : {std::string(studioFolder), path})
        if (fs::is_symlink(folder, error))
            throw WebError(403, folder + " is a link; remove it, the studio makes a folder of this name");
}

void WriteStudioFile(const StudioFolder& folder, const std::string& path, const std::string& text) {
    const std::string within = fs::path(path).parent_path();
    folder.RequireWithin(".");
    RequireNoLink(within);
    RequireNoLink(path);
    std::error_code error;
    fs::create_directories(within, error);
    if (error) throw WebError(507, within + " cannot be made: " + error.message());
    folder.Write(path, text);
}

WebReply ReadDraft(const StudioFolder& folder, const std::string& page) {
    const std::string own = DraftOf(page);
    const std::lock_guard lock(Writing());
    RequireNoLink(DraftFolder());
    std::error_code error;
    const std::vector<fs::path> drafts = DraftsByAge();
    const std::string found = fs::is_regular_file(own, error) ? own : drafts.empty() ? "" : drafts.front().string();
    return {200, "application/json", found.empty() ? "null" : ReadText(folder, found)};
}

WebReply WriteDraft(const StudioFolder& folder, const std::string& page, const std::string& body) {
    const std::string own = DraftOf(page);
    ParseWebJson(body);
    const std::lock_guard lock(Writing());
    WriteStudioFile(folder, own, body);
    std::error_code error;
    const std::vector<fs::path> drafts = DraftsByAge();
    for (std::size_t i = mostDrafts; i < drafts.size(); ++i) fs::remove(drafts[i], error);
    return {200, "application/json", "{}"};
}

}  // namespace Nifikral
