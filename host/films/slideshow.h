#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/films/film.h"

namespace Nifikral {

struct SlideshowOptions {
    std::vector<std::string> inputs;  ///< folders, and pictures by their names
    double pictureSeconds = 4, transitionSeconds = 1;
    std::vector<std::string> transitions = {"crossfade", "push", "zoom", "wipe", "iris", "pageturn"};
    std::vector<std::string> motions = {"zoomin", "panright", "zoomout", "panleft"};
    int motionAmount = 15, seed = 0;
    std::string fit = "blur", size, frameRate;
    bool strict = false;  ///< a picture that cannot be read ends the run
    FilmOptions film;
};

/// Makes a film of pictures. Those that cannot be read are reported and left out.
void MakeSlideshow(const SlideshowOptions& options, const EffectModule& module);

/// How the frames of a show are shared out.
struct SlideTiming {
    long long alone = 0;       ///< frames that each picture has for itself
    long long transition = 0;  ///< frames that two pictures share
    long long total = 0;
};

/// `frames`, unless 0, are to be filled: the pictures' own time follows from them, and where pictures would get less
/// of it than a transition takes, transitions are shorter.
SlideTiming ShareOut(long long pictures, long long alone, long long transition, long long frames);

}  // namespace Nifikral
