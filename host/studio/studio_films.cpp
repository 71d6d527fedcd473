#include "host/studio/studio_films.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include "host/disc/disc_budget.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_menus.h"
#include "host/disc/disc_survey.h"
#include "host/disc/stages.h"
#include "host/films/captions.h"
#include "host/films/example_project.h"
#include "host/films/menu.h"
#include "host/films/menu_pages.h"
#include "host/films/menu_places.h"
#include "host/films/text_renderer.h"
#include "host/studio/preview_coding.h"
#include "host/studio/stored_text.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

constexpr int smallestWidth = 16, largestWidth = 4096, usualWidth = 960;
constexpr long long mostFrames = 24LL * 3600 * 120;

const std::set<std::string> fileKeys = {"sourcePath", "backgroundMask", "additionSourcePaths", "maskPaths", "path",
                                        "pictures",   "music",          "background"};

// Calls work with the path of every file that a project names.
void EachFile(const Json& json, const std::string& project, const std::function<void(const std::string&)>& work,
              bool named = false) {
    if (json.is_string() && named && !json.get_ref<const std::string&>().empty())
        work(ProjectPath(project, json.get<std::string>()));
    if (json.is_array())
        for (const Json& entry : json) EachFile(entry, project, work, named);
    if (json.is_object())
        for (const auto& [key, value] : json.items()) EachFile(value, project, work, fileKeys.contains(key));
}

void RequireFilesWithin(const Json& json, const std::string& project, const StudioFolder& folder) {
    EachFile(json, project, [&](const std::string& path) { folder.RequireWithin(path); });
}

const Json& ProjectIn(const Json& body) {
    const Json* const project = MemberOf(body, "project");
    if (!project || !project->is_object()) throw WebError(400, "\"project\" is missing or no object");
    return *project;
}

Json LinesOf(const std::string& text) {
    Json lines = Json::array();
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

Json RateJson(AVRational rate) { return {rate.num, rate.den}; }

// Names in a project that was written into one folder, for another one.
void Move(Json& json, const fs::path& from, const fs::path& to, bool named = false) {
    if (json.is_string() && named && !json.get<std::string>().empty()) {
        const fs::path whole = fs::weakly_canonical(from / json.get<std::string>());
        json = whole.lexically_proximate(to).string();
    }
    if (json.is_array())
        for (Json& entry : json) Move(entry, from, to, named);
    if (json.is_object())
        for (const auto& [key, value] : json.items()) Move(value, from, to, fileKeys.contains(key));
}

std::vector<std::string> WordsIn(const Json& object, const char* key) {
    std::vector<std::string> words;
    for (const Json& word : ListIn(object, key)) {
        if (!word.is_string()) throw WebError(400, "\"" + std::string(key) + "\" is no list of words");
        words.push_back(word.get<std::string>());
    }
    return words;
}

}  // namespace

FramePtr StudioFilms::Store::Find(const std::string& path) {
    const SharedFrame kept = m_pictures.Find(KeyOfFile(path));
    return kept ? Referenced(*kept) : nullptr;
}

void StudioFilms::Store::Keep(const std::string& path, const AVFrame& picture) {
    m_pictures.Keep(KeyOfFile(path), Shared(Referenced(picture)), BytesOf(picture));
}

StudioFilms::StudioFilms(const StudioFolder& folder, const std::string& module)
    : m_folder(folder), m_manager(&m_store), m_module(module, &m_manager) {}

Json StudioFilms::NewMenu(const Json& body) {
    InitOptions options;
    options.templateName = TextIn(body, "template");
    RequireMenuTemplate(options.templateName, m_module);
    options.title = TextIn(body, "title");
    options.mood = TextIn(body, "mood");
    options.overwrite = true;
    options.store = &m_store;
    for (const std::string& picture : WordsIn(body, "pictures")) options.pictures.push_back(m_folder.Existing(picture));
    // What the template needs beside one's own pictures stays there.
    options.folder = studioFolder + ("/" + options.templateName);
    RequireNoLink(options.folder);
    const ExampleProject written = WriteExampleProject(options, m_module);
    Json project = LoadProject(written.file);
    const std::string file = TextIn(body, "file", "menu.json");
    Move(project, fs::canonical(options.folder), (m_folder.Root() / m_folder.Writable(file)).parent_path());
    return {{"project", std::move(project)}};
}

