#include "host/command/page_commands.h"

#include <memory>

#include "host/base/standard_output.h"
#include "host/command/common_options.h"
#include "host/pages/documents.h"
#include "host/pages/gallery.h"
#include "host/pages/reference.h"

namespace Nifikral {

void AddGallery(CommandLine& line) {
    CLI::App* const gallery = line.app.add_subcommand("gallery", "show a photograph under every effect on a web page")
                                  ->group(findingCommands);
    const auto given = std::make_shared<GalleryOptions>();
    gallery->add_option("PHOTO", given->photograph, "a picture, or a video, of which the first frame is taken")
        ->required();
    gallery->add_option("-o,--output", given->page, "the page; its pictures go to a folder beside it")
        ->type_name("FILE")
        ->required();
    gallery->add_flag("-y,--overwrite", given->overwrite, "overwrite an existing page and its pictures");
    gallery->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*gallery, line);
    line.work[gallery] = [given](const EffectModule& module) { MakeGallery(*given, module); };
}

void AddReference(CommandLine& line) {
    CLI::App* const reference =
        line.app.add_subcommand("reference", "show all effects and menus, with all parameters, on one page")
            ->group(findingCommands);
    const auto given = std::make_shared<ReferenceOptions>();
    reference->add_option("PHOTO", given->photograph, "a picture that the effects are shown on")->required();
    reference->add_option("-o,--output", given->page, "the page, which holds its pictures itself")
        ->type_name("FILE")
        ->required();
    reference->add_flag("-y,--overwrite", given->overwrite, "overwrite an existing page");
    reference->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*reference, line);
    line.work[reference] = [given](const EffectModule& module) { MakeReference(*given, module); };
}

void AddGenerate(CommandLine& line) {
    CLI::App* const generate =
        line.app.add_subcommand("generate", "print what is made from all that is known of effects")
            ->group(otherCommands);
    const auto document = std::make_shared<std::string>();
    Take(line, generate->add_option("DOCUMENT", *document, "which")->required(), DocumentNames());
    generate->footer(
        "The manual pages are man for the command and man-effects, the completions bash, zsh and fish, as in: source "
        "<(nifikral generate bash).");
    AddCommonOptions(*generate, line);
    line.work[generate] = [document, &line](const EffectModule& module) {
        PrintResult(MakeDocument(*document, line.Whole(), line.Commands(), AllEffects(module)));
    };
}

}  // namespace Nifikral
