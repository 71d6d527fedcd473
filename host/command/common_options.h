#pragma once

#include "host/command/command_line.h"
#include "host/films/film.h"
#include "host/media/reshape.h"
#include "host/run/run_options.h"

/// What several subcommands take.
namespace Nifikral {

/// The groups of commands in the overview.
inline constexpr char makingCommands[] = "Make pictures and films", findingCommands[] = "Find effects",
                      sharingCommands[] = "Share a long run out", otherCommands[] = "More";

/// Words for an option, named in its help: "fit: pad, crop or blur"; any others are refused, unless it
/// bears them.
void Take(CommandLine& line, CLI::Option* option, const std::vector<std::string>& words, bool bearsOthers = false);
/// The words that a text parameter of an effect takes, and the range that a number makes sense in.
std::vector<std::string> WordsOf(const char* effect, const char* parameter);
CLI::Range RangeOf(const char* effect, const char* parameter);

/// Settings of every subcommand that loads the module.
void AddCommonOptions(CLI::App& app, CommandLine& line);
/// Where presets are read from.
void AddPresetsOption(CLI::App& app, std::string& file);
/// Settings of every subcommand that makes a film or pictures.
void AddRunOptions(CLI::App& app, CommandLine& line, RunOptions& options);
/// What is done to the pictures of an input before all else.
void AddPreparation(CLI::App& app, Preparation& preparation);
/// Another place for the output, for several inputs.
void AddOutputApart(CLI::App& app, RunOptions& options);
/// The words of positionals that are read together.
std::vector<std::string> JoinWords(const std::string& first, const std::string& second,
                                   const std::vector<std::string>& more);
/// Where those that make a film of their own put it, and their settings.
void AddFilmOutput(CLI::App& app, FilmOptions& options);
void AddFilmOptions(CLI::App& app, CommandLine& line, FilmOptions& options);

}  // namespace Nifikral