std::vector<MenuProject> StudioFilms::ReadMenu(const Json& body) {
    const std::string templateName = TextIn(body, "template");
    RequireMenuTemplate(templateName, m_module);
    const std::string file = m_folder.Writable(TextIn(body, "file", "menu.json"));
    RequireFilesWithin(ProjectIn(body), file, m_folder);
    Faults faults("");
    MenuProject project = ReadMenuProject(ProjectIn(body), file, templateName, nullptr, m_manager, faults);
    CheckLoop(project.film, faults);
    faults.ThrowIfAny();
    return PagesOf(project);
}

Json StudioFilms::CheckMenu(const Json& body) {
    std::vector<MenuProject> pages;
    try {
        pages = ReadMenu(body);
        const Film& film = pages.front().film;
        Json places[3] = {Json::array(), Json::array(), Json::array()};
        for (std::size_t page = 0; page < pages.size(); ++page)
            for (const RestingPlace& place : RestingPlacesOf(pages[page], TextIn(body, "template"), m_module)) {
                Json entry = {{"index", place.index},
                              {"page", page + 1},
                              {"rests", place.Rests()},
                              {"box", {place.at.left, place.at.top, place.at.width, place.at.height}},
                              {"drift", place.drift}};
                if (place.kind == PlaceKind::Button) entry["text"] = pages[page].buttons[place.index];
                places[int(place.kind)].push_back(std::move(entry));
            }
        return {{"faults", Json::array()},
                {"frames", film.frames},
                {"rate", RateJson(film.frameRate)},
                {"width", film.width},
                {"height", film.height},
                {"loopStart", film.loopStart},
                {"pages", pages.size()},
                {"pictures", std::move(places[int(PlaceKind::Picture)])},
                {"texts", std::move(places[int(PlaceKind::Text)])},
                {"buttons", std::move(places[int(PlaceKind::Button)])}};
    } catch (const HostError& error) {
        return {{"faults", LinesOf(error.what())}};
    }
}

