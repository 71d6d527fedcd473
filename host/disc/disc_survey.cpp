#include "host/disc/disc_survey.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/natural_order.h"
#include "host/base/progress.h"
#include "host/disc/disc_json.h"
#include "host/disc/film_facts.h"
#include "host/disc/film_moments.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/media/part_file.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view soundExtensions[] = {".aac", ".ac3", ".aif", ".aiff", ".flac", ".m4a", ".mka",
                                                ".mp2", ".mp3", ".oga", ".ogg",  ".opus", ".wav", ".wma"};

bool IsSoundName(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return std::find(std::begin(soundExtensions), std::end(soundExtensions), extension) != std::end(soundExtensions);
}

// What lies in a folder, each list in the order in which people count.
struct Found {
    std::string folder;
    std::vector<std::string> films, pictures, sounds, subtitles, folders;
};

Found LookInto(const std::string& folder) {
    Found found{folder, {}, {}, {}, {}, {}};
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string path = entry.path().string();
        std::error_code unreadable;
        // Programs keep previews and notes under hidden names.
        if (entry.path().filename().string().starts_with('.'))
            PrintDetail(path + " is hidden; it is left out");
        else if (entry.is_directory(unreadable) && !entry.is_symlink(unreadable))
            found.folders.push_back(path);
        else if (IsFilmName(entry.path()))
            found.films.push_back(path);
        else if (IsPictureName(entry.path()))
            found.pictures.push_back(path);
        else if (IsSoundName(entry.path()))
            found.sounds.push_back(path);
        else if (IsSubtitleName(path))
            found.subtitles.push_back(path);
        else
            PrintDetail(path + " is no film, picture or sound by its name; it is left out");
    }
    if (error) throw HostError(ExitCode::Input, folder + " cannot be read (" + error.message() + "); make it readable");
    for (auto* const list : {&found.films, &found.pictures, &found.sounds, &found.subtitles, &found.folders})
        std::sort(list->begin(), list->end(), ComesBefore);
    return found;
}

void LookIntoAll(const std::string& folder, std::vector<Found>& all) {
    ThrowIfInterrupted();
    all.push_back(LookInto(folder));
    const std::vector<std::string> inside = all.back().folders;
    for (const std::string& name : inside) LookIntoAll(name, all);
}

std::string TitleOfName(const fs::path& path) {
    std::string title = path.string();
    std::replace(title.begin(), title.end(), '_', ' ');
    return TidyTitle(title);
}

std::string NameOfFolder(const std::string& folder) {
    const fs::path path = fs::absolute(folder).lexically_normal();
    return (path.has_filename() ? path : path.parent_path()).filename().string();
}

// What of the material, in seconds, is of one kind and what of the other; what fits either is in neither.
struct Votes {
    double pal = 0, ntsc = 0, wide = 0, standard = 0;

    void Count(const FilmFacts& film) {
        const double rate = av_q2d(film.frameRate);
        const auto isMultiple = [&](double of) {
            const double times = std::round(rate / of);
            return times >= 1 && std::abs(rate - times * of) < 0.02 * rate;
        };
        if (isMultiple(25))
            pal += film.seconds;
        else if (isMultiple(30) || isMultiple(24))
            ntsc += film.seconds;
        constexpr double between = 1.55;  // of 4:3 and 16:9
        if (film.shownAspect >= between)
            wide += film.seconds;
        else if (film.shownAspect >= 1)
            standard += film.seconds;
    }
    const FilmProfile* Profile() const {
        return FindProfile(std::string(ntsc > pal ? "ntsc" : "pal") + (standard > wide ? "-4:3" : "-16:9"));
    }
};

// A film and what is known of it; the pictures are looked at later.
struct Surveyed {
    DiscFilm film;
    double seconds = 0;
};

class Survey {
 public:
    explicit Survey(const std::string& folder) : m_folder(folder) {}

    DiscProject Make();

 private:
    void AddFilm(const std::string& path);
    void AddSubtitles(const std::string& path);
    void AddShow(const Found& found);
    void FindMoments(Surveyed& surveyed, double shown);
    // Whether a project can hold the name.
    bool IsName(const std::string& path);
    void Fault(const std::string& line) { m_faults += line + "\n"; }

    std::string m_folder, m_faults;
    std::vector<Surveyed> m_films;
    Votes m_votes;
};

bool Survey::IsName(const std::string& path) {
    if (!FirstInvalidByte(path)) return true;
    Fault(path + " has a name that is no UTF-8; rename it");
    return false;
}

void Survey::AddFilm(const std::string& path) {
    if (!IsName(path)) return;
    try {
        const FilmFacts facts = FactsOf(path);
        m_votes.Count(facts);
        Surveyed& surveyed = m_films.emplace_back();
        surveyed.seconds = facts.seconds;
        surveyed.film.path = path;
        surveyed.film.title = facts.title.empty() ? TitleOfName(fs::path(path).stem()) : facts.title;
        surveyed.film.chapters = facts.chapters;
    } catch (const HostError& error) {
        if (error.Code() != ExitCode::Input) throw;
        Fault(error.what());
    }
}

