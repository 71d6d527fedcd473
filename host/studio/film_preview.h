#pragma once

#include <functional>
#include <optional>
#include <string>

#include "host/films/film.h"
#include "host/studio/last_used.h"
#include "host/studio/view_turns.h"

namespace Nifikral {

/// Frames as JPEGs, which all views of a film share.
using FilmFrames = LastUsed<std::string>;

/// A frame of a film that a generator makes.
struct FilmWish {
    std::string key;  ///< of everything that the film is made from
    std::function<PreparedFilm()> prepare;
    /// Whether a film, one of whose frames cannot be made, is another one when it is prepared anew. May be empty.
    std::function<bool(long long)> mends;
    long long number = 0;  ///< behind the end, the last one
    int width = 0;         ///< that it has at most
};

/// What a view keeps of a film: the generator where it stands.
class FilmView {
 public:
    /// The frame, and among those that were made. Throws host errors, and Superseded on the way there.
    std::string Frame(const FilmWish& wish, FilmFrames& made, const ViewTurn& turn);
    /// Of the film that was shown last.
    const Film& Shown() const { return m_film->film; }

 private:
    void Begin(const FilmWish& wish);
    FramePtr Made(const FilmWish& wish, long long number, const ViewTurn& turn);
    void GoTo(const FilmWish& wish, long long number, const ViewTurn& turn);

    std::string m_key, m_name;  // of the film; in short, for its frames
    std::optional<PreparedFilm> m_film;
    std::optional<FilmPictures> m_frames;
};

}  // namespace Nifikral
