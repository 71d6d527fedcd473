#include "host/disc/disc_work.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/progress.h"
#include "host/base/version.h"
#include "host/disc/disc_folder.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_menus.h"
#include "host/disc/dvd_author.h"
#include "host/disc/dvd_title.h"
#include "host/disc/film_facts.h"
#include "host/disc/stages.h"
#include "host/disc/web_disc.h"
#include "host/media/part_file.h"
#include "host/run/confinement.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

constexpr int fullRate = 8000;      // kbit/s, where the plan knows of no film to encode
constexpr double authoring = 0.06;  // of the time that the stages take
constexpr std::string_view filmStage = "film-", pageStage = "page-";
constexpr char beforeChunk = ':';  // as in film-1:0-499

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
    for (const auto* texts : {&page.menu.buttons, &page.menu.captions})
        for (const std::string& text : *texts) key << text << '\n';
    key << KeyOfFile(page.menu.background) << KeyOfFile(page.menu.backgroundMask);
    for (const MenuSource& source : page.menu.sources) key << KeyOfFile(source.path) << KeyOfFile(source.mask);
    return key.str();
}

// What the stages of a disc are made from: its project as the work folder has it, so that a run of one stage sees what
// the run of all sees.
struct Work {
    std::string folder;
    bool web = false;
    DiscProject project;
    std::vector<DiscPage> pages;
};

// Without the pages.
Work WorkIn(const std::string& folder, bool web) {
    Work work{folder, web, {}, {}};
    Faults faults(ProjectIn(folder));
    work.project = ReadDiscProject(ProjectIn(folder), faults);
    faults.ThrowIfAny();
    return work;
}

Stage FilmStage(const Work& work, std::size_t film) {
    const TitleJob job = JobOf(work.project, film, work.folder);
    Stage stage;
    stage.name = work.project.films[film].title;
    stage.key = KeyOfTitle(job);
    stage.result = work.web ? PlaceOfWebFilm(work.folder, int(film)) : job.output;
    stage.passes = work.web || job.copy ? 1 : PassesOf(job);
    return stage;
}

WebCoding WebCodingOf(const Work& work, std::size_t film) {
    return CodingOf(work.project, int(film), work.folder, FilmStage(work, film).key, 0);
}

Stage PageStage(const Work& work, std::size_t number) {
    const DiscPage& page = work.pages[number];
    Stage stage;
    stage.name = "the menu " + page.name;
    stage.key = KeyOf(work.project, page);
    stage.result = work.web ? PlaceOfWebMenu(work.pages, int(number), work.folder).film : PageIn(work.folder, number);
    stage.weight = double(page.menu.film.frames) / av_q2d(page.menu.film.frameRate);
    return stage;
}

std::string StageName(std::string_view kind, std::size_t number) {
    return std::string(kind) + std::to_string(number + 1);
}

CommandPlan::Words WordsOf(const Work& work, const DiscOptions& options, const std::string& stage) {
    CommandPlan::Words words = {"disc", ProjectIn(work.folder), "-o", work.folder, "--stage", stage};
    if (work.web) words.insert(words.end(), {"--format", "web"});
    words.insert(words.end(), options.stageWords.begin(), options.stageWords.end());
    return words;
}

