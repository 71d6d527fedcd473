#include "host/pages/help.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "host/base/version.h"

namespace Nifikral {
namespace {

constexpr std::size_t lineWidth = 80, textColumn = 26;

// Words from column `indent` on; the first line has `head` before them.
std::string Wrapped(const std::string& head, const std::string& text, std::size_t indent) {
    std::string page = head, word;
    std::size_t column = head.size();
    const auto begin = [&] {
        page.append(1, '\n').append(indent, ' ');
        column = indent;
    };
    if (column + 2 > indent && !head.empty())
        begin();
    else
        page.append(indent - column, ' '), column = indent;
    for (std::istringstream words(text); words >> word; column += word.size()) {
        const bool first = column == indent;
        if (!first && column + 1 + word.size() > lineWidth)
            begin();
        else if (!first)
            page += ' ', ++column;
        page += word;
    }
    return page + "\n";
}

// Lines "  name: text" are as those of options; others keep their indent.
std::string Footer(const std::string& footer) {
    std::istringstream lines(footer);
    std::string page = footer.empty() ? "" : "\n";
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (!line.starts_with("  "))
            page += Wrapped("", line, 0);
        else if (colon == std::string::npos)
            page += line + "\n";
        else
            page += Wrapped(line.substr(0, colon), line.substr(colon + 2), textColumn);
    }
    return page;
}

std::string Usage(const CommandDescription& command) {
    std::string words;
    for (const std::string& usage : command.usages)
        words.append(words.empty() ? "Usage: " : "       ").append("nifikral ").append(usage).append(" [OPTION]...\n");
    if (!words.empty()) return words;
    for (const OptionDescription& option : command.options) {
        if (!option.IsPositional() && option.required) words.append(" ").append(option.names.front());
        if (!option.IsPositional() && !option.required) continue;
        const std::string value = option.value + (option.repeated ? "..." : "");
        words.append(option.required ? " " : " [").append(value).append(option.required ? "" : "]");
    }
    return "Usage: nifikral " + command.name + words + " [OPTION]...\n";
}

std::string Line(const OptionDescription& option) {
    std::string head = "  ";
    for (const std::string& name : option.names) head.append(&name == &option.names.front() ? "" : ", ").append(name);
    if (!option.value.empty()) head.append(option.IsPositional() ? "" : " ").append(option.value);
    std::string text = option.meaning, aside = option.range;
    if (!option.defaultText.empty()) aside += (aside.empty() ? "default " : ", default ") + option.defaultText;
    if (!aside.empty()) text.append(" (").append(aside).append(")");
    return Wrapped(head, text, textColumn);
}

}  // namespace

std::string HelpOverview(const CommandDescription& whole, std::span<const CommandDescription> commands) {
    std::string page = std::string("nifikral ") + Version() + ": " + whole.summary + "\n";
    std::vector<std::string> groups;
    for (const CommandDescription& command : commands)
        if (std::find(groups.begin(), groups.end(), command.group) == groups.end()) groups.push_back(command.group);
    for (const std::string& group : groups) {
        page.append("\n").append(group).append(":\n");
        for (const CommandDescription& command : commands)
            if (command.group == group) page += Wrapped("  " + command.name, command.summary, 14);
    }
    return page + Footer(whole.footer);
}

std::string HelpOn(const CommandDescription& command) {
    std::string arguments = "\n", options = "\nOptions:\n";
    for (const OptionDescription& option : command.options)
        (option.IsPositional() ? arguments : options) += Line(option);
    if (arguments == "\n") arguments = "";
    return Usage(command) + "\n" + Wrapped("", command.summary, 0) + arguments + options + Footer(command.footer);
}

}  // namespace Nifikral
