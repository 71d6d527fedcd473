#include "host/menu.h"

#include <filesystem>

#include "host/catalogue.h"
#include "host/errors.h"
#include "host/menu_project.h"
#include "host/nearest_names.h"

namespace Nifikral {
namespace {

void RefuseToOverwriteInputs(const MenuOptions& options, const MenuProject& project) {
    std::vector<std::string> inputs = {options.project, project.background, project.backgroundMask};
    for (const MenuSource& source : project.sources) inputs.insert(inputs.end(), {source.path, source.mask});
    for (const std::string& input : inputs) {
        std::error_code error;
        if (!input.empty() && std::filesystem::equivalent(input, options.run.output.path, error))
            throw HostError(ExitCode::Usage, options.run.output.path + " is an input itself; name another output");
    }
}

void RefuseOddVideo(const MenuOptions& options, const Film& film, Faults& faults) {
    if (options.run.output.path == "-" || IsPictureOutput(options.run.output)) return;
    for (const auto& [name, side] : {std::pair("width", film.width), std::pair("height", film.height)})
        if (side % 2)
            faults.Add(name, "is " + std::to_string(side) + ", and videos need even sides; give " +
                                 std::to_string(side + 1) + " or make pictures");
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
    const MenuProject project = ReadMenuProject(options.project, options.templateName, faults);
    RefuseOddVideo(options, project.film, faults);
    faults.ThrowIfAny();
    RefuseToOverwriteInputs(options, project);

    const EffectPtr generator = module.Create(options.templateName);
    for (const auto& [name, value] : MenuProperties(project)) {
        const bool taken = generator->SetProperty(name.c_str(), value.c_str());
        const std::optional<std::string> error = TakeModuleError();
        if (!taken || error)
            faults.Add(name, options.templateName + " refuses it: " + error.value_or("no reason given"));
    }
    faults.ThrowIfAny();
    RenderFilm(*generator, project.film, options.run, options.project);
}

}  // namespace Nifikral
