#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/film.h"
#include "host/films/slide_pictures.h"

namespace Nifikral {

struct SlideshowOptions {
    std::vector<std::string> inputs;  ///< folders, pictures and films by their names, and lists as @FILE
    std::string order = "given";      ///< one of SlideOrders
    std::string captions;             ///< a pattern, or empty
    double pictureSeconds = 4, transitionSeconds = 1;
    std::vector<std::string> transitions = {"crossfade", "push", "zoom", "wipe", "iris", "pageturn"};
    std::vector<std::string> motions = {"zoomin", "panright", "zoomout", "panleft"};
    int motionAmount = 15, seed = 0;
    std::string fit = "blur", size, frameRate;
    bool strict = false;  ///< a picture that cannot be read ends the run
    FilmOptions film;
};

/// The frames on which a slide is seen, from one to before another.
struct SlideSpan {
    long long begin = 0, end = 0;
};

/// A slideshow that is ready to be made.
struct PreparedShow {
    PreparedFilm made;
    std::vector<Slide> slides;     ///< in their order
    std::vector<SlideSpan> spans;  ///< of each
};
/// Orders slides that were tried, shares out the time, and readies the film of them. Throws usage errors.
PreparedShow PrepareSlideshow(const SlideshowOptions& options, std::vector<Slide> slides, const EffectModule& module);

/// Finds and orders the slides, and readies the film of them. Throws usage and input errors.
PreparedFilm PrepareSlideshow(const SlideshowOptions& options, const EffectModule& module);

/// Makes a film of pictures and films. Those that cannot be read are reported and left out. Where no music is given,
/// the films keep their sound.
void MakeSlideshow(const SlideshowOptions& options, const EffectModule& module);

/// How the frames of a show are shared out.
struct SlideTiming {
    long long alone = 0;       ///< frames that each picture has for itself
    long long transition = 0;  ///< frames that two pictures share
    long long total = 0;
};

/// `own` are the frames by themselves of those that have a time of their own, and -1 for the others; those have `alone`
/// of them. `frames`, unless 0, are to be filled: the others' time follows from them, and where no slide has a time of
/// its own and they would get less of it than a transition takes, transitions are shorter. Throws a usage error when
/// the times of their own leave too little.
SlideTiming ShareOut(const std::vector<long long>& own, long long alone, long long transition, long long frames);

}  // namespace Nifikral
