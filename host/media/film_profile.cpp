#include "host/media/film_profile.h"

#include <cmath>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"

namespace Nifikral {
namespace {

constexpr AVRational palRate = {25, 1}, ntscRate = {30000, 1001}, standard = {4, 3}, wide = {16, 9};

constexpr FilmProfile profiles[] = {
    {"pal", 720, 576, palRate, standard, true},
    {"pal-4:3", 720, 576, palRate, standard, true},
    {"pal-16:9", 720, 576, palRate, wide, true},
    {"ntsc", 720, 480, ntscRate, standard, true},
    {"ntsc-4:3", 720, 480, ntscRate, standard, true},
    {"ntsc-16:9", 720, 480, ntscRate, wide, true},
    {"hd", 1920, 1080, palRate, wide},
    {"uhd", 3840, 2160, palRate, wide},
};

}  // namespace

AVRational FilmProfile::PixelAspect() const {
    AVRational aspect = av_mul_q(shownAspect, {height, width});
    av_reduce(&aspect.num, &aspect.den, aspect.num, aspect.den, 1 << 20);
    return aspect;
}

int FilmProfile::SquareWidth() const { return 2 * int(std::lround(height * av_q2d(shownAspect) / 2)); }

const FilmProfile* FindProfile(const std::string& name) {
    for (const FilmProfile& profile : profiles)
        if (name == profile.name) return &profile;
    return nullptr;
}

std::vector<std::string> ProfileNames() {
    std::vector<std::string> names;
    for (const FilmProfile& profile : profiles) names.emplace_back(profile.name);
    return names;
}

std::string NoProfile(const std::string& name) {
    std::string all;
    for (const std::string& known : ProfileNames()) all += (all.empty() ? "" : ", ") + known;
    return " is no profile" + DidYouMean(name, ProfileNames()) + "; give one of " + all;
}

const FilmProfile* RequireProfile(const std::string& name) {
    const FilmProfile* const profile = FindProfile(name);
    if (!profile && !name.empty()) throw HostError(ExitCode::Usage, "--profile " + name + NoProfile(name));
    return profile;
}

}  // namespace Nifikral
