#pragma once

#include "host/run/run_options.h"

namespace Nifikral {

/// Confines the program, where the options ask for it, to what this run needs: it reads the files and folders that
/// `namedWords` name, for a project or a list its folder, beside the system's libraries and fonts and the user's fonts
/// and presets; it writes into the folder of the output. Threads: call it before others begin. Throws HostError where
/// the kernel cannot do it.
void ConfineRun(const RunOptions& options);

}  // namespace Nifikral
