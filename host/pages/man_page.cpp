#include "host/pages/man_page.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "host/base/version.h"
#include "host/run/effect_request.h"

namespace Nifikral {
namespace {

// Text in which nothing is markup. A hyphen of a word to type is `hyphen`, so that it can be copied.
std::string Escaped(const std::string& text, const char* hyphen) {
    // At the beginning of a line these two would be a request.
    std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += hyphen;
        else
            escaped += c;
    }
    return escaped;
}
std::string Prose(const std::string& text) { return Escaped(text, "-"); }
std::string Typed(const std::string& text) { return Escaped(text, "\\-"); }
std::string Bold(const std::string& text) { return std::string("\\fB") + Typed(text) + "\\fR"; }
std::string Italic(const std::string& text) { return std::string("\\fI") + Typed(text) + "\\fR"; }

std::string Header(const char* page, const char* section) {
    return std::string(".TH ") + page + " " + section + " \"\" \"nifikral " + Version() + "\"\n.nh\n.ad l\n";
}

// Lines "  name: text" become a list.
std::string Paragraphs(const std::string& text) {
    std::istringstream lines(text);
    std::string page;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (line.starts_with("  ") && colon != std::string::npos)
            page += ".TP\n" + Bold(line.substr(2, colon - 2)) + "\n" + Prose(line.substr(colon + 2)) + "\n";
        else if (!line.empty())
            page += ".PP\n" + Prose(line) + "\n";
    }
    return page;
}

std::string Option(const OptionDescription& option) {
    std::string head;
    for (const std::string& name : option.names) head.append(head.empty() ? "" : ", ").append(Bold(name));
    if (!option.value.empty()) head.append(head.empty() ? "" : " ").append(Italic(option.value));
    std::string text = Prose(option.meaning);
    if (!option.range.empty() && !option.defaultText.empty())
        text += " (" + option.range + ", default " + Prose(option.defaultText) + ")";
    else if (!option.range.empty())
        text += " (" + option.range + ")";
    else if (!option.defaultText.empty())
        text += " (default " + Prose(option.defaultText) + ")";
    return ".TP\n" + head + "\n" + text + "\n";
}

std::string Usage(const CommandDescription& command) {
    std::string usages;
    for (const std::string& usage : command.usages) {
        usages.append(usages.empty() ? "" : ".br\n").append("\\fBnifikral\\fR");
        std::istringstream words(usage);
        for (std::string word; words >> word;)
            usages.append(" ").append(std::isupper(word[0]) ? Italic(word) : Bold(word));
        usages.append(" [").append(Italic("OPTION")).append("]...\n");
    }
    if (!usages.empty()) return usages;
    std::string usage = ".B nifikral " + Typed(command.name) + "\n";
    for (const OptionDescription& option : command.options) {
        const std::string value = Italic(option.value) + (option.repeated ? "...\\&" : "");
        if (option.IsPositional())
            usage += (option.required ? value : "[" + value + "]") + "\n";
        else if (option.required)
            usage += Bold(option.names.front()) + " " + value + "\n";
    }
    return usage + "[" + Italic("OPTION") + "]...\n";
}

unsigned Users(std::span<const CommandDescription> commands, const OptionDescription& option) {
    return unsigned(std::count_if(commands.begin(), commands.end(), [&](const CommandDescription& command) {
        return std::find(command.options.begin(), command.options.end(), option) != command.options.end();
    }));
}

std::string OptionsOfSeveral(std::span<const CommandDescription> commands) {
    std::vector<OptionDescription> seen;
    std::string page;
    for (const CommandDescription& command : commands)
        for (const OptionDescription& option : command.options) {
            if (option.IsPositional() || Users(commands, option) < 2) continue;
            if (std::find(seen.begin(), seen.end(), option) != seen.end()) continue;
            seen.push_back(option);
            page += Option(option);
        }
    return page;
}

std::string Parameter(const std::string& effect, const ParameterDetails& parameter) {
    const std::string& name = parameter.property.name;
    const std::string brief = ShortName(effect, name);
    std::ostringstream text;
    text << ".TP\n" << Bold(brief);
    if (brief != name) text << " (" << Typed(name) << ")";
    text << "\n" << Prose(parameter.info.meaning);
    if (const std::string values = ValuesText(parameter.info); !values.empty()) text << "; " << Prose(values);
    text << " (" << Prose(TypeAndDefault(parameter)) << ")\n";
    return text.str();
}

}  // namespace

