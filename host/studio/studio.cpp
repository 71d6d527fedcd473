#include "host/studio/studio.h"

#include <spawn.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/standard_output.h"
#include "host/base/version.h"
#include "host/run/confinement.h"
#include "host/run/request_chain.h"
#include "host/studio/catalogue_reply.h"
#include "host/studio/effect_texts.h"
#include "host/studio/file_facts.h"
#include "host/studio/folder_listing.h"
#include "host/studio/page_files.h"
#include "host/studio/still_preview.h"
#include "host/studio/stored_text.h"
#include "host/studio/studio_events.h"
#include "host/studio/studio_films.h"
#include "host/studio/studio_json.h"
#include "host/studio/thumbnails.h"
#include "host/studio/web_server.h"

namespace Nifikral {
namespace {

using Clock = std::chrono::steady_clock;
using Headers = std::vector<std::pair<std::string, std::string>>;

WebReply JsonReply(const Json& json, int status = 200) { return {status, "application/json", JsonText(json)}; }

std::string ViewOf(const Json& body) {
    std::string view = TextIn(body, "view");
    constexpr std::size_t longest = 64;
    if (view.empty() || view.size() > longest)
        throw WebError(400, "\"view\" is missing or too long; give each picture area of a page a name of its own");
    return view;
}

double QueryNumber(const WebRequest& request, const char* name, double low, double high, double fallback) {
    const std::string text = request.Query(name);
    return text.empty() ? fallback : NumberIn({{name, ParseWebJson(text)}}, name, low, high, fallback);
}

constexpr double longestFilm = 24 * 3600;
constexpr int smallestWidth = 16, tileWidth = 160, largestWidth = 4096;

class Studio {
 public:
    Studio(const StudioOptions& options, const EffectModule& module)
        : m_options(options), m_module(module), m_folder(options.folder) {
        if (!m_options.page.empty()) m_options.page = std::filesystem::absolute(m_options.page);
    }

    WebReply Handle(const WebRequest& request) {
        if (!request.path.starts_with("api/")) {
            if (request.method != "GET" && request.method != "HEAD") throw WebError(405, "pages are only read");
            return PageReply(request.path, m_options.page);
        }
        const bool hasBody = request.method == "POST" || request.method == "PUT";
        if (hasBody && !request.Header("content-type").starts_with("application/json"))
            throw WebError(415, "send JSON, with Content-Type: application/json");
        const std::string path = request.path.substr(4);
        for (const auto& [method, name, answer] : Routes())
            if (path == name && request.method == method) return answer(*this, request);
        constexpr std::string_view job = "jobs/";
        if (request.method == "DELETE" && path.starts_with(job)) {
            m_jobs.Remove(path.substr(job.size()));
            return JsonReply(Json::object());
        }
        throw WebError(404, "the studio has no " + request.method + " api/" + path);
    }

