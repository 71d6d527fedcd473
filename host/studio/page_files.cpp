#include "host/studio/page_files.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "host/media/media_input.h"

namespace Nifikral {
namespace {

const std::map<std::string, std::string> types = {{".html", "text/html; charset=utf-8"},
                                                  {".js", "text/javascript; charset=utf-8"},
                                                  {".css", "text/css; charset=utf-8"},
                                                  {".svg", "image/svg+xml"}};

}  // namespace

WebReply PageReply(const std::string& name, const std::string& folder) {
    const std::string file = name.empty() ? "index.html" : name;
    const auto type = types.find(std::filesystem::path(file).extension());
    const bool plain = file.find('/') == std::string::npos && !file.starts_with('.');
    const PageFile* found = pageFiles;
    while (!found->name.empty() && found->name != file) ++found;
    if (type != types.end() && plain && !folder.empty()) {
        const std::vector<std::uint8_t> bytes = ReadWholeFile(folder + "/" + file);
        if (!bytes.empty()) return {200, type->second, {bytes.begin(), bytes.end()}};
    } else if (type != types.end() && !found->name.empty()) {
        return {200, type->second, std::string(found->text)};
    }
    throw WebError(404, "the studio has no page \"" + file + "\"");
}

}  // namespace Nifikral