std::string CommandManPage(const CommandDescription& whole, std::span<const CommandDescription> commands) {
    std::string page = Header("NIFIKRAL", "1") + ".SH NAME\nnifikral \\- " + Prose(whole.summary) + "\n.SH SYNOPSIS\n";
    for (const CommandDescription& command : commands) page += Usage(command) + ".br\n";
    page += ".B nifikral\n" + Bold("--help") + " | " + Bold("--version") + "\n";
    page += ".SH COMMANDS\n";
    for (const CommandDescription& command : commands) {
        page += ".SS " + Typed(command.name) + "\n" + Prose(command.summary) + "\n";
        for (const OptionDescription& option : command.options)
            if (option.IsPositional() || Users(commands, option) < 2) page += Option(option);
        page += Paragraphs(command.footer);
    }
    page +=
        ".SH OPTIONS\nThose that several commands take; \\fBnifikral\\fR \\fICOMMAND\\fR \\fB\\-\\-help\\fR lists "
        "which.\n" +
        OptionsOfSeveral(commands);
    page += ".SH EXIT STATUS\n" + Prose(whole.footer) + "\n";
    page += ".SH ENVIRONMENT\n.TP\n.B NIFIKRAL_MODULE\nThe file of the effect module.\n";
    page += ".SH FILES\n.TP\n.I $XDG_CONFIG_HOME/nifikral/presets\nPresets of your own, or in \\fI~/.config\\fR.\n";
    page += ".SH EXAMPLES\n.nf\n";
    for (const char* const example : {
             "nifikral apply holiday.mp4 lens.mp4 magnifier:x=30%:y=40%:r=25%",
             "nifikral apply holiday.mp4 swirl.mp4 rotate:scale=0..4~in-out",
             "nifikral apply holiday.mp4 ending.mp4 gray@2s-5s directfadeout@-1s-",
             "nifikral apply holiday.mp4 hidden.mp4 mosaic:inside=ellipse,50%,40%,10%,20%:soft=3%",
             "nifikral apply holiday.mp4 dream.mp4 @dream",
             "nifikral slideshow holiday -o film.mp4",
             "nifikral init menu_common project && nifikral menu menu_common project/menu.json -o menu.mp4",
         })
        page += Typed(example) + "\n";
    return page + ".fi\n.SH SEE ALSO\n.BR nifikral\\-effects (7)\n";
}

std::string EffectsManPage(std::span<const EffectDetails> effects) {
    std::string page =
        Header("NIFIKRAL-EFFECTS", "7") +
        ".SH NAME\nnifikral\\-effects \\- the effects of nifikral and their parameters\n"
        ".SH DESCRIPTION\n"
        "What a request for an effect may say stands in\n.BR nifikral (1).\n"
        "Menus, slideshow and titles have commands of their own. The command warns of values outside the "
        "ranges given here. A parameter that is \\(lqstarted\\(rq at a value has it until it is set, "
        "since the effect's own defaults do nothing.\n"
        ".PP\nEvery effect also has the parameter\n.BR duration :\n";
    const ParameterInfo& duration = *FindParameter("", "duration");
    page += Prose(duration.meaning) + ".\n";
    std::vector<std::string> categories;
    for (const EffectDetails& effect : effects)
        if (std::find(categories.begin(), categories.end(), effect.info.category) == categories.end())
            categories.emplace_back(effect.info.category);
    for (const std::string& category : categories) {
        page += ".SH " + Prose(category) + "\n";
        const EffectDetails* toldAlike = nullptr;
        for (const EffectDetails& effect : effects) {
            if (effect.info.category != category) continue;
            page += ".SS " + Typed(effect.name) + "\n" + Prose(effect.info.summary) + ".\n";
            const bool alike = toldAlike && toldAlike->info.parameters.data() == effect.info.parameters.data();
            if (alike && !effect.info.parameters.empty()) {
                page += ".PP\nParameters as those of " + Bold(toldAlike->name) + ".\n";
                continue;
            }
            for (const ParameterDetails& parameter : effect.parameters)
                if (parameter.property.name != duration.name) page += Parameter(effect.name, parameter);
            toldAlike = &effect;
        }
    }
    return page + ".SH SEE ALSO\n.BR nifikral (1)\n";
}

}  // namespace Nifikral
