#include "host/command/plan_commands.h"

#include "host/command/common_options.h"

namespace Nifikral {

void AddPlan(CommandLine& line) {
    line.plan = line.app.add_subcommand("plan", "print command lines that share a run out to several machines")
                    ->group(sharingCommands);
    line.plan->add_option("--chunks", line.planning.chunks, "how many")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000));
    Take(line,
         line.plan->add_option("--format", line.planning.format, "what is to hand them out")
             ->capture_default_str()
             ->type_name("FORMAT"),
         PlanFormats());
    line.plan->prefix_command()->footer(
        "Behind these options stands the run: apply, menu, slideshow, title or disc with all of its own.");
}

void AddConcat(CommandLine& line) {
    line.concat =
        line.app.add_subcommand("concat", "join the chunks of a run, without coding them again, and add the sound")
            ->group(sharingCommands);
    line.concat->add_option("--last", line.lastFrame, "the run's last frame")
        ->required()
        ->check(CLI::NonNegativeNumber);
    line.concat->prefix_command()->footer("Behind this option stands the run, as nifikral plan prints it.");
}

}  // namespace Nifikral