// Subtitles go with the film of their folder whose name theirs begins with, the longest one.
void Survey::AddSubtitles(const std::string& path) {
    DiscFilm* own = nullptr;
    std::size_t longest = 0;
    for (Surveyed& surveyed : m_films) {
        const std::string name = fs::path(surveyed.film.path).replace_extension().string();
        if (surveyed.film.path.empty() || name.size() <= longest || !path.starts_with(name + ".")) continue;
        own = &surveyed.film;
        longest = name.size();
    }
    if (!own)
        PrintWarning(path + " has the name of no film; it is left out (lake.srt or lake.de.srt goes with lake.mp4)");
    else if (IsName(path))
        own->subtitles.push_back(path);
}

void Survey::AddShow(const Found& found) {
    if (found.pictures.empty() || !IsName(found.folder)) return;
    // A slideshow of a folder would play its films, which are titles of their own.
    const bool mixed = !found.films.empty();
    for (const std::string& picture : found.pictures)
        if (mixed && !IsName(picture)) return;
    Surveyed& surveyed = m_films.emplace_back();
    DiscFilm& film = surveyed.film;
    film.title = TitleOfName(NameOfFolder(found.folder));
    film.pictures = mixed ? found.pictures : std::vector{found.folder};
    surveyed.seconds = double(found.pictures.size()) * film.pictureSeconds;
    film.chapters = ChaptersOfShow(surveyed.seconds, film.pictureSeconds);
    if (found.sounds.empty()) return;
    if (IsName(found.sounds.front())) film.music = found.sounds.front();
    if (found.sounds.size() > 1)
        PrintWarning(found.folder + " holds " + std::to_string(found.sounds.size()) +
                     " sound files; the slideshow takes " + found.sounds.front());
}

void Survey::FindMoments(Surveyed& surveyed, double shown) {
    DiscFilm& film = surveyed.film;
    if (film.path.empty()) return;
    film.thumbnail = FindThumbnail(film.path, surveyed.seconds, shown);
    if (film.chapters.empty()) film.chapters = FindChapters(film.path, surveyed.seconds);
}

// A single picture may be large, and a few lie side by side; of many, people rather read a list.
const char* TemplateFor(std::size_t films) {
    constexpr std::size_t few = 6;
    return films == 1 ? "menu_vignette" : films <= few ? "menu_common" : "menu_videowall";
}

DiscProject Survey::Make() {
    std::error_code error;
    if (!fs::is_directory(m_folder, error))
        throw HostError(ExitCode::Input, m_folder + (fs::exists(m_folder, error) ? " is no folder; name one with films"
                                                                                 : ": no such folder; check the name"));
    std::vector<Found> all;
    LookIntoAll(m_folder, all);
    for (const Found& found : all) {
        for (const std::string& path : found.films) AddFilm(path);
        for (const std::string& path : found.subtitles) AddSubtitles(path);
        AddShow(found);
    }
    if (m_films.size() > mostTitles) Fault(m_folder + ": films " + TooManyTitles(m_films.size()));
    if (!m_faults.empty()) throw HostError(ExitCode::Input, m_faults);
    if (m_films.empty())
        throw HostError(ExitCode::Input, m_folder +
                                             " holds no films and no pictures; name a folder with .mp4, .mov, "
                                             ".jpg or other such files");
    DiscProject project;
    project.title = TitleOfName(NameOfFolder(m_folder));
    project.profile = m_votes.Profile();
    project.menus.mainTemplate = TemplateFor(m_films.size());
    Progress progress((long long)m_films.size(), "film", "surveying ");
    for (Surveyed& surveyed : m_films) {
        FindMoments(surveyed, project.menus.seconds);
        surveyed.film.item = "films[" + std::to_string(project.films.size()) + "]";
        project.films.push_back(std::move(surveyed.film));
        progress.Advance();
    }
    return project;
}

}  // namespace

DiscProject SurveyFolder(const std::string& folder) { return Survey(folder).Make(); }

std::string WriteDiscProject(const DiscInitOptions& options) {
    if (options.folder.empty())
        throw HostError(ExitCode::Usage, "init disc needs the folder that the films and photographs are in");
    CheckOutputPath(options.output, options.overwrite);
    const DiscProject project = SurveyFolder(options.folder);
    PartFile file(options.output, options.overwrite);
    file.Write(DiscJson(project, options.output));
    file.Commit();
    const std::size_t shows = std::size_t(std::count_if(project.films.begin(), project.films.end(),
                                                        [](const DiscFilm& film) { return film.path.empty(); }));
    const auto count = [](std::size_t n, const char* what) {
        return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
    };
    return count(project.films.size() - shows, "film") + " and " + count(shows, "slideshow") + ", " +
           project.profile->name;
}

}  // namespace Nifikral
