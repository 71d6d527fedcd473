#include "host/command/listing_commands.h"

#include <memory>

#include "host/base/standard_output.h"
#include "host/command/common_options.h"
#include "host/pages/listing.h"

namespace Nifikral {

void AddListings(CommandLine& line) {
    struct Given {
        std::string effect;
        bool json = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App* const list = line.app.add_subcommand("list", "list the effects")->group(findingCommands);
    CLI::App* const info = line.app.add_subcommand("info", "tell an effect's parameters")->group(findingCommands);
    info->add_option("NAME", given->effect, "the effect's name")->required();
    for (CLI::App* const command : {list, info}) {
        command->add_flag("--json", given->json, "as JSON (nifikral generate schema tells its form)");
        AddCommonOptions(*command, line);
    }
    line.work[list] = [given](const EffectModule& module) { PrintResult(ListEffects(module, given->json)); };
    line.work[info] = [given](const EffectModule& module) {
        PrintResult(DescribeEffect(module, given->effect, given->json));
    };
}

}  // namespace Nifikral
