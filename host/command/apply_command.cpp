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
    struct Given {
        ApplyOptions options;
        std::string in, out;
        std::vector<std::string> more;
    };
    const auto given = std::make_shared<Given>();
    ApplyOptions& options = given->options;
    line.usages[apply] = {"apply IN OUT EFFECT...", "apply IN... -o OUT EFFECT..."};
    apply->add_option("IN", given->in, "a picture, a video, pictures as in_%06d.png, or - for stdin");
    apply->add_option("OUT", given->out,
                      "by its extension a video (with its sound) or a picture; out_%06d.png for one a frame; - for "
                      "stdout");
    apply->add_option("EFFECT", given->more,
                      "NAME[@WINDOW][:name=value]... or @PRESET, one or more, in this order; see below");
    AddOutputApart(*apply, options.run);
    AddPreparation(*apply, options.preparation);
    apply->add_flag("--keep-going", options.keepGoing, "take what is readable of a damaged input");
    apply
        ->add_option("--gaps", options.gaps,
                     "where a number is missing in numbered pictures: skip it, repeat the picture before it, or stop; "
                     "an error unless given")
        ->option_text("HOW");
    AddPresetsOption(*apply, options.presets);
    AddRunOptions(*apply, line, options.run);
    line.work[apply] = [given](const EffectModule& module) {
        ApplyOptions& options = given->options;
        ReadApplyWords(JoinWords(given->in, given->out, given->more), module, options);
        Apply(options, module);
    };
}

}  // namespace Nifikral