 private:
    using Work = WebReply (*)(Studio&, const WebRequest&);
    struct Route {
        const char *method, *path;
        Work work;
    };
    static const std::vector<Route>& Routes() {
        static const std::vector<Route> routes = {
            {"GET", "studio", [](Studio& own, const WebRequest&) { return own.About(); }},
            {"GET", "folder",
             [](Studio& own, const WebRequest& request) {
                 WebReply reply{200, "application/json", ListFolder(own.m_folder, request.Query("path"))};
                 own.m_events.Watch(request.Query("path"));
                 return reply;
             }},
            {"GET", "thumb",
             [](Studio& own, const WebRequest& request) {
                 return own.m_thumbnails.Reply(request.Query("path"), int(QueryNumber(request, "size", 16, 512, 160)),
                                               QueryNumber(request, "at", 0, longestFilm, -1),
                                               request.Header("if-none-match"));
             }},
            {"GET", "facts",
             [](Studio& own, const WebRequest& request) {
                 return WebReply{200, "application/json",
                                 FileFacts(own.m_folder, request.Query("path"), own.m_sources)};
             }},
            {"GET", "catalogue",
             [](Studio& own, const WebRequest&) {
                 return WebReply{200, "application/json", StudioCatalogue(own.m_module)};
             }},
            {"POST", "request",
             [](Studio& own, const WebRequest& request) { return own.Request(ParseWebJson(request.body)); }},
            {"POST", "still",
             [](Studio& own, const WebRequest& request) { return own.Still(ParseWebJson(request.body)); }},
            {"GET", "file",
             [](Studio& own, const WebRequest& request) {
                 return ReadStoredText(own.m_folder, request.Query("path"));
             }},
            {"PUT", "file",
             [](Studio& own, const WebRequest& request) { return WriteStoredText(own.m_folder, request); }},
            {"POST", "stream",
             [](Studio& own, const WebRequest& request) { return own.Stream(ParseWebJson(request.body)); }},
            {"POST", "command",
             [](Studio& own, const WebRequest& request) { return own.Command(ParseWebJson(request.body)); }},
            {"POST", "jobs",
             [](Studio& own, const WebRequest& request) { return own.AddJob(ParseWebJson(request.body)); }},
            {"GET", "jobs", [](Studio& own, const WebRequest&) { return JsonReply(own.m_jobs.List()); }},
            {"GET", "events", [](Studio& own, const WebRequest&) { return own.m_events.Stream(); }},
            {"POST", "menu/new",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.NewMenu(ParseWebJson(request.body)));
             }},
            {"POST", "menu/check",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.CheckMenu(ParseWebJson(request.body)));
             }},
            {"POST", "menu/frame",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Frame(StudioFilms::Kind::Menu, ParseWebJson(request.body));
             }},
            {"POST", "menu/stream",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Stream(StudioFilms::Kind::Menu, ParseWebJson(request.body));
             }},
            {"POST", "slideshow/check",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.CheckShow(ParseWebJson(request.body)));
             }},
            {"POST", "slideshow/frame",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Frame(StudioFilms::Kind::Show, ParseWebJson(request.body));
             }},
            {"POST", "slideshow/stream",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Stream(StudioFilms::Kind::Show, ParseWebJson(request.body));
             }},
            {"POST", "disc/survey",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.SurveyDisc(ParseWebJson(request.body)));
             }},
            {"POST", "disc/check",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.CheckDisc(ParseWebJson(request.body)));
             }},
            {"POST", "disc/pages",
             [](Studio& own, const WebRequest& request) {
                 return JsonReply(own.m_films.DiscMenus(ParseWebJson(request.body)));
             }},
            {"POST", "disc/frame",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Frame(StudioFilms::Kind::Disc, ParseWebJson(request.body));
             }},
            {"POST", "disc/stream",
             [](Studio& own, const WebRequest& request) {
                 return own.m_films.Stream(StudioFilms::Kind::Disc, ParseWebJson(request.body));
             }},
            {"GET", "draft",
             [](Studio& own, const WebRequest& request) { return ReadDraft(own.m_folder, request.Query("page")); }},
            {"PUT", "draft",
             [](Studio& own, const WebRequest& request) {
                 return WriteDraft(own.m_folder, request.Query("page"), request.body);
             }},
        };
        return routes;
    }

    WebReply About() const {
        return JsonReply({{"folder", m_folder.Root().string()},
                          {"name", m_folder.Root().filename().string()},
                          {"version", Version()},
                          {"cpus", std::thread::hardware_concurrency()}});
    }

    WebReply Request(const Json& body) const {
        if (MemberOf(body, "text")) return JsonReply(PartsOfChain({TextIn(body, "text")}, m_module));
        const std::vector<std::string> texts = EffectTexts(ListIn(body, "requests"), m_folder);
        ParseEffectRequests(texts, m_module, {});
        return JsonReply({{"texts", texts}});
    }

    // All of a wish but the frame.
    StillWish WishOf(const Json& body, const SourceFacts& facts) const {
        StillWish wish;
        wish.path = m_folder.File(TextIn(body, "path"));
        wish.width = IntegerIn(body, "width", smallestWidth, largestWidth, wish.width);
        wish.effects = EffectTexts(ListIn(body, "effects"), m_folder);
        if (MemberOf(body, "in")) wish.run.first = facts.FrameAt(NumberIn(body, "in", 0, longestFilm, 0));
        if (MemberOf(body, "out"))
            wish.run.last = std::max(wish.run.first, facts.FramesBefore(NumberIn(body, "out", 0, longestFilm, 0)) - 1);
        return wish;
    }

    static void ReadCrop(const Json& list, const SourceFacts& facts, StillWish& wish) {
        const auto at = [&](std::size_t i) { return list[i].is_number() ? list[i].get<double>() : -1; };
        if (!list.is_array() || list.size() != 4) throw WebError(400, "\"crop\" is not [x, y, width, height]");
        constexpr double mostPixels = 4e6;
        if (at(0) < 0 || at(1) < 0 || at(2) < 1 || at(3) < 1 || at(0) + at(2) > facts.shape.width ||
            at(1) + at(3) > facts.shape.height || at(2) * at(3) > mostPixels)
            throw WebError(400, "\"crop\" is not within the picture, or has more than 4 million pixels");
        wish.crop = PicturePart{int(at(0)), int(at(1)), int(at(2)), int(at(3))};
    }

    WebReply Still(const Json& body) {
        const Clock::time_point begin = Clock::now();
        const auto held = m_stills.Take(ViewOf(body));
        const std::string path = m_folder.File(TextIn(body, "path"));
        const SourceFacts facts = m_sources.Facts(path);
        StillWish wish = WishOf(body, facts);
        wish.number = facts.FrameAt(NumberIn(body, "at", 0, longestFilm, 0));
        if (const Json* const crop = MemberOf(body, "crop")) ReadCrop(*crop, facts, wish);
        SharedFrame picture = held.Own().Make(wish, m_sources, m_module, held.turn);
        held.turn.RequireNewest();
        // On tiles nobody goes through a film.
        if (facts.IsFilm() && !wish.crop && wish.width > tileWidth)
            m_sources.ReadAhead({path, wish.number, ShapeOf(*picture)});
        if (wish.crop) picture = Shared(PartOf(*picture, *wish.crop));
        const bool png = TextIn(body, "format", "jpeg") == "png";
        std::string file = png ? PngOf(*picture) : JpegOf(*picture, held.Own().ShowsAlpha());
        const auto spent = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
        return {200,
                png ? "image/png" : "image/jpeg",
                std::move(file),
                {{"X-Render-Ms", std::to_string(spent)},
                 {"X-Frame", std::to_string(wish.number)},
                 {"X-Width", std::to_string(facts.shape.width)},
                 {"X-Height", std::to_string(facts.shape.height)}}};
    }

    // One frame after the other, each when the reader has taken the one before it.
    WebReply Stream(const Json& body) {
        const auto held = std::make_shared<ViewTurns<StillView>::Held>(m_stills.Take("stream " + ViewOf(body)));
        const SourceFacts facts = m_sources.Facts(m_folder.File(TextIn(body, "path")));
        StillWish wish = WishOf(body, facts);
        wish.number = facts.FrameAt(NumberIn(body, "from", 0, longestFilm, 0));
        const long long end = facts.FramesBefore(NumberIn(body, "to", 0, longestFilm, longestFilm));
        const int step = IntegerIn(body, "every", 1, 1000, 1);
        const auto make = [this, held](const StillWish& wish) {
            const SharedFrame picture = held->Own().Make(wish, m_sources, m_module, held->turn);
            m_sources.ReadAhead({wish.path, wish.number, ShapeOf(*picture)});
            return JpegOf(*picture, held->Own().ShowsAlpha());
        };
        // Now, so that what is wrong is still said in words.
        const auto first = std::make_shared<std::string>(make(wish));
        WebReply reply{200, "application/octet-stream", {}};
        reply.headers = {{"X-Rate", std::to_string(facts.rate.num) + "/" + std::to_string(facts.rate.den)},
                         {"X-Frame", std::to_string(wish.number)}};
        reply.stream = [=](const WebReply::Send& send) mutable {
            if (wish.number >= end) return false;
            held->turn.RequireNewest();
            const std::string picture = first->empty() ? make(wish) : std::exchange(*first, {});
            wish.number += step;
            return send(Framed(picture));
        };
        return reply;
    }

    JobWords JobOf(const Json& body) {
        return ReadJob(body, m_folder, [this](const std::string& path) { return m_sources.Facts(path); });
    }

    WebReply Command(const Json& body) {
        const JobWords job = JobOf(body);
        Json files = Json::array(), argv = {"nifikral"};
        for (const JobFile& file : job.files) files.push_back({{"path", file.path}, {"text", file.text}});
        for (const std::string& word : job.words) argv.push_back(word);
        return JsonReply({{"line", CommandLineOf(job)},
                          {"argv", std::move(argv)},
                          {"folder", m_folder.Root().string()},
                          {"files", std::move(files)}});
    }

    WebReply AddJob(const Json& body) {
        JobWords job = JobOf(body);
        std::error_code error;
        if (!job.overwrite && std::filesystem::exists(job.output, error))
            throw WebError(409, job.output + " exists already; overwrite it, or choose another name");
        constexpr int created = 201;
        return JsonReply({{"id", m_jobs.Add(std::move(job))}}, created);
    }

    static constexpr std::size_t mostViews = 160;

    StudioOptions m_options;
    const EffectModule& m_module;
    StudioFolder m_folder;
    PreviewSources m_sources;
    Thumbnails m_thumbnails{m_folder};
    StudioFilms m_films{m_folder, m_module.Path()};
    JobQueue m_jobs{m_folder};
    StudioEvents m_events{m_jobs};
    ViewTurns<StillView> m_stills{mostViews};
};

