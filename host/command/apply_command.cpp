#include "host/command/apply_command.h"

#include <memory>

#include "host/command/common_options.h"
#include "host/pages/request_help.h"
#include "host/run/apply.h"

namespace Nifikral {

void AddApply(CommandLine& line) {
    CLI::App* const apply =
        line.app.add_subcommand("apply", "put effects on a picture or a video")->group(makingCommands);
    apply->footer(requestHelp);
    const auto given = std::make_shared<ApplyOptions>();
    ApplyOptions& options = *given;
    apply->add_option("IN", options.input, "a picture, a video, pictures as in_%06d.png, or - for stdin")->required();
    apply
        ->add_option("OUT", options.run.output.path,
                     "by its extension a video (with its sound) or a picture; out_%06d.png for one a frame; - for "
                     "stdout")
        ->required();
    apply
        ->add_option("EFFECT", options.effects,
                     "NAME[@WINDOW][:name=value]... or @PRESET, one or more, in this order; see below")
        ->required();
    apply->add_flag("--keep-going", options.keepGoing, "take what is readable of a damaged input");
    apply
        ->add_option("--gaps", options.gaps,
                     "where a number is missing in numbered pictures: skip it, repeat the picture before it, or stop; "
                     "an error unless given")
        ->option_text("HOW");
    AddPresetsOption(*apply, options.presets);
    AddRunOptions(*apply, line, options.run);
    line.work[apply] = [given](const EffectModule& module) { Apply(*given, module); };
}

}  // namespace Nifikral
