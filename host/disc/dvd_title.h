#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_project.h"
#include "host/run/run_options.h"

namespace Nifikral {

/// One film of a project that is to be made into a file for dvdauthor.
struct TitleJob {
    const DiscProject* project = nullptr;
    int film = 0;        ///< its place in the project
    int videoRate = 0;   ///< kbit/s of its pictures, on average
    std::string output;  ///< an .mpg; replaced where it is there
    int threads = 0;     ///< 0: all cores
    bool copy = false;   ///< take the pictures over as they are coded, where they prove to be as a video DVD has them
};

/// What dvdauthor has to know of the file.
struct TitleReport {
    double seconds = 0;
    std::vector<std::string> audioLanguages;     ///< of each track, in order: ISO 639-1, or empty
    std::vector<std::string> subtitleLanguages;  ///< of each track, in order
    std::vector<double> chapters;                ///< where each begins, in seconds, the first at 0
    bool copied = false;                         ///< the pictures were not coded again

    bool operator==(const TitleReport&) const = default;
};

/// Makes the file, and beside it, under its name and ".json", the report. Both appear when they are complete. The
/// pictures are fitted to the project's profile; groups are closed, and begin at each chapter; all sound is AC-3, and a
/// film without sound is silent. Below `twoPassesBelow` the film is encoded in two passes. What is damaged is reported
/// and left out. Throws host errors.
TitleReport MakeTitle(const TitleJob& job, const EffectModule& module);

/// Goes once through a film, or a slideshow, and encodes it as `run` says. Throws host errors.
void EncodeFilm(const DiscFilm& film, const RunOptions& run, const EffectModule& module);

/// The report of a file that MakeTitle has made. Throws an input error.
TitleReport ReadTitleReport(const std::string& output);

/// What the file depends on, as a stage's key: two jobs of one key make the same.
std::string KeyOfTitle(const TitleJob& job);

/// Where one pass would not share out so few bits well, in kbit/s.
inline constexpr int twoPassesBelow = 4500;
/// How often the pictures of a job are gone through.
int PassesOf(const TitleJob& job);

}  // namespace Nifikral
