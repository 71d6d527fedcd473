#include "host/command/menu_commands.h"

#include <iostream>
#include <iterator>
#include <memory>

#include "host/base/errors.h"
#include "host/base/shell_word.h"
#include "host/command/common_options.h"
#include "host/disc/disc_survey.h"
#include "host/films/example_project.h"
#include "host/films/menu.h"
#include "host/films/menu_project.h"

namespace Nifikral {

void AddMenu(CommandLine& line) {
    CLI::App* const menu =
        line.app.add_subcommand("menu", "make a disc menu from a project file")->group(makingCommands);
    const auto given = std::make_shared<MenuOptions>();
    MenuOptions& options = *given;
    menu->add_option("TEMPLATE", options.templateName, "the menu's template; nifikral list shows all")->required();
    menu->add_option("PROJECT", options.project, "the project file; nifikral init makes an example")->required();
    AddFilmOutput(*menu, options.film);
    menu->add_option("--page", options.page, "make this page only (default: all; name the films menu_%d.mp4)")
        ->check(CLI::Range(1, 100000));
    CLI::Option* const loopOnly =
        menu->add_flag("--loop-only", options.loopOnly, "only the part from \"loopStart\" on, which players repeat");
    AddFilmOptions(*menu, line, options.film);
    loopOnly->excludes("--frames");
    menu->footer("Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys());
    line.work[menu] = [given](const EffectModule& module) { RenderMenu(*given, module); };
}

namespace {

// Refuses options that are for something else.
void RequireNone(const CLI::App& app, std::initializer_list<const char*> options, const char* what) {
    for (const char* const option : options)
        if (app.count(option) > 0) throw HostError(ExitCode::Usage, std::string(option) + " is " + what);
}

}  // namespace

void AddInit(CommandLine& line) {
    CLI::App* const init =
        line.app.add_subcommand("init", "write an example project with its pictures, or a disc's project")
            ->group(makingCommands);
    const auto given = std::make_shared<InitOptions>();
    const auto disc = std::make_shared<DiscInitOptions>();
    InitOptions& options = *given;
    line.words[init->add_option("TEMPLATE", options.templateName,
                                "the template that it is for, which nifikral list shows; or disc, for a disc")
                   ->required()] = {"disc"};
    init->add_option("FOLDER", options.folder,
                     "where to put it (default: a new folder named as the template); of a disc, where its films and "
                     "photographs are");
    init->add_option("-o,--output", disc->output, "a disc's project file (default: disc.json)")->type_name("FILE");
    init->add_option("--pictures", options.pictures,
                     "pictures and films of your own to show, and folders of them; they stay where they are")
        ->type_name("FILE");
    init->add_option("--title", options.title, "the menu's title")->type_name("TEXT");
    line.words[init->add_option("--mood", options.mood,
                                "the colours of what the template paints: own, light or dark (default: own)")
                   ->type_name("MOOD")] = {std::begin(moodNames), std::end(moodNames)};
    init->add_flag("-y,--overwrite", options.overwrite, "overwrite files of the same names");
    init->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*init, line);
    line.work[init] = [given, disc, init, &line](const EffectModule& module) {
        if (given->templateName == "disc") {
            RequireNone(*init, {"--pictures", "--title", "--mood"}, "for menus; a disc's films lie in its folder");
            disc->folder = given->folder;
            disc->overwrite = given->overwrite;
            const std::string found = WriteDiscProject(*disc);
            if (!line.quiet)
                std::cerr << disc->output << " is written: " << found << "; check it with\n  nifikral disc "
                          << ShellWord(disc->output) << " -o disc.iso --dry-run\n";
            return;
        }
        RequireNone(*init, {"--output"}, "for a disc; name the FOLDER");
        const ExampleProject project = WriteExampleProject(*given, module);
        if (line.quiet) return;
        std::cerr << project.file << (given->pictures.empty() ? " and its pictures are" : " is")
                  << " written; make the film" << &"s"[!project.hasPages] << " with\n  nifikral menu "
                  << given->templateName << " " << ShellWord(project.file) << " -o menu"
                  << (project.hasPages ? "_%d" : "") << ".mp4\n";
    };
}

}  // namespace Nifikral
