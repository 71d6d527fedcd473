#include "host/films/title.h"

#include <cmath>
#include <sstream>

#include "host/base/colour_text.h"
#include "host/base/errors.h"
#include "host/films/film.h"
#include "host/films/styled_text.h"
#include "host/films/text_renderer.h"
#include "host/media/media_input.h"
#include "host/run/confinement.h"
#include "host/run/many_files.h"

namespace Nifikral {
namespace {

constexpr char generatorName[] = "title";

struct Place {
    const char *name, *align, *valign;
};
constexpr Place places[] = {
    {"top-left", "left", "top"},       {"top", "center", "top"},       {"top-right", "right", "top"},
    {"left", "left", "middle"},        {"middle", "center", "middle"}, {"right", "right", "middle"},
    {"bottom-left", "left", "bottom"}, {"bottom", "center", "bottom"}, {"bottom-right", "right", "bottom"}};

const Place& FindPlace(const std::string& name) {
    std::ostringstream line;
    line << "--place " << name << " is no place; give one of these:";
    for (const Place& place : places) {
        if (name == place.name) return place;
        line << " " << place.name;
    }
    throw HostError(ExitCode::Usage, line.str());
}

bool HasSinglePicture(const std::string& input) {
    if (IsPipe(input) || HoldsFilm(input)) return false;
    MediaSource source(input, {.range = {}, .audio = false});
    source.Next();
    const std::optional<SourceStep> second = source.Next();
    return !second || !second->frame;
}

TitleTimes ScheduleOver(const PreparedSource& source, const TitleOptions& options) {
    const double rate = av_q2d(source.FrameRate());
    const auto frames = [&](double seconds) { return std::llround(seconds * rate); };
    TitleTimes when{frames(options.begin), frames(options.seconds), frames(options.inSeconds),
                    frames(options.outSeconds)};
    const long long whole = source.CountFrames({});
    if (whole > 0 && when.begin >= whole) {
        std::ostringstream line;
        line << "--begin lies behind the end of the video, at " << double(whole) / rate
             << " seconds; choose an earlier time";
        throw HostError(ExitCode::Usage, line.str());
    }
    // Where the end is not known, the title stays.
    if (options.seconds == 0 && whole > 0) when.length = whole - when.begin;
    return when;
}

TitleTimes ScheduleOverStill(const PreparedSource& source, const TitleOptions& options, const RunOptions& run) {
    if (IsPictureOutput(run.output)) return {};
    constexpr double usualSeconds = 5;
    TitleOptions whole = options;
    if (options.seconds == 0) whole.seconds = usualSeconds;
    whole.begin = 0;
    TitleTimes when = ScheduleOver(source, whole);
    when.begin = std::llround(options.begin * av_q2d(source.FrameRate()));
    return when;
}

// As the title takes it; empty for its own.
std::string ColourOf(const std::string& text) {
    if (text.empty()) return {};
    const std::optional<std::uint32_t> colour = ParseColour(text);
    if (!colour) throw HostError(ExitCode::Usage, "--color " + text + " is no colour" + ColourRemedy(text));
    return ColourText(*colour);
}

using Settings = std::vector<std::pair<std::string, std::string>>;

Settings Look(const TitleOptions& options) {
    const Place& place = FindPlace(options.place);
    Settings look = {{"text", WithLineFeeds(options.text)},
                     {"size", std::to_string(options.size)},
                     {"align", place.align},
                     {"valign", place.valign}};
    for (const auto& [name, value] :
         {std::pair("face", options.face), std::pair("fontstyle", options.style),
          std::pair("color", ColourOf(options.colour)), std::pair("inMotion", options.inMotion),
          std::pair("outMotion", options.outMotion)})
        if (!value.empty()) look.emplace_back(name, value);
    return look;
}

}  // namespace

std::vector<std::string> TitlePlaces() {
    std::vector<std::string> names;
    for (const Place& place : places) names.emplace_back(place.name);
    return names;
}

EffectRequest TitleRequest(const TitleOptions& options, const TitleTimes& when) {
    EffectRequest request{generatorName, {}, {}, TimeWindow(when.begin)};
    const auto set = [&](const std::string& name, const std::string& value) {
        request.settings.push_back({name, ParameterValue(value, PropertyType::Text)});
    };
    for (const auto& [name, value] : Look(options)) set(name, value);
    set("duration", std::to_string(when.length));
    set("inDuration", std::to_string(when.in));
    set("outDuration", std::to_string(when.out));
    return request;
}

void PutTitle(const TitleOptions& options, const EffectModule& module) {
    ConfineRun(options.run);
    RequireUtf8("the title", options.text);
    RequireUtf8("--face", options.face);
    const Settings look = Look(options);
    const EffectPtr trial = module.Create(generatorName);
    if (!trial) throw HostError(ExitCode::Failed, module.Path() + " makes no titles; name another --module");
    SetProperties(*trial, look, [](const std::string& name, const std::string& reason) {
        throw HostError(ExitCode::Usage,
                        "the title refuses its " + name + ": " + reason + "; nifikral info title lists what it takes");
    });
    RunEach(options.inputs, options.run, [&](const std::string& input, const RunOptions& run) {
        const bool single = HasSinglePicture(input);
        ApplyOptions apply;
        apply.run = run;
        apply.preparation = options.preparation;
        RunEffects(input, apply, module, single, [&](const PreparedSource& source) {
            const TitleTimes when = single ? ScheduleOverStill(source, options, run) : ScheduleOver(source, options);
            const bool still = single && !IsPictureOutput(run.output);
            return EffectRun{{TitleRequest(options, when)}, still ? when.begin + when.length : 0};
        });
    });
}

}  // namespace Nifikral
