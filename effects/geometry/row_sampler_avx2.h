#pragma once

#include "effects/geometry/row_sampler.h"

namespace AVBased {

/// Writes the samples of the blocks from `first` up to `last`, fetching what lies `ahead` bytes from the source.
template <class Sample>
void SampleBlocksAvx2(const RowSampler<Sample>& sampler, Sample* to, const Sample* from, unsigned first, unsigned last,
                      std::ptrdiff_t ahead);

}  // namespace AVBased
