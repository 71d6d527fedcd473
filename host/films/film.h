#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/loop_seam.h"
#include "host/films/still_overlay.h"
#include "host/media/film_profile.h"
#include "host/media/sound_track.h"
#include "host/run/run_options.h"

namespace Nifikral {

/// What commands that make films are asked for.
struct FilmOptions {
    RunOptions run;
    std::vector<std::string> sounds;  ///< files, one after another
    double fade = 2;                  ///< seconds in which the sound fades out at the end, and one file into the next
    std::string length;               ///< seconds, "audio" for that of the sounds, or empty

    /// `length` in seconds; nothing when it is empty. Throws usage and input errors.
    std::optional<double> Seconds() const;
};

/// A film that a generator makes.
struct Film {
    int width = 0, height = 0;  ///< as it is made, in square pixels
    AVRational frameRate = {25, 1};
    long long frames = 0;
    const FilmProfile* profile = nullptr;  ///< videos are stored in its size
    bool seeks = false;                    ///< the generator's Seek goes to any frame
    /// The first frame of the part that a player repeats; those before it lead there. The end is dissolved into them,
    /// so that it goes on at this frame as they do. 0: the film repeats as a whole, as the generator makes it. Below
    /// `frames`.
    long long loopStart = 0;
    /// What is laid over every frame: BGRA of its size, colours not multiplied by alpha; null: nothing.
    std::shared_ptr<const AVFrame> over;
    long long overBegin = 0;        ///< the first frame with it
    std::vector<SoundPiece> sound;  ///< where the options name none
    /// Draws over a frame that the generator made, by its number; null: nothing.
    std::function<void(AVBased::IRawVideoFrame&, long long)> drawOver;

    /// The number of frames that last as long, at least one.
    long long FramesIn(double seconds) const;
};

/// A generator, ready with all its properties, and the film that it makes.
struct PreparedFilm {
    Film film;
    EffectPtr generator;
};

/// The pictures of a film, one after another. Threads: one at a time.
class FilmPictures {
 public:
    /// Makes them in the format of that code, one that effects know. `generator` and `film` are borrowed.
    FilmPictures(AVBased::IVideoProc& generator, const Film& film, unsigned formatCode);

    /// The number of the next one.
    long long Number() const { return m_number; }
    /// Goes on at another one. False for an earlier one where the generator does not go back. Throws HostError where it
    /// fails.
    bool GoTo(long long number);
    /// Throws HostError where the generator fails.
    FramePtr Make();

 private:
    bool Jump(long long number);
    void RequireDone();

    AVBased::IVideoProc& m_generator;
    const Film& m_film;
    unsigned m_format;
    LoopSeam m_seam;
    std::optional<StillOverlay> m_over;
    long long m_number = 0;
};

/// Lets a generator, ready with all its properties, make a film, or the part of it that the options ask for: these
/// frames are the same as in the whole film. `name` stands in what is printed.
void RenderFilm(AVBased::IVideoProc& generator, const Film& film, const FilmOptions& options, const std::string& name);

/// The name of the first side that the output could not hold, "" when it can: videos need even ones.
std::string OddSide(const Film& film, const OutputOptions& output);

/// Sets properties; a refusal is reported through `refuse(property, reason)`.
void SetProperties(AVBased::IVideoProc& generator, const std::vector<std::pair<std::string, std::string>>& properties,
                   const std::function<void(const std::string&, const std::string&)>& refuse);

}  // namespace Nifikral
