#include "host/films/slideshow.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/films/captions.h"
#include "host/films/media_manager.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/media/frame_rate.h"
#include "host/run/confinement.h"

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
    return film;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list += (&word == &words.front() ? "" : ";") + word;
    return list;
}

// A ";" list with an item of each slide.
template <class Write>
std::string List(const std::vector<Slide>& slides, Write write) {
    std::vector<std::string> items;
    for (const Slide& slide : slides) items.push_back(write(slide));
    return Joined(items);
}

// What each slide has for itself, in frames; -1: what all pictures have.
std::vector<long long> OwnTimes(const std::vector<Slide>& slides, long long transition, double rate) {
    std::vector<long long> own;
    for (std::size_t i = 0; i < slides.size(); ++i) {
        const Slide& slide = slides[i];
        const long long shared = transition * ((i > 0) + (i + 1 < slides.size()));
        if (slide.seconds)
            own.push_back(std::llround(*slide.seconds * rate));
        else if (slide.filmSeconds > 0)
            own.push_back(std::max(0LL, std::llround(slide.filmSeconds * rate) - shared));
        else
            own.push_back(-1);
    }
    return own;
}

std::vector<SlideSpan> SeenAt(const std::vector<long long>& own, const SlideTiming& timing) {
    std::vector<SlideSpan> seen;
    long long alone = 0;
    for (const long long time : own) {
        const long long end = alone + (time < 0 ? timing.alone : time);
        seen.push_back({std::max(0LL, alone - timing.transition), std::min(end + timing.transition, timing.total)});
        alone = end + timing.transition;
    }
    seen.back().end = timing.total;
    return seen;
}

std::vector<SoundPiece> SoundsOf(const std::vector<Slide>& slides, const std::vector<SlideSpan>& seen,
                                 const SlideTiming& timing, double rate) {
    std::vector<SoundPiece> pieces;
    for (std::size_t i = 0; i < slides.size(); ++i) {
        if (!slides[i].hasSound) continue;
        const double length = std::min(double(seen[i].end - seen[i].begin) / rate, slides[i].filmSeconds);
        const double fade = std::min(double(timing.transition) / rate, length / 2);
        pieces.push_back(
            {slides[i].path, double(seen[i].begin) / rate, length, i > 0 ? fade : 0, i + 1 < slides.size() ? fade : 0});
    }
    return pieces;
}

std::vector<Caption> CaptionsOf(const std::vector<Slide>& slides, const std::vector<SlideSpan>& seen,
                                const SlideTiming& timing, const std::string& pattern) {
    std::vector<Caption> captions;
    // One goes in the first half of a transition, the next one comes in the second.
    const long long half = timing.transition / 2;
    for (std::size_t i = 0; i < slides.size(); ++i) {
        const long long begin = seen[i].begin + (i > 0 ? timing.transition - half : 0);
        const long long end = seen[i].end - (i + 1 < slides.size() ? timing.transition - half : 0);
        const std::string text = CaptionOf(slides[i].caption.value_or(pattern), slides[i], i + 1);
        if (!text.empty() && end > begin) captions.push_back({text, begin, end - begin, half});
    }
    return captions;
}

}  // namespace

SlideTiming ShareOut(const std::vector<long long>& own, long long alone, long long transition, long long frames) {
    const auto pictures = (long long)own.size(), others = (long long)std::ranges::count(own, -1);
    long long fixed = (pictures - 1) * transition;
    for (const long long time : own) fixed += std::max(time, 0LL);
    if (frames == 0) return {alone, transition, std::max(1LL, fixed + others * alone)};
    const auto each = [&] { return others ? (frames - fixed) / others : 0; };
    if (others == pictures && each() < transition) {
        transition = frames / (2 * pictures);
        fixed = (pictures - 1) * transition;
    } else if (others < pictures && frames < fixed + others)
        throw HostError(ExitCode::Usage,
                        "--length is too short for the films, and the pictures with times of their own, that are in "
                        "the show; give more, or shorter times in a list");
    return {each(), transition, frames};
}

PreparedShow PrepareSlideshow(const SlideshowOptions& options, std::vector<Slide> slides, const EffectModule& module) {
    Film film = ShapeOfFilm(options);
    RequireUtf8("--captions", options.captions);
    CheckCaptions(options.captions);
    const std::optional<double> seconds = options.film.Seconds();
    OrderSlides(slides, options.order, std::uint32_t(options.seed));

    const double rate = av_q2d(film.frameRate);
    const long long transition = std::llround(options.transitionSeconds * rate);
    const std::vector<long long> own = OwnTimes(slides, transition, rate);
    const SlideTiming timing =
        ShareOut(own, std::llround(options.pictureSeconds * rate), transition, seconds ? film.FramesIn(*seconds) : 0);
    film.frames = timing.total;
    std::vector<SlideSpan> seen = SeenAt(own, timing);
    film.sound = SoundsOf(slides, seen, timing, rate);
    const auto captions = std::make_shared<CaptionPainter>(module, CaptionsOf(slides, seen, timing, options.captions),
                                                           film.width, film.height);
    film.drawOver = [captions](AVBased::IRawVideoFrame& frame, long long number) { captions->Draw(frame, number); };
    std::ostringstream detail;
    detail << slides.size() << " pictures, each alone for " << timing.alone << " frames, transitions of "
           << timing.transition;
    PrintDetail(detail.str());

    EffectPtr generator = module.Create(generatorName);
    if (!generator) throw HostError(ExitCode::Failed, module.Path() + " makes no slideshows; name another --module");
    std::vector<std::string> times;
    for (const long long time : own) times.push_back(time < 0 ? "" : std::to_string(time));
    const auto path = [&](const Slide& slide) {
        return PathInList(slide.path, slide.plays ? Playback{film.frameRate, slide.filmSeconds == 0} : Playback());
    };
    SetProperties(*generator,
                  {{"duration", std::to_string(film.frames)},
                   {"paths", List(slides, path)},
                   {"films", List(slides, [](const Slide& slide) { return slide.plays ? "true" : "false"; })},
                   {"slideDuration", std::to_string(timing.alone)},
                   {"slideDurations", Joined(times)},
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
    return {{std::move(film), std::move(generator)}, std::move(slides), std::move(seen)};
}

PreparedFilm PrepareSlideshow(const SlideshowOptions& options, const EffectModule& module) {
    ShapeOfFilm(options);
    RequireUtf8("--captions", options.captions);
    CheckCaptions(options.captions);
    const std::vector<Slide> found = FindSlides(options.inputs);
    for (const Slide& slide : found) options.film.run.RefuseAsOutput(slide.path);
    for (const std::string& sound : options.film.sounds) options.film.run.RefuseAsOutput(sound);
    options.film.Seconds();
    return PrepareSlideshow(options, ReadableSlides(found, {.strict = options.strict}), module).made;
}

void MakeSlideshow(const SlideshowOptions& options, const EffectModule& module) {
    ConfineRun(options.film.run);
    if (const std::string side = OddSide(ShapeOfFilm(options), options.film.run.output); !side.empty())
        throw HostError(ExitCode::Usage, "--size " + options.size + " has an odd " + side +
                                             ", and videos need even sides; give one more or make pictures");
    const PreparedFilm show = PrepareSlideshow(options, module);
    RenderFilm(*show.generator, show.film, options.film, "the slideshow");
}

}  // namespace Nifikral
