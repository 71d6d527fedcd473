#include "host/pages/completion.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/run/effect_request.h"

namespace Nifikral {
namespace {

std::string Joined(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list.append(list.empty() ? "" : " ").append(word);
    return list;
}

// What a value is completed by, as the scripts below call it.
std::string Source(const OptionDescription& option) {
    constexpr const char* files[] = {"IN", "OUT", "FILE", "FOLDER", "PHOTO", "PICTURES", "PROJECT"};
    if (std::find(std::begin(files), std::end(files), option.value) != std::end(files)) return "@file";
    if (option.value == "EFFECT") return "@effect";
    if (option.value == "NAME") return "@name";
    if (option.value == "TEMPLATE") return "@template " + Joined(option.words);
    return option.words.empty() ? "@text" : Joined(option.words);
}

// What may stand behind "name=".
std::string Values(const ParameterInfo& info) {
    std::vector<std::string> values(info.words.begin(), info.words.end());
    for (const Choice& choice : info.choices) values.push_back(std::to_string(choice.value));
    if (info.kind == Kind::Colour)
        values = {"black", "blue", "cyan", "green", "magenta", "orange", "red", "white", "yellow"};
    return Joined(values);
}

// Inside single quotes of any of the shells.
std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return "'" + quoted + "'";
}

// Names of effects of a kind, and for each name the rest of a list's entry.
template <class IsOfKind, class Entry>
std::string Effects(std::span<const EffectDetails> effects, IsOfKind isOfKind, Entry entry) {
    std::string list;
    for (const EffectDetails& effect : effects)
        if (isOfKind(effect.info)) list += entry(effect.name, effect.info.summary);
    return list;
}
bool IsAny(const EffectInfo&) { return true; }
bool IsMenu(const EffectInfo& info) { return (info.traits & menu) != 0; }
// Generators have commands of their own.
bool IsForApply(const EffectInfo& info) { return (info.traits & generator) == 0; }

// `arm(effect, parameter's short name, parameter)` for the parameters of all effects that a request may name.
template <class Arm>
std::string ForEachParameter(std::span<const EffectDetails> effects, Arm arm) {
    std::string arms;
    for (const EffectDetails& effect : effects)
        if (IsForApply(effect.info))
            for (const ParameterDetails& parameter : effect.parameters)
                arms += arm(effect.name, ShortName(effect.name, parameter.property.name), parameter.info);
    return arms;
}

// A case of bash and zsh, "words) echo 'text' ;;".
std::string Arm(const std::string& pattern, const std::string& text) {
    return std::string(8, ' ') + Quoted(pattern) + ") echo " + Quoted(text) + " ;;\n";
}

// What stands at the places and behind the options of the commands, for bash and zsh.
std::string SourceArms(std::span<const CommandDescription> commands) {
    std::string arms;
    for (const CommandDescription& command : commands) {
        int place = 0;
        if (!command.follows.empty()) arms += Arm(command.name + " 1", Joined(command.follows));
        for (const OptionDescription& option : command.options) {
            if (option.IsPositional()) {
                arms += Arm(command.name + " " + std::to_string(++place), Source(option));
                if (option.repeated)
                    arms += std::string(8, ' ') + Quoted(command.name + " ") + "[0-9]*) echo " +
                            Quoted(Source(option)) + " ;;\n";
            } else if (!option.value.empty()) {
                for (const std::string& name : option.names) arms += Arm(command.name + " " + name, Source(option));
            }
        }
    }
    return arms;
}

std::string ParameterArms(std::span<const EffectDetails> effects) {
    std::string arms;
    for (const EffectDetails& effect : effects) {
        if (!IsForApply(effect.info)) continue;
        std::vector<std::string> names;
        for (const ParameterDetails& parameter : effect.parameters)
            names.push_back(ShortName(effect.name, parameter.property.name) + "=");
        for (const std::string& option : regionOptions) names.push_back(option + "=");
        arms += Arm(effect.name, Joined(names));
    }
    return arms;
}

// Behind "inside=" and "outside=".
constexpr char areas[] = "circle, ellipse, rectangle,";

std::string ValueArms(std::span<const EffectDetails> effects) {
    return std::string("        *:*side) echo '") + areas + "' ;;\n" +
           ForEachParameter(effects, [](const std::string& effect, const std::string& name, const ParameterInfo& info) {
               const std::string values = Values(info);
               return values.empty() ? std::string() : Arm(effect + ":" + name, values);
           });
}

// The commands behind whose options another one stands, between blanks.
std::string Prefixes(std::span<const CommandDescription> commands) {
    std::string names = " ";
    for (const CommandDescription& command : commands)
        if (!command.follows.empty()) names += command.name + " ";
    return names;
}

std::string NameOnly(const std::string& name, const char*) { return name + " "; }

constexpr char bashLogic[] = R"bash(
# The word so far is taken from the line: bash itself divides it at ":" and "=".
_nifikral() {
    local line=${COMP_LINE:0:COMP_POINT} command= word= source= last= head= candidates= place=0 i
    local -a words
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=('')
    word=${words[-1]}
    ((${#words[@]} > 2)) && command=${words[1]}
    for ((i = 2; i < ${#words[@]} - 1; ++i)); do
        if [[ ${words[i]} != -?* && $_nifikral_prefixes == *" $command "* ]]; then
            command=${words[i]}
        elif [[ ${words[i]} != -?* ]]; then
            ((++place))
        elif [[ -n $(_nifikral_source "$command ${words[i]}") ]]; then
            ((++i))
        fi
    done
    # All words are inputs then, up to the first effect.
    [[ $command == apply && " ${words[*]}" == *" -"@(o|-output)[\ =]* ]] && ((place += 2))
    if [[ -z $command ]]; then
        candidates="$(_nifikral_options '') $_nifikral_commands"
    elif ((i == ${#words[@]})); then
        source=$(_nifikral_source "$command ${words[i - 2]}")
    elif [[ $word == -* ]]; then
        candidates=$(_nifikral_options "$command")
    else
        source=$(_nifikral_source "$command $((place + 1))")
    fi
    COMPREPLY=()
    case $source in
        @file | @text) return ;;
        @name) candidates=$_nifikral_names ;;
        @template*) candidates="$_nifikral_templates ${source#@template}" ;;
        @effect)
            last=${word##*:} head=${word%"${word##*:}"}
            compopt -o nospace
            if [[ $word == @* ]]; then
                candidates=$("${words[0]}" list --names @ 2>/dev/null)
            elif [[ -z $head ]]; then
                candidates=$_nifikral_effects
            elif [[ $last == *=* ]]; then
                head+=${last%%=*}=
                candidates=$(_nifikral_values "${word%%[:@]*}:${last%%=*}")
            else
                candidates=$(_nifikral_parameters "${word%%[:@]*}")
            fi
            ;;
        ?*) candidates=$source ;;
    esac
    mapfile -t COMPREPLY < <(compgen -P "$head" -W "$candidates" -- "${word#"$head"}")
    # What stands before the last division is on the line already.
    head=${word%"${word##*[:=@]}"}
    if [[ $COMP_WORDBREAKS == *:* && $COMP_WORDBREAKS == *=* && $COMP_WORDBREAKS == *@* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"$head"}")
    fi
}
complete -o default -F _nifikral nifikral
)bash";

constexpr char zshLogic[] = R"zsh(
_nifikral() {
    local command= word=${words[CURRENT]} source= place=0 i effect name
    local -a candidates
    ((CURRENT > 2)) && command=${words[2]}
    for ((i = 3; i < CURRENT; ++i)); do
        if [[ ${words[i]} != -?* && $_nifikral_prefixes == *" $command "* ]]; then
            command=${words[i]}
        elif [[ ${words[i]} != -?* ]]; then
            ((++place))
        elif [[ -n $(_nifikral_source "$command ${words[i]}") ]]; then
            ((++i))
        fi
    done
    # All words are inputs then, up to the first effect.
    [[ $command == apply && " ${words[*]}" == *\ -(o|-output)[\ =]* ]] && ((place += 2))
    if [[ -z $command ]]; then
        _describe command _nifikral_commands
        return
    elif ((i > CURRENT)); then
        source=$(_nifikral_source "$command ${words[CURRENT - 1]}")
    elif [[ $word == -* ]]; then
        candidates=("${(@f)$(_nifikral_options $command)}")
        _describe -o option candidates
        return
    else
        source=$(_nifikral_source "$command $((place + 1))")
    fi
    case $source in
        (@file) _files ;;
        (@name) _describe effect _nifikral_names ;;
        (@template*) candidates=($_nifikral_templates ${=source#@template}); _describe template candidates ;;
        (@effect)
            if [[ $word == @* ]]; then
                candidates=(${(f)"$(${words[1]} list --names @ 2>/dev/null)"})
                compadd -S '' -a candidates
            elif compset -P '*:'; then
                effect=${word%%[:@]*}
                name=${PREFIX%%=*}
                if compset -P '*='; then
                    candidates=(${=$(_nifikral_values "$effect:$name")})
                    compadd -S '' -a candidates
                else
                    candidates=(${=$(_nifikral_parameters $effect)})
                    compadd -S '' -a candidates
                fi
            else
                _describe effect _nifikral_effects -S '' || _files
            fi
            ;;
        (@text) _message value ;;
        (?*) candidates=(${=source}); compadd -a candidates ;;
    esac
}
# Sourced, or the first time from a folder of $fpath.
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _nifikral "$@"
else
    compdef _nifikral nifikral
fi
)zsh";

constexpr char fishLogic[] = R"fish(
function __nifikral_effects
    set -l word (commandline -ct)
    set -l last (string replace -r '.*:' '' -- $word)
    set -l head (string sub -l (math (string length -- "$word") - (string length -- "$last")) -- "$word")
    if string match -q '@*' -- $word
        nifikral list --names @ 2>/dev/null
    else if test -z "$head"
        __nifikral_names
    else
        set -l effect (string replace -r '[:@].*' '' -- $word)
        set -l name (string replace -r '=.*' '' -- $last)
        if string match -q '*=*' -- $last
            printf '%s\n' $head$name=(__nifikral_values $effect:$name)
        else
            printf '%s\n' $head(__nifikral_parameters $effect)
        end
    end
end
complete -c nifikral -n __fish_use_subcommand -f
# No file is meant inside a request.
complete -c nifikral -n 'string match -q "*:*" -- (commandline -ct)' -f
)fish";

}  // namespace

std::string BashCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects) {
    std::string script = "# Completion of nifikral for bash.\n_nifikral_commands='";
    std::string options;
    for (const CommandDescription& command : commands) {
        script += command.name + " ";
        std::string names;
        for (const OptionDescription& option : command.options)
            for (const std::string& name : option.names) names += name + " ";
        options += Arm(command.name, names);
    }
    script += "'\n_nifikral_effects='" + Effects(effects, IsForApply, NameOnly) + "'\n_nifikral_templates='" +
              Effects(effects, IsMenu, NameOnly) + "'\n_nifikral_names='" + Effects(effects, IsAny, NameOnly) + "'\n";
    const auto function = [](const char* name, const std::string& arms) {
        return std::string("_nifikral_") + name + "() {\n    case $1 in\n" + arms + "    esac\n}\n";
    };
    script += "_nifikral_prefixes='" + Prefixes(commands) + "'\n";
    return script + function("options", options + Arm("", "--help --version")) +
           function("source", SourceArms(commands)) + function("parameters", ParameterArms(effects)) +
           function("values", ValueArms(effects)) + bashLogic;
}

std::string ZshCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects) {
    // Entries of _describe: a colon parts a name from what it means.
    const auto entry = [](const std::string& name, const std::string& meaning) {
        return std::string(4, ' ') + Quoted(name + ":" + meaning) + "\n";
    };
    const auto list = [](const char* name, const std::string& entries) {
        return std::string("_nifikral_") + name + "=(\n" + entries + ")\n";
    };
    const auto function = [](const char* name, const std::string& arms) {
        return std::string("_nifikral_") + name + "() {\n    case $1 in\n" + arms + "    esac\n}\n";
    };
    std::string names, options;
    for (const CommandDescription& command : commands) {
        names += entry(command.name, command.summary);
        std::string entries;
        for (const OptionDescription& option : command.options)
            for (const std::string& name : option.names) entries += name + ":" + option.meaning + "\n";
        options += Arm(command.name, entries);
    }
    return "#compdef nifikral\ntypeset -ga _nifikral_commands _nifikral_effects _nifikral_templates _nifikral_names\n" +
           std::string("typeset -g _nifikral_prefixes='") + Prefixes(commands) + "'\n" + list("commands", names) +
           list("effects", Effects(effects, IsForApply, entry)) + list("templates", Effects(effects, IsMenu, entry)) +
           list("names", Effects(effects, IsAny, entry)) + function("options", options) +
           function("source", SourceArms(commands)) + function("parameters", ParameterArms(effects)) +
           function("values", ValueArms(effects)) + zshLogic;
}

std::string FishCompletion(std::span<const CommandDescription> commands, std::span<const EffectDetails> effects) {
    const auto line = [](const std::string& name, const std::string& meaning) {
        return std::string(8, ' ') + Quoted(name + "\t" + meaning) + " \\\n";
    };
    const auto printed = [](const char* name, const std::string& lines) {
        return std::string("function ") + name + "\n    printf '%s\\n' \\\n" + lines + "        ;\nend\n";
    };
    // The arms are sorted by effect, so a case for each of them would do; one for each parameter is simpler.
    const std::string parameters =
        ForEachParameter(effects, [](const std::string& effect, const std::string& name, const ParameterInfo& info) {
            return std::string("    test $argv[1] = ") + Quoted(effect) + "; and printf '%s=\\t%s\\n' " + name + " " +
                   Quoted(info.meaning) + "\n";
        });
    const std::string values =
        ForEachParameter(effects, [](const std::string& effect, const std::string& name, const ParameterInfo& info) {
            const std::string list = Values(info);
            return list.empty() ? std::string()
                                : std::string("    test $argv[1] = ") + Quoted(effect + ":" + name) +
                                      "; and printf '%s\\n' " + list + "\n";
        });
    std::string script =
        "# Completion of nifikral for fish.\n" + printed("__nifikral_names", Effects(effects, IsForApply, line)) +
        printed("__nifikral_all", Effects(effects, IsAny, line)) +
        printed("__nifikral_templates", Effects(effects, IsMenu, line)) + "function __nifikral_parameters\n" +
        parameters + "    printf '%s=\\n' " + Joined(regionOptions) + "\nend\nfunction __nifikral_values\n" + values +
        "    string match -q '*:*side' -- $argv[1]; and printf '%s\\n' " + areas + "\nend\n" + fishLogic;
    const auto functionOf = [](const std::string& source) -> std::string {
        constexpr std::string_view templates = "@template";
        if (source.starts_with(templates)) return Quoted("(__nifikral_templates)" + source.substr(templates.size()));
        return source == "@effect" ? "'(__nifikral_effects)'"
               : source == "@name" ? "'(__nifikral_all)'"
                                   : Quoted(source);
    };
    for (const CommandDescription& command : commands) {
        script += "complete -c nifikral -n __fish_use_subcommand -a " + command.name + " -d " +
                  Quoted(command.summary) + "\n";
        const std::string rest = "__fish_seen_subcommand_from " + command.name;
        if (!command.follows.empty())
            script += "complete -c nifikral -n '" + rest + "; and not __fish_seen_subcommand_from " +
                      Joined(command.follows) + "' -f -a " + Quoted(Joined(command.follows)) + "\n";
        const std::string only = "complete -c nifikral -n '" + rest + "'";
        for (const OptionDescription& option : command.options) {
            const std::string source = Source(option);
            const bool completes = source != "@file" && source != "@text";
            if (option.IsPositional()) {
                if (completes) script += only + " -a " + functionOf(source) + "\n";
                continue;
            }
            script += only;
            for (const std::string& name : option.names)
                script += (name.starts_with("--") ? std::string(" -l ") : std::string(" -s ")) +
                          name.substr(name.starts_with("--") ? 2 : 1);
            if (!option.value.empty())
                script += completes ? std::string(" -x -a ") + functionOf(source) : std::string(" -r");
            script += " -d " + Quoted(option.meaning) + "\n";
        }
    }
    return script;
}

}  // namespace Nifikral
