#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/run/apply.h"
#include "host/pages/command_description.h"
#include "host/films/example_project.h"
#include "host/pages/gallery.h"
#include "host/films/menu.h"
#include "host/run/plan.h"
#include "host/pages/reference.h"
#include "host/films/slideshow.h"
#include "host/films/title.h"

namespace Nifikral {

/// What stands on the command line, and the options that put it there.
struct CommandLine {
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// The command without a subcommand, and each subcommand.
    CommandDescription Whole() const;
    std::vector<CommandDescription> Commands() const;

    CLI::App app;
    /// What each subcommand does.
    std::map<const CLI::App*, std::function<void(const EffectModule&)>> work;
    /// The words that an option's value is made of.
    std::map<const CLI::Option*, std::vector<std::string>> words;
    /// The options of those that make films or pictures.
    std::map<const CLI::App*, RunOptions*> runs;
    /// The two that take such a subcommand's whole command line behind their own options.
    CLI::App *plan = nullptr, *concat = nullptr;

    std::string module, progress;
    unsigned cpuFeatures = 0;
    bool quiet = false, verbose = false, json = false;
    std::string effect, document;
    ApplyOptions apply;
    MenuOptions menu;
    SlideshowOptions slideshow;
    TitleOptions title;
    InitOptions init;
    GalleryOptions gallery;
    PlanOptions planning;
    long long lastFrame = 0;
    ReferenceOptions reference;
};

}  // namespace Nifikral
