#pragma once

#include "host/run/pipeline.h"
#include "host/run/run_options.h"

namespace Nifikral {

/// Makes what the options ask for: the output, a chunk of it or the whole of its chunks; or, where they ask for no
/// more, looks whether it is there already, describes it or counts its frames. Throws host errors.
void MakeRun(const RunOptions& options, const FramesOfRun& frames, PictureMaker& maker);

/// Removes what runs that were killed have left beside the output.
void ClearLeftovers(const RunOptions& options);

}  // namespace Nifikral
