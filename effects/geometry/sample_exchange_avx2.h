#pragma once

namespace AVBased {

/// ExchangeReversed for AVX2; of bytes and of pixels.
template <class Sample>
void ExchangeReversedAvx2(Sample* a, Sample* b, unsigned count);

}  // namespace AVBased
