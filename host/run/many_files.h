#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/run/run_options.h"

namespace Nifikral {

/// Calls `make` for every input with the settings of its own run, whose output follows from the given one.
///
/// Unless the options say that it names many, there is one input, which has it as it is. A folder ("graded/") takes
/// files of the inputs' names; in a pattern, {name} stands for an input's name without its extension and {number} for
/// its place in the list, from 1; a pattern without an extension keeps the inputs'.
///
/// Pictures and short files run side by side, others one after the other on all cores. A file that fails does not end
/// the rest; the errors come last. Throws before anything is made when outputs are there already, coincide or are
/// inputs themselves; afterwards when a file has failed, with the exit code that all failures share, or that of a
/// failed run.
void RunEach(const std::vector<std::string>& inputs, const RunOptions& options,
             const std::function<void(const std::string& input, const RunOptions& run)>& make);

}  // namespace Nifikral
