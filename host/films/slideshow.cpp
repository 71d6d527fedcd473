#include "host/films/slideshow.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/films/media_manager.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/media/frame_rate.h"

namespace Nifikral {
namespace {

constexpr char generatorName[] = "slide";

void ReadSize(const std::string& size, Film& film) {
    const char *const begin = size.data(), *const end = begin + size.size();
    const auto [by, first] = std::from_chars(begin, end, film.width);
    const bool good = first == std::errc() && by != end && *by == 'x' &&
                      std::from_chars(by + 1, end, film.height).ptr == end && by + 1 != end;
    if (!good || film.width < 1 || film.height < 1 || film.width > largestSide || film.height > largestSide)
        throw HostError(ExitCode::Usage, "--size " + size + " is no size; give WIDTHxHEIGHT, each from 1 to " +
                                             std::to_string(largestSide));
}

Film ShapeOfFilm(const SlideshowOptions& options) {
    Film film;
    film.seeks = true;
    film.profile = RequireProfile(options.film.run.profile);
    if (film.profile) {
        film.width = film.profile->SquareWidth();
        film.height = film.profile->height;
        film.frameRate = film.profile->frameRate;
        return film;
    }
    ReadSize(options.size.empty() ? "1920x1080" : options.size, film);
    if (!options.frameRate.empty()) film.frameRate = RequireFrameRate(options.frameRate);
    if (const std::string side = OddSide(film, options.film.run.output); !side.empty())
        throw HostError(ExitCode::Usage, "--size " + options.size + " has an odd " + side +
                                             ", and videos need even sides; give one more or make pictures");
    return film;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list += (list.empty() ? "" : ";") + word;
    return list;
}

std::string JoinedPaths(const std::vector<std::string>& pictures) {
    std::vector<std::string> paths;
    for (const std::string& picture : pictures) paths.push_back(PathInList(picture));
    return Joined(paths);
}

}  // namespace

SlideTiming ShareOut(long long pictures, long long alone, long long transition, long long frames) {
    if (frames == 0) return {alone, transition, std::max(1LL, pictures * alone + (pictures - 1) * transition)};
    const auto own = [&] { return (frames - (pictures - 1) * transition) / pictures; };
    if (own() < transition) transition = frames / (2 * pictures);
    return {own(), transition, frames};
}

void MakeSlideshow(const SlideshowOptions& options, const EffectModule& module) {
    Film film = ShapeOfFilm(options);
    const std::vector<std::string> found = FindPictures(options.inputs);
    for (const std::string& picture : found) options.film.run.RefuseAsOutput(picture);
    options.film.run.RefuseAsOutput(options.film.sound);
    const std::optional<double> seconds = options.film.Seconds();
    const std::vector<std::string> pictures = ReadablePictures(found, options.strict);

    const double rate = av_q2d(film.frameRate);
    const SlideTiming timing =
        ShareOut((long long)pictures.size(), std::llround(options.pictureSeconds * rate),
                 std::llround(options.transitionSeconds * rate), seconds ? film.FramesIn(*seconds) : 0);
    film.frames = timing.total;
    std::ostringstream detail;
    detail << pictures.size() << " pictures, each alone for " << timing.alone << " frames, transitions of "
           << timing.transition;
    PrintDetail(detail.str());

    const EffectPtr generator = module.Create(generatorName);
    if (!generator) throw HostError(ExitCode::Failed, module.Path() + " makes no slideshows; name another --module");
    SetProperties(*generator,
                  {{"duration", std::to_string(film.frames)},
                   {"paths", JoinedPaths(pictures)},
                   {"slideDuration", std::to_string(timing.alone)},
                   {"transitionDuration", std::to_string(timing.transition)},
                   {"transitions", Joined(options.transitions)},
                   {"motion", Joined(options.motions)},
                   {"motionAmount", std::to_string(options.motionAmount)},
                   {"fit", options.fit},
                   {"seed", std::to_string(options.seed)}},
                  [](const std::string& name, const std::string& reason) {
                      throw HostError(ExitCode::Usage, std::string("the slideshow refuses its ") + name + ": " +
                                                           reason + "; nifikral info slide lists the words");
                  });
    RenderFilm(*generator, film, options.film, std::to_string(pictures.size()) + " pictures");
}

}  // namespace Nifikral
