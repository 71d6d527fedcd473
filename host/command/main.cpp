// The command nifikral: puts the module's effects on pictures and videos, and makes films with its generators.

#include <malloc.h>

#include <cstdio>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/progress.h"
#include "host/base/sandbox.h"
#include "host/base/standard_output.h"
#include "host/command/command_line.h"
#include "host/command/cpu_features.h"
#include "host/films/media_manager.h"
#include "host/media/ffmpeg_log.h"
#include "host/run/chunks.h"

namespace {

using namespace Nifikral;

using Words = std::vector<std::string>;

// What another subcommand wants of a run instead of the run itself, and its name.
struct Purpose {
    std::string name;
    std::function<void(RunOptions&)> prepare;
    std::function<void(const CommandPlan&)> receivePlan = {};  // of a work that is planned in stages
    long long chunks = 0;                                      // of each of its films
};

// `words`: the command line behind the program.
int Run(const std::string& program, const Words& words, const Purpose& purpose) {
    CommandLine line;
    if (!line.Parse(words)) return 0;
    const CLI::App* const command = line.app.get_subcommands().front();
    if (command == line.plan) {
        const Words run = command->remaining();
        const auto print = [&](const CommandPlan& plan) { PrintResult(PlanText(plan, program, line.planning.format)); };
        return Run(program, run,
                   {"plan",
                    [&](RunOptions& options) {
                        options.reportFrames = [&](const OutputOptions& output, const FrameRange& frames) {
                            print(PlanChunks(line.planning.chunks, run, output, frames));
                        };
                    },
                    print, line.planning.chunks});
    }
    if (command == line.concat)
        return Run(program, command->remaining(),
                   {"concat", [&](RunOptions& options) { options.joinTo = line.lastFrame; }});
    const auto run = line.runs.find(command);
    const auto stages = purpose.receivePlan ? line.stages.find(command) : line.stages.end();
    if (!purpose.name.empty() && stages == line.stages.end() && (run == line.runs.end() || !run->second->chunk.empty()))
        throw HostError(ExitCode::Usage, "nifikral " + purpose.name + " takes a whole run: apply, menu, slideshow" +
                                             (purpose.receivePlan ? ", title or disc" : " or title") +
                                             ", without --chunk");
    if (run != line.runs.end()) {
        run->second->output.mark = RunMark(words);
        if (run->second->confined) run->second->namedWords = words;
        if (purpose.prepare) purpose.prepare(*run->second);
    }
    if (!line.progress.empty() && line.progress != "line" && line.progress != "json")
        throw HostError(ExitCode::Usage, "--progress " + line.progress + " is none; give line or json");
    SetProgressForm(line.progress == "json" ? ProgressForm::Json : ProgressForm::Line);
    SetVerbosity(line.quiet ? Verbosity::Quiet : line.verbose ? Verbosity::Verbose : Verbosity::Normal);
    if (command->count("--cpu-features")) OverrideCpuFeatures(line.cpuFeatures);
    MediaManager manager;
    const EffectModule module(line.module, &manager);
    if (stages != line.stages.end())
        purpose.receivePlan(stages->second(purpose.chunks, module));
    else
        line.work.at(command)(module);
    return 0;
}

std::string LineOf(const HostError& error) {
    const bool mayBeConfined = error.Code() == ExitCode::Input && IsInSandbox();
    std::string line = error.what();
    while (line.ends_with('\n')) line.pop_back();
    if (mayBeConfined)
        line += " (with --sandbox, name all inputs on the command line, or keep them beside their project)";
    return line;
}

// The exit code of a whole run, whose errors are printed. Without memory, even printing may fail.
int RunToCode(const std::string& program, const Words& words) {
    try {
        return Run(program, words, {});
    } catch (const HostError& error) {
        PrintError(LineOf(error));
        return int(error.Code());
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        PrintError(error.what());
    }
    return int(ExitCode::Failed);
}

}  // namespace

int main(int argc, char** argv) {
    // Pictures come and go by the thousand: memory given back to the system each time would be cleared each time.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    InstallSignalHandlers();
    CaptureFfmpegMessages();
    try {
        return RunToCode(argv[0], Words(argv + 1, argv + argc));
    } catch (const std::bad_alloc&) {
        std::fputs("nifikral: error: out of memory; use fewer --threads or smaller pictures\n", stderr);
    }
    return int(ExitCode::Failed);
}
