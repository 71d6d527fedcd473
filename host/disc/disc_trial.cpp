#include "host/disc/disc_trial.h"

#include <algorithm>
#include <chrono>
#include <functional>

#include "host/base/log.h"
#include "host/disc/dvd_title.h"
#include "host/disc/film_facts.h"
#include "host/films/menu.h"

namespace Nifikral {
namespace {

constexpr int frames = 50;  // of a trial

RunOptions TrialOptions(const DiscProject& project) {
    RunOptions run;
    run.profile = project.profile->name;
    run.frames = "0-" + std::to_string(frames - 1);
    run.showsProgress = false;
    run.output.path = "/dev/null";
    run.output.format = "dvd";
    run.output.sound = false;
    return run;
}

// Seconds for each of so many.
double SecondsOf(double seconds, const std::function<void()>& trial) {
    const Verbosity before = GetVerbosity();
    SetVerbosity(Verbosity::Quiet);
    const auto begin = std::chrono::steady_clock::now();
    trial();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    SetVerbosity(before);
    return taken.count() / seconds;
}

}  // namespace

double TryFilm(const DiscProject& project, const DiscFilm& film, double seconds, int videoRate,
               const EffectModule& module) {
    RunOptions run = TrialOptions(project);
    run.output.encoderOptions = {"b=" + std::to_string(videoRate) + "k"};
    const AVRational rate = film.path.empty() ? project.profile->frameRate : FactsOf(film.path).frameRate;
    return SecondsOf(std::min(seconds, frames / av_q2d(rate)), [&] { EncodeFilm(film, run, module); });
}

double TryPage(const DiscProject& project, const DiscPage& page, const EffectModule& module) {
    FilmOptions options;
    options.run = TrialOptions(project);
    options.run.profile.clear();
    return SecondsOf(frames / av_q2d(page.menu.film.frameRate),
                     [&] { RenderMenuPage(page.menu, page.templateName, options, module, page.name); });
}

}  // namespace Nifikral
