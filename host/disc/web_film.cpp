#include "host/disc/web_film.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/disc/disc_menus.h"
#include "host/disc/film_facts.h"
#include "host/films/menu.h"
#include "host/films/slideshow.h"
#include "host/media/browser_media.h"
#include "host/media/encoder.h"
#include "host/media/media_sink.h"
#include "host/media/part_file.h"
#include "host/media/subtitle_file.h"
#include "host/run/apply.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

constexpr int mostAcross = 1920, mostDown = 1080;
constexpr double slideTransition = 1;

using Json = nlohmann::ordered_json;

std::string Numbered(const std::string& folder, const char* kind, int number, const std::string& rest) {
    char name[32];
    std::snprintf(name, sizeof name, "%s-%02d", kind, number + 1);
    return (fs::path(folder) / (name + rest)).string();
}

std::string FilmFile(const std::string& folder, int film, const std::string& rest) {
    return Numbered(folder, "film", film, rest);
}

// The pictures that a coder of H.264 holds decide what its run takes in memory: those that it looks ahead at, and those
// of each of its threads. Several films are made at once, so that few threads keep all cores busy.
std::vector<std::string> EncoderOptions(int threads) {
    constexpr int mostThreads = 6;
    std::vector<std::string> options = {"threads=" + std::to_string(std::min(threads, mostThreads))};
    if (FindEncoder("", AV_CODEC_ID_H264).name == std::string_view("libx264"))
        options.emplace_back("x264-params=rc-lookahead=10:sync-lookahead=0");
    return options;
}

RunOptions OptionsFor(const std::string& output, int threads) {
    RunOptions run;
    run.output.path = output;
    run.output.overwrite = true;
    run.output.progressive = true;
    run.output.audioEncoder = "aac";
    run.threads = threads;
    run.output.encoderOptions = EncoderOptions(run.ThreadCount());
    return run;
}

// Square pixels within the most that there may be, as "WxH"; empty where the pictures are so already.
std::string SquareSize(const FilmFacts& facts) {
    const double aspect = facts.shownAspect;
    double width = facts.width, height = width / aspect;
    // No detail is lost: one side stays, the other grows.
    if (height < facts.height) {
        height = facts.height;
        width = height * aspect;
    }
    const bool lies = width >= height;
    const double shrink =
        std::min({1.0, (lies ? mostAcross : mostDown) / width, (lies ? mostDown : mostAcross) / height});
    const auto even = [&](double side) { return std::max(2, 2 * int(std::lround(side * shrink / 2))); };
    const auto isNear = [](int side, int stored) { return stored > 1 && std::abs(side - stored) <= 1; };
    if (isNear(even(width), facts.width) && isNear(even(height), facts.height)) return {};
    return std::to_string(even(width)) + "x" + std::to_string(even(height));
}

void EncodeFilm(const DiscFilm& film, const std::string& output, int threads, const EffectModule& module) {
    ApplyOptions apply;
    apply.run = OptionsFor(output, threads);
    for (const DiscChapter& chapter : film.chapters) apply.run.output.keyTimes.push_back(chapter.begin);
    // They stand beside the pictures.
    apply.run.output.extras = false;
    apply.keepGoing = true;
    apply.preparation.scale = SquareSize(FactsOf(film.path));
    RunEffects(film.path, apply, module, false, [](const PreparedSource&) { return EffectRun{}; });
}

void EncodeShow(const DiscFilm& film, const FilmProfile& profile, const std::string& output, int threads,
                const EffectModule& module) {
    SlideshowOptions show;
    show.inputs = film.pictures;
    show.transitionSeconds = std::min(slideTransition, film.pictureSeconds / 2);
    show.pictureSeconds = film.pictureSeconds - show.transitionSeconds;
    show.size = std::to_string(2 * int(std::lround(mostDown * av_q2d(profile.shownAspect) / 2))) + "x" +
                std::to_string(mostDown);
    show.frameRate = std::to_string(profile.frameRate.num) + "/" + std::to_string(profile.frameRate.den);
    show.film.run = OptionsFor(output, threads);
    if (!film.music.empty()) show.film.sounds = {film.music};
    MakeSlideshow(show, module);
}

// The picture that a film shows at a moment.
void WritePoster(const std::string& film, double seconds, const std::string& path) {
    MediaSource::Options from;
    from.begin = seconds;
    const MediaSource source(film, from);
    OutputOptions options;
    options.path = path;
    options.overwrite = true;
    const std::unique_ptr<MediaSink> sink = OpenSink(options, TraitsOf(source, AV_PIX_FMT_YUVJ420P), false);
    FramePtr picture = Require<FramePtr>(av_frame_clone(&source.FirstFrame()));
    PictureConverter(sink->Shape()).Convert(picture);
    sink->Write(std::move(picture), 0);
    sink->Finish();
}

// A file that the end of its making removes.
struct ScratchFile {
    std::string path;
    ~ScratchFile() {
        std::error_code error;
        fs::remove(path, error);
    }
};

Json TracksJson(const std::vector<WebTrack>& tracks) {
    Json json = Json::array();
    for (const WebTrack& track : tracks)
        json.push_back(
            {{"file", fs::path(track.file).filename().string()}, {"language", track.language}, {"title", track.title}});
    return json;
}

