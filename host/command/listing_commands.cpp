#include "host/command/listing_commands.h"

#include <memory>

#include "host/base/standard_output.h"
#include "host/command/common_options.h"
#include "host/pages/listing.h"

namespace Nifikral {

void AddListings(CommandLine& line) {
    struct Given {
        std::string effect;
        ListOptions options;
    };
    const auto given = std::make_shared<Given>();
    CLI::App* const list =
        line.app.add_subcommand("list", "list effects and presets, or find one")->group(findingCommands);
    CLI::App* const info =
        line.app.add_subcommand("info", "print an effect's parameters or a preset's chain")->group(findingCommands);
    list->add_option("WORDS", given->options.words,
                     "what to look for, such as sepia or old photo; @ for the presets alone");
    list->add_flag("--names", given->options.names, "names only, one a line");
    info->add_option("NAME", given->effect, "the effect's name, or @PRESET")->required();
    for (CLI::App* const command : {list, info}) {
        command->add_flag("--json", given->options.json, "effects as JSON (nifikral generate schema prints its form)");
        AddPresetsOption(*command, given->options.presets);
        AddCommonOptions(*command, line);
    }
    line.work[list] = [given](const EffectModule& module) { PrintResult(ListEffects(module, given->options)); };
    line.work[info] = [given](const EffectModule& module) {
        PrintResult(DescribeEffect(module, given->effect, given->options));
    };
}

}  // namespace Nifikral
