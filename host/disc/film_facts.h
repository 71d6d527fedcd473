#pragma once

#include <string>
#include <vector>

#include "host/disc/disc_project.h"
#include "host/media/media_source.h"

namespace Nifikral {

/// What a track of silence takes on a video DVD, in kbit/s, as other sound of one or two channels does.
inline constexpr int silenceRate = 192;

/// What a disc has to know of a film's file.
struct FilmFacts {
    double seconds = 0;
    int width = 0, height = 0;  ///< of the upright pictures, as stored
    double shownAspect = 1;     ///< width to height of the upright pictures, as they are shown
    AVRational frameRate = {25, 1};
    std::string title;                  ///< its own; empty, or UTF-8
    std::vector<DiscChapter> chapters;  ///< its own marks
    /// Of each sound track and each track of subtitles, as the file has it; "" where it does not say.
    std::vector<std::string> soundLanguages, subtitleLanguages;
    int soundRate = 0;  ///< kbit/s that its sound takes on a video DVD
    long long bytes = 0;
    bool codedForDvd = false;  ///< as MPEG-2 with key frames, sound and rates as video DVDs have them
};

/// The marks of a film that was opened with its extras, the first at 0; none where it has fewer than two.
std::vector<DiscChapter> MarksOf(const MediaSource& film);

/// Opens a film, and decodes its first picture for a trial. Throws input errors that name the file and the remedy.
FilmFacts FactsOf(const std::string& path);

/// The same of a project's film, with the subtitles in files of their own behind those of its file.
FilmFacts FactsOf(const DiscFilm& film);

/// Throws an input error for a film that ends earlier than its container says; reads its last seconds. What a container
/// does not say is not missed.
void RequireEnd(const std::string& path, const FilmFacts& film);

/// kbit/s of the sound, silence where there is none, and subtitles of a film on a video DVD.
int RateBeside(const FilmFacts& film);

/// Whether the film goes onto a disc of this profile as it is coded.
bool IsReadyFor(const FilmProfile& profile, const FilmFacts& film);

/// A text as a title: without blanks around it, cut after a word where it is too long; empty for one that is no UTF-8.
std::string TidyTitle(const std::string& text);

}  // namespace Nifikral
