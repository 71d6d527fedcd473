#pragma once

#include <string>

#include "avbase/IAVManager.h"
#include "host/films/manager_sources.h"

namespace Nifikral {

/// Pictures that were opened, for the next time. Threads: any.
class PictureStore {
 public:
    virtual ~PictureStore() = default;
    /// Null where there is none, or where the file has changed.
    virtual FramePtr Find(const std::string& path) = 0;
    virtual void Keep(const std::string& path, const AVFrame& picture) = 0;
};

/// What this host gives to generators: files through FFmpeg and text through Pango.
///
/// Pictures come upright in format 30. Videos come upright in their own layout where effects know it and else in the
/// nearest; what each frame shows follows from the Playback in their path. Colours are the usual ones for the frame's
/// height, in limited range. A file opened under the empty importer name is a picture when it holds a single frame.
/// Sides of more than 16384 are refused. Threads: any; each source by one at a time.
class MediaManager final : public AVBased::IAVManager {
 public:
    /// Takes pictures from the store, unless it is null, and puts them there. It must outlive this object.
    explicit MediaManager(PictureStore* store = nullptr) : m_store(store) {}

    AVBased::IAVImporter* GetImporter(const char* importerName) override;
    AVBased::IAVSource* OpenSource(const char* path, const char* importerName) override;

 private:
    AVBased::IAVSource* OpenFile(const std::string& path, const Playback& playback, bool picture) const;

    PictureStore* m_store;
};

/// The path of a picture that MediaManager draws: from one colour, 0xRRGGBB, in the top left corner to another in the
/// bottom right one.
std::string PlainPicture(int width, int height, unsigned from, unsigned to);

/// A path as MediaManager opens it, with how a video is played, written without ";", which separates items in the
/// module's lists.
std::string PathInList(const std::string& path, const Playback& playback = {});

}  // namespace Nifikral