std::vector<Stage> StagesOf(const Work& work, const DiscPlan& plan, const DiscOptions& options) {
    std::vector<Stage> stages;
    for (std::size_t i = 0; i < work.project.films.size(); ++i) {
        Stage& film = stages.emplace_back(FilmStage(work, i));
        film.words = WordsOf(work, options, StageName(filmStage, i));
        const PlannedTitle& planned = plan.titles[i];
        constexpr double copying = 0.05;  // of the time that encoding takes
        film.weight = planned.seconds * (planned.copied ? copying : film.passes);
    }
    for (std::size_t i = 0; i < work.pages.size(); ++i)
        stages.emplace_back(PageStage(work, i)).words = WordsOf(work, options, StageName(pageStage, i));
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

// Pictures may take more than they were given.
void CheckSpace(const Work& work, const std::vector<MadeTitle>& titles) {
    std::error_code error;
    std::uintmax_t bytes = 0;
    for (const MadeTitle& title : titles) bytes += fs::file_size(title.path, error);
    for (std::size_t i = 0; i < work.pages.size(); ++i) bytes += fs::file_size(PageIn(work.folder, i), error);
    if (bytes <= std::uintmax_t(work.project.capacity)) return;
    throw HostError(ExitCode::Failed, "the films take " + Gigabytes((long long)bytes) + ", and the disc holds " +
                                          Gigabytes(work.project.capacity) +
                                          "; leave films out, or make several discs");
}

using Show = std::function<void(double)>;

void WriteDvd(const Work& work, const DiscOptions& options, const Show& show) {
    std::vector<MadeTitle> titles;
    for (std::size_t i = 0; i < work.project.films.size(); ++i) {
        const TitleReport report = ReadTitleReport(TitleIn(work.folder, i));
        MadeTitle title;
        title.path = TitleIn(work.folder, i);
        title.seconds = report.seconds;
        title.audioLanguages = report.audioLanguages;
        title.subtitleLanguages = report.subtitleLanguages;
        title.chapters = report.chapters;
        titles.push_back(std::move(title));
    }
    CheckSpace(work, titles);
    std::vector<MadePage> films;
    for (std::size_t i = 0; i < work.pages.size(); ++i)
        films.push_back(PlaceOfPage(work.pages[i], PageIn(work.folder, i)));
    AuthorDisc(work.project, work.pages, titles, films, options.output, work.folder, options.overwrite, show);
}

void WriteWeb(const Work& work, const DiscOptions& options, const Show& show) {
    std::vector<WebFilm> films;
    for (std::size_t i = 0; i < work.project.films.size(); ++i) {
        films.push_back(ReadWebFilm(work.folder, int(i)));
        WriteWebPoster(work.project.films[i], films.back());
    }
    std::vector<WebMenu> menus;
    for (std::size_t i = 0; i < work.pages.size(); ++i)
        menus.push_back(PlaceOfWebMenu(work.pages, int(i), work.folder));
    WriteWebDisc(work.project, work.pages, films, menus, options.output, options.overwrite);
    show(1);
}

bool IsWeb(const DiscOptions& options) { return options.format == "web"; }

// A disc stands under its name only when it is complete.
bool IsThere(const DiscOptions& options) {
    std::error_code error;
    return IsImage(options.output)
               ? fs::exists(options.output, error)
               : fs::exists(fs::path(options.output) / (IsWeb(options) ? "index.html" : "VIDEO_TS"));
}

// Writes down what is planned, so that its stages can be made.
Work BeginWork(const PlannedDisc& disc, const DiscOptions& options, const std::string& folder,
               const EffectModule& module) {
    DiscProject project = disc.project;
    if (disc.plan.videoRate > 0) project.videoRate = disc.plan.videoRate;
    WriteProject(project, folder);
    Work work = WorkIn(folder, disc.format == DiscFormat::Web);
    work.pages = PagesOf(work.project, disc.format, options.input, module);
    return work;
}

void MakeDisc(const DiscOptions& options, const EffectModule& module) {
    const PlannedDisc disc = PlanDisc(options);
    const std::string folder = WorkFolder(options.output);
    WorkLock lock(folder);
    const Work work = BeginWork(disc, options, folder, module);
    lock.Keep();
    const std::vector<Stage> stages = StagesOf(work, disc.plan, options);
    double all = 0, left = 0;
    for (const Stage& stage : stages) {
        all += stage.weight;
        if (!IsMade(stage)) left += stage.weight;
    }
    const double whole = left + all * authoring;
    ShareProgress progress;
    MakeStages(stages, [&](double share) { progress.Show(share * left / whole); });
    (work.web ? WriteWeb : WriteDvd)(work, options,
                                     [&](double share) { progress.Show((left + share * all * authoring) / whole); });
    PrintNotice(options.output + " is complete; " + folder + " keeps its films for changes, and may be removed");
}

void MakeStage(const DiscOptions& options, const EffectModule& module) {
    Work work = WorkIn(options.output, IsWeb(options));
    if (options.stage.starts_with(pageStage)) {
        constexpr std::size_t mostPages = 10'000;
        work.pages = PagesOfDisc(work.project, module, int(NumberIn(options.stage, pageStage, mostPages)));
        const std::size_t page = NumberIn(options.stage, pageStage, work.pages.size());
        MakeStage(PageStage(work, page), [&] {
            if (work.web)
                MakeWebMenu(work.project, work.pages, int(page), work.folder, 0, module);
            else
                MakePage(work.project, work.pages[page], module, PageIn(work.folder, page), 0);
        });
    } else {
        const std::size_t colon = work.web ? options.stage.find(beforeChunk) : std::string::npos;
        const std::size_t film = NumberIn(options.stage.substr(0, colon), filmStage, work.project.films.size());
        if (colon != std::string::npos)
            return CodeWebChunk(WebCodingOf(work, film), ParseRange(options.stage.substr(colon + 1)), module);
        MakeStage(FilmStage(work, film), [&] {
            if (work.web)
                MakeWebFilm(work.project, int(film), work.folder, 0, module, FilmStage(work, film).key);
            else
                MakeTitle(JobOf(work.project, film, work.folder), module);
        });
    }
}

}  // namespace

