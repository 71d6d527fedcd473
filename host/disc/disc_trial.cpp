#include "host/disc/disc_trial.h"

#include <algorithm>
#include <chrono>

#include "host/base/log.h"
#include "host/run/apply.h"

namespace Nifikral {

double TryEncoding(const DiscProject& project, const DiscFilm& film, int videoRate, const EffectModule& module) {
    constexpr int frames = 100;
    ApplyOptions trial;
    trial.keepGoing = true;
    RunOptions& run = trial.run;
    run.profile = project.profile->name;
    run.frames = "0-" + std::to_string(frames - 1);
    run.showsProgress = false;
    run.output.path = "/dev/null";
    run.output.format = "dvd";
    run.output.sound = false;
    run.output.encoderOptions = {"b=" + std::to_string(videoRate) + "k"};
    double seconds = 0;  // that were encoded
    const Verbosity before = GetVerbosity();
    SetVerbosity(Verbosity::Quiet);
    const auto begin = std::chrono::steady_clock::now();
    RunEffects(film.path, trial, module, false, [&](const PreparedSource& source) {
        const long long count = source.EstimatedFrameCount();
        seconds = double(count > 0 ? std::min<long long>(count, frames) : frames) / av_q2d(source.FrameRate());
        return EffectRun{};
    });
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    SetVerbosity(before);
    return taken.count() / seconds;
}

}  // namespace Nifikral
