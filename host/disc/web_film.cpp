#include "host/disc/web_film.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/disc/disc_menus.h"
#include "host/films/menu.h"
#include "host/media/browser_media.h"
#include "host/media/media_sink.h"
#include "host/media/part_file.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

std::string Numbered(const std::string& folder, const char* kind, int number, const std::string& rest) {
    char name[32];
    std::snprintf(name, sizeof name, "%s-%02d", kind, number + 1);
    return (fs::path(folder) / (name + rest)).string();
}

std::string FilmFile(const std::string& folder, int film, const std::string& rest) {
    return Numbered(folder, "film", film, rest);
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

WebCoding CodingOf(const DiscProject& project, int film, const std::string& folder, const std::string& key,
                   int threads) {
    return {&project, film, FilmFile(folder, film, ".coded.mp4"), key, threads};
}

WebFilm MakeWebFilm(const DiscProject& project, int film, const std::string& folder, int threads,
                    const EffectModule& module, const std::string& key) {
    const DiscFilm& source = project.films.at(std::size_t(film));
    const std::string report = PlaceOfWebFilm(folder, film);
    std::error_code error;
    fs::remove(report, error);
    BrowserTracks tracks;
    if (!source.path.empty()) tracks = BrowserTracksOf(source.path, webAcross, webDown);
    WebFilm made;
    made.copied = tracks.pictures;
    ScratchFile coded;
    std::string pictures = source.path;
    if (!made.copied) {
        const WebCoding coding = CodingOf(project, film, folder, key, threads);
        coded.path = pictures = coding.output;
        CodeForWeb(coding, module);
    }
    std::vector<BrowserTrack> sounds = BrowserTracksOf(pictures, webAcross, webDown).sounds;
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
    const auto addSubtitles = [&](const std::string& from, const BrowserTrack& track) {
        const std::string number = std::to_string(made.subtitles.size() + 1),
                          file = FilmFile(folder, film, "-subtitles-" + number + ".vtt");
        WriteBrowserSubtitles(from, track.stream, file);
        made.subtitles.push_back({file, track.language, track.title});
    };
    int painted = tracks.paintedSubtitles;
    for (const BrowserTrack& track : tracks.subtitles) addSubtitles(source.path, track);
    for (const std::string& file : source.subtitles) {
        const BrowserTracks own = BrowserTracksOf(file, webAcross, webDown);
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

void WriteWebPoster(const DiscFilm& film, const WebFilm& made) {
    WritePoster(made.sounds.at(0).file, film.thumbnail, made.poster);
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
    options.run = RunForWeb(Numbered(folder, "menu", page, ".coded.mp4"), threads);
    options.run.output.keyTimes = {made.loopStart};
    const ScratchFile coded{options.run.output.path};
    RenderPage(project, source, module, options);
    const std::vector<BrowserTrack> sounds = BrowserTracksOf(coded.path, webAcross, webDown).sounds;
    WritePoster(coded.path, made.loopStart, made.poster);
    WriteBrowserFilm(coded.path, sounds.empty() ? -1 : sounds[0].stream, made.film);
    return made;
}

}  // namespace Nifikral
