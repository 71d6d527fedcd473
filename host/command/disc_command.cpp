#include "host/command/disc_command.h"

#include <memory>

#include "host/command/common_options.h"
#include "host/disc/disc_json.h"
#include "host/disc/disc_work.h"

namespace Nifikral {

void AddDisc(CommandLine& line) {
    CLI::App* const disc =
        line.app.add_subcommand("disc", "make a disc of films and photographs, with menus")->group(makingCommands);
    const auto given = std::make_shared<DiscOptions>();
    DiscOptions& options = *given;
    disc->add_option("PROJECT", options.input,
                     "the project file, which nifikral init disc writes, or a folder of films and photographs")
        ->required();
    disc->add_option("-o,--output", options.output, "an image (holiday.iso), or a folder (holiday/)")
        ->type_name("OUT")
        ->required();
    Take(line, disc->add_option("--format", options.format, "what is made")->capture_default_str()->type_name("FORMAT"),
         {"dvd", "web"});
    disc->add_flag("--dry-run", options.dryRun, "check everything and print what would be done");
    disc->add_option("--stage", options.stage, "only this part, for the runs that a disc is shared out to")->group("");
    disc->add_flag("--sandbox", options.confined,
                   "read only the project's folder, write only into the output's, and run only what makes discs; the "
                   "kernel sees to it");
    disc->add_flag("--skip-existing", options.skipExisting, "leave a disc that is there as it is");
    disc->add_flag("-y,--overwrite", options.overwrite, "overwrite an existing output");
    Take(line, disc->add_option("--progress", line.progress, "how progress is printed on stderr")->type_name("FORM"),
         {"line", "json"});
    disc->add_flag("-q,--quiet", line.quiet, "errors only");
    disc->add_flag("-v,--verbose", line.verbose, "print details");
    AddCommonOptions(*disc, line);
    disc->footer("Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeDiscKeys());
    const auto complete = [given, disc, &line] {
        if (!line.module.empty()) given->stageWords = {"--module", line.module};
        if (disc->count("--cpu-features"))
            given->stageWords.insert(given->stageWords.end(), {"--cpu-features", std::to_string(line.cpuFeatures)});
        return *given;
    };
    line.work[disc] = [complete](const EffectModule& module) { RunDisc(complete(), module); };
    line.stages[disc] = [complete](long long chunks, const EffectModule& module) {
        return ShareOutDisc(complete(), chunks, module);
    };
}

}  // namespace Nifikral
