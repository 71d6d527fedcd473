#pragma once

#include "bench/harness/measure.h"

namespace Bench {

/// Registers "<effect> <library>" with what the library's user would call for about the same job. Work that is missing
/// is not measured. A result that goes to memory of the library's own is left there, in the peer's favour.
void RegisterPeer(const char* row, const Work& packed, const Work& planar, unsigned planarFormat = formatPlanar,
                  unsigned planarUnit = allPlanes);

void RegisterOpenCv();
void RegisterLibyuv();
void RegisterFfmpeg();

}  // namespace Bench
