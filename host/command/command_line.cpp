#include "host/command/command_line.h"

#include "host/base/version.h"
#include "host/command/apply_command.h"
#include "host/command/listing_commands.h"
#include "host/command/menu_commands.h"
#include "host/command/page_commands.h"
#include "host/command/plan_commands.h"
#include "host/command/slideshow_command.h"
#include "host/command/title_command.h"

namespace Nifikral {
namespace {

// "INT in [1 - 100]" of a check, as "1 to 100".
std::string CheckedRange(const std::string& typeName) {
    const std::size_t begin = typeName.find('['), dash = typeName.find(" - "), end = typeName.find(']');
    if (begin == std::string::npos || dash == std::string::npos || end == std::string::npos) return {};
    return typeName.substr(begin + 1, dash - begin - 1) + " to " + typeName.substr(dash + 3, end - dash - 3);
}

OptionDescription Describe(const CLI::Option& option, const std::vector<std::string>& words) {
    OptionDescription told;
    for (const std::string& name : option.get_snames()) told.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) told.names.push_back("--" + name);
    const std::string type = option.get_type_name();
    if (option.get_positional())
        told.value = option.get_name(true);
    else if (option.get_expected_max() > 0)
        told.value = type.substr(0, type.find(':'));
    for (const char* const number : {"INT", "UINT", "FLOAT"})
        if (told.value == number) told.value = "NUMBER";
    told.meaning = option.get_description();
    told.range = CheckedRange(type);
    told.defaultText = option.get_default_str();
    // A list stands in brackets there, and on the command line without.
    if (told.defaultText.starts_with('[')) told.defaultText = told.defaultText.substr(1, told.defaultText.size() - 2);
    told.words = words;
    told.required = option.get_required();
    told.repeated = option.get_expected_max() > 1;
    return told;
}

CommandDescription Describe(const CLI::App& app, const std::map<const CLI::Option*, std::vector<std::string>>& words) {
    CommandDescription told{app.get_name(), app.get_description(), app.get_footer(), {}};
    for (const CLI::Option* const option : app.get_options()) {
        const auto known = words.find(option);
        told.options.push_back(Describe(*option, known == words.end() ? std::vector<std::string>() : known->second));
    }
    return told;
}

}  // namespace

CommandLine::CommandLine() : app("video effects and disc menus for pictures and videos", "nifikral") {
    app.require_subcommand(1);
    app.set_version_flag("--version", "nifikral " + std::string(Version()), "tell the version");
    app.set_help_flag("-h,--help", "tell the usage");
    for (const auto add : {AddApply, AddMenu, AddSlideshow, AddTitle, AddInit, AddGallery, AddReference, AddPlan,
                           AddConcat, AddListings, AddGenerate})
        add(*this);
    // Last: subcommands that are added later would inherit it.
    app.footer(
        "Exit codes: 0 done, 1 failed while running, 2 wrong usage, 3 input unreadable, 4 output not writable, 130 "
        "interrupted.");
}

CommandDescription CommandLine::Whole() const { return Describe(app, words); }

std::vector<CommandDescription> CommandLine::Commands() const {
    std::vector<CommandDescription> commands;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        commands.push_back(Describe(*command, words));
    return commands;
}

}  // namespace Nifikral
