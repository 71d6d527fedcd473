#include "host/disc/disc_work.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/version.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_menus.h"
#include "host/disc/dvd_author.h"
#include "host/disc/dvd_title.h"
#include "host/disc/film_facts.h"
#include "host/disc/stages.h"
#include "host/disc/web_disc.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr int fullRate = 8000;  // kbit/s, where the plan knows of no film to encode
constexpr std::string_view filmStage = "film-", pageStage = "page-";

std::string WorkFolder(std::string output) {
    while (output.size() > 1 && output.ends_with('/')) output.pop_back();
    return output + ".work";
}

std::string ProjectIn(const std::string& folder) { return folder + "/disc.json"; }
std::string TitleIn(const std::string& folder, std::size_t film) {
    return folder + "/" + std::string(filmStage) + std::to_string(film + 1) + ".mpg";
}
std::string PageIn(const std::string& folder, std::size_t page) {
    return folder + "/" + std::string(pageStage) + std::to_string(page + 1) + ".mpg";
}

TitleJob JobOf(const DiscProject& project, std::size_t film, const std::string& folder) {
    TitleJob job;
    job.project = &project;
    job.film = int(film);
    job.videoRate = project.videoRate > 0 ? project.videoRate : fullRate;
    job.output = TitleIn(folder, film);
    const std::string& path = project.films[film].path;
    job.copy = !path.empty() && IsReadyFor(*project.profile, FactsOf(path));
    return job;
}

// What a page's film is made from.
std::string KeyOf(const DiscProject& project, const DiscPage& page) {
    const DiscMenus& menus = project.menus;
    std::ostringstream key;
    key << Version() << '\n'
        << project.profile->name << ' ' << page.templateName << ' ' << page.menu.film.frames << ' ';
    key << page.menu.film.loopStart << ' ' << menus.fade << '\n' << KeyOfFile(menus.music);
    for (const auto& [name, value] : MenuProperties(page.menu)) key << name << '=' << value << '\n';
    for (const std::string& button : page.menu.buttons) key << button << '\n';
    key << KeyOfFile(page.menu.background) << KeyOfFile(page.menu.backgroundMask);
    for (const MenuSource& source : page.menu.sources) key << KeyOfFile(source.path) << KeyOfFile(source.mask);
    return key.str();
}

std::vector<Stage> StagesOf(const PlannedDisc& disc, const DiscProject& project, const std::vector<DiscPage>& pages,
                            const std::string& folder) {
    const bool web = disc.format == DiscFormat::Web;
    const auto stage = [&](std::string_view kind, std::size_t number) {
        Stage made;
        made.name = std::string(kind) + std::to_string(number + 1);
        made.words = {"disc", ProjectIn(folder), "-o", folder, "--stage", made.name};
        if (web) made.words.insert(made.words.end(), {"--format", "web"});
        return made;
    };
    std::vector<Stage> stages;
    for (std::size_t i = 0; i < project.films.size(); ++i) {
        Stage film = stage(filmStage, i);
        film.name = project.films[i].title;
        const TitleJob job = JobOf(project, i, folder);
        film.key = KeyOfTitle(job);
        film.result = web ? PlaceOfWebFilm(folder, int(i)) : job.output;
        film.passes = web ? 1 : PassesOf(job);
        const PlannedTitle& planned = disc.plan.titles[i];
        constexpr double copying = 0.05;  // of the time that encoding takes
        film.weight = planned.seconds * (planned.copied ? copying : film.passes);
        stages.push_back(std::move(film));
    }
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Stage page = stage(pageStage, i);
        page.name = "the menu " + pages[i].name;
        page.key = KeyOf(project, pages[i]);
        page.result = web ? PlaceOfWebMenu(pages, int(i), folder).film : PageIn(folder, i);
        page.weight = double(pages[i].menu.film.frames) / av_q2d(pages[i].menu.film.frameRate);
        stages.push_back(std::move(page));
    }
    return stages;
}

