#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/disc/disc_project.h"
#include "host/media/media_source.h"

namespace Nifikral {

/// What is known of a file once it has been opened.
struct SourceFacts {
    PictureShape shape;  ///< of the upright pictures
    AVRational rate = {25, 1};
    long long frames = 1;
    double seconds = 0;  ///< of a film; 0: a picture
    bool sound = false;
    std::vector<DiscChapter> chapters;  ///< that a film marks

    bool IsFilm() const { return frames > 1; }
    /// The number of the frame that is seen at a time.
    long long FrameAt(double time) const;
    /// How many frames begin before a time.
    long long FramesBefore(double time) const;
};

/// A film that is kept open, for its frames in any order: a little ahead is decoded on the way, anything else is
/// sought. Frames are numbered by their times. Threads: one at a time.
class FilmReader {
 public:
    explicit FilmReader(std::string path);
    /// For one that is known: nothing is opened before a frame is asked for.
    FilmReader(std::string path, SourceFacts facts);
    /// For one picture that is looked at small: photographs come with a longer side of at least that.
    FilmReader(std::string path, int enoughSide);

    const SourceFacts& Facts() const { return m_facts; }
    /// A frame by its number, or the last one there is before it. Throws what MediaSource throws.
    FramePtr At(long long number);
    /// The picture of a reader for one: the film's key frame at a frame or before it.
    FramePtr Near(long long number);

 private:
    FilmReader(std::string path, const MediaSource::Options& options);
    double BeginOf(long long number) const;
    void Open(long long number, bool keyFrame = false);
    void TakeKeyFrame();

    std::string m_path;
    MediaSource::Options m_options;
    SourceFacts m_facts;
    std::optional<MediaSource> m_source;
    FramePtr m_last;  // that came out
    long long m_lastNumber = -1;
    bool m_ended = false;
    bool m_isAtKeyFrame = false;  // nothing comes behind it before the source goes somewhere
};

}  // namespace Nifikral