StudioFilms::ShowWish StudioFilms::ReadShow(const Json& show, int width) {
    ShowWish wish;
    SlideshowOptions& options = wish.options;
    constexpr double longest = 24 * 3600;
    options.order = TextIn(show, "order", options.order);
    options.captions = TextIn(show, "captions");
    RequireUtf8("captions", options.captions);
    CheckCaptions(options.captions);
    options.pictureSeconds = NumberIn(show, "seconds", 0, longest, options.pictureSeconds);
    options.transitionSeconds = NumberIn(show, "transitionSeconds", 0, longest, options.transitionSeconds);
    if (MemberOf(show, "transitions")) options.transitions = WordsIn(show, "transitions");
    if (MemberOf(show, "motions")) options.motions = WordsIn(show, "motions");
    options.motionAmount = IntegerIn(show, "motionAmount", 0, 100, options.motionAmount);
    options.seed = IntegerIn(show, "seed", 0, 1'000'000'000, 0);
    options.fit = TextIn(show, "fit", options.fit);
    options.frameRate = TextIn(show, "rate");
    options.film.run.profile = TextIn(show, "profile");
    options.film.length = TextIn(show, "length");
    options.film.fade = NumberIn(show, "fade", 0, 600, options.film.fade);
    for (const std::string& sound : WordsIn(show, "audio")) options.film.sounds.push_back(m_folder.Existing(sound));
    options.size = TextIn(show, "size", "1920x1080");
    // As large as it is looked at, which shows the same.
    int whole = 0, high = 0;
    char by = 0;
    if (std::istringstream size(options.size); width > 0 && size >> whole >> by >> high && by == 'x' && whole > width)
        options.size = std::to_string(width) + "x" + std::to_string(std::max(2, width * high / whole / 2 * 2));

    std::vector<Slide> unknown, all;
    for (const Json& input : ListIn(show, "inputs")) {
        const bool plain = input.is_string();
        for (Slide& slide : FindSlides({m_folder.Existing(plain ? input.get<std::string>() : TextIn(input, "path"))})) {
            if (!plain && MemberOf(input, "seconds")) slide.seconds = NumberIn(input, "seconds", 0, longest, 0);
            if (!plain && MemberOf(input, "caption")) slide.caption = TextIn(input, "caption");
            all.push_back(std::move(slide));
        }
    }
    if (all.empty()) throw WebError(400, "the slideshow has no pictures; put some in");
    const std::lock_guard lock(m_mutex);
    std::set<std::string> asked;
    for (const Slide& slide : all)
        if (const std::string key = KeyOfFile(slide.path); !m_tried.contains(key) && asked.insert(key).second)
            unknown.emplace_back().path = slide.path;
    for (const Slide& slide : unknown) m_tried[KeyOfFile(slide.path)] = {};
    try {
        if (!unknown.empty())
            for (Slide& slide : ReadableSlides(unknown, {.headsOnly = true})) m_tried[KeyOfFile(slide.path)] = slide;
    } catch (const HostError&) {
        // None of them can be read.
        unknown.clear();
    }
    for (const Slide& slide : all) {
        const Slide& tried = m_tried[KeyOfFile(slide.path)];
        if (tried.path.empty()) {
            wish.missing.push_back(slide.path);
            continue;
        }
        wish.slides.push_back(tried);
        wish.slides.back().path = slide.path;
        wish.slides.back().seconds = slide.seconds;
        wish.slides.back().caption = slide.caption;
    }
    if (wish.slides.empty()) throw WebError(422, "none of the slideshow's pictures can be read");
    return wish;
}

Json StudioFilms::CheckShow(const Json& show) {
    const ShowWish wish = ReadShow(show, 0);
    const PreparedShow prepared = PrepareSlideshow(wish.options, wish.slides, m_module);
    const Film& film = prepared.made.film;
    Json slides = Json::array();
    for (std::size_t i = 0; i < prepared.slides.size(); ++i) {
        const Slide& slide = prepared.slides[i];
        slides.push_back({{"path", slide.path},
                          {"begin", prepared.spans[i].begin},
                          {"end", prepared.spans[i].end},
                          {"plays", slide.plays},
                          {"caption", CaptionOf(slide.caption.value_or(wish.options.captions), slide, i + 1)}});
    }
    return {{"frames", film.frames}, {"rate", RateJson(film.frameRate)}, {"width", film.width},
            {"height", film.height}, {"slides", std::move(slides)},      {"missing", wish.missing}};
}

bool StudioFilms::LeavesOut(const Json& show, long long number) {
    ShowWish wish = ReadShow(show, 0);
    const PreparedShow prepared = PrepareSlideshow(wish.options, std::move(wish.slides), m_module);
    bool found = false;
    for (std::size_t i = 0; i < prepared.slides.size(); ++i) {
        if (number < prepared.spans[i].begin || number >= prepared.spans[i].end) continue;
        const std::string& path = prepared.slides[i].path;
        try {
            ReadableSlides(FindSlides({path}), {});
        } catch (const HostError&) {
            const std::lock_guard lock(m_mutex);
            m_tried[KeyOfFile(path)] = {};
            ++m_leftOut;
            found = true;
        }
    }
    return found;
}

FilmWish StudioFilms::WishOf(Kind kind, const Json& body) {
    FilmWish wish;
    wish.width = IntegerIn(body, "width", smallestWidth, largestWidth, usualWidth);
    Json made = body;
    for (const char* const key : {"view", "frame", "from", "to", "width"}) made.erase(key);
    wish.key = JsonText(made);
    if (kind == Kind::Show) {
        const Json* const show = MemberOf(body, "show");
        if (!show) throw WebError(400, "\"show\" is missing");
        for (const Json& input : ListIn(*show, "inputs"))
            wish.key +=
                KeyOfFile(m_folder.Existing(input.is_string() ? input.get<std::string>() : TextIn(input, "path")));
        {
            const std::lock_guard lock(m_mutex);
            wish.key += std::to_string(m_leftOut);
        }
        wish.mends = [this, show = *show](long long number) { return LeavesOut(show, number); };
        wish.prepare = [this, show = *show, width = wish.width] {
            ShowWish of = ReadShow(show, width);
            return PrepareSlideshow(of.options, std::move(of.slides), m_module).made;
        };
        return wish;
    }
    const bool disc = kind == Kind::Disc;
    const std::string file = m_folder.Writable(TextIn(body, "file", disc ? "disc.json" : "menu.json"));
    EachFile(ProjectIn(body), file, [&](const std::string& path) {
        m_folder.RequireWithin(path);
        wish.key += KeyOfFile(path);
    });
    if (disc) {
        wish.prepare = [this, body] {
            const auto pages = ReadDiscPages(body);
            const DiscPage& page = (*pages)[std::size_t(IntegerIn(body, "page", 1, int(pages->size()), 1) - 1)];
            return PrepareMenuPage(page.menu, page.templateName, m_module, page.name);
        };
        return wish;
    }
    wish.prepare = [this, body] {
        const std::vector<MenuProject> pages = ReadMenu(body);
        const int page = IntegerIn(body, "page", 1, int(pages.size()), 1);
        return PrepareMenuPage(pages[std::size_t(page - 1)], TextIn(body, "template"), m_module, "the menu");
    };
    return wish;
}

namespace {

std::string ViewIn(const Json& body) {
    std::string view = TextIn(body, "view");
    constexpr std::size_t longest = 64;
    if (view.empty() || view.size() > longest) throw WebError(400, "\"view\" is missing or too long");
    return view;
}

}  // namespace

WebReply StudioFilms::Frame(Kind kind, const Json& body) {
    FilmWish wish = WishOf(kind, body);
    wish.number = (long long)NumberIn(body, "frame", 0, double(mostFrames), 0);
    const auto held = m_views.Take(ViewIn(body));
    return {200, "image/jpeg", held.Own().Frame(wish, m_frames, held.turn)};
}

WebReply StudioFilms::Stream(Kind kind, const Json& body) {
    FilmWish wish = WishOf(kind, body);
    wish.number = (long long)NumberIn(body, "from", 0, double(mostFrames), 0);
    auto end = (long long)NumberIn(body, "to", 0, double(mostFrames), double(mostFrames));
    const auto held = std::make_shared<ViewTurns<FilmView>::Held>(m_views.Take("stream " + ViewIn(body)));
    // Now, so that what is wrong is still said in words.
    held->Own().Frame(wish, m_frames, held->turn);
    const Film& film = held->Own().Shown();
    end = std::min(end, film.frames);
    WebReply reply{200, "application/octet-stream", {}};
    reply.headers = {{"X-Rate", std::to_string(film.frameRate.num) + "/" + std::to_string(film.frameRate.den)},
                     {"X-Frames", std::to_string(film.frames)}};
    reply.stream = [=, this](const WebReply::Send& send) mutable {
        if (wish.number >= end) return false;
        held->turn.RequireNewest();
        const std::string picture = held->Own().Frame(wish, m_frames, held->turn);
        ++wish.number;
        return send(Framed(picture));
    };
    return reply;
}

Json StudioFilms::SurveyDisc(const Json& body) const {
    const std::string path = TextIn(body, "path");
    m_folder.Existing(path);
    // As the command writes it, whose names are relative to the project's folder.
    const DiscProject project = SurveyFolder((path.empty() ? m_folder.Root() : m_folder.Root() / path).string());
    return {{"project", Json::parse(DiscJson(project, "disc.json"))}};
}

Json StudioFilms::CheckDisc(const Json& body) const {
    const std::string file = m_folder.Writable(TextIn(body, "file", "disc.json"));
    RequireFilesWithin(ProjectIn(body), file, m_folder);
    try {
        Faults faults("");
        const DiscFormat format = TextIn(body, "format", "dvd") == "web" ? DiscFormat::Web : DiscFormat::Dvd;
        const DiscProject project = ReadDiscProject(ProjectIn(body), file, faults);
        const DiscPlan plan = PlanDisc(project, format, faults);
        faults.ThrowIfAny();
        Json titles = Json::array();
        for (std::size_t i = 0; i < plan.titles.size(); ++i) {
            const PlannedTitle& title = plan.titles[i];
            titles.push_back({{"title", project.films[i].title},
                              {"seconds", title.seconds},
                              {"bytes", title.bytes},
                              {"copied", title.copied},
                              {"description", title.description}});
        }
        return {{"faults", Json::array()},     {"titles", std::move(titles)},
                {"usedBytes", plan.usedBytes}, {"capacity", project.capacity},
                {"videoRate", plan.videoRate}, {"menuPages", plan.menuPages},
                {"menuBytes", plan.menuBytes}, {"text", DescribePlan(project, format, plan)}};
    } catch (const HostError& error) {
        return {{"faults", LinesOf(error.what())}};
    }
}

std::shared_ptr<const std::vector<DiscPage>> StudioFilms::ReadDiscPages(const Json& body) {
    const std::string file = m_folder.Writable(TextIn(body, "file", "disc.json"));
    RequireFilesWithin(ProjectIn(body), file, m_folder);
    const std::string of = file + JsonText(ProjectIn(body));
    {
        const std::lock_guard lock(m_mutex);
        if (m_discOf == of) return m_discPages;
    }
    Faults faults("");
    const DiscProject project = ReadDiscProject(ProjectIn(body), file, faults);
    faults.ThrowIfAny();
    auto pages = std::make_shared<const std::vector<DiscPage>>(PagesOfDisc(project, m_module));
    const std::lock_guard lock(m_mutex);
    m_discOf = of;
    m_discPages = pages;
    return pages;
}

Json StudioFilms::DiscMenus(const Json& body) {
    const auto target = [](const DiscTarget& to) -> Json {
        constexpr const char* kinds[] = {"film", "chapter", "all", "page"};
        return {{"kind", kinds[int(to.kind)]}, {"film", to.film}, {"chapter", to.chapter}, {"page", to.page + 1}};
    };
    try {
        Json pages = Json::array();
        const auto laidOut = ReadDiscPages(body);
        for (const DiscPage& page : *laidOut) {
            const Film& film = page.menu.film;
            const double across = film.profile->width, down = film.profile->height;
            Json buttons = Json::array();
            for (const DiscButton& button : page.buttons)
                buttons.push_back(
                    {{"text", button.caption},
                     {"box", {button.x / across, button.y / down, button.width / across, button.height / down}},
                     {"to", target(button.target)},
                     {"up", button.up},
                     {"down", button.down},
                     {"left", button.left},
                     {"right", button.right}});
            pages.push_back({{"name", page.name},
                             {"film", page.film},
                             {"width", film.width},
                             {"height", film.height},
                             {"frames", film.frames},
                             {"rate", RateJson(film.frameRate)},
                             {"loopStart", film.loopStart},
                             {"buttons", std::move(buttons)}});
        }
        return {{"faults", Json::array()}, {"pages", std::move(pages)}};
    } catch (const HostError& error) {
        return {{"faults", LinesOf(error.what())}, {"pages", Json::array()}};
    }
}

}  // namespace Nifikral
