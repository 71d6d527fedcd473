// The command nifikral: puts the module's effects on pictures and videos, and makes films with its generators.

#include <malloc.h>

#include "host/command_line.h"
#include "host/cpu_features.h"
#include "host/errors.h"
#include "host/interruption.h"
#include "host/log.h"
#include "host/media_manager.h"

namespace {

using namespace Nifikral;

int Run(int argc, char** argv) {
    CommandLine line;
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::Success& told) {
        return line.app.exit(told);
    } catch (const CLI::ParseError& error) {
        throw HostError(ExitCode::Usage, std::string(error.what()) + "; nifikral --help tells the usage");
    }
    SetVerbosity(line.quiet ? Verbosity::Quiet : line.verbose ? Verbosity::Verbose : Verbosity::Normal);
    const CLI::App* const command = line.app.get_subcommands().front();
    if (command->count("--cpu-features")) OverrideCpuFeatures(line.cpuFeatures);
    MediaManager manager;
    line.work.at(command)(EffectModule(line.module, &manager));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Pictures come and go by the thousand: memory given back to the system each time would be cleared each time.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    InstallSignalHandlers();
    CaptureFfmpegMessages();
    try {
        return Run(argc, argv);
    } catch (const HostError& error) {
        PrintError(error.what());
        return int(error.Code());
    } catch (const std::bad_alloc&) {
        PrintError("out of memory; use fewer --threads or smaller pictures");
    } catch (const std::exception& error) {
        PrintError(error.what());
    }
    return int(ExitCode::Failed);
}
