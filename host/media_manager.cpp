#include "host/media_manager.h"

#include <cstring>
#include <string>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"
#include "host/manager_sources.h"

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

[[noreturn]] void RaiseUnknownImporter(int line) {
    throw CBaseException(errorNotFound, textResourceNotFound, line, sourceName);
}

}  // namespace

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
            return picture ? OpenPictureSource(path) : OpenFileSource(path);
        } catch (const std::bad_alloc&) {
            throw CBaseException(errorNoMemory, (std::string(path) + " does not fit into the memory").c_str(), lineOpen,
                                 sourceName);
        }
    });
}

}  // namespace Nifikral