void WriteProject(const DiscProject& project, const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    PartFile file(ProjectIn(folder), true);
    file.Write(DiscJson(project, ProjectIn(folder)));
    file.Commit();
}

std::size_t NumberIn(const std::string& stage, std::string_view kind, std::size_t count) {
    std::size_t number = 0;
    const char* const end = stage.data() + stage.size();
    const auto [rest, error] = std::from_chars(stage.data() + std::min(kind.size(), stage.size()), end, number);
    if (!stage.starts_with(kind) || error != std::errc() || rest != end || number == 0 || number > count)
        throw HostError(ExitCode::Usage, "--stage " + stage + " is none of this project");
    return number - 1;
}

void WriteDvd(const DiscProject& project, const std::vector<DiscPage>& pages, const DiscOptions& options,
              const std::string& folder) {
    std::vector<MadeTitle> titles;
    for (std::size_t i = 0; i < project.films.size(); ++i) {
        const TitleReport report = ReadTitleReport(TitleIn(folder, i));
        MadeTitle title;
        title.path = TitleIn(folder, i);
        title.seconds = report.seconds;
        title.audioLanguages = report.audioLanguages;
        title.subtitleLanguages = report.subtitleLanguages;
        title.chapters = report.chapters;
        titles.push_back(std::move(title));
    }
    std::vector<MadePage> films;
    for (std::size_t i = 0; i < pages.size(); ++i) films.push_back(PlaceOfPage(pages[i], PageIn(folder, i)));
    AuthorDisc(project, pages, titles, films, options.output, folder, options.overwrite);
}

void WriteWeb(const DiscProject& project, const std::vector<DiscPage>& pages, const DiscOptions& options,
              const std::string& folder) {
    std::vector<WebFilm> films;
    for (std::size_t i = 0; i < project.films.size(); ++i) films.push_back(ReadWebFilm(folder, int(i)));
    std::vector<WebMenu> menus;
    for (std::size_t i = 0; i < pages.size(); ++i) menus.push_back(PlaceOfWebMenu(pages, int(i), folder));
    WriteWebDisc(project, pages, films, menus, options.output, options.overwrite);
}

void MakeDisc(const PlannedDisc& disc, const DiscOptions& options, const EffectModule& module) {
    const std::string folder = WorkFolder(options.output);
    DiscProject project = disc.project;
    if (disc.plan.videoRate > 0) project.videoRate = disc.plan.videoRate;
    const std::vector<DiscPage> pages = PagesOfDisc(project, module);
    WriteProject(project, folder);
    MakeStages(StagesOf(disc, project, pages, folder), folder);
    (disc.format == DiscFormat::Web ? WriteWeb : WriteDvd)(project, pages, options, folder);
    PrintNotice(options.output + " is complete; " + folder + " keeps its films for changes, and may be removed");
}

void MakeStage(const DiscOptions& options, const EffectModule& module) {
    Faults faults(options.input);
    const DiscProject project = ReadDiscProject(options.input, faults);
    faults.ThrowIfAny();
    const bool web = options.format == "web";
    if (options.stage.starts_with(pageStage)) {
        const std::vector<DiscPage> pages = PagesOfDisc(project, module);
        const std::size_t page = NumberIn(options.stage, pageStage, pages.size());
        if (web)
            MakeWebMenu(project, pages, int(page), options.output, 0, module);
        else
            MakePage(project, pages[page], module, PageIn(options.output, page), 0);
    } else {
        const std::size_t film = NumberIn(options.stage, filmStage, project.films.size());
        if (web)
            MakeWebFilm(project, int(film), options.output, 0, module);
        else
            MakeTitle(JobOf(project, film, options.output), module);
    }
}

}  // namespace

void RunDisc(const DiscOptions& options, const EffectModule& module) {
    if (!options.stage.empty())
        MakeStage(options, module);
    else if (options.dryRun)
        PlanDiscRun(options, module);
    else
        MakeDisc(PlanDisc(options), options, module);
}

}  // namespace Nifikral