// Whether it works is for the user to see; the address is printed anyway.
void OpenBrowser(const std::string& address) {
    std::string program = "xdg-open", argument = address;
    char* words[] = {program.data(), argument.data(), nullptr};
    pid_t id = 0;
    if (posix_spawnp(&id, words[0], nullptr, nullptr, words, environ) != 0)
        PrintWarning("xdg-open is not installed (Debian package xdg-utils); open the address yourself");
}

}  // namespace

WebServer::Handler StudioHandler(const StudioOptions& options, const EffectModule& module) {
    return [studio = std::make_shared<Studio>(options, module)](const WebRequest& request) {
        return studio->Handle(request);
    };
}

void RunStudio(const StudioOptions& options, const EffectModule& module) {
    if (options.confined && options.open)
        throw HostError(ExitCode::Usage,
                        "--sandbox starts no browser; leave --open out, and open the address yourself");
    if (options.confined) {
        const std::string folder = options.folder.empty() ? "." : options.folder;
        constexpr bool listens = true;
        ConfineWork(folder, folder, {}, listens);
    }
    WebServer server(options.port, StudioHandler(options, module));
    PrintResult("open " + server.Address() + " in a browser; Ctrl-C ends the studio\n");
    if (options.open) OpenBrowser(server.Address());
    // What effects warn of would be printed again with every move of a slider.
    if (GetVerbosity() == Verbosity::Normal) SetVerbosity(Verbosity::Quiet);
    server.Run();
}

}  // namespace Nifikral
