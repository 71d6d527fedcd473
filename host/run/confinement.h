#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/run/run_options.h"

namespace Nifikral {

/// Confines the program, where the options ask for it, to what this run needs: it reads the files and folders that
/// `namedWords` name, for a project or a list its folder, beside the system's libraries and fonts and the user's fonts
/// and presets; it writes into the folder of the output. Threads: call it before others begin. Throws HostError where
/// the kernel cannot do it.
void ConfineRun(const RunOptions& options);

/// The same for work of several programs: it reads the folder `input`, or a project's folder, and writes into the
/// folder `place`; it runs this program, with the module that it has loaded, and `programs`, by their names. `listens`:
/// it may wait for TCP connections.
void ConfineWork(const std::string& input, const std::filesystem::path& place, const std::vector<std::string>& programs,
                 bool listens = false);

}  // namespace Nifikral
