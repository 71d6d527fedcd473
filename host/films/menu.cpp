#include "host/films/menu.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <numeric>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/catalogue/catalogue.h"
#include "host/films/button_list.h"
#include "host/films/menu_pages.h"
#include "host/run/confinement.h"

namespace Nifikral {
namespace {

void RefuseInputsAsOutput(const MenuOptions& options, const MenuProject& project) {
    const RunOptions& run = options.film.run;
    for (const std::string& input : {options.project, project.background, project.backgroundMask})
        run.RefuseAsOutput(input);
    for (const std::string& sound : options.film.sounds) run.RefuseAsOutput(sound);
    for (const MenuSource& source : project.sources) {
        run.RefuseAsOutput(source.path);
        run.RefuseAsOutput(source.mask);
    }
}

// Whether the output's name has a place for the number of a page.
bool HasPagePattern(const OutputOptions& output) {
    return !IsPictureOutput(output) && output.path != "-" && av_filename_number_test(output.path.c_str());
}

std::vector<int> PagesToMake(const MenuOptions& options, int pages) {
    const RunOptions& run = options.film.run;
    std::ostringstream line;
    if (options.page > pages) {
        line << "--page " << options.page << " lies past the end: the menu has " << pages << " page"
             << &"s"[pages == 1];
        throw HostError(ExitCode::Usage, line.str());
    }
    const bool pattern = HasPagePattern(run.output);
    if (pattern && (run.reportFrames || run.joinTo || !run.chunk.empty()))
        throw HostError(ExitCode::Usage, "films in chunks are made page by page; name one output with --page N");
    if (options.page > 0) return {options.page};
    if (pages > 1 && !pattern) {
        line << options.project << " has " << pages << " pages; make all of them with -o menu_%d.mp4, or one with"
             << " --page N (\"perPage\" in the project sets how many pictures a page shows)";
        throw HostError(ExitCode::Usage, line.str());
    }
    std::vector<int> all(static_cast<std::size_t>(pages));
    std::iota(all.begin(), all.end(), 1);
    return all;
}

std::string PageOutput(const MenuOptions& options, int page) {
    const OutputOptions& output = options.film.run.output;
    return HasPagePattern(output) ? NumberedPath(output.path, page) : output.path;
}

std::string LoopOf(const Film& film) {
    if (film.loopStart == 0)
        throw HostError(ExitCode::Usage,
                        "--loop-only needs \"loopStart\" in the project; without it the whole film repeats");
    return std::to_string(film.loopStart) + "-" + std::to_string(film.frames - 1);
}

}  // namespace

PreparedFilm PrepareMenuPage(const MenuProject& page, const std::string& templateName, const EffectModule& module,
                             const std::string& name) {
    Faults faults(name);
    EffectPtr generator = module.Create(templateName);
    SetProperties(*generator, MenuProperties(page), [&](const std::string& property, const std::string& reason) {
        faults.Add(property, templateName + " refuses it: " + reason);
    });
    faults.ThrowIfAny();
    Film film = page.film;
    if (!page.buttons.empty() || !page.captions.empty())
        film.over = DrawButtons(LayOutButtons(page, MenuWatch(page, templateName, module)), film);
    return {std::move(film), std::move(generator)};
}

void RenderMenuPage(const MenuProject& page, const std::string& templateName, const FilmOptions& options,
                    const EffectModule& module, const std::string& name) {
    const PreparedFilm menu = PrepareMenuPage(page, templateName, module, name);
    RenderFilm(*menu.generator, menu.film, options, name);
}

std::string TemplateOf(const std::string& project) {
    Faults faults(project);
    const Json json = LoadProject(project);
    const ProjectItem named = ProjectItem(&json, "", faults)["template"];
    std::string name = named ? named.Text() : "";
    faults.ThrowIfAny();
    return name;
}

void RequireMenuTemplate(const std::string& name, const EffectModule& module) {
    std::vector<std::string> menus;
    for (const EffectInfo& info : Catalogue()) {
        if (!(info.traits & menu) || !module.Create(info.name)) continue;
        if (name == info.name) return;
        menus.emplace_back(info.name);
    }
    throw HostError(ExitCode::Usage, "there is no menu template \"" + name + "\"" + DidYouMean(name, menus) +
                                         " (nifikral list shows all)");
}

void RenderMenu(const MenuOptions& options, const EffectModule& module) {
    ConfineRun(options.film.run);
    RequireMenuTemplate(options.templateName, module);
    Faults faults(options.project);
    const FilmProfile* const profile = RequireProfile(options.film.run.profile);
    MenuProject project = ReadMenuProject(options.project, options.templateName, profile, faults);
    if (const std::string side = OddSide(project.film, options.film.run.output); !side.empty())
        faults.Add(side, "is odd, and videos need even sides; give one more or make pictures");
    if (const std::optional<double> seconds = options.film.Seconds())
        project.film.frames = project.film.FramesIn(*seconds);
    CheckLoop(project.film, faults);
    faults.ThrowIfAny();
    RefuseInputsAsOutput(options, project);
    const std::vector<MenuProject> pages = PagesOf(project);
    MenuOptions page = options;
    if (options.loopOnly) page.film.run.frames = LoopOf(project.film);
    for (const int number : PagesToMake(options, int(pages.size()))) {
        page.film.run.output.path = PageOutput(options, number);
        RefuseInputsAsOutput(page, project);
        RenderMenuPage(pages[std::size_t(number - 1)], page.templateName, page.film, module, page.project);
    }
}

}  // namespace Nifikral
