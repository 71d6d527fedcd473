#include "dvd_effects/menu/host_sources.h"

#include <new>

#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/menu/list_parsers.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of these operations.
enum Line : int { lineArray = 300, lineOpen = 320, lineRead = 330, lineSources = 340, lineTextRender = 380 };

constexpr int stillMilliseconds = 5000;

template <class T>
int InitPointers(T**& pointers, int n) {
    pointers = nullptr;
    return AtBoundary(lineArray, dvdEffectsUtilsName, [&] {
        if (n >= 0) pointers = new (std::nothrow) T* [std::size_t(n)] {};
        Require(pointers, textCreatePointerFailed, lineArray);
        return 1;
    });
}

// Null where the host opens nothing.
SourceOwner Open(IAVManager& manager, const std::string& path, bool isImage) {
    return SourceOwner(manager.OpenSource(path.c_str(), isImage ? importerImage : ""));
}

// The host cannot know how long a picture is to last. Returns its settings, which belong to the source.
IAVSourcePropertySet* SetStillDuration(IAVSource& picture, int line) {
    auto* const settings = static_cast<IAVSourcePropertySet*>(picture.GetInterface(IAVSourcePropertySet::name));
    Require(settings, textParamError, line);
    settings->SetProperty(IAVSourcePropertySet::stillDuration, stillMilliseconds);
    return settings;
}

}  // namespace

SourceOwner OpenSource(IAVManager* manager, const std::string& path, bool isImage, const char* message) {
    Require(manager, textNullPointer, lineOpen);
    SourceOwner source = Open(*manager, path, isImage);
    if (!source) RaiseHostFailure(message, lineOpen);
    if (isImage) SetStillDuration(*source, lineOpen);
    return source;
}

FrameOwner ReadFrame(IAVSource& source) {
    FrameOwner frame(source.ReadFrame());
    if (!frame) RaiseHostFailure(textNullPointer, lineRead);
    return frame;
}

int InitAVSources(IAVSource**& sources, int n) { return InitPointers(sources, n); }
int InitAVPropSet(IAVSourcePropertySet**& sets, int n) { return InitPointers(sets, n); }

int CreateAVSources(IAVManager* manager, IAVSource**& sources, IAVSourcePropertySet**& sets, const std::string& paths,
                    const std::string& kinds) {
    sources = nullptr;
    sets = nullptr;
    return AtBoundary(lineSources, dvdEffectsUtilsName, [&] {
        Require(manager, textNullPointer, lineSources);
        const std::vector<std::string> path = SplitList(paths, ';'), kind = SplitList(kinds, ';');
        Require(path.size() == kind.size(), textParamError, lineSources);
        const int count = int(path.size());
        std::vector<SourceOwner> opened(path.size());
        std::vector<IAVSourcePropertySet*> settings(path.size());
        for (std::size_t i = 0; i < path.size(); ++i) {
            const bool isImage = kind[i] == "true";
            opened[i] = Open(*manager, path[i], isImage);
            Require(opened[i] != nullptr, textParamError, lineSources);
            if (isImage) settings[i] = SetStillDuration(*opened[i], lineSources);
        }
        IAVSource** newSources = nullptr;
        IAVSourcePropertySet** newSets = nullptr;
        if (!InitAVSources(newSources, count)) return 0;
        if (!InitAVPropSet(newSets, count)) {
            delete[] newSources;
            return 0;
        }
        for (std::size_t i = 0; i < path.size(); ++i) {
            newSources[i] = opened[i].release();
            newSets[i] = settings[i];
        }
        sources = newSources;
        sets = newSets;
        return 1;
    });
}

int CreateTextRender(IAVImporter* importer, IAVSource*& source, ISimpleHTMLRender*& render, const text_t& text) {
    source = nullptr;
    render = nullptr;
    return AtBoundary(lineTextRender, dvdEffectsUtilsName, [&] {
        Require(importer, textNullPointer, lineTextRender);
        SourceOwner made(importer->CreateSource());
        if (!made) RaiseHostFailure(textNullPointer, lineTextRender);
        auto* const renderer = static_cast<ISimpleHTMLRender*>(made->GetInterface(ISimpleHTMLRender::name));
        if (!renderer) RaiseHostFailure(textNullPointer, lineTextRender);
        if (!renderer->SetHTML(TextHtml(text).c_str())) RaiseHostFailure(textUnexpectedError, lineTextRender);
        render = renderer;
        source = made.release();
        return 1;
    });
}

FrameOwner RenderText(IAVImporter* importer, const text_t& text) {
    IAVSource* source = nullptr;
    ISimpleHTMLRender* render = nullptr;
    if (!CreateTextRender(importer, source, render, text)) return nullptr;
    return ReadFrame(*SourceOwner(source));
}

}  // namespace AVBased