std::vector<WebTrack> TracksOf(const Json& json, const std::string& folder) {
    std::vector<WebTrack> tracks;
    for (const Json& track : json)
        tracks.push_back({(fs::path(folder) / track.at("file").get<std::string>()).string(),
                          track.at("language").get<std::string>(), track.at("title").get<std::string>()});
    return tracks;
}

void WriteReport(const WebFilm& made, const std::string& path) {
    const Json json = {{"sounds", TracksJson(made.sounds)},
                       {"subtitles", TracksJson(made.subtitles)},
                       {"poster", fs::path(made.poster).filename().string()},
                       {"copied", made.copied}};
    PartFile file(path, true);
    // Tags of films are not always UTF-8.
    file.Write(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    file.Commit();
}

}  // namespace

WebFilm MakeWebFilm(const DiscProject& project, int film, const std::string& folder, int threads,
                    const EffectModule& module) {
    const DiscFilm& source = project.films.at(std::size_t(film));
    const std::string report = PlaceOfWebFilm(folder, film);
    std::error_code error;
    fs::remove(report, error);
    BrowserTracks tracks;
    if (!source.path.empty()) tracks = BrowserTracksOf(source.path, mostAcross, mostDown);
    WebFilm made;
    made.copied = tracks.pictures;
    ScratchFile coded;
    std::string pictures = source.path;
    if (!made.copied) {
        coded.path = pictures = FilmFile(folder, film, ".coded.mp4");
        if (source.path.empty())
            EncodeShow(source, *project.profile, pictures, threads, module);
        else
            EncodeFilm(source, pictures, threads, module);
    }
    std::vector<BrowserTrack> sounds = BrowserTracksOf(pictures, mostAcross, mostDown).sounds;
    if (sounds.empty()) sounds.push_back({-1, {}, {}});
    for (std::size_t i = 0; i < sounds.size(); ++i) {
        const std::string file = FilmFile(folder, film, (i > 0 ? "-sound-" + std::to_string(i + 1) : "") + ".mp4");
        WriteBrowserFilm(pictures, sounds[i].stream, file);
        // The film's own tags, where its tracks came out one for one.
        const bool own = sounds.size() == tracks.sounds.size();
        const BrowserTrack& tags = own ? tracks.sounds[i] : sounds[i];
        made.sounds.push_back({file, tags.language, tags.title});
    }
    made.poster = FilmFile(folder, film, ".jpg");
    WritePoster(made.sounds[0].file, source.thumbnail, made.poster);
    const auto addSubtitles = [&](const std::string& from, const BrowserTrack& track) {
        const std::string number = std::to_string(made.subtitles.size() + 1),
                          file = FilmFile(folder, film, "-subtitles-" + number + ".vtt");
        WriteBrowserSubtitles(from, track.stream, file);
        made.subtitles.push_back({file, track.language, track.title});
    };
    int painted = tracks.paintedSubtitles;
    for (const BrowserTrack& track : tracks.subtitles) addSubtitles(source.path, track);
    for (const std::string& file : source.subtitles) {
        const BrowserTracks own = BrowserTracksOf(file, mostAcross, mostDown);
        painted += own.paintedSubtitles;
        for (const BrowserTrack& track : own.subtitles) addSubtitles(file, {track.stream, LanguageOfName(file), {}});
    }
    if (painted > 0)
        PrintWarning(
            "subtitles that are pictures are left out, since browsers do not show them; give the film subtitles "
            "of text");
    WriteReport(made, report);
    return made;
}

std::string PlaceOfWebFilm(const std::string& folder, int film) { return FilmFile(folder, film, ".json"); }

WebFilm ReadWebFilm(const std::string& folder, int film) {
    const std::string path = PlaceOfWebFilm(folder, film);
    std::ifstream file(path);
    try {
        const Json json = Json::parse(file);
        return {TracksOf(json.at("sounds"), folder), TracksOf(json.at("subtitles"), folder),
                (fs::path(folder) / json.at("poster").get<std::string>()).string(), json.at("copied").get<bool>()};
    } catch (const Json::exception&) {
        throw HostError(ExitCode::Input, path + " is missing or damaged; remove it and run the command again");
    }
}

WebMenu PlaceOfWebMenu(const std::vector<DiscPage>& pages, int page, const std::string& folder) {
    const Film& film = pages.at(std::size_t(page)).menu.film;
    return {Numbered(folder, "menu", page, ".mp4"), Numbered(folder, "menu", page, ".jpg"),
            double(film.loopStart) / av_q2d(film.frameRate)};
}

WebMenu MakeWebMenu(const DiscProject& project, const std::vector<DiscPage>& pages, int page, const std::string& folder,
                    int threads, const EffectModule& module) {
    DiscPage source = pages.at(std::size_t(page));
    WebMenu made = PlaceOfWebMenu(pages, page, folder);
    // Browsers have square pixels, as the menu is made.
    source.menu.film.profile = nullptr;
    FilmOptions options;
    options.run = OptionsFor(Numbered(folder, "menu", page, ".coded.mp4"), threads);
    options.run.output.keyTimes = {made.loopStart};
    const ScratchFile coded{options.run.output.path};
    RenderPage(project, source, module, options);
    const std::vector<BrowserTrack> sounds = BrowserTracksOf(coded.path, mostAcross, mostDown).sounds;
    WritePoster(coded.path, made.loopStart, made.poster);
    WriteBrowserFilm(coded.path, sounds.empty() ? -1 : sounds[0].stream, made.film);
    return made;
}

}  // namespace Nifikral
