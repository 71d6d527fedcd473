#include "host/command/studio_command.h"

#include <memory>

#include "host/command/common_options.h"
#include "host/studio/studio.h"

namespace Nifikral {

void AddStudio(CommandLine& line) {
    CLI::App* const studio =
        line.app.add_subcommand("studio", "choose effects, menus and slideshows by eye, on a page in the browser")
            ->group(makingCommands);
    const auto given = std::make_shared<StudioOptions>();
    studio->add_option("FOLDER", given->folder,
                       "the pictures and films to work on, and where results go (default: the current folder)");
    constexpr int lastPort = 65535;
    studio->add_option("--port", given->port, "of the address on this machine; 0: any that is free")
        ->capture_default_str()
        ->check(CLI::Range(0, lastPort));
    studio->add_flag("--open", given->open, "show the page in your browser");
    studio->add_flag("--sandbox", given->confined, "reach nothing but the folder; the kernel sees to it");
    studio->add_option("--page", given->page, "serve the page's files from this folder, to work on them")->group("");
    studio->add_flag("-v,--verbose", line.verbose, "print details");
    AddCommonOptions(*studio, line);
    studio->footer(
        "The page is served to this machine alone, at an address with a secret in it. Nothing outside of the folder is "
        "read or written. What is being edited is kept in FOLDER/.nifikral-studio/.");
    line.work[studio] = [given](const EffectModule& module) { RunStudio(*given, module); };
}

}  // namespace Nifikral