void RunDisc(const DiscOptions& options, const EffectModule& module) {
    // The runs of its stages inherit it.
    if (options.confined)
        ConfineWork(options.input, fs::absolute(WorkFolder(options.output)).parent_path(),
                    {"dvdauthor", "spumux", "genisoimage"});
    if (!options.stage.empty())
        MakeStage(options, module);
    else if (options.skipExisting && !options.overwrite && IsThere(options))
        PrintDetail(options.output + ": complete already");
    else if (options.dryRun)
        PlanDiscRun(options, module);
    else
        MakeDisc(options, module);
}

CommandPlan ShareOutDisc(const DiscOptions& options, long long chunks, const EffectModule& module) {
    if (options.confined)
        throw HostError(ExitCode::Usage,
                        "--sandbox is for a disc that is made in one run, as its plan names files in any folder; leave "
                        "it out, or make the disc without nifikral plan");
    const PlannedDisc disc = PlanDisc(options);
    const std::string folder = WorkFolder(options.output);
    WorkLock lock(folder);
    CommandPlan plan;
    plan.output = options.output;
    const Work work = BeginWork(disc, options, folder, module);
    lock.Keep();
    const std::vector<Stage> stages = StagesOf(work, disc.plan, options);
    Progress progress((long long)stages.size(), "part", "planning ");
    for (std::size_t i = 0; i < stages.size(); ++i, progress.Advance()) {
        const std::size_t before = plan.makers.size();
        if (work.web && i < work.project.films.size() && !IsMade(stages[i]))
            for (const FrameRange& chunk : PlanWebChunks(WebCodingOf(work, i), chunks, module))
                plan.makers.push_back(WordsOf(work, options, StageName(filmStage, i) + beforeChunk + RangeText(chunk)));
        if (plan.makers.size() == before) plan.makers.push_back(stages[i].words);
    }
    plan.last = {"disc", ProjectIn(folder), "-o", options.output, "--format", options.format};
    // So that the whole plan can be run again.
    plan.last.emplace_back(options.overwrite ? "-y" : "--skip-existing");
    plan.last.insert(plan.last.end(), options.stageWords.begin(), options.stageWords.end());
    return plan;
}

}  // namespace Nifikral
