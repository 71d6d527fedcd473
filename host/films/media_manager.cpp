#include "host/films/media_manager.h"

#include <cstring>
#include <string>
#include <string_view>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "host/films/manager_sources.h"

namespace Nifikral {
namespace {

using namespace TarvoBased;

constexpr char sourceName[] = "media_manager";
// Lines that a caller reads beside an error of this unit.
enum Line : int { lineImporter = 20, lineOpen = 40, lineCreate = 60 };

// Files are opened by name; an importer of files makes no empty source.
class FileImporter final : public AVBased::IAVImporter {
 public:
    AVBased::IAVSource* CreateSource() override {
        GetTarvoException()->SetException(errorGeneral, "A file is opened by its name, with OpenSource", lineCreate,
                                          sourceName);
        return nullptr;
    }
};

class TextImporter final : public AVBased::IAVImporter {
 public:
    AVBased::IAVSource* CreateSource() override {
        return AtBoundary(lineCreate, sourceName, [] { return NewTextSource(); });
    }
};

// In front of a path whose "%" and ";" are written as "%25" and "%3B".
constexpr std::string_view escapedPath = "nifikral-escaped:";

std::string Unescaped(std::string_view path) {
    if (!path.starts_with(escapedPath)) return std::string(path);
    path.remove_prefix(escapedPath.size());
    std::string plain;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const std::string_view code = path.substr(i, 3);
        const bool escape = code == "%25" || code == "%3B";
        plain += code == "%3B" ? ';' : path[i];
        if (escape) i += 2;
    }
    return plain;
}

[[noreturn]] void RaiseUnknownImporter(int line) {
    throw CBaseException(errorNotFound, textResourceNotFound, line, sourceName);
}

}  // namespace

std::string PathInList(const std::string& path) {
    if (path.find(';') == std::string::npos && !path.starts_with(escapedPath)) return path;
    std::string escaped(escapedPath);
    for (const char c : path) escaped += c == '%' ? "%25" : c == ';' ? "%3B" : std::string(1, c);
    return escaped;
}

AVBased::IAVImporter* MediaManager::GetImporter(const char* importerName) {
    return AtBoundary(lineImporter, sourceName, [&]() -> AVBased::IAVImporter* {
        static FileImporter files;
        static TextImporter texts;
        RequirePointer(importerName, lineImporter, sourceName);
        if (std::strcmp(importerName, AVBased::importerSimpleHtmlText) == 0) return &texts;
        if (std::strcmp(importerName, AVBased::importerImage) == 0) return &files;
        RaiseUnknownImporter(lineImporter);
    });
}

AVBased::IAVSource* MediaManager::OpenSource(const char* path, const char* importerName) {
    return AtBoundary(lineOpen, sourceName, [&]() -> AVBased::IAVSource* {
        RequirePointer(path, lineOpen, sourceName);
        RequirePointer(importerName, lineOpen, sourceName);
        const bool picture = std::strcmp(importerName, AVBased::importerImage) == 0;
        if (!picture && *importerName) RaiseUnknownImporter(lineOpen);
        try {
            return picture ? OpenPictureSource(Unescaped(path)) : OpenFileSource(Unescaped(path));
        } catch (const std::bad_alloc&) {
            throw CBaseException(errorNoMemory, (std::string(path) + " does not fit into the memory").c_str(), lineOpen,
                                 sourceName);
        }
    });
}

}  // namespace Nifikral
