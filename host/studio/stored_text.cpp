#include "host/studio/stored_text.h"

#include <cstdint>
#include <mutex>
#include <sstream>

#include "host/base/errors.h"
#include "host/films/text_renderer.h"
#include "host/media/media_input.h"
#include "host/media/part_file.h"
#include "host/studio/studio_json.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

constexpr char draftFolder[] = ".nifikral-studio", draftFile[] = ".nifikral-studio/draft.json";

std::string ReadText(const std::string& path) {
    std::error_code error;
    if (fs::file_size(path, error) > mostBodyBytes)
        throw WebError(413, path + " is larger than 4 MB; edit it with another program");
    const std::vector<std::uint8_t> bytes = ReadWholeFile(path);
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

void WriteWhole(const std::string& path, const std::string& text, bool overwrite) {
    PartFile file(path, overwrite);
    file.Write(text);
    file.Commit();
}

// Two pages are not to write over one another between a look and a write.
std::mutex& Writing() {
    static std::mutex mutex;
    return mutex;
}

}  // namespace

WebReply ReadStoredText(const StudioFolder& folder, const std::string& path) {
    RequireText(path);
    std::string text = ReadText(folder.File(path));
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
    if (match.empty() ? exists : !exists || TagOf(ReadText(own)) != match)
        throw WebError(412, path + (exists ? " has changed meanwhile; read it again, or choose another name"
                                           : " is gone; save it under a name of its own"));
    WriteWhole(own, text, true);
    const std::string tag = TagOf(text);
    return {200, "application/json", JsonText({{"etag", tag}}), {{"ETag", tag}}};
}

WebReply ReadDraft() {
    std::error_code error;
    const std::string text = fs::is_regular_file(draftFile, error) ? ReadText(draftFile) : "";
    return {200, "application/json", text.empty() ? "null" : text};
}

WebReply WriteDraft(const std::string& body) {
    ParseWebJson(body);
    const std::lock_guard lock(Writing());
    std::error_code error;
    if (fs::is_symlink(draftFolder, error) || fs::is_symlink(draftFile, error))
        throw WebError(403, std::string(draftFolder) + " is a link; remove it, the studio makes a folder of this name");
    fs::create_directory(draftFolder, error);
    if (error) throw WebError(507, std::string(draftFolder) + " cannot be made: " + error.message());
    WriteWhole(draftFile, body, true);
    return {200, "application/json", "{}"};
}

}  // namespace Nifikral
