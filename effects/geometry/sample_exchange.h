#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "effects/base/frame_views.h"

/// Two stretches of samples that change places; they do not overlap.
namespace AVBased {

/// A sample as a number, which the compiler handles in vectors; a struct's fields it would take one by one.
template <class Sample>
using Number = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint8_t>;

template <class Sample>
void Swap(Sample* a, Sample* b) {
    Number<Sample> first, second;
    std::memcpy(&first, a, sizeof first);
    std::memcpy(&second, b, sizeof second);
    std::memcpy(static_cast<void*>(a), &second, sizeof second);
    std::memcpy(static_cast<void*>(b), &first, sizeof first);
}

template <class Sample>
void Exchange(Sample* __restrict a, Sample* __restrict b, unsigned count) {
    for (unsigned i = 0; i < count; ++i) Swap(a + i, b + i);
}

/// The same, each stretch turned round on the way: a's first sample becomes b's last.
template <class Sample>
void ExchangeReversed(Sample* a, Sample* b, unsigned count) {
    for (unsigned i = 0; i < count; ++i) Swap(a + i, b + (count - 1 - i));
}

}  // namespace AVBased
