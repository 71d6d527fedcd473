#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "host/films/film.h"
#include "host/studio/view_turns.h"

namespace Nifikral {

/// What a view keeps of a film that a generator makes: the generator where it stands, and the frames that it has made.
class FilmView {
 public:
    using Prepare = std::function<PreparedFilm()>;

    /// A frame as a JPEG, at most so wide; behind the end, the last one. `key` says what the film is made from; another
    /// one is prepared. Throws host errors, and Superseded between two frames.
    std::string Frame(const std::string& key, long long number, int width, const Prepare& prepare,
                      const ViewTurn& turn);
    /// Of the film that was shown last.
    const Film& Shown() const { return m_film->film; }

 private:
    void Begin(const Prepare& prepare);

    std::string m_key;
    std::optional<PreparedFilm> m_film;
    std::optional<FilmPictures> m_frames;
    std::map<long long, std::string> m_made;
    std::size_t m_bytes = 0;
};

}  // namespace Nifikral
