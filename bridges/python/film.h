#pragma once

#include <sys/types.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "bridges/python/interpreter.h"
#include "host/films/menu.h"
#include "host/films/slideshow.h"

namespace Nifikral::Python {

/// The frames of a menu or a slideshow, as the command makes them. Threads: any; calls run one after another. A process
/// that is forked off cannot go on with it.
class FilmFrames {
 public:
    explicit FilmFrames(PreparedFilm film);
    ~FilmFrames();
    FilmFrames(const FilmFrames&) = delete;
    FilmFrames& operator=(const FilmFrames&) = delete;

    int Width() const { return m_film.film.width; }
    int Height() const { return m_film.film.height; }
    double FrameRate() const { return av_q2d(m_film.film.frameRate); }
    long long Count() const { return m_film.film.frames; }
    bool Seeks() const { return m_film.film.seeks; }

    /// A new array of height x width x channels, 3 or 4. Where the film does not seek, `number` has to be at or behind
    /// the one that follows the last one.
    py::array Frame(long long number, int channels, Order order);

 private:
    PreparedFilm m_film;
    pid_t m_process;
    std::mutex m_mutex;
    std::optional<FilmPictures> m_pictures;
};

/// A page, from 1, of the menu that a project describes. `templateName` may be empty where the project names it.
PreparedFilm OpenMenu(const std::string& project, const std::string& templateName, int page);

}  // namespace Nifikral::Python
