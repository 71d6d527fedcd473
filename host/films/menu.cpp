#include "host/films/menu.h"

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/catalogue/catalogue.h"
#include "host/films/menu_project.h"

namespace Nifikral {
namespace {

void RefuseInputsAsOutput(const MenuOptions& options, const MenuProject& project) {
    const RunOptions& run = options.film.run;
    for (const std::string& input : {options.project, options.film.sound, project.background, project.backgroundMask})
        run.RefuseAsOutput(input);
    for (const MenuSource& source : project.sources) {
        run.RefuseAsOutput(source.path);
        run.RefuseAsOutput(source.mask);
    }
}

}  // namespace

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
    RequireMenuTemplate(options.templateName, module);
    Faults faults(options.project);
    const FilmProfile* const profile = RequireProfile(options.film.run.profile);
    MenuProject project = ReadMenuProject(options.project, options.templateName, profile, faults);
    if (const std::string side = OddSide(project.film, options.film.run.output); !side.empty())
        faults.Add(side, "is odd, and videos need even sides; give one more or make pictures");
    faults.ThrowIfAny();
    RefuseInputsAsOutput(options, project);
    if (const std::optional<double> seconds = options.film.Seconds())
        project.film.frames = project.film.FramesIn(*seconds);

    const EffectPtr generator = module.Create(options.templateName);
    SetProperties(*generator, MenuProperties(project), [&](const std::string& name, const std::string& reason) {
        faults.Add(name, options.templateName + " refuses it: " + reason);
    });
    faults.ThrowIfAny();
    RenderFilm(*generator, project.film, options.film, options.project);
}

}  // namespace Nifikral
