#include "host/command/command_line.h"

#include <algorithm>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/base/standard_output.h"
#include "host/base/version.h"
#include "host/command/apply_command.h"
#include "host/command/common_options.h"
#include "host/command/disc_command.h"
#include "host/command/listing_commands.h"
#include "host/command/menu_commands.h"
#include "host/command/page_commands.h"
#include "host/command/plan_commands.h"
#include "host/command/slideshow_command.h"
#include "host/command/studio_command.h"
#include "host/command/title_command.h"
#include "host/pages/help.h"

namespace Nifikral {
namespace {

// "INT in [1 - 100]" of a check, as "1 to 100".
std::string CheckedRange(const std::string& typeName) {
    const std::size_t begin = typeName.find('['), dash = typeName.find(" - "), end = typeName.find(']');
    if (begin == std::string::npos || dash == std::string::npos || end == std::string::npos) return {};
    return typeName.substr(begin + 1, dash - begin - 1) + " to " + typeName.substr(dash + 3, end - dash - 3);
}

OptionDescription Describe(const CLI::Option& option, const std::vector<std::string>& words) {
    OptionDescription description;
    for (const std::string& name : option.get_snames()) description.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) description.names.push_back("--" + name);
    const std::string type = option.get_type_name();
    if (option.get_positional())
        description.value = option.get_name(true);
    else if (option.get_expected_max() > 0)
        description.value = type.substr(0, type.find(':'));
    for (const char* const number : {"INT", "UINT", "FLOAT"})
        if (description.value == number) description.value = "NUMBER";
    description.meaning = option.get_description();
    description.range = CheckedRange(type);
    description.defaultText = option.get_default_str();
    // A list stands in brackets there, and on the command line without.
    if (description.defaultText.starts_with('['))
        description.defaultText = description.defaultText.substr(1, description.defaultText.size() - 2);
    description.words = words;
    description.required = option.get_required();
    description.repeated = option.get_expected_max() > 1;
    return description;
}

CommandDescription Describe(const CLI::App& app, const std::map<const CLI::Option*, std::vector<std::string>>& words) {
    CommandDescription description{
        app.get_name(), app.get_description(), app.get_footer(), app.get_group(), {}, {}, {}};
    for (const CLI::Option* const option : app.get_options()) {
        const auto known = words.find(option);
        description.options.push_back(
            Describe(*option, known == words.end() ? std::vector<std::string>() : known->second));
    }
    return description;
}

void AddHelp(CommandLine& line) {
    CLI::App* const help = line.app.add_subcommand("help", "describe a command")->group(otherCommands);
    // Parse has it done by --help.
    Take(line, help->add_option("COMMAND", "which"), {});
}

}  // namespace

CommandLine::CommandLine() : app("video effects and disc menus for pictures and videos", "nifikral") {
    app.require_subcommand(1);
    app.set_version_flag("--version", "nifikral " + std::string(Version()), "print the version");
    app.set_help_flag("-h,--help", "print the usage");
    for (const auto add : {AddApply, AddTitle, AddSlideshow, AddMenu, AddDisc, AddStudio, AddInit, AddListings,
                           AddGallery, AddReference, AddPlan, AddConcat, AddGenerate, AddHelp})
        add(*this);
    // Last: subcommands that are added later would inherit it.
    app.footer(
        "nifikral COMMAND --help describes a command. For example:\n"
        "  nifikral apply holiday.mp4 old.mp4 aged_film\n"
        "  nifikral slideshow holiday -o film.mp4\n"
        "Exit codes: 0 done, 1 failed while running, 2 wrong usage, 3 input unreadable, 4 output not writable, 130 "
        "interrupted.");
}

bool CommandLine::Parse(std::vector<std::string> words) {
    std::vector<std::string> names;
    for (const CommandDescription& command : Commands()) names.push_back(command.name);
    if (!words.empty() && words[0] == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    const std::string first = words.empty() ? "" : words[0];
    const bool known = std::find(names.begin(), names.end(), first) != names.end();
    if (first.empty()) throw HostError(ExitCode::Usage, "no command is given; nifikral --help lists them");
    if (!known && first[0] != '-')
        throw HostError(ExitCode::Usage, "there is no command \"" + first + "\"" + DidYouMean(first, names) +
                                             "; nifikral --help lists them");
    const std::string help = known ? "nifikral " + first + " --help" : "nifikral --help";
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
        return true;
    } catch (const CLI::CallForHelp&) {
        if (!known) PrintResult(HelpOverview(Whole(), Commands()));
        for (const CommandDescription& command : Commands())
            if (command.name == first) PrintResult(HelpOn(command));
        return false;
    } catch (const CLI::Success& asked) {
        PrintResult(std::string(asked.what()) + "\n");
        return false;
    } catch (const CLI::ExtrasError& error) {
        const std::string extra = app.remaining(true).front();
        if (!known || extra[0] != '-') throw HostError(ExitCode::Usage, std::string(error.what()) + "; see " + help);
        std::vector<std::string> options;
        for (const CLI::Option* const option : app.get_subcommand(first)->get_options())
            for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
        throw HostError(ExitCode::Usage,
                        first + " has no option " + extra + DidYouMean(extra, options) + "; " + help + " lists them");
    } catch (const CLI::ParseError& error) {
        throw HostError(ExitCode::Usage, std::string(error.what()) + "; " + help + " describes it");
    }
}

CommandDescription CommandLine::Whole() const { return Describe(app, words); }

std::vector<CommandDescription> CommandLine::Commands() const {
    std::vector<CommandDescription> commands;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back(Describe(*command, words));
        if (const auto known = usages.find(command); known != usages.end()) commands.back().usages = known->second;
        if (command == plan || command == concat)
            for (const auto& [run, options] : runs) commands.back().follows.push_back(run->get_name());
        if (command == plan)
            for (const auto& [work, planned] : stages) commands.back().follows.push_back(work->get_name());
    }
    for (CommandDescription& command : commands)
        if (command.name == "help")
            for (const CommandDescription& other : commands) command.options.back().words.push_back(other.name);
    return commands;
}

}  // namespace Nifikral
