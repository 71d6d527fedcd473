#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/pages/command_description.h"
#include "host/run/plan.h"
#include "host/run/run_options.h"

namespace Nifikral {

/// What stands on the command line, and the options that put it there. Each subcommand keeps its own settings.
struct CommandLine {
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Reads the words behind the program; false when they only asked for help or the version, which is printed. Throws
    /// usage errors.
    bool Parse(std::vector<std::string> words);
    /// The command without a subcommand, and each subcommand.
    CommandDescription Whole() const;
    std::vector<CommandDescription> Commands() const;

    CLI::App app;
    /// What each subcommand does.
    std::map<const CLI::App*, std::function<void(const EffectModule&)>> work;
    /// The words that an option's value is made of.
    std::map<const CLI::Option*, std::vector<std::string>> words;
    /// The ways of use of those whose options alone do not show them, from the command's name on.
    std::map<const CLI::App*, std::vector<std::string>> usages;
    /// The options of those that make films or pictures.
    std::map<const CLI::App*, RunOptions*> runs;
    /// The plan of those that are shared out in stages of their own, and each film in so many chunks.
    std::map<const CLI::App*, std::function<CommandPlan(long long chunks, const EffectModule&)>> stages;
    /// The two that take such a subcommand's whole command line behind their own options.
    CLI::App *plan = nullptr, *concat = nullptr;
    PlanOptions planning;
    long long lastFrame = 0;

    std::string module, progress;
    unsigned cpuFeatures = 0;
    bool quiet = false, verbose = false;
};

}  // namespace Nifikral
